#include "CTimerSource.h"

#include <gtest/gtest.h>

#include <memory>

namespace qel {

namespace {

// A loop whose time stands still until a test moves it.
class CTimerSourceTest : public testing::Test
{
protected:
    CTimerSourceTest()
    {
        loop_->setClock([this] { return nowSec_; });
    }

    void drainAt(double sec)
    {
        nowSec_ = sec;
        loop_->drain();
    }

    double nowSec_ = 0.0;
    std::unique_ptr<CEventLoop> loop_ = std::make_unique<CEventLoop>();
    int ticks_ = 0;
};

} // namespace

TEST_F(CTimerSourceTest, TicksOncePerInterval)
{
    CTimerSource timer;
    ASSERT_EQ(timer.create(*loop_), 0);
    ASSERT_EQ(timer.start(100, [&] { ++ticks_; }), 0);
    drainAt(0.0);
    EXPECT_EQ(ticks_, 0);
    drainAt(0.099);
    EXPECT_EQ(ticks_, 0);
    drainAt(0.1);
    EXPECT_EQ(ticks_, 1);
    drainAt(0.1);
    drainAt(0.199);
    EXPECT_EQ(ticks_, 1);
    drainAt(0.05 + 0.05 + 0.05 + 0.05);
    EXPECT_EQ(ticks_, 2);
    timer.stop();
    EXPECT_FALSE(timer.isRunning());
    drainAt(1.0);
    EXPECT_EQ(ticks_, 2);
}

TEST_F(CTimerSourceTest, TickMayStopRestartOrDestroyItsOwnTimer)
{
    auto timer = std::make_unique<CTimerSource>();
    const auto held = std::make_shared<int>(0);
    ASSERT_EQ(timer->create(*loop_), 0);
    ASSERT_EQ(timer->start(100,
                           [&, held] {
                               timer->stop();
                               ++*held; // the function must outlive the stop
                           }),
              0);
    drainAt(0.1);
    drainAt(1.0);
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);

    ASSERT_EQ(timer->start(100,
                           [&, held] {
                               EXPECT_EQ(timer->start(500,
                                                      [&, held] {
                                                          timer.reset();
                                                          *held += 100;
                                                      }),
                                         0);
                               *held += 10;
                           }),
              0);
    drainAt(1.1);
    drainAt(1.5);
    EXPECT_EQ(*held, 11);
    drainAt(1.6);
    drainAt(9.0);
    EXPECT_EQ(*held, 111);
}

TEST_F(CTimerSourceTest, TickMayDestroyAnotherTimerThatIsDue)
{
    auto second = std::make_unique<CTimerSource>();
    CTimerSource first;
    ASSERT_EQ(first.create(*loop_), 0);
    ASSERT_EQ(second->create(*loop_), 0);
    ASSERT_EQ(first.start(100, [&] { second.reset(); }), 0);
    ASSERT_EQ(second->start(100, [&] { ++ticks_; }), 0);
    drainAt(0.1);
    EXPECT_EQ(ticks_, 0);
}

TEST_F(CTimerSourceTest, NestedDrainDoesNotEnterTheRunningTick)
{
    CTimerSource timer;
    ASSERT_EQ(timer.create(*loop_), 0);
    ASSERT_EQ(timer.start(0,
                          [&] {
                              ASSERT_LT(++ticks_, 10);
                              loop_->drain();
                          }),
              0);
    drainAt(0.0);
    EXPECT_EQ(ticks_, 1);
    drainAt(0.0);
    EXPECT_EQ(ticks_, 2);
}

TEST_F(CTimerSourceTest, TimerOutlivesItsLoopWithoutTicking)
{
    CTimerSource timer;
    EXPECT_NE(timer.start(100, [] {}), 0) << "a timer without a loop cannot start";
    ASSERT_EQ(timer.create(*loop_), 0);
    ASSERT_EQ(timer.start(100,
                          [&] {
                              ++ticks_;
                              loop_.reset();
                          }),
              0);
    drainAt(0.1);
    EXPECT_EQ(ticks_, 1);
    EXPECT_FALSE(timer.isRunning());
    EXPECT_NE(timer.start(100, [] {}), 0);
}

} // namespace qel
