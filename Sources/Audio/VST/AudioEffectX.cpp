// The second half of the binary interface as virtual calls: what was added up to version 2.4.
#include "AudioEffectX.h"

#include <cmath>
#include <cstring>

using namespace vst24;

bool AudioEffectX::canBeAutomated(std::int32_t index)
{
    return index >= 0 && index < getAeffect()->numParams;
}

bool AudioEffectX::getSpeakerArrangement(VstSpeakerArrangement** input, VstSpeakerArrangement** output)
{
    *input = nullptr;
    *output = nullptr;
    return false;
}

std::intptr_t AudioEffectX::dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                     float opt)
{
    bool isHandled = true;
    std::intptr_t answer = dispatchParameters(opcode, index, value, ptr, isHandled);
    if (!isHandled) {
        answer = dispatchChannels(opcode, index, value, ptr, isHandled = true);
    }
    if (!isHandled) {
        answer = dispatchNames(opcode, index, value, ptr, opt, isHandled = true);
    }
    return isHandled ? answer : AudioEffect::dispatch(opcode, index, value, ptr, opt);
}

std::intptr_t AudioEffectX::dispatchParameters(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                               void* ptr, bool& isHandled)
{
    char* const text = static_cast<char*>(ptr);
    switch (opcode) {
    case kProcessEvents:
        return ptr && processEvents(static_cast<const VstEvents*>(ptr));
    case kCanBeAutomated:
        return canBeAutomated(index);
    case kString2Parameter:
        return string2parameter(index, text);
    case kGetProgramNameIndexed:
        return text && getProgramNameIndexed(toIndex(value), index, text);
    case kGetParameterProperties:
        return ptr && getParameterProperties(index, static_cast<VstParameterProperties*>(ptr));
    case kBeginSetProgram:
        return beginSetProgram();
    case kEndSetProgram:
        return endSetProgram();
    case kBeginLoadBank:
        return ptr ? beginLoadBank(ptr) : 0;
    case kBeginLoadProgram:
        return ptr ? beginLoadProgram(ptr) : 0;
    default:
        isHandled = false;
        return 0;
    }
}

std::intptr_t AudioEffectX::dispatchChannels(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                             void* ptr, bool& isHandled)
{
    void* const second = reinterpret_cast<void*>(value);
    switch (opcode) {
    case kGetInputProperties:
        return ptr && getInputProperties(index, static_cast<VstPinProperties*>(ptr));
    case kGetOutputProperties:
        return ptr && getOutputProperties(index, static_cast<VstPinProperties*>(ptr));
    case kSetSpeakerArrangement:
        return second && ptr &&
               setSpeakerArrangement(static_cast<const VstSpeakerArrangement*>(second),
                                     static_cast<const VstSpeakerArrangement*>(ptr));
    case kGetSpeakerArrangement:
        return second && ptr &&
               getSpeakerArrangement(static_cast<VstSpeakerArrangement**>(second),
                                     static_cast<VstSpeakerArrangement**>(ptr));
    case kSetProcessPrecision:
        return setProcessPrecision(toIndex(value));
    case kSetBypass:
        return setBypass(value != 0);
    case kGetTailSize:
        return getTailSize();
    case kStartProcess:
        return startProcess();
    case kStopProcess:
        return stopProcess();
    default:
        isHandled = false;
        return 0;
    }
}

std::intptr_t AudioEffectX::dispatchNames(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                          void* ptr, float opt, bool& isHandled)
{
    char* const text = static_cast<char*>(ptr);
    switch (opcode) {
    case kGetEffectName:
        return text && getEffectName(text);
    case kGetVendorString:
        return text && getVendorString(text);
    case kGetProductString:
        return text && getProductString(text);
    case kGetVendorVersion:
        return getVendorVersion();
    case kVendorSpecific:
        return vendorSpecific(index, value, ptr, opt);
    case kCanDo:
        return text ? canDo(text) : 0;
    case kGetPlugCategory:
        return getPlugCategory();
    case kGetVstVersion:
        return getVstVersion();
    case kGetNumMidiInputChannels:
        return getNumMidiInputChannels();
    case kGetNumMidiOutputChannels:
        return getNumMidiOutputChannels();
    case kEditKeyDown:
    case kEditKeyUp:
    case kSetEditKnobMode:
        return dispatchKeys(opcode, index, value, opt);
    default:
        isHandled = false;
        return 0;
    }
}

std::intptr_t AudioEffectX::dispatchKeys(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                         float opt)
{
    AEffEditor* editor = getEditor();
    if (!editor) {
        return 0;
    }
    if (opcode == kSetEditKnobMode) {
        return editor->setKnobMode(toIndex(value));
    }
    VstKeyCode key;
    key.character = index;
    key.virtualKey = static_cast<std::uint8_t>(value);
    key.modifiers = opt >= 0.0f && opt <= 255.0f ? static_cast<std::uint8_t>(opt) : std::uint8_t{0};
    return opcode == kEditKeyDown ? editor->onKeyDown(key) : editor->onKeyUp(key);
}

void AudioEffectX::getHostText(std::int32_t opcode, HostText& text)
{
    std::memset(text, 0, sizeof(text));
    if (!callHost(opcode, 0, 0, text)) {
        text[0] = 0;
    }
    text[sizeof(text) - 1] = 0;
}

std::int32_t AudioEffectX::getCurrentProcessLevel()
{
    return static_cast<std::int32_t>(callHost(kMasterGetCurrentProcessLevel));
}

const VstTimeInfo* AudioEffectX::getTimeInfo(std::int32_t wantedFlags)
{
    return reinterpret_cast<const VstTimeInfo*>(callHost(kMasterGetTime, 0, wantedFlags));
}
