// What the audio thread has of one parameter.
#include "CAudioParamAudioSide.h"

#include "CAudioParam.h"
#include "CAudioParamEvent.h"
#include "CAudioParamEventPool.h"
#include "CAudioParamEventQueue.h"

#include <utility>

namespace qel {

namespace {

// Queue nodes kept ready for a new slot: for the events that were made before it was bound.
constexpr std::size_t kNodesPerSlot = 4;

} // namespace

CAudioParamAudioSide::CAudioParamAudioSide(CAudioParam& param, CAudioParamEventPool& pool)
    : param_(param), pool_(pool)
{
    values_.setRetireList(&pool_.retiredItems());
}

bool CAudioParamAudioSide::bind(CAudioParamBinding& binding)
{
    if (!param_.hasInfo()) {
        return false;
    }
    if (binding.param) {
        binding.param->audioSide().unbind(binding);
    }
    CAudioParamStorage& slot = *binding.storage;
    if (values_.isFormatted()) {
        slot.formatLike(values_);
    } else {
        // Before the first processing call: the audio side learns its format there.
        const CLock lock(param_.getLock());
        slot.formatLike(param_.getCurrent());
    }
    slot.setRetireList(&pool_.retiredItems());
    slot.copyValues(values_);
    binding.param = &param_;
    binding.next = bindings_;
    bindings_ = &binding;
    bindingCount_.fetch_add(1, std::memory_order_relaxed);
    pool_.growNodeReserve(kNodesPerSlot);
    for (CAudioParamEvent* event = firstPending_; event; event = event->next) {
        deliverTo(binding, *event);
    }
    *binding.isDirty = true;
    return true;
}

void CAudioParamAudioSide::unbind(CAudioParamBinding& binding)
{
    for (CAudioParamBinding** link = &bindings_; *link; link = &(*link)->next) {
        if (*link == &binding) {
            *link = binding.next;
            bindingCount_.fetch_sub(1, std::memory_order_relaxed);
            binding.queue->remove(binding);
            binding.storage->setRetireList(nullptr);
            binding.next = nullptr;
            binding.param = nullptr;
            return;
        }
    }
}

void CAudioParamAudioSide::deliverTo(CAudioParamBinding& binding, CAudioParamEvent& event)
{
    if (!event.isReplacement() && event.getChange().touches(binding.group, binding.entry)) {
        binding.queue->push(event, binding, pool_);
        *binding.isDirty = true;
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
