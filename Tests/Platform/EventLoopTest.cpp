#include "CEventLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qel {

TEST(CEventLoop, RunsEachThreadsPostsInOrderOnTheOwnerThread)
{
    constexpr int kThreads = 3;
    constexpr int kPosts = 3'000;
    CEventLoop loop;
    std::vector<int> next(kThreads, 0);
    int misplaced = 0;
    std::atomic<int> finished = 0;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int number = 0; number < kPosts; ++number) {
                const int error = loop.post([&, thread, number] {
                    misplaced += next[thread] != number || !loop.isOwnerThread();
                    ++next[thread];
                });
                EXPECT_EQ(error, 0);
            }
            EXPECT_FALSE(loop.isOwnerThread());
            ++finished;
        });
    }
    while (finished < kThreads) {
        loop.drain();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    loop.drain();
    EXPECT_EQ(next, std::vector<int>(kThreads, kPosts));
    EXPECT_EQ(misplaced, 0);
}

TEST(CEventLoop, LeavesPostsMadeWhileDrainingToTheNextDrain)
{
    CEventLoop loop;
    std::string order;
    ASSERT_EQ(loop.post([&] {
        order += 'a';
        EXPECT_EQ(loop.post([&] { order += 'c'; }), 0);
    }),
              0);
    ASSERT_EQ(loop.post([&] { order += 'b'; }), 0);
    loop.drain();
    EXPECT_EQ(order, "ab");
    loop.drain();
    EXPECT_EQ(order, "abc");
    loop.drain();
    EXPECT_EQ(order, "abc");
}

TEST(CEventLoop, NestedDrainGoesOnInOrderAndRepeatsNothing)
{
    CEventLoop loop;
    std::string order;
    ASSERT_EQ(loop.post([&] {
        order += '(';
        EXPECT_EQ(loop.post([&] { order += 'c'; }), 0);
        loop.drain();
        EXPECT_EQ(loop.post([&] { order += 'd'; }), 0);
        order += ')';
    }),
              0);
    ASSERT_EQ(loop.post([&] { order += 'b'; }), 0);
    loop.drain();
    EXPECT_EQ(order, "(bc)");
    loop.drain();
    EXPECT_EQ(order, "(bc)d");
}

TEST(CEventLoop, CallMayDestroyTheLoopAndDropsTheRest)
{
    auto loop = std::make_unique<CEventLoop>();
    const auto held = std::make_shared<int>(0);
    ASSERT_EQ(loop->post([&] { loop.reset(); }), 0);
    ASSERT_EQ(loop->post([held] { ++*held; }), 0);
    loop->drain();
    EXPECT_EQ(*held, 0);
    EXPECT_EQ(held.use_count(), 1) << "a dropped call was not freed";
}

// A call is gone before the next one runs, and what frees it may post again.
TEST(CEventLoop, FreesEachCallBeforeTheNext)
{
    CEventLoop loop;
    std::string order;
    std::shared_ptr<void> onFree(nullptr, [&](void*) {
        order += '1';
        EXPECT_EQ(loop.post([&] { order += '3'; }), 0);
    });
    ASSERT_EQ(loop.post([held = std::move(onFree)] {}), 0);
    ASSERT_EQ(loop.post([&] { order += '2'; }), 0);
    loop.drain();
    loop.drain();
    EXPECT_EQ(order, "123");
}

} // namespace qel
