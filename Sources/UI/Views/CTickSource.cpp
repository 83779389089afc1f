// Regular calls for those who need them at the moment.
#include "CTickSource.h"

#include <algorithm>

namespace qel {

void CTickSource::tick()
{
    ++depth_;
    for (std::size_t i = 0, end = subscriptions_.size(); i < end; ++i) {
        if (CTickSubscription* const subscription = subscriptions_[i]) {
            const CObject::CHold hold(subscription->owner_);
            subscription->handler_();
        }
    }
    if (--depth_ == 0) {
        std::erase(subscriptions_, nullptr);
    }
}

void CTickSource::add(CTickSubscription& subscription)
{
    subscriptions_.push_back(&subscription);
    ++count_;
}

void CTickSource::remove(CTickSubscription& subscription)
{
    // The places of the others stay while they are being called.
    std::ranges::replace(subscriptions_, &subscription, static_cast<CTickSubscription*>(nullptr));
    --count_;
    if (depth_ == 0) {
        std::erase(subscriptions_, nullptr);
    }
}

void CTickSubscription::start(CTickSource& source)
{
    if (!source_) {
        source_ = &source;
        source.add(*this);
    }
}

void CTickSubscription::stop()
{
    if (source_) {
        source_->remove(*this);
        source_ = nullptr;
    }
}

} // namespace qel
