// The changes that wait for one target.
#include "CAudioParamEventQueue.h"

#include "CAudioParamEventPool.h"

namespace qel {

template <class Drops>
void CAudioParamEventQueue::removeIf(Drops&& drops)
{
    CAudioParamEventNode* previous = nullptr;
    CAudioParamEventNode* node = first_;
    while (node) {
        CAudioParamEventNode* following = node->next;
        if (drops(*node)) {
            (previous ? previous->next : first_) = following;
            if (node == last_) {
                last_ = previous;
            }
            give(*node);
        } else {
            previous = node;
        }
        node = following;
    }
}

void CAudioParamEventQueue::push(CAudioParamEvent& event, CAudioParamBinding& binding,
                                 CAudioParamEventPool& pool)
{
    pool_ = &pool;
    if (isHeld_ && *isHeld_ && event.isAudioOwned()) {
        removeIf([&](const CAudioParamEventNode& node) {
            return node.binding == &binding && node.event->isAudioOwned();
        });
    }
    CAudioParamEventNode* const node = pool.takeNode(event);
    if (!node) {
        applyAtOnce(event, binding);
        return;
    }
    node->binding = &binding;
    node->next = nullptr;
    (last_ ? last_->next : first_) = node;
    last_ = node;
    event.retain();
}

// The order of the changes is worth more than their time.
void CAudioParamEventQueue::applyAtOnce(CAudioParamEvent& event, CAudioParamBinding& binding)
{
    for (CAudioParamEventNode* node = first_; node; node = node->next) {
        if (node->binding == &binding) {
            node->event->applyTo(*binding.storage);
        }
    }
    remove(binding);
    event.applyTo(*binding.storage);
    wasAppliedAtOnce_ = true;
}

void CAudioParamEventQueue::pop()
{
    if (CAudioParamEventNode* node = first_) {
        first_ = node->next;
        if (!first_) {
            last_ = nullptr;
        }
        give(*node);
    }
}

void CAudioParamEventQueue::clear()
{
    while (first_) {
        pop();
    }
}

void CAudioParamEventQueue::remove(const CAudioParamBinding& binding)
{
    removeIf([&](const CAudioParamEventNode& node) { return node.binding == &binding; });
}

void CAudioParamEventQueue::give(CAudioParamEventNode& node)
{
    CAudioParamEvent& event = *node.event;
    pool_->giveBackNode(node);
    event.release();
}

} // namespace qel
