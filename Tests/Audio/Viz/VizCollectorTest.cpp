// Visual data on their way from the audio thread, and who switches them on.
#include "VizFixture.h"

#include <atomic>
#include <thread>

namespace qel {
namespace {

class VizCollectorTest : public test::VizFixture
{};

TEST_F(VizCollectorTest, HandsFindingsOverInOrderAndLosesTheOldestWhenNobodyReads)
{
    viz_->addListener(viz_->registerSource("plugin.modMain.modMeterOut"));
    viz_->beginBlock();
    std::vector<CAudioVizDataMeter> got;
    viz_->push(meterData(1.0));
    viz_->take(got);
    EXPECT_TRUE(got.empty()) << "before the block is over";
    viz_->beginBlock();
    viz_->push(meterData(2.0));
    viz_->take(got);
    viz_->beginBlock();
    viz_->take(got);
    ASSERT_EQ(got.size(), 2U);
    EXPECT_EQ(got[0].timeSec, 1.0);
    EXPECT_EQ(got[1].timeSec, 2.0);
    EXPECT_EQ(got[1].element, 2);

    got.clear();
    const int count = 5 * static_cast<int>(CAudioVizCollector::kBufferSize) + 7;
    for (int i = 0; i < count; ++i) {
        viz_->beginBlock();
        viz_->push(meterData(i));
    }
    viz_->beginBlock();
    viz_->take(got);
    viz_->beginBlock();
    viz_->take(got);
    ASSERT_GE(got.size(), CAudioVizCollector::kBufferSize) << "at least one buffer's worth is kept";
    for (std::size_t i = 0; i < got.size(); ++i) {
        ASSERT_EQ(got[i].timeSec, static_cast<double>(count) - static_cast<double>(got.size() - i));
    }
}

// What was measured before a pause, or before an editor was closed, is of no use to who looks now.
TEST_F(VizCollectorTest, ShowsTheLatestBehindAPauseAndNothingOldToAFirstListener)
{
    const std::int32_t source = viz_->registerSource("plugin.modMain.modMeterOut");
    viz_->addListener(source);
    for (int i = 0; i < 10; ++i) { // a reader that sleeps, but not for long
        viz_->beginBlock();
        viz_->push(meterData(i));
    }
    viz_->beginBlock();
    std::vector<CAudioVizDataMeter> got;
    viz_->take(got);
    ASSERT_EQ(got.size(), 10u) << "the last call's findings are there at the first look";
    EXPECT_EQ(got.back().timeSec, 9.0);

    viz_->push(meterData(10.0));
    viz_->removeListener(source);
    viz_->beginBlock();
    viz_->push(meterData(11.0));
    viz_->addListener(source);
    got.clear();
    viz_->take(got);
    viz_->beginBlock();
    viz_->push(meterData(12.0));
    viz_->beginBlock();
    viz_->take(got);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].timeSec, 12.0);
    viz_->push(meterData(13.0));
    viz_->reset();
    viz_->beginBlock();
    got.clear();
    viz_->take(got);
    EXPECT_TRUE(got.empty());
}

TEST_F(VizCollectorTest, KeepsOrderBetweenAnAudioThreadAndReaders)
{
    viz_->addListener(viz_->registerSource("plugin.modMain.modMeterOut"));
    std::atomic<bool> isDone{false};
    constexpr int kCount = 200000;
    std::thread audio([&] {
        for (int i = 0; i < kCount; ++i) {
            if (i % 5 == 0) {
                viz_->beginBlock();
            }
            viz_->push(meterData(i));
        }
        isDone = true;
    });
    double last = -1.0;
    std::vector<CAudioVizDataMeter> got;
    while (!isDone) {
        got.clear();
        viz_->take(got);
        for (const CAudioVizDataMeter& data : got) {
            ASSERT_GT(data.timeSec, last);
            last = data.timeSec;
        }
    }
    audio.join();
    // A reader that was held up may have missed some; what comes afterwards arrives.
    viz_->take(got);
    viz_->beginBlock();
    viz_->take(got);
    viz_->push(meterData(kCount));
    viz_->beginBlock();
    got.clear();
    viz_->take(got);
    ASSERT_EQ(got.size(), 1U);
    EXPECT_EQ(got[0].timeSec, kCount);
}

} // namespace
} // namespace qel
