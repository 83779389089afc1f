// The memory of events, their queue nodes and batches, shared by the two sides.
#include "CAudioParamEventPool.h"

#include <utility>

namespace qel {

CAudioParamEventPool::CAudioParamEventPool()
{
    audioNodes_.grow(kAudioNodes);
    for (CAudioParamEvent& event : audioEvents_) {
        event.home_ = this;
        event.isAudioOwned_ = true;
        event.retireNext = std::exchange(freeAudioEvents_, &event);
    }
}

CAudioParamEventPool::~CAudioParamEventPool()
{
    reclaim(); // so that the strings in the list go too
}

CAudioParamEvent& CAudioParamEventPool::takeEvent(std::int32_t nodes)
{
    reclaim();
    CAudioParamEvent& event = events_.take();
    event.home_ = this;
    for (std::int32_t i = 0; i < nodes; ++i) {
        CAudioParamEventNode& node = nodes_.take();
        node.event = &event;
        node.next = std::exchange(event.nodes_, &node);
    }
    return event;
}

CAudioParamBatch& CAudioParamEventPool::takeBatch()
{
    reclaim();
    return batches_.take();
}

void CAudioParamEventPool::recycle(CAudioParamEvent& event)
{
    event.arrive();
    while (CAudioParamEventNode* node = event.nodes_) {
        event.nodes_ = node->next;
        nodes_.giveBack(*node);
    }
    event.replacement_.reset();
    event.rooms_.clear();
    event.roomsUsed_ = 0;
    event.pool_.clear();
    event.next = nullptr;
    events_.giveBack(event);
}

void CAudioParamEventPool::recycle(CAudioParamBatch& batch)
{
    CAudioParamEvent* event = batch.takeAll();
    while (event) {
        CAudioParamEvent* following = event->next;
        recycle(*event);
        event = following;
    }
    batches_.giveBack(batch);
}

void CAudioParamEventPool::reclaim()
{
    CAudioParamEvent* event = retiredEvents_.takeAll();
    while (event) {
        CAudioParamEvent* following = event->retireNext;
        recycle(*event);
        event = following;
    }
    CAudioParamBatch* batch = retiredBatches_.takeAll();
    while (batch) {
        CAudioParamBatch* following = batch->retireNext;
        recycle(*batch);
        batch = following;
    }
    reclaimItems(retiredItems_);
}

CAudioParamEvent* CAudioParamEventPool::takeAudioEvent()
{
    if (!freeAudioEvents_) {
        return nullptr;
    }
    return std::exchange(freeAudioEvents_, freeAudioEvents_->retireNext);
}

void CAudioParamEventPool::retire(CAudioParamEvent& event)
{
    if (event.isAudioOwned_) {
        event.retireNext = std::exchange(freeAudioEvents_, &event);
    } else {
        retiredEvents_.push(event);
    }
}

CAudioParamEventNode* CAudioParamEventPool::takeNode(CAudioParamEvent& event)
{
    if (CAudioParamEventNode* node = event.nodes_) {
        event.nodes_ = node->next;
        return node;
    }
    if (audioNodes_.isEmpty()) {
        return nullptr;
    }
    CAudioParamEventNode& node = audioNodes_.take();
    node.isReserve = true;
    node.event = &event;
    return &node;
}

void CAudioParamEventPool::giveBackNode(CAudioParamEventNode& node)
{
    if (node.isReserve) {
        audioNodes_.giveBack(node);
    } else {
        node.next = std::exchange(node.event->nodes_, &node);
    }
}

} // namespace qel
