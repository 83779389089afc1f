// One plug-in instance behind the VST 2.4 interface: beginning, processing and channels.
#include "CAudioWrapperVST.h"

#include "CAudioEnv.h"
#include "CAudioExtParamList.h"
#include "CAudioParamRegistry.h"
#include "CFailureReport.h"
#include "CHostTraits.h"
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

constexpr std::int32_t kMultiChannelVersion = 2300;
constexpr std::int32_t kStereo = 2;
constexpr std::int32_t kDeclaredSpeakers = std::extent_v<decltype(VstSpeakerArrangement::speakers)>;
constexpr int kPrecisionCount = 2; // single and double

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

CAudioWrapperVST::~CAudioWrapperVST() = default;

CError CAudioWrapperVST::init()
{
    QEL_TRY(CAudioWrapper::init(), {});
    readHost();
    describeEffect();
    const AEffect& effect = *getAeffect();
    setDefaultLayout(effect.numInputs, effect.numOutputs);
    accumulated_.resize(static_cast<std::size_t>(effect.numOutputs) * kMaxSlice);
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
    setUniqueID(getPluginCode());
    setVersion(getVendorVersion());
    setNumPrograms(getRegistry().getProgramCount());
    setNumParams(getExtParams().getCount());
    programsAreChunks(true);
    canProcessReplacing(true);
    canDoubleReplacing(true);
    const std::int32_t channels = isMultiChannel_ ? getInternalChannelCount() : kStereo;
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
    const AEffect& effect = *getAeffect();
    CAudioHostSetup setup;
    setup.sampleRateHz = getSampleRate();
    setup.blockSize = getBlockSize();
    setup.inputCount = inputArrangement_ ? inputArrangement_->numChannels : effect.numInputs;
    setup.outputCount = outputArrangement_ ? outputArrangement_->numChannels : effect.numOutputs;
    CAudioWrapper::resume(setup);
    setInitialDelay(getLatencySamples());
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

// In pieces that the buffer holds; results do not depend on the length of blocks.
void CAudioWrapperVST::process(float** inputs, float** outputs, std::int32_t frames)
{
    const auto section = enterHostSection();
    for (std::int32_t start = 0; start < frames; start += kMaxSlice) {
        accumulatePiece(inputs, outputs, start, std::min(kMaxSlice, frames - start));
    }
}

void CAudioWrapperVST::accumulatePiece(float** inputs, float** outputs, std::int32_t start,
                                       std::int32_t count)
{
    const void* in[kMaxChannels] = {};
    void* out[kMaxChannels] = {};
    const std::int32_t inputCount = std::min(getAeffect()->numInputs, kMaxChannels);
    const std::int32_t outputCount = std::min(getAeffect()->numOutputs, kMaxChannels);
    for (std::int32_t i = 0; inputs && i < inputCount; ++i) {
        in[i] = inputs[i] ? inputs[i] + start : nullptr;
    }
    // An output that the arrangement has not is not written.
    std::fill(accumulated_.begin(), accumulated_.end(), 0.0f);
    for (std::int32_t i = 0; i < outputCount; ++i) {
        out[i] = accumulated_.data() + std::ptrdiff_t{i} * kMaxSlice;
    }
    processHostBlock(in, out, count, false);
    for (std::int32_t i = 0; outputs && i < outputCount; ++i) {
        const float* from = accumulated_.data() + std::ptrdiff_t{i} * kMaxSlice;
        if (float* to = outputs[i] ? outputs[i] + start : nullptr) {
            std::transform(from, from + count, to, to, std::plus<float>());
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

// The host reads the delay when it hears of the change.
void CAudioWrapperVST::ioChanged()
{
    setInitialDelay(getLatencySamples());
    AudioEffectX::ioChanged();
}

// --- channels and samples

CAudioWrapperVST::ArrangementPtr CAudioWrapperVST::copyOf(const VstSpeakerArrangement& arrangement,
                                                          std::int32_t maxChannels)
{
    auto copy = std::make_unique<VstSpeakerArrangement>();
    copy->type = arrangement.type;
    copy->numChannels = std::clamp(arrangement.numChannels, 0, std::min(maxChannels, kDeclaredSpeakers));
    std::copy_n(arrangement.speakers, copy->numChannels, copy->speakers);
    return copy;
}

bool CAudioWrapperVST::setSpeakerArrangement(const VstSpeakerArrangement* input,
                                             const VstSpeakerArrangement* output)
{
    ArrangementPtr newInput = copyOf(*input, getAeffect()->numInputs);
    ArrangementPtr newOutput = copyOf(*output, getAeffect()->numOutputs);
    const CLock lock(getEnv().getLock());
    inputArrangement_ = std::move(newInput);
    outputArrangement_ = std::move(newOutput);
    nameInputs(*inputArrangement_);
    requestRestart();
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
    const bool hasBoth = inputArrangement_ && outputArrangement_;
    *input = hasBoth ? inputArrangement_.get() : nullptr;
    *output = hasBoth ? outputArrangement_.get() : nullptr;
    return hasBoth;
}

bool CAudioWrapperVST::setProcessPrecision(std::int32_t precision)
{
    return precision >= 0 && precision < kPrecisionCount;
}

} // namespace qel
