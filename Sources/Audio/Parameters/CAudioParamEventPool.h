// The memory of events, their queue nodes and batches, shared by the two sides.
#pragma once

#include "CAudioParamBatch.h"

#include <vector>

namespace qel {

// Records of one type in blocks that double in size, handed out and taken back through a free list linked by
// `Link`. Records keep their inner memory between uses.
template <class T, T* T::*Link>
class CBlockPool
{
public:
    T& take()
    {
        if (!free_) {
            grow(nextSize_);
            nextSize_ *= 2;
        }
        T& record = *free_;
        free_ = record.*Link;
        record.*Link = nullptr;
        return record;
    }
    void giveBack(T& record)
    {
        record.*Link = free_;
        free_ = &record;
    }

    bool isEmpty() const { return free_ == nullptr; }
    // Adds this many records.
    void grow(std::size_t count)
    {
        blocks_.push_back(std::make_unique<T[]>(count));
        for (std::size_t i = 0; i < count; ++i) {
            giveBack(blocks_.back()[i]);
        }
    }

private:
    std::vector<std::unique_ptr<T[]>> blocks_;
    T* free_ = nullptr;
    std::size_t nextSize_ = 4;
};

// Owned by the collector. Control threads take records under the lock of CAudioEnv; the audio thread only
// ever retires them, into lists that the control threads empty when they next take one. Two small reserves
// belong to the audio side: events for changes that begin there, and nodes for slots that were bound while an
// event was on its way.
class CAudioParamEventPool
{
public:
    static constexpr std::size_t kAudioEvents = 32;
    static constexpr std::size_t kAudioNodes = 64;

    CAudioParamEventPool();
    CAudioParamEventPool(const CAudioParamEventPool&) = delete;
    CAudioParamEventPool& operator=(const CAudioParamEventPool&) = delete;
    ~CAudioParamEventPool();

    // --- control threads, under the lock of CAudioEnv

    // An event with `nodes` queue nodes.
    CAudioParamEvent& takeEvent(std::int32_t nodes);
    CAudioParamBatch& takeBatch();
    // Gives back what never reached the audio thread, or has come back; a batch with all its events.
    void recycle(CAudioParamEvent& event);
    void recycle(CAudioParamBatch& batch);
    // Takes back what the audio thread is done with.
    void reclaim();

    // --- audio thread: no locks, no allocation

    // An event of the audio side's own, or null if all are under way.
    CAudioParamEvent* takeAudioEvent();
    void retire(CAudioParamEvent& event);
    void retire(CAudioParamBatch& batch) { retiredBatches_.push(batch); }
    CAudioParamItemRetireList& retiredItems() { return retiredItems_; }
    // A node for one place of the event in a queue: its own, else one of the reserve, or null if both are
    // used up.
    CAudioParamEventNode* takeNode(CAudioParamEvent& event);
    void giveBackNode(CAudioParamEventNode& node);

private:
    CBlockPool<CAudioParamEvent, &CAudioParamEvent::retireNext> events_;
    CBlockPool<CAudioParamBatch, &CAudioParamBatch::retireNext> batches_;
    CBlockPool<CAudioParamEventNode, &CAudioParamEventNode::next> nodes_;
    CRetireList<CAudioParamEvent> retiredEvents_;
    CRetireList<CAudioParamBatch> retiredBatches_;
    CAudioParamItemRetireList retiredItems_;

    CBlockPool<CAudioParamEventNode, &CAudioParamEventNode::next> audioNodes_;
    CAudioParamEvent audioEvents_[kAudioEvents];
    CAudioParamEvent* freeAudioEvents_ = nullptr;
};

} // namespace qel
