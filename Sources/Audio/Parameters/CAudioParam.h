// One parameter of an instance, with its values on both sides.
#pragma once

#include "CAudioParamAudioSide.h"
#include "CAudioParamContext.h"
#include "CAudioParamInfo.h"
#include "CAudioParamStorage.h"
#include "CCriticalSection.h"

#include <atomic>
#include <memory>

namespace qel {

class CAudioParamCollector;
class CAudioParamFilter;
class CAudioParamRegistryBase;

// Made by the collector (getParam()), which owns it and never drops it while it lives, so a pointer to it
// stays valid that long. Without info it is inert: it holds nothing, ignores writes and is saved by nobody.
//
// Values live three times. `current` and `initial` are for control threads and guarded by the parameter's
// lock. What is written there travels as an event to the audio side, which the audio thread alone touches,
// and into the slots bound to the parameter. Taken after the collector's and a registry's lock, before that
// of CAudioEnv; two parameters are held at once only by a filter, source before destination.
class CAudioParam
{
public:
    CAudioParam(CAudioParamCollector& collector, CString fullName);
    CAudioParam(const CAudioParam&) = delete;
    CAudioParam& operator=(const CAudioParam&) = delete;
    ~CAudioParam();

    const CString& getName() const { return name_; }
    CAudioParamCollector& getCollector() const { return collector_; }
    bool hasInfo() const { return hasInfo_.load(std::memory_order_acquire); }

    // --- control threads

    // To be held while using what the next ones return; recursive.
    CCriticalSection& getLock() const { return lock_; }
    const CAudioParamInfo& getInfo() const;
    std::shared_ptr<const CAudioParamInfo> shareInfo() const { return info_; }
    const CAudioParamStorage& getCurrent() const { return current_; }
    // Path of the definition in the shared tree, which goes into saved parameters.
    const CString& getDefPath() const { return defPath_; }

    // The present value or text, with the fall-back of CAudioParamStorage::get(). Takes the lock itself.
    double getValue(std::int32_t group, std::int32_t entry, std::int32_t element = 0) const;
    CString getString(std::int32_t group, std::int32_t entry) const;

    // Installs a declaration, unless one of the same name and format is there, and sets all values to its
    // defaults. `defPath` may be empty for a parameter that is never saved.
    void setInfo(std::shared_ptr<const CAudioParamInfo> info, const CString& defPath);

    // The one way to write. A change of another format, of a group that is not there and does not begin with
    // entry 0, or that would leave a hole, is ignored and gives false. Numbers are limited to their range.
    bool change(const CAudioParamChange& change, CAudioParamContext& context);
    // Sets one number and keeps the others of its entry; a shorter group grows to it by fill entries.
    bool setValue(std::int32_t group, std::int32_t entry, std::int32_t element, double value,
                  CAudioParamContext& context, double timeSec = 0.0);
    // The same for the text of an entry; only for a string parameter.
    bool setString(std::int32_t group, std::int32_t entry, const CString& text, CAudioParamContext& context);
    // Back to the declared defaults: group 0 gets the fill entries, other groups become empty; -1 means all
    // groups, and all entries.
    void clearToDefault(std::int32_t group, std::int32_t entry, CAudioParamContext& context);
    // Back to the initial values.
    void reset(std::int32_t group, std::int32_t entry, CAudioParamContext& context);
    // Reads a saved parameter: the path of its definition, which gives a parameter without info its own, and
    // a storage record. The record replaces all values, or with a group its group 0 replaces that group; with
    // `intoInitial` it becomes the initial values. Data of a parameter that takes no part (neither storable
    // nor, `withPersistent`, persistent; or with no definition) are skipped. On failure nothing changes.
    CError load(CInputStream& stream, CAudioParamContext& context, bool intoInitial, std::int32_t group,
                bool withPersistent);
    // Whether load() could read it; changes nothing.
    CError check(CInputStream& stream, bool withPersistent) const;
    CError save(COutputStream& stream, std::int32_t group) const;

    void addFilter(CAudioParamFilter& filter);
    void removeFilter(CAudioParamFilter& filter);
    // Calls the function for each filter fed from this parameter, with the list locked.
    template <class Function>
    void forEachFilter(Function&& function)
    {
        const CLock lock(filterLock_);
        for (CAudioParamFilter* filter : filters_) {
            function(*filter);
        }
    }

    // --- audio thread

    CAudioParamAudioSide& audioSide() { return audioSide_; }
    const CAudioParamAudioSide& audioSide() const { return audioSide_; }

    // --- for the collector

    // The registries that took the parameter; the collector guards them.
    CInlineArray<CAudioParamRegistryBase*, 2>& registries() { return registries_; }
    // Audio thread: tells the filters of a number that changeFromAudio() is about to set. False if one of
    // them cannot follow now, or another thread is at the list.
    bool filterFromAudio(double value, double timeSec);
    // Takes what the audio thread has set over into `current` and tells the listeners. False if a write that
    // will overwrite it there is still on its way: then it waits for that to arrive, or to be dropped.
    bool takeFromAudio();
    // Before the audio side runs: what stands here holds there.
    void startAudioSide();
    bool isChangedByAudio() const { return audioSide_.outbox().getState().isWaiting(); }

private:
    // The record of `count` entries from `start` on, as they stand in `current`.
    CAudioParamChange recordOf(std::int32_t group, std::int32_t start, std::int32_t count) const;
    bool isInReach(const CAudioParamChange& change) const;
    // The entries from the end of the group to `entry`, as they read.
    std::int32_t firstToWrite(std::int32_t group, std::int32_t entry) const;
    void replaceAll(const CAudioParamStorage& values, CAudioParamContext& context);
    void replaceGroup(std::int32_t group, const CAudioParamStorage& source, std::int32_t sourceGroup,
                      CAudioParamContext& context);
    void replaceEntry(std::int32_t group, std::int32_t entry, const CAudioParamStorage& source,
                      std::int32_t sourceGroup, CAudioParamContext& context);
    void postAll(CAudioParamContext& context);
    void announce(const CAudioParamChange& change, CAudioParamContext& context);
    void adoptDefinition(const CString& path);

    CAudioParamCollector& collector_;
    const CString name_;

    mutable CCriticalSection lock_;
    std::atomic<bool> hasInfo_{false};
    std::shared_ptr<const CAudioParamInfo> info_; // null without info
    CString defPath_;
    CAudioParamStorage current_;
    CAudioParamStorage initial_;
    CCriticalSection filterLock_;
    CInlineArray<CAudioParamFilter*, 4> filters_;
    std::atomic<bool> hasFilters_{false}; // true once there was one
    CInlineArray<CAudioParamRegistryBase*, 2> registries_;

    CAudioParamAudioSide audioSide_;
};

} // namespace qel
