// The host-independent half of one plug-in instance.
#pragma once

#include "CApplicationData.h"
#include "CAudioExtParamHostBridge.h"
#include "CAudioGraph.h"
#include "CAudioHostMailbox.h"
#include "CAudioHostState.h"
#include "CAudioHostStream.h"
#include "CAudioParamListener.h"
#include "CAudioProcessTree.h"
#include "CObject.h"
#include "CPluginIdentity.h"

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace qel {

class CAudioCCTable;
class CAudioEnv;
class CAudioExtParamList;
class CAudioGlobalParam;
class CAudioInterfaceBase;
class CAudioParam;
class CAudioParamCollector;
class CAudioParamRegistry;
class CAudioProcessDef;
class CAudioProcessDefBase;
class CAudioVizCollector;
class CDCDAWContextObject;

// Builds the instance's object tree from the template `plugin`, finds what it needs by fixed names, creates
// the main and the output process, and turns a host's blocks, state chunks and calls into work on them. A
// host layer derives from it and overrides the host services; nothing here knows a host interface.
//
// Call order: init(), finishInit(), then anything in any order, for that is how hosts call. No structure
// belongs to two threads: the graph is the audio thread's alone from finishInit() on, and what control
// threads want of it (rate, channels, a reset) lies in a mailbox that it empties at its next block. Destroyed
// in the order: links, output process, main process, tree. A failed init() leaves an object that can only be
// destroyed.
class CAudioWrapper : public CAudioExtParamHostBridge
{
public:
    CAudioWrapper();
    ~CAudioWrapper() override;
    CAudioWrapper(const CAudioWrapper&) = delete;
    CAudioWrapper& operator=(const CAudioWrapper&) = delete;

    // --- control threads

    // Everything that can fail, in its order.
    virtual CError init();
    // What follows when the host layer knows its channel counts; the parameters begin with the first program.
    CError finishInit();
    // Processing starts: takes the host's rate and channel counts and tells it the latency. The stream starts
    // afresh if the channels have changed.
    void resume(const CAudioHostSetup& setup);
    // Processing stops: whatever rings ends here.
    void suspend();
    // A new rate, with or without a pause.
    void setSampleRate(double rateHz);

    CError saveChunk(CByteBuffer& outBuffer, bool isPreset, bool withHeader);
    CError loadChunk(std::span<const std::uint8_t> data, bool isPreset, bool hasHeader);
    CError activateProgram(std::int32_t index);
    void renameProgram(const CString& name) { state_->renameProgram(name); }

    // Gives the host's names to the input channels: a step that can be undone.
    void importChannelLabels() override;

    // --- audio thread: no locks, no allocation

    void processBlock(const CAudioHostBlock& block);

    // --- any thread

    const CPluginIdentity& getIdentity() const { return identity_; }
    // As the audio side has it, or will have it when it has taken what is set now.
    std::int32_t getLatencySamples() const;
    CObject* getRoot() const { return root_; }
    CAudioExtParamList& getExtParams() const { return *extParams_; }
    CAudioParamRegistry& getRegistry() const { return *registry_; }
    CAudioParamCollector& getParams() const { return *params_; }
    CAudioGraph& getGraph() const { return *graph_; }

protected:
    // --- services of the host layer

    // 4: offline; anything else: not. Audio thread.
    virtual int hostProcessLevel() { return 0; }
    // Beats a minute, where the host knows. Audio thread.
    virtual std::optional<double> hostTempo() { return std::nullopt; }
    // The latency has changed. Audio or control thread, with no lock held.
    virtual void ioChanged() {}
    // The latency to report, before processing starts.
    virtual void setInitialDelay(std::int32_t samples) { (void)samples; }
    virtual std::vector<CString> hostChannelLabels() { return {}; }
    // The program has changed by itself: the host's lists are out of date.
    virtual void programChanged() { updateDisplay(); }
    // A MIDI message of the host; `status` is 8 to 15, the time counts from the start of the next block.
    // Audio thread.
    virtual void onMidi(int status, int channel, int data1, int data2, double timeSec)
    {
        (void)status, (void)channel, (void)data1, (void)data2, (void)timeSec;
    }

    // --- for the host layer

    CAudioEnv& getEnv() const { return *env_; }
    // The channels that hold until resume() says otherwise, since hosts process before it. After init().
    void setDefaultLayout(int inputCount, int outputCount);
    // The host has announced these counts: where they are lower than those in use they count at once, since
    // it may hand over no more pointers than that; the rest, and a fresh start, comes with the next resume().
    // From here on no more are in use, whatever resume() was told before.
    void announceLayout(int inputCount, int outputCount);
    bool isHostActivating() const { return state_->isActivating(); }
    // Audio thread: takes up what control threads have ordered, and gives what holds for this block.
    const CAudioHostSetup& beginBlock();

private:
    enum HostParam
    {
        kOversampling,
        kOversamplingMode,
        kOffline,
        kLatencyChange,
        kBpm,
        kBypass,
        kHostParamCount
    };
    static constexpr int kMaxOversamplingLevel = 3;

    CError initProject();
    CError findObjects();
    void findHostParams();
    CError buildProcesses();
    void findLatencies();
    void bindGlobalParams();
    void followOversamplingLevel(CBridge* sender, std::uintptr_t userWord);
    void tellEnvironment();
    void prepareGraph();
    void provideMemory();
    // Changes what the audio thread will find in the mailbox, and leaves it there.
    template <class Change>
    void order(Change&& change);
    CAudioHostSetup clamped(const CAudioHostSetup& setup) const;

    std::int32_t expectedLatencySamples() const;
    void foreseeLatency();
    void onParamChange(const CAudioParamNotice& notice);

    void updateProcessLevel();
    void updateTempo();
    void updateLatency();

    CObject* root_ = nullptr;
    CObject* plugin_ = nullptr;
    CPluginIdentity identity_;
    bool hasSidechain_ = false;
    CDCDAWContextObject* context_ = nullptr;
    CAudioEnv* env_ = nullptr;
    CAudioParamCollector* params_ = nullptr;
    CAudioVizCollector* viz_ = nullptr;
    CAudioInterfaceBase* interfaceBase_ = nullptr;
    CAudioExtParamList* extParams_ = nullptr;
    CAudioCCTable* ccTable_ = nullptr;
    CAudioParamRegistry* registry_ = nullptr;
    const CAudioProcessDef* mainDef_ = nullptr;
    const CAudioProcessDefBase* outputDef_ = nullptr;
    CAudioParam* hostParams_[kHostParamCount] = {};
    CAudioParam* routing_ = nullptr;
    CAudioParam* grouping_ = nullptr;
    std::unique_ptr<CAudioHostState> state_;

    // The audio thread's from finishInit() on.
    std::unique_ptr<CAudioGraph> graph_;
    CAudioProcessTree main_;
    CAudioProcessTree output_;
    std::unique_ptr<CAudioHostStream> stream_;
    CAudioHostMailbox::Order active_;
    int lastProcessLevel_ = 0;
    double lastBpm_ = -1.0;
    bool isOfflinePosted_ = true; // false: the change has still to be made
    std::int32_t foundLatency_ = 0;

    CCriticalSection prepareLock_; // guards the next; before the lock of a parameter
    std::uint32_t preparedGroups_ = 1;
    int preparedChannels_ = 2; // what every instance has memory for
    std::atomic<bool> hasMemory_{false};

    CAudioHostMailbox mailbox_;
    // The next three under the environment's lock.
    CAudioHostMailbox::Order ordered_;
    int mostInputs_ = kMaxChannels; // as announced
    int mostOutputs_ = kMaxChannels;
    // In samples of the host, by the number of times that the rate is doubled.
    double latencies_[kMaxOversamplingLevel + 1] = {};

    // Last: they end first.
    std::vector<std::unique_ptr<CAudioGlobalParam>> globalParams_;
    CApplicationDataBridge<CAudioWrapper> levelBridge_{*this, &CAudioWrapper::followOversamplingLevel};
    COwnedParamListener<CAudioWrapper> paramListener_{*this, &CAudioWrapper::onParamChange};
};

} // namespace qel
