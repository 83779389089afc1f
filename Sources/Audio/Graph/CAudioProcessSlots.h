// The parameter slots of one process.
#pragma once

#include "CAudioParamBinding.h"
#include "CAudioParamEventQueue.h"
#include "CAudioParamStorage.h"
#include "CError.h"

#include <memory>
#include <vector>

namespace qel {

class CAudioParam;
class CAudioParamCollector;
class CAudioProcessDefBase;

// What a process sees of the parameters that its definition's `audio:param-alloc` children name. A slot whose
// name is remapped, or whose local parameter is global, follows a parameter of the instance: changes arrive
// in a queue and take effect when the stream reaches their time. Any other slot is private and reads the
// default of the definition.
//
// bind() and addStateSlot() on the thread that builds; from follow() on it is the audio thread's, without
// locks and without allocation.
class CAudioProcessSlots
{
public:
    CAudioProcessSlots() = default;
    ~CAudioProcessSlots();
    CAudioProcessSlots(const CAudioProcessSlots&) = delete;
    CAudioProcessSlots& operator=(const CAudioProcessSlots&) = delete;

    // --- building

    // `group` restricts the parameter changes received to one group; -1 for all.
    // `mark` is raised while changes wait, and nothing is taken up while `isHeld`; both outlive the slots.
    CError bind(const CAudioProcessDefBase& def, const CString& processName, CAudioParamCollector& params,
                int group, CAudioParamMark& mark, const bool& isHeld);
    // A slot behind the definition's own, tied to the parameter of this full name: its number, or -1 if the
    // instance has no such parameter.
    int addStateSlot(const CString& paramName, CAudioParamCollector& params);

    // --- audio thread

    // From here on the slots follow their parameters.
    void follow();

    // The date of the change whose turn it is; infinite without one.
    double nextEventSec() const;
    // Takes up all changes dated before `limitSec`. True if there were any.
    bool applyUntil(double limitSec);

    bool has(int slot) const { return find(slot) != nullptr; }
    // Value of an entry of a group, the default where nothing is stored or what is stored is NaN; 0 for
    // a slot that has no parameter.
    double value(int slot, int group, int entry = 0) const;
    // The same, but behind the end of the default's list the last default counts, not the first.
    double valueOrLast(int slot, int group, int entry) const;
    // The same with the fall-back by group that bypass states have.
    double stateValue(int slot, int group) const;
    // Entries that a group holds, or that the default has.
    int entryCount(int slot, int group) const;
    // Entries that have a value of their own: those of the group and, behind them, those of the default.
    int elementCount(int slot, int group) const;

private:
    struct Slot
    {
        int number;
        const CAudioParamStorage* values; // of a follower, or of the definition
    };
    // Of a slot that follows a parameter.
    struct Follower
    {
        CAudioParamStorage values;
        CAudioParamBinding binding;
    };

    // Null for a number that the process does not have.
    const CAudioParamStorage* find(int number) const
    {
        // Nearly all definitions count them as they stand.
        const auto index = static_cast<std::size_t>(number);
        return index < slots_.size() && slots_[index].number == number ? slots_[index].values
                                                                       : findAmongAll(number);
    }
    const CAudioParamStorage* findAmongAll(int number) const;
    void add(int number, const CAudioParamStorage& values);
    void addFollower(int number, CAudioParam& param, int group);

    std::vector<Slot> slots_;
    std::vector<std::unique_ptr<Follower>> followers_; // addresses are known to bindings
    CAudioParamEventQueue queue_;
    CAudioParamMark* mark_ = nullptr;
    int nextStateSlot_ = kFirstStateSlot;
    int entryShift_ = 0;
    bool isGroup0_ = false;
    bool isElement0_ = false;

    static constexpr int kFirstStateSlot = 1000;
};

} // namespace qel
