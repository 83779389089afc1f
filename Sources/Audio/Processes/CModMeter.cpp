// Level meters beside the signal chain.
#include "CModMeter.h"

#include "CAudioEnv.h"
#include "CAudioGraph.h"
#include "CAudioPlanBuilder.h"
#include "CAudioVizCollector.h"

#include <algorithm>
#include <cmath>

namespace qel {

namespace {

enum : int
{
    kPeakTimeSlot,
    kRmsTimeSlot,
    kGainSlot,
    kBiasTimeSlot,
    kUseBiasSlot, // no read-out depends on it
    kReleaseSlot,
    kPeakGainSlot, // nor on this
    kSlotCount
};

constexpr double kDefaultRmsSec = 0.15;
constexpr double kShortestSec = 1e-6; // keeps cut-offs finite

} // namespace

void CModMeterDef::buildClassInfo(CClassInfo& info)
{
    using Self = CModMeterDef;
    CAudioProcessDefBase::buildClassInfo(info);
    info.bind<&Self::isDiff_>("is-diff", false);
    info.bind<&Self::isInverted_>("is-inverted", false);
    info.bind<&Self::isCompression_>("is-compression", false);
}

std::unique_ptr<CAudioProcessBase> CModMeterDef::createProcess() const
{
    return std::make_unique<CModMeter>(*this);
}

CModMeterModule::Settings CModMeterModule::readSettings(const CAudioProcessSlots& slots,
                                                        const CAudioModulePlace& place)
{
    Settings settings;
    settings.peakSec = slots.value(kPeakTimeSlot, place.group);
    const bool hasRmsTime = slots.entryCount(kRmsTimeSlot, place.group) > 0;
    settings.rmsSec = hasRmsTime ? slots.value(kRmsTimeSlot, place.group) : kDefaultRmsSec;
    settings.biasSec = slots.value(kBiasTimeSlot, place.group);
    settings.releaseSec = slots.value(kReleaseSlot, place.group);
    settings.gain = slots.has(kGainSlot) ? slots.value(kGainSlot, place.group) : 1.0;
    return settings;
}

CModMeterModule::CModMeterModule(CKernelContext& kernels, const CModMeterDef& def)
    : kernels_(kernels), isDiff_(def.isDiff()), isCompression_(def.isCompression()), state_(kernels),
      readOut_(kernels.allocate(3 * sizeof(double)))
{}

CModMeterModule::~CModMeterModule()
{
    for (const CBufferRef buffer : {history_, readOut_}) {
        if (!buffer.isNone()) {
            kernels_.release(buffer);
        }
    }
}

void CModMeterModule::resolveKernels(CKernelContext& kernels)
{
    initKernel_ = kernels.findShortName("meteri");
    runKernel_ = kernels.findShortName(isDiff_ ? "meterd" : isCompression_ ? "meterc" : "meter");
    readKernel_ = kernels.findShortName(isDiff_ ? "metersubd" : isCompression_ ? "metersubc" : "metersub");
}

void CModMeterModule::makeRoom(std::int32_t history)
{
    if (history <= room_) {
        return;
    }
    if (!history_.isNone()) {
        kernels_.release(history_);
    }
    room_ = (history + kHistoryStep - 1) / kHistoryStep * kHistoryStep;
    history_ = kernels_.allocate(static_cast<std::size_t>(room_) * sizeof(double));
}

void CModMeterModule::configure(const Settings& settings, const CAudioModulePlace& place,
                                const Target& target)
{
    settings_ = settings;
    place_ = place;
    target_ = target;
    const double framesPerSec = std::max(target.framesPerSec, 1.0);
    frameLength_ = std::max(static_cast<std::int32_t>(std::lround(place.sampleRateHz / framesPerSec)), 1);
    if (!state_.get()) {
        return;
    }
    CMeterState& s = *state_.get();
    s.start = isCompression_ ? 1.0 : 0.0;
    s.frameLength = frameLength_;
    s.historyLength = std::max(static_cast<std::int32_t>(std::lround(settings.peakSec * framesPerSec)), 1);
    s.rmsCutoffHz = 1.0 / std::max(settings.rmsSec, kShortestSec);
    s.biasCutoffHz = 1.0 / std::max(settings.biasSec, kShortestSec);
    s.releaseSec = settings.releaseSec;
    makeRoom(s.historyLength);
    reset();
}

void CModMeterModule::reset()
{
    kernels_.submit(initKernel_, 0, place_.sampleRateHz, {state_.ref(), history_});
    samplesLeft_ = frameLength_;
}

void CModMeterModule::process(CAudioModuleStep& step)
{
    for (int done = 0; done < step.count;) {
        const int count = std::min(step.count - done, samplesLeft_);
        const auto samples = static_cast<std::uint32_t>(count);
        const CBufferRef in = step.input(0).advancedBy(done);
        if (isDiff_) {
            kernels_.submit(runKernel_, samples, 0.0,
                            {state_.ref(), history_, in, step.input(1).advancedBy(done)});
        } else {
            kernels_.submit(runKernel_, samples, 0.0, {state_.ref(), history_, in});
        }
        done += count;
        samplesLeft_ -= count;
        if (samplesLeft_ == 0) {
            emit();
            samplesLeft_ = frameLength_;
        }
    }
}

void CModMeterModule::emit()
{
    if (!target_.collector) {
        return;
    }
    kernels_.submit(readKernel_, 0, settings_.gain, {readOut_, state_.ref()});
    const double* values = kernels_.samples(readOut_);
    if (!values) {
        return;
    }
    CAudioVizDataMeter data;
    data.id = target_.source;
    data.group = group_;
    data.element = place_.channels.isEmpty() ? 0 : place_.channels[0];
    data.timeSec = values[0];
    data.level = values[1];
    data.peak = values[2];
    target_.collector->push(data);
}

CError CModMeter::init()
{
    QEL_TRY(CAudioProcessTerminalBase::init(), fullName());
    units_ = CAudioVector<Unit>(CAudioAllocator<Unit>(memory()));
    target_.collector = graph().visual;
    if (target_.collector) {
        target_.source = target_.collector->registerSource(fullName());
        target_.framesPerSec = target_.collector->getEnv().getVizFps();
    }
    return {};
}

void CModMeter::registerKernels()
{
    graph().kernels.addKernels(meterKernels());
}

void CModMeter::syncLinks()
{
    CAudioProcessTerminalBase::syncLinks();
    const auto& wanted = places();
    units_.resize(wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        Unit& unit = units_[i];
        unit.isNew = unit.isNew || hasMoved(i);
        unit.place = &wanted[i];
    }
}

void CModMeter::applyEvents()
{
    for (Unit& unit : units_) {
        if (!unit.module) {
            unit.module = makeAudio<CModMeterModule>(memory(), graph().kernels, def_);
            unit.module->resolveKernels(graph().kernels);
        }
        // Settings may be those of group 0; what is measured still belongs to the channel's own.
        unit.module->setGroup(unit.place->outputFormats[0]->group);
        const auto settings = CModMeterModule::readSettings(slots(), *unit.place);
        if (!unit.isNew && settings == unit.settings) {
            continue;
        }
        unit.isNew = false;
        unit.settings = settings;
        unit.module->configure(settings, *unit.place, target_);
    }
}

void CModMeter::reset(double positionSec)
{
    CAudioProcessTerminalBase::reset(positionSec);
    for (Unit& unit : units_) {
        if (unit.module) {
            unit.module->reset();
        }
    }
}

std::int64_t CModMeter::steadySamples(double rateHz) const
{
    const auto rests = [](const Unit& unit) { return unit.module && !unit.isNew; };
    const bool isAtRest = !graph().holdsSettings && std::all_of(units_.begin(), units_.end(), rests);
    return isAtRest ? CAudioProcessTerminalBase::steadySamples(rateHz) : 0;
}

int CModMeter::slotCount() const
{
    return kSlotCount;
}

void CModMeter::step(int count)
{
    if (graph().holdsSettings) {
        return; // another copy of the graph takes over, and reports already
    }
    for (Unit& unit : units_) {
        CAudioModuleStep moduleStep(graph().kernels, count, unit.place->channels.size());
        CAudioOwnedInputs owned(graph().kernels);
        gatherInputs(moduleStep, owned, *unit.place, def_.isDiff() ? 2 : 1);
        if (unit.module) {
            CAudioPlanBuilder::runWhole(graph(), *unit.module, moduleStep);
        }
    }
}

} // namespace qel
