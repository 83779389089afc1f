// The directory of an instance's parameters, and the road of their changes to the audio thread.
#pragma once

#include "CAudioEnv.h"
#include "CAudioParam.h"
#include "CAudioParamEventPool.h"
#include "CAudioParamRegistryBase.h"
#include "CBridge.h"
#include "CObject.h"

#include <atomic>
#include <map>
#include <memory>
#include <vector>

namespace qel {

// Tag audio:param-collector; one per instance, owned by its tree. Attribute: env, path of the CAudioEnv.
// Listeners (CAudioParamListener) attach to it as to any source. Processes and registries let go of it before
// it is released.
//
// A change made by a control thread joins the pending batch, which hangs on one atomic pointer. Control
// threads, serialised by the lock of CAudioEnv, take it out, add to it and put it back; the audio thread only
// ever exchanges it for null. So a batch arrives whole, a change that misses one processing call makes the
// next, and the audio thread waits for nobody. What it is done with goes back through lock-free lists.
class CAudioParamCollector : public CObject, public CBridgeBase
{
public:
    static void buildClassInfo(CClassInfo& info);

    CAudioParamCollector();
    ~CAudioParamCollector() override;

    CError init() override;
    void release() override;

    CAudioEnv& getEnv() const { return *env_; }

    // --- any thread but the audio thread

    // Guards the maps and the list of registries. Taken before a parameter's lock.
    CCriticalSection& getLock() { return lock_; }
    // The parameter of this name, made without info on first use. Follows no remaps.
    CAudioParam& getParam(const CString& fullName);
    // The same behind all remaps. A circle of remaps ends where it began.
    CAudioParam& resolveParam(const CString& fullName);
    CString resolveName(const CString& fullName);
    // Redirects one full name to another.
    void addRemap(const CString& original, const CString& target);
    // True if the name leads to another one.
    bool isRemapped(const CString& fullName);

    // Registries are fixed by the time of finalize(). `name` is the full name of the registry object or its
    // last part.
    void addRegistry(CAudioParamRegistryBase& registry);
    void removeRegistry(CAudioParamRegistryBase& registry);
    CAudioParamRegistryBase* getRegistry(const CString& name);
    // Offers every parameter to the registries, the most specific first, and tells them that this was all.
    // Later parameters are offered as they are made. Runs once; to be called when the processes stand, before
    // the first processing call.
    void finalize();

    // Between the two an instance is built: nobody is told of changes, and values reach the audio side all at
    // once when building ends, before it runs.
    void beginBuilding() { isBuilding_ = true; }
    void endBuilding();

    // A batch for CAudioParamContext::batch. It must come back through submitBatch() or dropBatch().
    CAudioParamBatch& newBatch();
    // Hands a batch over as a whole.
    void submitBatch(CAudioParamBatch& batch);
    // Takes it back: the audio side sees nothing of it.
    void dropBatch(CAudioParamBatch& batch);

    // Takes over into the parameters what the audio thread has set with changeFromAudio(), and tells the
    // listeners. Called now and then by the UI's timer and before presets are saved.
    void takeChangesFromAudio();

    // --- audio thread: no locks, no allocation; work in proportion to the parameters that changed

    // At the start of each processing call, with CAudioEnv's flag up: brings the audio side's own values up
    // to the end of the call before, then takes the pending batch, dates its events with `timeOffsetSec`
    // and hands them to the bound slots.
    void applyPending(double timeOffsetSec);
    // Sets group 0, entry 0 of a single-number parameter from the audio thread: at once for the slots, and
    // for control threads when they next ask. False if it must be tried again in the next call.
    bool changeFromAudio(CAudioParam& param, double value, double timeSec);
    // The same for the slots alone: for filters, whose work a control thread does again in its own time.
    bool sendFromAudio(CAudioParam& param, double value, double timeSec);
    CAudioParamEventPool& eventPool() { return pool_; }
    // Another number whenever a change has come in for the slots.
    std::uint64_t arrivals() const { return arrivals_; }

    // --- for CAudioParam and CAudioParamContext

    // From release() on nothing changes any more.
    bool isReleased() const { return isReleased_.load(std::memory_order_acquire); }
    // The end of a change's way on the control side: into the context's batch, or the pending one.
    void postChange(CAudioParam& param, const CAudioParamChange& change, CAudioParamBatch* batch);
    // Makes `storage` the audio side's own of this parameter.
    void postReplacement(CAudioParam& param, std::unique_ptr<CAudioParamStorage> storage);
    // Tells registries and listeners.
    void deliver(const CAudioParamNotice& notice);

private:
    // Dotted paths begin alike and end otherwise.
    struct NameOrder
    {
        bool operator()(const CString& a, const CString& b) const;
    };
    template <class T>
    using NameMap = std::map<CString, T, NameOrder>;

    void offer(CAudioParam& param);
    std::vector<CAudioParam*> allParams();
    void postEvent(CAudioParamEvent& event, CAudioParamBatch* batch);
    void putPending(CAudioParamBatch& batch) { pending_.store(&batch, std::memory_order_release); }
    void receive(CAudioParamEvent& event);

    CString envPath_;
    CAudioEnv* env_ = nullptr;
    CAudioParamEventPool pool_; // outlives the parameters, whose events and strings go back to it
    CCriticalSection lock_;
    NameMap<std::unique_ptr<CAudioParam>> params_;
    NameMap<CString> remaps_;
    std::vector<CAudioParamRegistryBase*> registries_; // longest hierarchy first
    bool isFinalized_ = false;
    std::atomic<bool> isBuilding_{false}; // set while the audio side stands still
    std::atomic<bool> isReleased_{false};
    // Of its own and taken last, since a writer may hold a parameter when a notice goes out: guards which
    // registries have which parameter.
    CCriticalSection audienceLock_;

    std::atomic<CAudioParamBatch*> pending_{nullptr};
    std::atomic<bool> hasChangesFromAudio_{false};

    // The audio thread's own.
    CAudioParam* firstChanged_ = nullptr;
    std::uint32_t generation_ = 1;
    std::uint64_t arrivals_ = 0;
};

} // namespace qel
