// Things the audio thread is done with, on their way back to a control thread.
#pragma once

#include <atomic>

namespace qel {

// A stack of T, linked through the member `T* retireNext`. Any thread may push, without waiting and without
// touching the heap; control threads take everything that is there in one exchange and recycle it. Because
// nothing is ever popped singly, a record that comes back to the same address between two steps of a push
// does no harm. The list owns nothing: whoever ends it takes what is left.
template <class T>
class CRetireList
{
public:
    CRetireList() = default;
    CRetireList(const CRetireList&) = delete;
    CRetireList& operator=(const CRetireList&) = delete;

    void push(T& item)
    {
        item.retireNext = head_.load(std::memory_order_relaxed);
        while (!head_.compare_exchange_weak(item.retireNext, &item, std::memory_order_release,
                                            std::memory_order_relaxed)) {
        }
    }

    // The chain of all items, the last one pushed first, or null.
    T* takeAll() { return head_.exchange(nullptr, std::memory_order_acquire); }

private:
    std::atomic<T*> head_{nullptr};
};

} // namespace qel
