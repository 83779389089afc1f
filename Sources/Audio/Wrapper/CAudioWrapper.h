// The host-independent half of one plug-in instance.
#pragma once

#include "CAudioExtParamHostBridge.h"
#include "CAudioGraph.h"
#include "CAudioHostBlock.h"
#include "CAudioProcessTree.h"
#include "CBridge.h"
#include "CByteBuffer.h"
#include "CCriticalSection.h"
#include "CError.h"
#include "CObject.h"

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace qel {

class CAudioCCTable;
class CAudioEnv;
class CAudioExtParam;
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
class CModOutput;

// Builds the instance's object tree from the template `plugin`, finds what it needs by fixed names, creates
// the main and the output process, and turns a host's blocks, state chunks and calls into work on them. A
// host layer derives from it and overrides the host services; nothing here knows a host interface.
//
// Call order: init(), finishInit(), then resume() before and suspend() after audio. Destroyed in the order:
// links, output process, main process, tree. A failed init() leaves an object that can only be destroyed.
class CAudioWrapper : public CAudioExtParamHostBridge
{
public:
    // Longest piece of a block that goes through the graph at once, in samples.
    static constexpr int kMaxSlice = 512;

    CAudioWrapper();
    ~CAudioWrapper() override;
    CAudioWrapper(const CAudioWrapper&) = delete;
    CAudioWrapper& operator=(const CAudioWrapper&) = delete;

    // --- the host's control thread

    // Everything that can fail, in its order.
    virtual CError init();
    // What follows when the host layer knows its channel counts; the parameters begin with the first program.
    CError finishInit();
    // Processing starts: takes the host's rate and channel counts and tells it the latency.
    void resume(const CAudioHostSetup& setup);
    // Processing stops: whatever rings ends here.
    void suspend();
    // Brings the links between the processes in line with pending changes of channels and rate.
    void updateProcessConfig();

    // State: with a header, 16 zero bytes; then a compressed chunk, "aprs" for the current program, "abnk"
    // for all.
    CError saveChunk(CByteBuffer& outBuffer, bool isPreset, bool withHeader);
    // With a header and no more than that, does nothing. A faulty chunk changes nothing.
    CError loadChunk(std::span<const std::uint8_t> data, bool isPreset, bool hasHeader);

    // The host's programs: this wrapper, as the sender, is not told of what it does itself.
    CError activateProgram(std::int32_t index);
    void renameProgram(const CString& name);

    // Gives the host's names to the input channels: a step that can be undone.
    void importChannelLabels() override;

    // --- audio thread: no locks, no allocation once warm

    void processBlock(const CAudioHostBlock& block);

    // --- any thread

    const CString& getPluginName() const { return pluginName_; }
    const CString& getVendor() const { return vendor_; }
    std::int32_t getPluginCode() const { return pluginCode_; }
    struct Version
    {
        std::int32_t major = 0;
        std::int32_t minor = 0;
        std::int32_t patch = 0;
    };
    const Version& getVersion() const { return version_; }
    std::int32_t getLatencySamples() const;
    CObject* getRoot() const { return root_; }
    CAudioExtParamList& getExtParams() const { return *extParams_; }
    CAudioParamRegistry& getRegistry() const { return *registry_; }
    CAudioParamCollector& getParams() const { return *params_; }
    CAudioGraph& getGraph() const { return *graph_; }
    CAudioProcessBase& getMainProcess() const { return *main_.root(); }
    CAudioCCTable& getCCTable() const { return *ccTable_; }

protected:
    // --- services of the host layer

    // 4: offline; anything else: not. Audio thread.
    virtual int hostProcessLevel() { return 0; }
    // Beats a minute, where the host knows. Audio thread.
    virtual std::optional<double> hostTempo() { return std::nullopt; }
    // Inputs, outputs or latency have changed. Audio thread.
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

    std::int32_t getInternalChannelCount() const { return internalChannelCount_; }
    CAudioEnv& getEnv() const { return *env_; }
    // The channels that hold until resume() says otherwise, since hosts process before it. After init().
    void setDefaultLayout(int inputCount, int outputCount);
    // The next resume() starts the processes afresh.
    void requestRestart();
    // Whether this thread is loading a state or going to a program for the host, which asks for all values
    // afterwards: told of each of them, it would take them for automation.
    bool isHostActivating() const { return activator_.load() == std::this_thread::get_id(); }

private:
    enum HostParam
    {
        kOversamplingMode,
        kOffline,
        kLatencyChange,
        kBpm,
        kBypass,
        kHostParamCount
    };

    // A channel of the host on its way into the graph.
    struct Feed
    {
        CAudioProcessBase* process = nullptr;
        std::unique_ptr<CAudioOutputPort> port;
        std::unique_ptr<CAudioLink> link;
    };

    // Marks the calls in which the host changes the state as a whole.
    class CHostActivation
    {
    public:
        explicit CHostActivation(CAudioWrapper& wrapper);
        CHostActivation(const CHostActivation&) = delete;
        CHostActivation& operator=(const CHostActivation&) = delete;
        ~CHostActivation();

    private:
        CAudioWrapper& wrapper_;
        CLock lock_;
        std::thread::id outer_;
    };

    CError initProject();
    CError acquirePluginCode(const CObject& project);
    CError parseVersion(const CObject& project);
    CError findObjects();
    CError findProcessDefs();
    void findHostParams();
    CError buildProcesses();
    void bindGlobalParams();
    void readOversamplingLevel();
    void connectProcesses();
    void disconnectProcesses();
    void resetProcesses();
    void tellEnvironment();

    void updateProcessLevel();
    void updateTempo();
    void processSlice(const CAudioHostBlock& block, int start, int count);
    void feed(Feed& target, const CAudioHostBlock& block, int firstChannel, int channelCount, int start,
              int count);
    CBufferRef widen(const CAudioHostBlock& block, int channel, int start, int count);
    void updateLatency();
    void onProgramChange(CBridge* sender, std::uintptr_t userWord);
    CError acquireState(CByteBuffer& outBody, bool isPreset);
    CError activateState(const CByteBuffer& body, bool isPreset);

    CObject* root_ = nullptr;
    CObject* plugin_ = nullptr;
    CAudioExtParamList* extParams_ = nullptr;
    CString pluginName_;
    CString vendor_;
    std::int32_t pluginCode_ = 0;
    Version version_;
    std::int32_t internalChannelCount_ = 0;
    std::int32_t groupCount_ = 0;
    bool usesHostBpm_ = false;
    bool hasSidechain_ = false;
    CDCDAWContextObject* context_ = nullptr;
    CAudioEnv* env_ = nullptr;
    CAudioParamCollector* params_ = nullptr;
    CAudioVizCollector* viz_ = nullptr;
    CAudioInterfaceBase* interfaceBase_ = nullptr;
    CAudioCCTable* ccTable_ = nullptr;
    CAudioParamRegistry* registry_ = nullptr;
    const CAudioProcessDef* mainDef_ = nullptr;
    const CAudioProcessDefBase* outputDef_ = nullptr;
    CAudioParam* hostParams_[kHostParamCount] = {};
    std::unique_ptr<CAudioGraph> graph_;
    CAudioProcessTree main_;
    CAudioProcessTree output_;
    CModOutput* outputProcess_ = nullptr;
    Feed mainFeed_;
    Feed sidechainFeed_;
    std::unique_ptr<CAudioLink> outputLink_;
    std::vector<std::unique_ptr<CAudioGlobalParam>> globalParams_;

    CAudioHostSetup setup_;
    int lastProcessLevel_ = 0;
    double lastBpm_ = -1.0;
    bool isOfflinePosted_ = true; // false: the change has still to be made
    bool isIoChanged_ = false;
    bool isRunning_ = false;
    std::atomic<bool> isConfiguring_{false};
    CCriticalSection activationLock_; // taken before all locks of the tree
    std::atomic<std::thread::id> activator_{};
    COwnedBridge<CAudioWrapper> programBridge_{*this, &CAudioWrapper::onProgramChange};
};

} // namespace qel
