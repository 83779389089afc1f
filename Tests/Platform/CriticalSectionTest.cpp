#include "CCriticalSection.h"

#include "ThreadId.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

namespace qel {

namespace {

bool canOtherThreadLock(CCriticalSection& section)
{
    return std::async(std::launch::async,
                      [&] {
                          const bool isLocked = section.tryLock();
                          if (isLocked) {
                              section.unlock();
                          }
                          return isLocked;
                      })
        .get();
}

} // namespace

TEST(CCriticalSection, IsFreeOnlyAfterAsManyUnlocksAsLocks)
{
    CCriticalSection section;
    section.lock();
    EXPECT_TRUE(section.tryLock());
    {
        const CLock third(section);
        EXPECT_FALSE(canOtherThreadLock(section));
    }
    section.unlock();
    EXPECT_FALSE(canOtherThreadLock(section));
    section.unlock();
    EXPECT_TRUE(canOtherThreadLock(section));
}

TEST(CCriticalSection, KeepsThreadsApart)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 20'000;
    CCriticalSection section;
    int counter = 0; // plain, so that an overlap loses counts and shows in ThreadSanitizer
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                const CLock outer(section);
                const CLock inner(section);
                ++counter;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, kThreads * kRounds);
}

TEST(CCriticalSection, WaiterGetsItsTurnAfterTheSpinHasEnded)
{
    CCriticalSection section;
    std::promise<void> isWaiting;
    section.lock();
    std::thread waiter([&] {
        isWaiting.set_value();
        const CLock lock(section);
    });
    isWaiting.get_future().wait();
    for (unsigned i = 0; i < 100 * CCriticalSection::kSpinCount; ++i) {
        std::this_thread::yield();
    }
    section.unlock();
    waiter.join();
}

TEST(ThreadId, LiveThreadsHaveDifferentNumbers)
{
    const std::uint64_t other = std::async(std::launch::async, platform::currentThreadId).get();
    EXPECT_NE(other, platform::currentThreadId());
    EXPECT_EQ(platform::currentThreadId(), platform::currentThreadId());
}

} // namespace qel
