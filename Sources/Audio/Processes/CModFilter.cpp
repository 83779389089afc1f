// A chain of filter bands.
#include "CModFilter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qel {

namespace {

enum : int
{
    kCountSlot,
    kIndexSlot,
    kFirstValueSlot
};

// Beyond any array: where an index that is too large ends up.
constexpr int kMaxIndex = 1 << 20;

// Nearest integer, ties away from zero.
int rounded(double value, int lowest, int highest)
{
    return static_cast<int>(
        std::clamp(std::round(value), static_cast<double>(lowest), static_cast<double>(highest)));
}

// NaN never counts as a change.
bool differs(double a, double b)
{
    return a < b || a > b;
}

} // namespace

// --- module

bool CModFilterModule::Band::operator==(const Band& other) const
{
    return index == other.index && generator == other.generator &&
           std::equal(values.begin(), values.end(), other.values.begin(), other.values.end(),
                      [](double a, double b) { return !differs(a, b); });
}

bool CModFilterModule::Settings::operator==(const Settings& other) const
{
    return std::equal(bands.begin(), bands.end(), other.bands.begin(), other.bands.end());
}

CModFilterModule::Settings CModFilterModule::readSettings(const CAudioProcessSlots& slots,
                                                          const CAudioModulePlace& place)
{
    // A slot counts even if no parameter stands behind it; it reads 0.
    int valueCount = 0;
    for (int value = 0; value < kMaxValues; ++value) {
        valueCount = slots.has(kFirstValueSlot + value) ? value + 1 : valueCount;
    }
    const bool hasCount = slots.entryCount(kCountSlot, place.group) > 0;
    const int count = hasCount ? rounded(slots.value(kCountSlot, place.group), 0, kMaxBands) : 1;
    Settings settings;
    for (int i = 0; i < count; ++i) {
        Band& band = settings.bands.push({});
        band.index = rounded(slots.value(kIndexSlot, place.group, i), -1, kMaxIndex);
        for (int value = 0; value < valueCount; ++value) {
            band.values.push(slots.value(kFirstValueSlot + value, place.group, i));
        }
    }
    return settings;
}

void CModFilterModule::configure(const Settings& settings, const CAudioModulePlace& place)
{
    const std::size_t count = settings.bands.size();
    const bool isSamePlace = sampleRateHz_ == place.sampleRateHz && channelCount_ == place.channels.size();
    dropBands(isSamePlace ? count : 0);
    sampleRateHz_ = place.sampleRateHz;
    channelCount_ = place.channels.size();
    for (std::size_t i = 0; i < count; ++i) {
        const bool isNew = i == bands_.size();
        if (isNew) {
            bands_.push({});
        }
        if (isNew || !(bands_[i].settings == settings.bands[i])) {
            bands_[i].settings = settings.bands[i];
            rebuild(bands_[i]);
        }
    }
}

void CModFilterModule::rebuild(RunningBand& band)
{
    const Band& settings = band.settings;
    CFilterSections sections;
    if (settings.generator) {
        settings.generator->generate(sections, sampleRateHz_,
                                     {settings.values.data(), settings.values.size()});
    }
    dropStages(band, sections.size());
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const CFilterSection& section = sections[i];
        Stage& stage = i < band.stages.size() ? band.stages[i] : band.stages.push({});
        const bool goesOn = stage.kind == section.kind && !stage.states.isEmpty();
        if (!goesOn) {
            openStage(stage, section.kind);
        }
        setCoefficients(stage, section);
        load(stage, goesOn ? &stage : nullptr);
    }
}

void CModFilterModule::openStage(Stage& stage, EFilterFamily kind)
{
    closeStage(stage);
    stage.kind = kind;
    for (std::size_t channel = 0; channel < channelCount_; ++channel) {
        stage.states.push(
            kernels_.allocate(static_cast<std::size_t>(kernels_.filterKernels(kind).stateBytes)));
    }
}

void CModFilterModule::closeStage(Stage& stage)
{
    for (const CBufferRef state : stage.states) {
        kernels_.release(state);
    }
    stage.states.clear();
    if (!stage.coefficients.isNone()) {
        kernels_.release(std::exchange(stage.coefficients, {}));
    }
}

void CModFilterModule::setCoefficients(Stage& stage, const CFilterSection& section)
{
    if (!stage.coefficients.isNone()) {
        kernels_.release(stage.coefficients);
    }
    stage.coefficients = kernels_.allocate(section.coefficientCount() * sizeof(double));
    stage.gain = section.gain;
    if (!stage.coefficients.isNone()) {
        section.writeCoefficients(kernels_.samples(stage.coefficients));
    }
}

namespace {

bool isFirstOrder(EFilterFamily kind)
{
    return kind >= EFilterFamily::kLowPass1 && kind <= EFilterFamily::kHighPass4;
}

} // namespace

void CModFilterModule::load(Stage& stage, const Stage* running)
{
    if (stage.coefficients.isNone()) {
        return;
    }
    const CFilterKernels& family = kernels_.filterKernels(stage.kind);
    // The update kernel of a first-order chain clears its memory and takes the coefficient from its second
    // operand, where others have the running state: it would keep the old frequency. Its init kernel does
    // what is meant.
    const bool takesState = running && !isFirstOrder(stage.kind);
    for (std::size_t channel = 0; channel < stage.states.size(); ++channel) {
        if (takesState) {
            kernels_.submit(family.update, 0, 0.0,
                            {stage.states[channel], running->states[channel], stage.coefficients});
        } else {
            kernels_.submit(family.init, 0, 0.0, {stage.states[channel], stage.coefficients});
        }
    }
}

void CModFilterModule::takeUp(CAudioModule& running)
{
    const auto& other = static_cast<const CModFilterModule&>(running);
    if (other.channelCount_ != channelCount_) {
        return;
    }
    for (std::size_t i = 0; i < std::min(bands_.size(), other.bands_.size()); ++i) {
        RunningBand& band = bands_[i];
        const auto& from = other.bands_[i].stages;
        for (std::size_t j = 0; j < std::min(band.stages.size(), from.size()); ++j) {
            if (band.stages[j].kind == from[j].kind) {
                load(band.stages[j], &from[j]);
            }
        }
    }
}

void CModFilterModule::reset()
{
    for (RunningBand& band : bands_) {
        for (Stage& stage : band.stages) {
            load(stage, nullptr);
        }
    }
}

void CModFilterModule::process(CAudioModuleStep& step)
{
    for (std::size_t channel = 0; channel < channelCount_; ++channel) {
        step.passThrough(static_cast<int>(channel));
        for (const RunningBand& band : bands_) {
            for (const Stage& stage : band.stages) {
                runStage(step, stage, channel);
            }
        }
    }
}

void CModFilterModule::runStage(CAudioModuleStep& step, const Stage& stage, std::size_t channel)
{
    const CFilterKernels& family = kernels_.filterKernels(stage.kind);
    const CBufferRef input = step.outputs[channel];
    const CBufferRef output = step.allocate();
    step.submit(stage.gain == 1.0 ? family.run : family.gainRun, stage.gain,
                {output, stage.states[channel], input});
    kernels_.release(input);
    step.outputs[channel] = output;
}

void CModFilterModule::dropStages(RunningBand& band, std::size_t count)
{
    for (std::size_t i = count; i < band.stages.size(); ++i) {
        closeStage(band.stages[i]);
    }
    if (band.stages.size() > count) {
        band.stages.resize(count);
    }
}

void CModFilterModule::dropBands(std::size_t count)
{
    for (std::size_t i = count; i < bands_.size(); ++i) {
        dropStages(bands_[i], 0);
    }
    if (bands_.size() > count) {
        bands_.resize(count);
    }
}

// --- process

CModFilter::CModFilter(const CModFilterDef& definition)
    : CAudioProcessTerminal<CModFilterModule>(definition), definition_(definition)
{}

CModFilterModule::Settings CModFilter::readSettings(const CAudioModulePlace& place) const
{
    CModFilterModule::Settings settings = CModFilterModule::readSettings(slots(), place);
    for (CModFilterModule::Band& band : settings.bands) {
        band.generator = definition_.generators().getGen(band.index);
    }
    return settings;
}

double CModFilter::latencySamples(int channelGroup) const
{
    double latency = 0.0;
    if (definition_.hasLatency()) {
        CAudioModulePlace place;
        place.group = channelGroup;
        for (const CModFilterModule::Band& band : readSettings(place).bands) {
            latency += band.generator ? band.generator->latencySamples() : 0.0;
        }
    }
    return latency;
}

CAudioStreamFormat CModFilter::outputFormat(const CAudioStreamFormat& input) const
{
    CAudioStreamFormat format = input;
    format.latencySamples += latencySamples(group() == kGroupOfChannel ? input.group : group());
    return format;
}

void CModFilter::syncLinks()
{
    CAudioProcessTerminal::syncLinks();
    latencies_.clear();
    for (const CAudioModulePlace& place : places()) {
        latencies_.push(latencySamples(place.group));
    }
}

void CModFilter::applyEvents()
{
    CAudioProcessTerminal::applyEvents();
    for (std::size_t i = 0; i < latencies_.size(); ++i) {
        if (differs(latencies_[i], latencySamples(places()[i].group))) {
            syncLinks();
            return;
        }
    }
}

// Settings that move the latency are a change of format.
bool CModFilter::takeUpSteadily(std::int64_t aheadSamples, double rateHz)
{
    return definition_.hasLatency() ? CAudioProcessBase::takeUpSteadily(aheadSamples, rateHz)
                                    : CAudioProcessTerminal::takeUpSteadily(aheadSamples, rateHz);
}

// --- definition

void CModFilterDef::buildClassInfo(CClassInfo& info)
{
    using Self = CModFilterDef;
    CAudioProcessDefBase::buildClassInfo(info);
    info.bind<&Self::genArray_>("gen-array", "");
}

CError CModFilterDef::init()
{
    QEL_TRY(CAudioProcessDefBase::init(), getFullName());
    generators_ = dynamic_cast<const CAudioFilterGenArray*>(findObject(genArray_));
    if (!generators_) {
        QEL_FAIL(
            getFullName(),
            "@qelstr_CModFilterDef_init_InvalidGenArray Filter generator array with the name '%1' not found.",
            genArray_);
    }
    for (std::int32_t i = 0; i < generators_->length(); ++i) {
        const CAudioFilterGen* generator = generators_->getGen(i);
        hasLatency_ = hasLatency_ || (generator && generator->latencySamples() > 0.0);
    }
    return {};
}

std::unique_ptr<CAudioProcessBase> CModFilterDef::createProcess() const
{
    return std::make_unique<CModFilter>(*this);
}

} // namespace qel
