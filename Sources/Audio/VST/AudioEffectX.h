// The second half of the binary interface as virtual calls: what was added up to version 2.4.
#pragma once

#include "AudioEffect.h"

// The rules of AudioEffect hold. Unless stated otherwise calls come in the host's control thread, and a
// default answers that there is no such thing.
class AudioEffectX : public AudioEffect
{
public:
    using AudioEffect::AudioEffect;

    // --- audio thread
    virtual bool processEvents(const VstEvents*) { return false; }

    // --- parameters and programs
    virtual bool canBeAutomated(std::int32_t index);
    // Null: whether the parameter can be set by text.
    virtual bool string2parameter(std::int32_t, const char*) { return false; }
    virtual bool getParameterProperties(std::int32_t, VstParameterProperties*) { return false; }
    virtual bool getProgramNameIndexed(std::int32_t, std::int32_t, char*) { return false; }
    virtual bool beginSetProgram() { return false; }
    virtual bool endSetProgram() { return false; }
    // -1: the chunk that follows cannot be read, 1: it can, 0: not known.
    virtual std::int32_t beginLoadBank(const void*) { return 0; }
    virtual std::int32_t beginLoadProgram(const void*) { return 0; }

    // --- channels and samples
    virtual bool getInputProperties(std::int32_t, VstPinProperties*) { return false; }
    virtual bool getOutputProperties(std::int32_t, VstPinProperties*) { return false; }
    virtual bool setSpeakerArrangement(const VstSpeakerArrangement*, const VstSpeakerArrangement*)
    {
        return false;
    }
    // On success the records stay the effect's own.
    virtual bool getSpeakerArrangement(VstSpeakerArrangement** input, VstSpeakerArrangement** output);
    virtual bool setProcessPrecision(std::int32_t) { return false; }
    virtual bool setBypass(bool) { return false; }
    // Length of the tail after the input, in samples; 0: the host decides, 1: none.
    virtual std::int32_t getTailSize() { return 0; }
    virtual std::int32_t startProcess() { return 0; }
    virtual std::int32_t stopProcess() { return 0; }

    // --- names and abilities
    virtual bool getEffectName(char*) { return false; }
    virtual bool getVendorString(char*) { return false; }
    virtual bool getProductString(char*) { return false; }
    virtual std::int32_t getVendorVersion() { return 0; }
    virtual std::intptr_t vendorSpecific(std::int32_t, std::intptr_t, void*, float) { return 0; }
    virtual std::intptr_t canDo(const char*) { return 0; }
    virtual std::int32_t getPlugCategory() { return 0; }
    virtual std::int32_t getVstVersion() { return vst24::kVersion; }
    virtual std::int32_t getNumMidiInputChannels() { return 0; }
    virtual std::int32_t getNumMidiOutputChannels() { return 0; }

    std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                           float opt) override;

protected:
    void canDoubleReplacing(bool can) { setFlag(vst24::kCanDoubleReplace, can); }

    // --- calls to the host
    static constexpr std::size_t kHostTextBytes = 65;

    // Empty if the host does not answer.
    using HostText = char[kHostTextBytes];
    void getHostProductString(HostText& text) { getHostText(vst24::kMasterGetProductString, text); }
    void getHostVendorString(HostText& text) { getHostText(vst24::kMasterGetVendorString, text); }
    std::int32_t getCurrentProcessLevel();
    // Null if the host has none. The record is the host's and changes with the next call.
    const VstTimeInfo* getTimeInfo(std::int32_t wantedFlags);
    bool ioChanged() { return callHost(vst24::kMasterIOChanged) != 0; }
    bool updateDisplay() { return callHost(vst24::kMasterUpdateDisplay) != 0; }
    bool beginEdit(std::int32_t index) { return callHost(vst24::kMasterBeginEdit, index) != 0; }
    bool endEdit(std::int32_t index) { return callHost(vst24::kMasterEndEdit, index) != 0; }

private:
    std::intptr_t dispatchParameters(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                     bool& isHandled);
    std::intptr_t dispatchChannels(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                   bool& isHandled);
    std::intptr_t dispatchNames(std::int32_t opcode, std::int32_t index, std::intptr_t value, void* ptr,
                                float opt, bool& isHandled);
    std::intptr_t dispatchKeys(std::int32_t opcode, std::int32_t index, std::intptr_t value, float opt);
    void getHostText(std::int32_t opcode, HostText& text);
};
