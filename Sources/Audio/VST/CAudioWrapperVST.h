// One plug-in instance behind the VST 2.4 interface.
#pragma once

#include "AudioEffectX.h"
#include "CAudioWrapper.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace qel {

// Turns the calls of a VST host into work of the wrapper, and the wrapper's requests into calls to the host.
// Made by createEffect(), owned by the host, which ends it with `close`.
//
// setParameter() and getParameter() come in any thread, processing and events in the audio thread, all else
// in the host's control thread. What a host sends is outside data: indices are checked, texts are read and
// written within the interface's limits. After a failed init() the object can only be destroyed.
class CAudioWrapperVST : public AudioEffectX, public CAudioWrapper
{
public:
    explicit CAudioWrapperVST(AudioMasterCallback audioMaster);
    ~CAudioWrapperVST() override;

    CError init() override;

    // --- processing starts and stops
    void suspend() override;
    void resume() override;
    void setSampleRate(float rateHz) override;

    // --- audio thread
    // The samples are as wide as the call says, whatever setProcessPrecision() was told: a host that
    // announces one width and calls for the other must not have its buffers overrun.
    void processReplacing(float** inputs, float** outputs, std::int32_t frames) override;
    void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) override;
    // Always single precision: it was obsolete before there was another.
    void process(float** inputs, float** outputs, std::int32_t frames) override;
    bool processEvents(const VstEvents* events) override;

    // --- parameters
    void setParameter(std::int32_t index, float value) override;
    float getParameter(std::int32_t index) override;
    void getParameterLabel(std::int32_t index, char* text) override;
    void getParameterDisplay(std::int32_t index, char* text) override;
    void getParameterName(std::int32_t index, char* text) override;
    bool string2parameter(std::int32_t index, const char* text) override;
    bool getParameterProperties(std::int32_t index, VstParameterProperties* properties) override;

    // --- programs and state
    std::int32_t getProgram() override;
    void setProgram(std::int32_t program) override;
    void setProgramName(const char* text) override;
    void getProgramName(char* text) override;
    bool getProgramNameIndexed(std::int32_t category, std::int32_t index, char* text) override;
    std::intptr_t getChunk(void** data, bool isPreset) override;
    bool setChunk(const void* data, std::intptr_t size, bool isPreset) override;

    // --- channels and samples
    bool setSpeakerArrangement(const VstSpeakerArrangement* input,
                               const VstSpeakerArrangement* output) override;
    bool getSpeakerArrangement(VstSpeakerArrangement** input, VstSpeakerArrangement** output) override;
    bool setProcessPrecision(std::int32_t precision) override;
    bool getInputProperties(std::int32_t index, VstPinProperties* properties) override;
    bool getOutputProperties(std::int32_t index, VstPinProperties* properties) override;

    // --- names and abilities
    bool getEffectName(char* text) override;
    bool getVendorString(char* text) override;
    bool getProductString(char* text) override;
    std::int32_t getVendorVersion() override;
    std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, void* ptr, float opt) override;
    std::intptr_t canDo(const char* text) override;
    std::int32_t getPlugCategory() override;

    // --- for the objects of the instance: to the host
    void setParameterAutomated(std::int32_t index, double norm) override;
    void updateDisplay() override;
    void beginEdit(std::int32_t index) override;
    void endEdit(std::int32_t index) override;

protected:
    int hostProcessLevel() override { return getCurrentProcessLevel(); }
    std::optional<double> hostTempo() override;
    void ioChanged() override;
    void setInitialDelay(std::int32_t samples) override { AudioEffectX::setInitialDelay(samples); }
    std::vector<CString> hostChannelLabels() override;

private:
    void readHost();
    void describeEffect();
    void processHostBlock(const void* const* inputs, void* const* outputs, std::int32_t frames,
                          bool isDouble);
    void accumulatePiece(const CAudioHostSetup& setup, float** inputs, float** outputs, std::int32_t start,
                         std::int32_t count);
    std::unique_lock<CCriticalSection> enterHostSection();
    CObject* project() const;
    void nameInputs(const VstSpeakerArrangement& arrangement);
    static VstSpeakerArrangement copyOf(const VstSpeakerArrangement& arrangement, std::int32_t maxChannels);
    static void fillPin(VstPinProperties& pin, std::int32_t index, std::int32_t count, const CString& label);

    // Only for a host that suspends and resumes in overlap with processing; null in all others.
    std::unique_ptr<CCriticalSection> hostSection_;
    CCriticalSection chunkLock_; // guards the next
    CByteBuffer chunkBuffer_;    // the host's until its next getChunk()
    // The next three with CAudioEnv's lock. What the host requested, with no more speakers than there are
    // channels; hosts are given their addresses, which stay.
    std::optional<VstSpeakerArrangement> inputArrangement_;
    std::optional<VstSpeakerArrangement> outputArrangement_;
    std::vector<CString> inputLabels_;
    std::int32_t hostVersion_ = 0;
    CString hostVendor_;
    CString hostProduct_;
    bool isMultiChannel_ = false;
};

// The whole of the library's entry: null if there is no host to talk to or the instance cannot be built,
// which the user is then told.
AEffect* createEffect(AudioMasterCallback audioMaster);

} // namespace qel
