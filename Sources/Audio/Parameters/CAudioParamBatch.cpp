// Changes that reach the audio thread together.
#include "CAudioParamBatch.h"

#include "CAudioParamEventPool.h"

#include <utility>

namespace qel {

void CAudioParamBatch::append(CAudioParamEvent& event, bool coalesce, CAudioParamEventPool& pool)
{
    if (coalesce && !event.isReplacement()) {
        dropSuperseded(event, pool);
    }
    event.next = nullptr;
    (last_ ? last_->next : first_) = &event;
    last_ = &event;
    ++size_;
}

CAudioParamEvent* CAudioParamBatch::takeAll()
{
    last_ = nullptr;
    size_ = 0;
    return std::exchange(first_, nullptr);
}

// An event may leave although others stand between it and the end: whatever those write to its entries is
// overwritten by the newcomer too, and a hole that they would leave behind is filled and then covered.
void CAudioParamBatch::dropSuperseded(const CAudioParamEvent& by, CAudioParamEventPool& pool)
{
    CAudioParamEvent* previous = nullptr;
    CAudioParamEvent* event = first_;
    while (event) {
        CAudioParamEvent* following = event->next;
        if (event->isSupersededBy(by.getParam(), by.getChange())) {
            (previous ? previous->next : first_) = following;
            if (event == last_) {
                last_ = previous;
            }
            --size_;
            pool.recycle(*event);
        } else {
            previous = event;
        }
        event = following;
    }
}

} // namespace qel
