// The parameters below one name, as presets see them.
#pragma once

#include "CAudioParamCollector.h"
#include "CAudioPreset.h"

#include <functional>
#include <utility>
#include <vector>

namespace qel {

// Takes snapshots of the parameters whose names begin with `hierarchy`, and puts them back. A part of a
// registry, which tells it which parameters there are: they wait in a list of their own and join with the
// next operation. Any thread but the audio thread.
//
// Locks: that of the map comes behind those of banks and undo store and before a parameter's; the one of the
// waiting list stands alone.
class CAudioParamSubtree
{
public:
    static constexpr std::int32_t kAllGroups = -1;

    // Before anything else. `excluded` is the full name of a parameter that is no member, or empty.
    void setUp(CAudioParamCollector& collector, const CString& hierarchy, const CString& excluded);

    const CString& getHierarchy() const { return hierarchy_; }
    CCriticalSection& getLock() { return mapLock_; }

    // True if the parameter is a member; it joins with the next operation.
    bool offer(CAudioParam& param);
    // Initial values of members that are there and of those to come.
    void setInitialValues(CAudioPreset preset);
    const CAudioPreset& getInitialValues() const { return initial_; }

    // Replaces the entries of a preset by the present values of all storable parameters, or of one group of
    // them, which becomes the records' group 0. `withPersistent` adds what only the host saves. On error
    // nothing changes.
    CError store(CAudioPreset& preset, bool withPersistent, std::int32_t group);
    // The entry of one parameter, unless it has none of this kind.
    CError storeParam(CAudioPreset& preset, const CString& key, const CAudioParam& param, bool withPersistent,
                      std::int32_t group) const;
    // Puts values back. Parameters that the preset does not name return to their defaults unless `partial`.
    // Writes go into the context's batch, or one of their own. What cannot be read is met before anything is
    // written. One group for the whole instance is left alone by what is done to one group.
    CError apply(const CAudioPreset& preset, bool partial, CAudioParamContext& context, bool withPersistent,
                 std::int32_t group);
    // Whether apply() could read all of it.
    CError check(const CAudioPreset& preset, bool partial, bool withPersistent, std::int32_t group);
    // All storable parameters back to their initial values.
    void reset(CAudioParamContext& context);
    // The most groups that any member has.
    std::int32_t countGroups();
    // Calls function(key, param) for what hosts save and presets do not.
    void forEachHostOnly(const std::function<void(const CString&, const CAudioParam&)>& function);

private:
    // With the map's lock.
    void synchronise();
    void loadInitialValues(CAudioParam& param, const CString& key);
    CAudioParam& paramOf(const CString& key);
    // The block that stands for a parameter the preset does not name, or null.
    const CByteBuffer* oldBlockOf(const CAudioPreset& preset, const CAudioParam& param) const;

    CAudioParamCollector* collector_ = nullptr;
    CString hierarchy_;
    CString excluded_;

    CCriticalSection mapLock_;        // guards the next two
    CStringMap<CAudioParam*> params_; // by key
    CAudioPreset initial_;

    CCriticalSection waitingLock_;
    std::vector<std::pair<CString, CAudioParam*>> waiting_; // by full name
};

} // namespace qel
