// Links from sources to bridges: who is told, and what may happen while they are.
#include "CBridge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <thread>
#include <vector>

namespace qel {
namespace {

// The wait of an atomic number loses wake-ups on Windows.
template <class Condition>
void waitUntil(const Condition& condition)
{
    while (!condition()) {
        std::this_thread::yield();
    }
}

// Counts its updates and runs a function on each.
class CProbe
{
public:
    std::atomic<int> count{0};
    std::atomic<std::uintptr_t> lastWord{0};
    std::atomic<CBridge*> lastSender{nullptr};
    std::function<void()> onUpdate;

    void told(CBridge* sender, std::uintptr_t word)
    {
        ++count;
        lastWord = word;
        lastSender = sender;
        if (onUpdate) {
            onUpdate();
        }
    }

    COwnedBridge<CProbe> bridge{*this, &CProbe::told};
};

TEST(Bridge, UpdatesMayNestAndChangeWhoIsAttached)
{
    CBridgeBase source;
    CProbe probes[12]; // more than fit without allocating
    std::optional<CProbe> late;
    for (CProbe& probe : probes) {
        probe.bridge.attach(&source);
    }
    // Whoever is told first detaches all others, attaches a new one and raises another update.
    for (CProbe& probe : probes) {
        probe.onUpdate = [&] {
            if (late) {
                return;
            }
            for (CProbe& other : probes) {
                if (&other != &probe) {
                    other.bridge.detach();
                }
            }
            late.emplace();
            late->bridge.attach(&source);
            source.updateBridges(&probe.bridge);
        };
    }
    source.updateBridges();
    int told = 0;
    for (const CProbe& probe : probes) {
        told += probe.count;
    }
    EXPECT_EQ(told, 1);
    EXPECT_EQ(late->count, 1); // by the nested update alone
}

TEST(Bridge, MayBeDestroyedInItsOwnUpdateTogetherWithItsSource)
{
    auto source = std::make_unique<CBridgeBase>();
    auto first = std::make_unique<CProbe>();
    auto second = std::make_unique<CProbe>();
    int told = 0;
    // The function is a local copy: the probe that holds it goes while it runs.
    struct Ending
    {
        std::unique_ptr<CBridgeBase>& source;
        std::unique_ptr<CProbe>& first;
        std::unique_ptr<CProbe>& second;
    } ending{source, first, second};
    static Ending* toEnd;
    toEnd = &ending;
    static int* count;
    count = &told;
    const auto endAll = [] {
        ++*count;
        // Neither `this` nor a capture is touched behind the first of these.
        toEnd->source.reset();
        CProbe* const one = toEnd->first.release();
        CProbe* const two = toEnd->second.release();
        delete one;
        delete two;
    };
    first->onUpdate = endAll;
    second->onUpdate = endAll;
    first->bridge.attach(source.get());
    second->bridge.attach(source.get());
    source->updateBridges();
    EXPECT_EQ(told, 1);
}

TEST(Bridge, DetachWaitsForAnUpdateInAnotherThread)
{
    CBridgeBase source;
    CProbe probe;
    std::atomic<bool> isInside{false};
    std::atomic<bool> mayLeave{false};
    std::atomic<bool> hasLeft{false};
    probe.onUpdate = [&] {
        isInside = true;
        waitUntil([&] { return mayLeave.load(); });
        hasLeft = true;
    };
    probe.bridge.attach(&source);
    std::thread updater([&] { source.updateBridges(); });
    waitUntil([&] { return isInside.load(); });
    std::thread releaser([&] { mayLeave = true; });
    probe.bridge.detach();
    EXPECT_TRUE(hasLeft);
    source.updateBridges();
    EXPECT_EQ(probe.count, 1);
    updater.join();
    releaser.join();
}

TEST(Bridge, TwoThreadsMayDetachInsideTheSameBridgesUpdate)
{
    CBridgeBase source;
    CProbe probe;
    std::atomic<int> inside{0};
    probe.onUpdate = [&] {
        ++inside;
        waitUntil([&] { return inside == 2; });
        probe.bridge.detach();
    };
    probe.bridge.attach(&source);
    std::thread other([&] { source.updateBridges(); });
    source.updateBridges();
    other.join();
    EXPECT_EQ(probe.count, 2);
}

TEST(Bridge, DestroyedInItsOwnUpdateItWaitsForOtherThreads)
{
    CBridgeBase source;
    auto probe = std::make_unique<CProbe>();
    const std::thread::id destroyer = std::this_thread::get_id();
    std::atomic<bool> isInside{false};
    std::atomic<bool> isEnding{false};
    std::atomic<bool> hasLeft{false};
    std::atomic<bool> hadLeftAtTheEnd{false};
    probe->onUpdate = [&] {
        if (std::this_thread::get_id() != destroyer) {
            isInside = true;
            waitUntil([&] { return isEnding.load(); });
            hasLeft = true;
            return;
        }
        isEnding = true;
        probe->bridge.~COwnedBridge();
        hadLeftAtTheEnd = hasLeft.load();
        new (&probe->bridge) COwnedBridge<CProbe>(*probe, &CProbe::told);
    };
    probe->bridge.attach(&source);
    std::thread other([&] { source.updateBridges(); });
    waitUntil([&] { return isInside.load(); });
    source.updateBridges();
    other.join();
    EXPECT_TRUE(hadLeftAtTheEnd);
    EXPECT_EQ(probe->count, 2);
}

TEST(Bridge, OwnersComeAndGoWhileOtherThreadsUpdate)
{
    constexpr int kRounds = 1500;
    CBridgeBase sources[3];
    std::atomic<bool> isOver{false};
    std::vector<std::thread> updaters;
    for (int i = 0; i < 2; ++i) {
        updaters.emplace_back([&, i] {
            for (int next = i; !isOver; ++next) {
                sources[next % 3].updateBridges();
            }
        });
    }
    std::vector<std::thread> owners;
    for (unsigned seed = 1; seed <= 2; ++seed) {
        owners.emplace_back([&, seed] {
            std::minstd_rand random(seed);
            std::deque<std::atomic<int>> told; // outlives the owners, to catch a late update
            std::vector<int> toldInLife;
            for (int round = 0; round < kRounds; ++round) {
                auto owner = std::make_unique<CProbe>();
                owner->onUpdate = [&count = told.emplace_back()] { ++count; };
                owner->bridge.attach(&sources[random() % 3]);
                owner->bridge.attach(&sources[random() % 3]);
                if (random() % 2) {
                    owner->bridge.detach();
                    toldInLife.push_back(told.back());
                    owner.reset();
                } else {
                    owner.reset();
                    toldInLife.push_back(told.back());
                }
            }
            EXPECT_TRUE(std::equal(told.begin(), told.end(), toldInLife.begin()));
        });
    }
    for (std::thread& thread : owners) {
        thread.join();
    }
    isOver = true;
    for (std::thread& thread : updaters) {
        thread.join();
    }
}

} // namespace
} // namespace qel
