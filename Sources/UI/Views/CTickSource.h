// Regular calls for those who need them at the moment.
#pragma once

#include "CObject.h"

#include <functional>
#include <vector>

namespace qel {

class CTickSubscription;

// What a window's timer calls. Subscriptions may start, stop and end while they are called: one that starts
// meanwhile is called from the next tick on, one that stops is not called any more. Window's thread.
class CTickSource
{
public:
    CTickSource() = default;
    CTickSource(const CTickSource&) = delete;
    CTickSource& operator=(const CTickSource&) = delete;

    void tick();
    // True if nobody is subscribed.
    bool isIdle() const { return count_ == 0; }

private:
    friend class CTickSubscription;

    void add(CTickSubscription& subscription);
    void remove(CTickSubscription& subscription);

    std::vector<CTickSubscription*> subscriptions_; // null: stopped during a tick
    std::size_t count_ = 0;                         // without the null ones
    int depth_ = 0;                                 // of ticks that are running
};

// One subscription of an object, as a member of it. The object's memory lives until the handler returns,
// whatever the handler releases. The source outlives what is subscribed.
class CTickSubscription
{
public:
    CTickSubscription(CObject& owner, std::function<void()> handler)
        : owner_(owner), handler_(std::move(handler))
    {}
    ~CTickSubscription() { stop(); }
    CTickSubscription(const CTickSubscription&) = delete;
    CTickSubscription& operator=(const CTickSubscription&) = delete;

    // Does nothing if it runs already.
    void start(CTickSource& source);
    void stop();
    bool isRunning() const { return source_ != nullptr; }

private:
    friend class CTickSource;

    CObject& owner_;
    std::function<void()> handler_;
    CTickSource* source_ = nullptr;
};

} // namespace qel
