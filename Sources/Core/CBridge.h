// Typed links from one source to many that want to know when it changes.
#pragma once

#include "CCheckedObject.h"
#include "CCriticalSection.h"

#include <atomic>
#include <cstdint>

namespace qel {

class CBridge;
class CBridgeBase;

// A source: base of every class that tells others of its changes. It holds no list itself: who is attached
// stands in 64 process-wide stripes, chosen by the source's address, so that updates of unrelated sources
// never wait for each other. Any thread may call updateBridges().
class CBridgeBase : public CCheckedObject
{
public:
    CBridgeBase() = default;
    CBridgeBase(const CBridgeBase&) = delete;
    CBridgeBase& operator=(const CBridgeBase&) = delete;
    // Cuts loose what is still attached, as releaseBridges() does, but an override of onLastBridgeGone() is
    // out of reach by then. No updateBridges() may be running in another thread.
    ~CBridgeBase() override;

    // Calls update() on each attached bridge but `sender`, at once, in this thread, and with no lock held:
    // an update may attach, detach and destroy bridges, raise further updates, and end this source. A bridge
    // attached meanwhile is not told; one detached meanwhile is no longer told.
    void updateBridges(CBridge* sender = nullptr);

protected:
    // Cuts loose what is attached and then, if there was anything, calls onLastBridgeGone(). A class that
    // overrides that calls this in its destructor. Bridges may be attached again afterwards.
    void releaseBridges();
    virtual void onLastBridgeGone() {}
};

// A link to one source at a time. Owned by whoever wants to be told.
//
// Safe against updates in other threads: attach(nullptr), and the destructor, return only when no other
// thread is in this bridge's update() any more, and none enters it from then on, so the owner may go. So the
// caller holds no lock that update() takes, and two updates in two threads must not each detach the other's
// bridge. From inside its own update() a bridge detaches without waiting, or it would wait for itself; it may
// even be destroyed there, which waits for other threads alone.
//
// A class that overrides update() calls endLink() first thing in its destructor, before its own part goes.
class CBridge : public CCheckedObject
{
public:
    CBridge() = default;
    CBridge(const CBridge&) = delete;
    CBridge& operator=(const CBridge&) = delete;
    ~CBridge() override;

    // Moves the link to `source`, null for none; `userWord` comes back with each update. The source it has
    // already is allowed. After a move a last update from the old source may still be running.
    void attach(CBridgeBase* source, std::uintptr_t userWord = 0);
    void detach() { attach(nullptr); }

    // The source has changed; `sender` is whoever changed it, or null. Several threads may be in here.
    virtual void update(CBridge* sender, std::uintptr_t userWord) = 0;

protected:
    // Detaches, and waits for the other threads even inside the bridge's own update().
    void endLink();

private:
    friend class CBridgeBase;

    void waitForOtherThreads();

    CCriticalSection section_;      // taken before a stripe, never after
    CBridgeBase* source_ = nullptr; // a key only: the source may be gone
    std::uintptr_t userWord_ = 0;   // changes only while this is in no stripe
    std::atomic<std::uint32_t> runningUpdates_{0};
};

// A bridge whose update calls a method of its owner. Detaches before the owner's members go if it is declared
// behind them, or if the owner detaches it in its own destructor.
template <class T>
class COwnedBridge : public CBridge
{
public:
    using Method = void (T::*)(CBridge* sender, std::uintptr_t userWord);

    COwnedBridge(T& owner, Method method) : owner_(&owner), method_(method) {}
    ~COwnedBridge() override { endLink(); }

    void update(CBridge* sender, std::uintptr_t userWord) override { (owner_->*method_)(sender, userWord); }

private:
    T* owner_;
    Method method_;
};

} // namespace qel
