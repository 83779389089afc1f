// Changes that reach the audio thread together.
#pragma once

#include "CAudioParamEvent.h"

namespace qel {

// Events in the order they were made. A writer that wants several changes to arrive within one block takes a
// batch from the collector (newBatch()), passes it in the context of its writes, and submits it; the
// collector keeps one more, the pending batch, for changes that come singly. Control threads fill a batch
// under the lock of CAudioEnv; whole, it passes to the audio thread in one exchange.
class CAudioParamBatch
{
public:
    bool isEmpty() const { return first_ == nullptr; }
    std::size_t size() const { return size_; }
    CAudioParamEvent* first() const { return first_; }

    // Adds an event at the end. With `coalesce` those that it makes superfluous leave the batch; they go back
    // to `pool`.
    void append(CAudioParamEvent& event, bool coalesce, CAudioParamEventPool& pool);
    // Empties the batch and returns the chain of its events.
    CAudioParamEvent* takeAll();

    CAudioParamBatch* retireNext = nullptr;

private:
    void dropSuperseded(const CAudioParamEvent& by, CAudioParamEventPool& pool);

    CAudioParamEvent* first_ = nullptr;
    CAudioParamEvent* last_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace qel
