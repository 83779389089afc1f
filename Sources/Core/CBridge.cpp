// The registry of links, and updates along them.
#include "CBridge.h"

#include "AtomicWait.h"
#include "CInlineArray.h"

#include <array>
#include <map>
#include <set>

namespace qel {

namespace {

struct Stripe
{
    CCriticalSection section;
    std::map<const CBridgeBase*, std::set<CBridge*>> bridges;
    // Counts ended updates of the bridges whose own address falls on this stripe; a detach sleeps on it.
    std::atomic<std::uint32_t> endedUpdates{0};
};

constexpr std::size_t kStripeCount = 64;

// Objects lie at multiples of 16, and many sources of one kind at equal distances; folding the address down
// spreads both.
Stripe& stripeOf(const void* address)
{
    static std::array<Stripe, kStripeCount> stripes;
    const auto p = reinterpret_cast<std::intptr_t>(address);
    const std::intptr_t folded = (((p >> 4) ^ (p >> 12) ^ (p >> 20)) & 255) ^ (p >> 28);
    return stripes[static_cast<std::size_t>(folded & 63)];
}

// One update() that this thread is in. They lie on the stack, linked from the innermost out.
struct RunningUpdate
{
    CBridge* bridge = nullptr; // null once it was destroyed inside
    RunningUpdate* outer = nullptr;
};

thread_local RunningUpdate* innermostUpdate = nullptr;

std::uint32_t countOwnUpdates(const CBridge* bridge)
{
    std::uint32_t count = 0;
    for (const RunningUpdate* running = innermostUpdate; running; running = running->outer) {
        count += running->bridge == bridge ? 1 : 0;
    }
    return count;
}

void forgetOwnUpdates(const CBridge* bridge)
{
    for (RunningUpdate* running = innermostUpdate; running; running = running->outer) {
        if (running->bridge == bridge) {
            running->bridge = nullptr;
        }
    }
}

void insertBridge(const CBridgeBase* source, CBridge* bridge)
{
    Stripe& stripe = stripeOf(source);
    const CLock lock(stripe.section);
    stripe.bridges[source].insert(bridge);
}

void removeBridge(const CBridgeBase* source, CBridge* bridge)
{
    Stripe& stripe = stripeOf(source);
    const CLock lock(stripe.section);
    const auto entry = stripe.bridges.find(source);
    if (entry == stripe.bridges.end()) {
        return; // the source has cut it loose
    }
    entry->second.erase(bridge);
    if (entry->second.empty()) {
        stripe.bridges.erase(entry);
    }
}

using Bridges = CInlineArray<CBridge*, 8>;

Bridges copyBridges(const CBridgeBase* source)
{
    Bridges copy;
    Stripe& stripe = stripeOf(source);
    const CLock lock(stripe.section);
    if (const auto entry = stripe.bridges.find(source); entry != stripe.bridges.end()) {
        copy.reserve(entry->second.size());
        for (CBridge* bridge : entry->second) {
            copy.push(bridge);
        }
    }
    return copy;
}

} // namespace

CBridgeBase::~CBridgeBase()
{
    releaseBridges();
}

void CBridgeBase::releaseBridges()
{
    bool hadBridges = false;
    {
        Stripe& stripe = stripeOf(this);
        const CLock lock(stripe.section);
        hadBridges = stripe.bridges.erase(this) != 0;
    }
    if (hadBridges) {
        onLastBridgeGone();
    }
}

void CBridgeBase::updateBridges(CBridge* sender)
{
    const CBridgeBase* const source = this; // an update may end it; from here on it is a key only
    Stripe& stripe = stripeOf(source);
    for (CBridge* bridge : copyBridges(source)) {
        if (bridge == sender) {
            continue;
        }
        std::uintptr_t userWord = 0;
        {
            // While it is listed it is alive, and once it counts a running update it stays so.
            const CLock lock(stripe.section);
            const auto entry = stripe.bridges.find(source);
            if (entry == stripe.bridges.end() || !entry->second.contains(bridge)) {
                continue;
            }
            ++bridge->runningUpdates_;
            userWord = bridge->userWord_;
        }
        RunningUpdate running{bridge, innermostUpdate};
        innermostUpdate = &running;
        bridge->update(sender, userWord);
        innermostUpdate = running.outer;
        if (running.bridge) {
            // The stripe outlives the bridge, which a waiting thread may destroy as soon as the count is
            // down.
            Stripe& waiters = stripeOf(bridge);
            --bridge->runningUpdates_;
            ++waiters.endedUpdates;
            platform::wakeAll(waiters.endedUpdates);
        }
    }
}

CBridge::~CBridge()
{
    endLink();
    forgetOwnUpdates(this);
}

void CBridge::endLink()
{
    detach();
    waitForOtherThreads();
}

void CBridge::attach(CBridgeBase* source, std::uintptr_t userWord)
{
    {
        const CLock lock(section_);
        if (source_) {
            removeBridge(source_, this);
        }
        source_ = source;
        userWord_ = userWord;
        if (source) {
            insertBridge(source, this);
        }
    }
    // Two threads inside this bridge's update would wait for each other if each detached it.
    if (!source && countOwnUpdates(this) == 0) {
        waitForOtherThreads();
    }
}

void CBridge::waitForOtherThreads()
{
    const std::uint32_t own = countOwnUpdates(this);
    std::atomic<std::uint32_t>& ended = stripeOf(this).endedUpdates;
    for (;;) {
        const std::uint32_t before = ended;
        if (runningUpdates_ == own) {
            return;
        }
        platform::waitWhile(ended, before);
    }
}

} // namespace qel
