#include "CEventLoop.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace qel {

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
