// The first half of the binary interface as virtual calls: what every effect has had from the start.
#include "AudioEffect.h"

#include <atomic>
#include <limits>

using namespace vst24;

namespace {

constexpr float kLowestRateHz = 1.0f;
constexpr float kHighestRateHz = 1e7f;

AudioEffect* effectOf(AEffect* effect)
{
    return effect ? static_cast<AudioEffect*>(effect->object) : nullptr;
}

std::intptr_t dispatchCall(AEffect* effect, std::int32_t opcode, std::int32_t index, std::intptr_t value,
                           void* ptr, float opt)
{
    AudioEffect* self = effectOf(effect);
    if (!self) {
        return 0;
    }
    if (opcode == kClose) {
        self->close();
        delete self;
        return 1;
    }
    return self->dispatch(opcode, index, value, ptr, opt);
}

void processCall(AEffect* effect, float** inputs, float** outputs, std::int32_t frames)
{
    AudioEffect* self = effectOf(effect);
    if (self && frames > 0) {
        self->process(inputs, outputs, frames);
    }
}

void processReplacingCall(AEffect* effect, float** inputs, float** outputs, std::int32_t frames)
{
    AudioEffect* self = effectOf(effect);
    if (self && frames > 0) {
        self->processReplacing(inputs, outputs, frames);
    }
}

void processDoubleReplacingCall(AEffect* effect, double** inputs, double** outputs, std::int32_t frames)
{
    AudioEffect* self = effectOf(effect);
    if (self && frames > 0) {
        self->processDoubleReplacing(inputs, outputs, frames);
    }
}

void setParameterCall(AEffect* effect, std::int32_t index, float value)
{
    if (AudioEffect* self = effectOf(effect)) {
        self->setParameter(index, value);
    }
}

float getParameterCall(AEffect* effect, std::int32_t index)
{
    AudioEffect* self = effectOf(effect);
    return self ? self->getParameter(index) : 0.0f;
}

} // namespace

AudioEffect::AudioEffect(AudioMasterCallback audioMaster, std::int32_t numPrograms, std::int32_t numParams)
    : audioMaster_(audioMaster)
{
    effect_.magic = kMagic;
    effect_.dispatcher = &dispatchCall;
    effect_.process = &processCall;
    effect_.setParameter = &setParameterCall;
    effect_.getParameter = &getParameterCall;
    effect_.processReplacing = &processReplacingCall;
    effect_.processDoubleReplacing = &processDoubleReplacingCall;
    effect_.numPrograms = numPrograms;
    effect_.numParams = numParams;
    effect_.ioRatio = 1.0f;
    effect_.version = 1;
    effect_.object = this;
}

AudioEffect::~AudioEffect() = default;

// A rate that is no rate would stop all clocks, and one beyond anything audible overflow the lengths made
// from it; the host is taken at its earlier word.
void AudioEffect::setSampleRate(float rateHz)
{
    if (rateHz >= kLowestRateHz && rateHz <= kHighestRateHz) {
        sampleRateHz_ = rateHz;
    }
}

void AudioEffect::setBlockSize(std::int32_t frames)
{
    if (frames > 0) {
        blockSize_ = frames;
    }
}

std::intptr_t AudioEffect::getChunk(void** data, bool)
{
    *data = nullptr;
    return 0;
}

bool AudioEffect::setChunk(const void*, std::intptr_t, bool)
{
    return false;
}

std::int32_t AudioEffect::toIndex(std::intptr_t value)
{
    const bool fits = value >= 0 && value <= std::numeric_limits<std::int32_t>::max();
    return fits ? static_cast<std::int32_t>(value) : -1;
}

std::intptr_t AudioEffect::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                    float opt)
{
    char* const text = static_cast<char*>(ptr);
    switch (opcode) {
    case kOpen:
        open();
        return 0;
    case kSetProgram:
        setProgram(toIndex(value));
        return 0;
    case kGetProgram:
        return getProgram();
    case kSetSampleRate:
        setSampleRate(opt);
        return 0;
    case kSetBlockSize:
        setBlockSize(toIndex(value));
        return 0;
    case kMainsChanged:
        value ? resume() : suspend();
        return 0;
    case kEffectIdentify:
        return kIdentify;
    case kEditClose:
    case kEditIdle:
        return dispatchEdit(opcode, ptr);
    default:
        break;
    }
    if (!ptr) {
        return 0;
    }
    switch (opcode) {
    case kSetProgramName:
        setProgramName(text);
        return 0;
    case kGetProgramName:
        getProgramName(text);
        return 0;
    case kGetParamLabel:
        getParameterLabel(index, text);
        return 0;
    case kGetParamDisplay:
        getParameterDisplay(index, text);
        return 0;
    case kGetParamName:
        getParameterName(index, text);
        return 0;
    case kGetChunk:
        return getChunk(static_cast<void**>(ptr), index != 0);
    case kSetChunk:
        return setChunk(ptr, value, index != 0);
    case kEditGetRect:
    case kEditOpen:
        return dispatchEdit(opcode, ptr);
    default:
        return 0;
    }
}

std::intptr_t AudioEffect::dispatchEdit(std::int32_t opcode, void* ptr)
{
    if (!editor_) {
        return 0;
    }
    switch (opcode) {
    case kEditGetRect:
        return ptr && editor_->getRect(static_cast<ERect**>(ptr));
    case kEditOpen:
        return ptr && editor_->open(ptr);
    case kEditClose:
        editor_->close();
        return 0;
    default:
        editor_->idle();
        return 0;
    }
}

void AudioEffect::setInitialDelay(std::int32_t samples)
{
    std::atomic_ref(effect_.initialDelay).store(samples, std::memory_order_relaxed);
}

void AudioEffect::setEditor(std::unique_ptr<AEffEditor> editor)
{
    editor_ = std::move(editor);
    setFlag(kHasEditor, editor_ != nullptr);
}

void AudioEffect::setFlag(std::int32_t flag, bool isSet)
{
    effect_.flags = isSet ? effect_.flags | flag : effect_.flags & ~flag;
}

std::intptr_t AudioEffect::callHost(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                    float opt)
{
    return audioMaster_ ? audioMaster_(&effect_, opcode, index, value, ptr, opt) : 0;
}

void AudioEffect::setParameterAutomated(std::int32_t index, float value)
{
    callHost(kMasterAutomate, index, 0, nullptr, value);
}

std::int32_t AudioEffect::getMasterVersion()
{
    return static_cast<std::int32_t>(callHost(kMasterVersion));
}
