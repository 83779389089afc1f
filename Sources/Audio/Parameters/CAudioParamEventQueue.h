// The changes that wait for one target.
#pragma once

#include "CAudioParamBinding.h"
#include "CAudioParamEvent.h"

#include <utility>

namespace qel {

// First in, first out: events leave in the order they were made, even where a later one bears an earlier
// time, since otherwise the slot could end on another value than the parameter has. Audio thread only, or
// while that stands still; no locks, no allocation. The owner must drain it also while it is cut out of the
// graph (applyUntil() with an infinite limit), or it would grow with every change.
class CAudioParamEventQueue
{
public:
    CAudioParamEventQueue() = default;
    CAudioParamEventQueue(const CAudioParamEventQueue&) = delete;
    CAudioParamEventQueue& operator=(const CAudioParamEventQueue&) = delete;
    ~CAudioParamEventQueue() { clear(); }

    bool isEmpty() const { return first_ == nullptr; }
    // The event whose turn it is and the binding it is for, or null.
    const CAudioParamEventNode* peek() const { return first_; }
    void pop();
    // Applies to its slot each event in turn whose time is below the limit, and calls
    // `changed(binding, event)` behind each. Gives true if a slot has changed since the last call.
    template <class Changed>
    bool applyUntil(double timeLimitSec, Changed&& changed)
    {
        bool any = std::exchange(wasAppliedAtOnce_, false);
        while (first_ && first_->event->getTime() < timeLimitSec) {
            first_->event->applyTo(*first_->binding->storage);
            changed(*first_->binding, *first_->event);
            pop();
            any = true;
        }
        return any;
    }
    void clear();
    // While `isHeld` is set, nothing is taken from the queue. Then of the changes that begin on the audio
    // side, which have small reserves, only the last one of a slot is kept. It outlives the queue.
    void holdWhile(const bool& isHeld) { isHeld_ = &isHeld; }

    // --- for CAudioParam

    // Where the event brings no node for the slot, which was bound after it was made, and the reserve is used
    // up, the slot takes it at once.
    void push(CAudioParamEvent& event, CAudioParamBinding& binding, CAudioParamEventPool& pool);
    // Drops what waits for a binding that goes.
    void remove(const CAudioParamBinding& binding);

private:
    void applyAtOnce(CAudioParamEvent& event, CAudioParamBinding& binding);
    // Drops the nodes for which drops(node) is true.
    template <class Drops>
    void removeIf(Drops&& drops);
    void give(CAudioParamEventNode& node);

    CAudioParamEventNode* first_ = nullptr;
    CAudioParamEventNode* last_ = nullptr;
    CAudioParamEventPool* pool_ = nullptr;
    const bool* isHeld_ = nullptr;
    bool wasAppliedAtOnce_ = false;
};

} // namespace qel
