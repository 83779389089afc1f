// One plug-in instance behind the VST 2.4 interface.
#include "CAudioWrapperVST.h"

#include "CAudioEnv.h"
#include "CAudioExtParamList.h"
#include "CAudioParam.h"
#include "CAudioParamCollector.h"
#include "CAudioParamRegistry.h"
#include "CAudioWrapperVSTEditor.h"
#include "CHostTraits.h"
#include "FailureReport.h"
#include "VstText.h"
#include "Wildcard.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>

namespace qel {

namespace {

using vst24::kEffectNameBytes;
using vst24::kParameterTextBytes;
using vst24::kProgramNameBytes;
using vst24::kVendorTextBytes;

constexpr std::size_t kMaxQuestionBytes = 64; // of a canDo(); no host asks longer ones
constexpr std::size_t kMaxTypedBytes = 256;   // of a parameter's text

constexpr std::intptr_t kCockosExtensions = 0xBEEF0000;
constexpr std::int32_t kCockosDisplay = 7; // vendorSpecific(): the text of any value
constexpr std::intptr_t kCockosDone = 0xBEEF;
constexpr std::int32_t kWheelIndex = 0x73744341;  // "stCA"
constexpr std::intptr_t kWheelValue = 0x57686565; // "Whee"

// Their places are the interface's numbers.
constexpr const char* kCategories[] = {
    "kPlugCategUnknown",     "kPlugCategEffect",         "kPlugCategSynth",  "kPlugCategAnalysis",
    "kPlugCategMastering",   "kPlugCategSpacializer",    "kPlugCategRoomFx", "kPlugSurroundFx",
    "kPlugCategRestoration", "kPlugCategOfflineProcess", "kPlugCategShell",  "kPlugCategGenerator",
};

constexpr std::int32_t kMultiChannelVersion = 2300;
constexpr std::int32_t kStereo = 2;
constexpr std::int32_t kDeclaredSpeakers = std::extent_v<decltype(VstSpeakerArrangement::speakers)>;
constexpr int kPrecisionCount = 2;      // single and double
constexpr std::int32_t kMaxPiece = 128; // of the accumulating call: it lies on the stack

// The whole text, or the short one where the whole does not fit.
template <class Display>
void writeDisplay(char* text, Display&& display)
{
    CString shown = display(CAudioParamConverter::TextMode::kNormal);
    if (shown.length() >= kParameterTextBytes) {
        shown = display(CAudioParamConverter::TextMode::kShort);
    }
    vst24::writeText(text, kParameterTextBytes, shown);
}

} // namespace

AEffect* createEffect(AudioMasterCallback audioMaster)
{
    if (!audioMaster || audioMaster(nullptr, vst24::kMasterVersion, 0, 0, nullptr, 0.0f) == 0) {
        return nullptr;
    }
    auto wrapper = std::make_unique<CAudioWrapperVST>(audioMaster);
    if (const CError error = wrapper->init()) {
        showFailureWindow(error);
        return nullptr;
    }
    return wrapper.release()->getAeffect();
}

CAudioWrapperVST::CAudioWrapperVST(AudioMasterCallback audioMaster) : AudioEffectX(audioMaster, 1, 1) {}

// The window looks into the tree, which the base class ends.
CAudioWrapperVST::~CAudioWrapperVST()
{
    if (AEffEditor* const editor = getEditor()) {
        editor->close();
        setEditor(nullptr);
    }
}

CError CAudioWrapperVST::init()
{
    QEL_TRY(CAudioWrapper::init(), {});
    readHost();
    describeEffect();
    setEditor(std::make_unique<CAudioWrapperVSTEditor>(*this));
    const AEffect& effect = *getAeffect();
    setDefaultLayout(effect.numInputs, effect.numOutputs);
    for (std::int32_t i = 0; i < effect.numInputs; ++i) {
        inputLabels_.push_back(CString::number(i));
    }
    QEL_TRY(finishInit(), {});
    return {};
}

void CAudioWrapperVST::readHost()
{
    hostVersion_ = getMasterVersion();
    HostText text;
    getHostProductString(text);
    hostProduct_ = CString::fromUtf8(text);
    isMultiChannel_ = hostVersion_ >= kMultiChannelVersion && std::strcmp(text, "Sony ACID Pro") != 0;
    if (matchesWildcard("*WaveLab*", text)) {
        hostSection_ = std::make_unique<CCriticalSection>();
    }
    getHostVendorString(text);
    hostVendor_ = CString::fromUtf8(text);
    CHostTraits::setSteinberg(std::strcmp(text, "Steinberg") == 0);
}

void CAudioWrapperVST::describeEffect()
{
    setUniqueID(getIdentity().code);
    setVersion(getVendorVersion());
    setNumPrograms(getRegistry().getProgramCount());
    setNumParams(getExtParams().getCount());
    programsAreChunks(true);
    canProcessReplacing(true);
    canDoubleReplacing(true);
    const std::int32_t channels = isMultiChannel_ ? getIdentity().channelCount : kStereo;
    setNumInputs(channels);
    setNumOutputs(channels);
}

std::unique_lock<CCriticalSection> CAudioWrapperVST::enterHostSection()
{
    return hostSection_ ? std::unique_lock(*hostSection_) : std::unique_lock<CCriticalSection>();
}

void CAudioWrapperVST::suspend()
{
    const auto section = enterHostSection();
    CAudioWrapper::suspend();
}

void CAudioWrapperVST::resume()
{
    const auto section = enterHostSection();
    CAudioHostSetup setup;
    setup.sampleRateHz = double{getSampleRate()};
    {
        const AEffect& effect = *getAeffect();
        const CLock lock(getEnv().getLock());
        setup.inputCount = inputArrangement_ ? inputArrangement_->numChannels : effect.numInputs;
        setup.outputCount = outputArrangement_ ? outputArrangement_->numChannels : effect.numOutputs;
    }
    CAudioWrapper::resume(setup);
}

// Some hosts change the rate without a stop.
void CAudioWrapperVST::setSampleRate(float rateHz)
{
    AudioEffectX::setSampleRate(rateHz);
    CAudioWrapper::setSampleRate(double{getSampleRate()});
}

// --- audio thread

void CAudioWrapperVST::processReplacing(float** inputs, float** outputs, std::int32_t frames)
{
    processHostBlock(reinterpret_cast<const void* const*>(inputs), reinterpret_cast<void* const*>(outputs),
                     frames, false);
}

void CAudioWrapperVST::processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames)
{
    processHostBlock(reinterpret_cast<const void* const*>(inputs), reinterpret_cast<void* const*>(outputs),
                     frames, true);
}

void CAudioWrapperVST::processHostBlock(const void* const* inputs, void* const* outputs, std::int32_t frames,
                                        bool isDouble)
{
    const auto section = enterHostSection();
    CAudioHostBlock block;
    block.inputs = inputs;
    block.outputs = outputs;
    block.count = frames;
    block.isDouble = isDouble;
    processBlock(block);
}

// In short pieces; results do not depend on the length of blocks.
void CAudioWrapperVST::process(float** inputs, float** outputs, std::int32_t frames)
{
    const auto section = enterHostSection();
    const CAudioHostSetup setup = beginBlock();
    for (std::int32_t start = 0; start < frames; start += kMaxPiece) {
        accumulatePiece(setup, inputs, outputs, start, std::min(kMaxPiece, frames - start));
    }
}

void CAudioWrapperVST::accumulatePiece(const CAudioHostSetup& setup, float** inputs, float** outputs,
                                       std::int32_t start, std::int32_t count)
{
    // Longer than the host's: the setup may grow between two pieces.
    const void* in[kMaxChannels] = {};
    void* out[kMaxChannels] = {};
    float made[kMaxChannels][kMaxPiece];
    for (int i = 0; inputs && i < setup.inputCount; ++i) {
        in[i] = inputs[i] ? inputs[i] + start : nullptr;
    }
    for (int i = 0; outputs && i < setup.outputCount; ++i) {
        out[i] = outputs[i] ? made[i] : nullptr;
    }
    CAudioHostBlock block;
    block.inputs = in;
    block.outputs = out;
    block.count = count;
    processBlock(block);
    for (int i = 0; i < setup.outputCount; ++i) {
        if (const auto* from = static_cast<const float*>(out[i])) {
            std::transform(from, from + count, outputs[i] + start, outputs[i] + start, std::plus<float>());
        }
    }
}

bool CAudioWrapperVST::processEvents(const VstEvents* events)
{
    const VstEvent* const* list = events->events;
    for (std::int32_t i = 0; i < events->numEvents; ++i) {
        if (!list[i] || list[i]->type != vst24::kMidiEventType) {
            continue;
        }
        VstMidiEvent event;
        std::memcpy(&event, list[i], sizeof(event));
        const auto status = static_cast<unsigned char>(event.midiData[0]);
        onMidi(status >> 4, status & 0x0F, event.midiData[1] & 0x7F, event.midiData[2] & 0x7F,
               event.deltaFrames / double{getSampleRate()});
    }
    return true;
}

std::optional<double> CAudioWrapperVST::hostTempo()
{
    const VstTimeInfo* time = getTimeInfo(vst24::kTempoValid);
    if (!time || !(time->flags & vst24::kTempoValid) || !std::isfinite(time->tempo) || time->tempo <= 0.0) {
        return std::nullopt;
    }
    return time->tempo;
}

// The host reads the delay when it is notified of the change.
void CAudioWrapperVST::ioChanged()
{
    setInitialDelay(getLatencySamples());
    AudioEffectX::ioChanged();
}

// --- channels and samples

VstSpeakerArrangement CAudioWrapperVST::copyOf(const VstSpeakerArrangement& arrangement,
                                               std::int32_t maxChannels)
{
    VstSpeakerArrangement copy{};
    copy.type = arrangement.type;
    copy.numChannels = std::clamp(arrangement.numChannels, 0, std::min(maxChannels, kDeclaredSpeakers));
    std::copy_n(arrangement.speakers, copy.numChannels, copy.speakers);
    return copy;
}

bool CAudioWrapperVST::setSpeakerArrangement(const VstSpeakerArrangement* input,
                                             const VstSpeakerArrangement* output)
{
    const CLock lock(getEnv().getLock());
    inputArrangement_ = copyOf(*input, getAeffect()->numInputs);
    outputArrangement_ = copyOf(*output, getAeffect()->numOutputs);
    announceLayout(inputArrangement_->numChannels, outputArrangement_->numChannels);
    nameInputs(*inputArrangement_);
    return true;
}

void CAudioWrapperVST::nameInputs(const VstSpeakerArrangement& arrangement)
{
    for (std::int32_t i = 0; i < arrangement.numChannels; ++i) {
        const VstSpeakerProperties& speaker = arrangement.speakers[i];
        const CString name = vst24::readText(speaker.name, sizeof(speaker.name));
        inputLabels_[static_cast<std::size_t>(i)] = name.isEmpty() ? CString::number(i) : name;
    }
}

std::vector<CString> CAudioWrapperVST::hostChannelLabels()
{
    const CLock lock(getEnv().getLock());
    return inputLabels_;
}

bool CAudioWrapperVST::getSpeakerArrangement(VstSpeakerArrangement** input, VstSpeakerArrangement** output)
{
    const CLock lock(getEnv().getLock());
    const bool hasBoth = inputArrangement_ && outputArrangement_;
    *input = hasBoth ? &*inputArrangement_ : nullptr;
    *output = hasBoth ? &*outputArrangement_ : nullptr;
    return hasBoth;
}

bool CAudioWrapperVST::setProcessPrecision(std::int32_t precision)
{
    return precision >= 0 && precision < kPrecisionCount;
}

// --- parameters

void CAudioWrapperVST::setParameter(std::int32_t index, float value)
{
    if (CAudioExtParam* param = getExtParams().get(index)) {
        param->postNormalized(value);
    }
}

float CAudioWrapperVST::getParameter(std::int32_t index)
{
    const CAudioExtParam* param = getExtParams().get(index);
    return param ? static_cast<float>(param->getNormalized()) : 0.0f;
}

void CAudioWrapperVST::getParameterLabel(std::int32_t index, char* text)
{
    const CAudioExtParam* param = getExtParams().get(index);
    vst24::writeText(text, kParameterTextBytes, param ? param->getLabel() : CString());
}

void CAudioWrapperVST::getParameterDisplay(std::int32_t index, char* text)
{
    const CAudioExtParam* param = getExtParams().get(index);
    writeDisplay(text, [&](auto mode) { return param ? param->getDisplay(mode) : CString(); });
}

void CAudioWrapperVST::getParameterName(std::int32_t index, char* text)
{
    const CAudioExtParam* param = getExtParams().get(index);
    vst24::writeText(text, kParameterTextBytes, param ? param->getExtName() : CString());
}

bool CAudioWrapperVST::string2parameter(std::int32_t index, const char* text)
{
    CAudioExtParam* param = getExtParams().get(index);
    if (!param || !text) {
        return param != nullptr;
    }
    const std::optional<double> norm = param->getNormalizedOf(vst24::readText(text, kMaxTypedBytes));
    if (norm) {
        param->postNormalized(*norm);
    }
    return norm.has_value();
}

bool CAudioWrapperVST::getParameterProperties(std::int32_t index, VstParameterProperties* properties)
{
    const CAudioExtParam* param = getExtParams().get(index);
    if (!param) {
        return false;
    }
    *properties = {};
    vst24::writeText(properties->label, sizeof(properties->label), param->getVisualName());
    vst24::writeText(properties->shortLabel, sizeof(properties->shortLabel), param->getExtName());
    const std::int32_t steps = param->getStepCount();
    if (steps == 1) {
        properties->flags = vst24::kParameterIsSwitch;
    } else if (steps > 1) {
        properties->flags = vst24::kParameterHasIntegerRange | vst24::kParameterHasFloatSteps;
        properties->maxInteger = steps;
        properties->stepFloat = properties->smallStepFloat = properties->largeStepFloat =
            1.0f / static_cast<float>(steps);
    }
    return true;
}

// --- programs and state

std::int32_t CAudioWrapperVST::getProgram()
{
    return getRegistry().getProgram();
}

void CAudioWrapperVST::setProgram(std::int32_t program)
{
    curProgram_ = program;
    releaseError(activateProgram(program));
}

void CAudioWrapperVST::setProgramName(const char* text)
{
    renameProgram(vst24::readText(text, kProgramNameBytes));
}

void CAudioWrapperVST::getProgramName(char* text)
{
    vst24::writeText(text, kProgramNameBytes, getRegistry().getCurrentProgramName());
}

bool CAudioWrapperVST::getProgramNameIndexed(std::int32_t, std::int32_t index, char* text)
{
    const bool exists = index >= 0 && index < getRegistry().getProgramCount();
    vst24::writeText(text, kProgramNameBytes, exists ? getRegistry().getProgramName(index) : CString());
    return exists;
}

std::intptr_t CAudioWrapperVST::getChunk(void** data, bool isPreset)
{
    CByteBuffer chunk;
    const CError error = saveChunk(chunk, isPreset, true);
    const CLock lock(chunkLock_);
    if (error) {
        chunkBuffer_.release();
        *data = nullptr;
        return 0;
    }
    chunkBuffer_ = std::move(chunk);
    *data = chunkBuffer_.data();
    return static_cast<std::intptr_t>(chunkBuffer_.size());
}

bool CAudioWrapperVST::setChunk(const void* data, std::intptr_t size, bool isPreset)
{
    if (!data || size < 0) {
        return false;
    }
    const std::span bytes(static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size));
    return !loadChunk(bytes, isPreset, true);
}

// --- names and abilities

CObject* CAudioWrapperVST::project() const
{
    return getRoot()->findObject("shared::project");
}

bool CAudioWrapperVST::getEffectName(char* text)
{
    vst24::writeText(text, kEffectNameBytes, getIdentity().name);
    return true;
}

bool CAudioWrapperVST::getVendorString(char* text)
{
    vst24::writeText(text, kVendorTextBytes, getIdentity().vendor);
    return true;
}

bool CAudioWrapperVST::getProductString(char* text)
{
    vst24::writeText(text, kVendorTextBytes,
                     getIdentity().name + " " + project()->getAttrString("app-version"));
    return true;
}

std::int32_t CAudioWrapperVST::getVendorVersion()
{
    const CPluginIdentity& version = getIdentity();
    return version.major << 16 | version.minor << 8 | version.patch;
}

std::intptr_t CAudioWrapperVST::vendorSpecific(std::int32_t index, std::intptr_t value, void* ptr, float opt)
{
    if (index == kWheelIndex && value == kWheelValue) {
        return getEditor() && getEditor()->onWheel(opt);
    }
    const CAudioExtParam* param = getExtParams().get(toIndex(value));
    if (index == kCockosDisplay && ptr && param) {
        writeDisplay(static_cast<char*>(ptr), [&](auto mode) { return param->getDisplayOf(opt, mode); });
        return kCockosDone;
    }
    return 0;
}

std::intptr_t CAudioWrapperVST::canDo(const char* text)
{
    const CString question = vst24::readText(text, kMaxQuestionBytes);
    if (question == "hasCockosExtensions") {
        return kCockosExtensions;
    }
    return question == "receiveVstMidiEvent" || question == "receiveVstTimeInfo";
}

std::int32_t CAudioWrapperVST::getPlugCategory()
{
    const CString name = project()->getAttrString("plugin-category-vst");
    const auto found = std::find_if(std::begin(kCategories), std::end(kCategories),
                                    [&](const char* each) { return name == each; });
    return found == std::end(kCategories) ? 0 : static_cast<std::int32_t>(found - std::begin(kCategories));
}

void CAudioWrapperVST::fillPin(VstPinProperties& pin, std::int32_t index, std::int32_t count,
                               const CString& label)
{
    pin = {};
    vst24::writeText(pin.label, sizeof(pin.label), label);
    vst24::writeText(pin.shortLabel, sizeof(pin.shortLabel), label);
    const bool hasPartner = (index | 1) < count;
    pin.flags = vst24::kPinActive | (hasPartner ? vst24::kPinStereo : 0);
}

bool CAudioWrapperVST::getInputProperties(std::int32_t index, VstPinProperties* properties)
{
    const std::int32_t count = getAeffect()->numInputs;
    if (index < 0 || index >= count) {
        return false;
    }
    const CString name =
        getParams().getParam("plugin.modMain.io-params.in-channel-names").getString(0, index);
    fillPin(*properties, index, count, name.isEmpty() ? CString("In ") + CString::number(index + 1) : name);
    return true;
}

bool CAudioWrapperVST::getOutputProperties(std::int32_t index, VstPinProperties* properties)
{
    const std::int32_t count = getAeffect()->numOutputs;
    if (index < 0 || index >= count) {
        return false;
    }
    fillPin(*properties, index, count, CString("Out ") + CString::number(index + 1));
    return true;
}

// --- to the host

void CAudioWrapperVST::setParameterAutomated(std::int32_t index, double norm)
{
    if (!isHostActivating()) {
        AudioEffectX::setParameterAutomated(index, static_cast<float>(norm));
    }
}

void CAudioWrapperVST::updateDisplay()
{
    if (hasHost()) {
        AudioEffectX::updateDisplay();
    }
}

void CAudioWrapperVST::beginEdit(std::int32_t index)
{
    if (hasHost()) {
        AudioEffectX::beginEdit(index);
    }
}

void CAudioWrapperVST::endEdit(std::int32_t index)
{
    if (hasHost()) {
        AudioEffectX::endEdit(index);
    }
}

} // namespace qel
