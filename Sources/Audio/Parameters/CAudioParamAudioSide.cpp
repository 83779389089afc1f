// What the audio thread has of one parameter.
#include "CAudioParamAudioSide.h"

#include "CAudioParam.h"
#include "CAudioParamEvent.h"
#include "CAudioParamEventPool.h"
#include "CAudioParamEventQueue.h"

#include <utility>

namespace qel {

CAudioParamAudioSide::CAudioParamAudioSide(CAudioParam& param, CAudioParamEventPool& pool)
    : param_(param), pool_(pool)
{
    values_.setRetireList(&pool_.retiredItems());
}

bool CAudioParamAudioSide::prepare(CAudioParamBinding& binding)
{
    if (!param_.hasInfo()) {
        return false;
    }
    const CLock lock(param_.getLock());
    binding.storage->formatLike(param_.getCurrent(), binding.group + 1);
    binding.storage->setRetireList(&pool_.retiredItems());
    binding.param = &param_;
    // From now on changes bring along what this slot needs of them.
    bindingCount_.fetch_add(1, std::memory_order_relaxed);
    return true;
}

void CAudioParamAudioSide::start(const CAudioParamStorage& values)
{
    values_.formatLike(values);
    values_.copyValues(values);
    for (CAudioParamBinding* binding = bindings_; binding; binding = binding->next) {
        binding->storage->copyValues(values);
    }
}

bool CAudioParamAudioSide::outgrows(const CAudioParamChange& change, const CAudioParamStorage& current)
{
    const bool isLonger = change.end() > current.getFillCount();
    if (change.isWhole() || change.group < groupsWithRoom_) {
        return isLonger;
    }
    groupsWithRoom_ = CAudioParamStorage::groupsOfRoom(change.group);
    return true;
}

void CAudioParamAudioSide::bind(CAudioParamBinding& binding)
{
    binding.storage->copyValues(values_);
    binding.next = bindings_;
    bindings_ = &binding;
    for (CAudioParamEvent* event = firstPending_; event; event = event->next) {
        deliverTo(binding, *event);
    }
    binding.mark->raise();
}

void CAudioParamAudioSide::unbind(CAudioParamBinding& binding)
{
    for (CAudioParamBinding** link = &bindings_; *link; link = &(*link)->next) {
        if (*link == &binding) {
            *link = binding.next;
            binding.queue->remove(binding);
            break;
        }
    }
    bindingCount_.fetch_sub(1, std::memory_order_relaxed);
    binding.storage->setRetireList(nullptr);
    binding.next = nullptr;
    binding.param = nullptr;
}

void CAudioParamAudioSide::deliverTo(CAudioParamBinding& binding, CAudioParamEvent& event)
{
    if (!event.isReplacement() && event.getChange().touches(binding.group, binding.entry)) {
        binding.queue->push(event, binding, pool_);
        binding.mark->raise();
    }
}

bool CAudioParamAudioSide::receive(CAudioParamEvent& event, std::uint32_t generation)
{
    if (event.getChange().touches(0, 0) && !event.isAudioOwned()) {
        // The later of the two. First the mailbox, then the count that keeps control threads from looking
        // into it.
        outbox_.drop();
        event.arrive();
    }
    event.retain();
    event.next = nullptr;
    (lastPending_ ? lastPending_->next : firstPending_) = &event;
    lastPending_ = &event;
    for (CAudioParamBinding* binding = bindings_; binding; binding = binding->next) {
        deliverTo(*binding, event);
    }
    return std::exchange(changedGeneration_, generation) != generation;
}

void CAudioParamAudioSide::applyPending()
{
    CAudioParamEvent* event = std::exchange(firstPending_, nullptr);
    lastPending_ = nullptr;
    while (event) {
        CAudioParamEvent* following = event->next;
        event->applyToAudio(values_);
        event->release();
        event = following;
    }
}

} // namespace qel
