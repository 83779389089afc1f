// How movements of the hand become movements of a value.
#include "KnobLaws.h"
#include "CValueDrag.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qel {
namespace {

TEST(KnobLaws, StepsFollowThePreferences)
{
    EXPECT_DOUBLE_EQ(dragStepOf(0.0), 0.05);
    EXPECT_DOUBLE_EQ(dragStepOf(1.0), 0.001);
    EXPECT_NEAR(20.0 * dragStepOf(0.7), 0.0647, 5e-5);
    EXPECT_DOUBLE_EQ(wheelStepOf(0.0), 0.2);
    EXPECT_DOUBLE_EQ(wheelStepOf(1.0), 0.005);
    EXPECT_NEAR(wheelStepOf(0.5), 0.0316, 5e-5);
    EXPECT_DOUBLE_EQ(shiftFactorOf(0.0), 1.0 / 1.5);
    EXPECT_DOUBLE_EQ(shiftFactorOf(1.0), 0.1);
    EXPECT_DOUBLE_EQ(dragStepOf(7.0), 0.001) << "a stored preference may be anything";
}

TEST(KnobLaws, AKnobPointsWhereThePointerIs)
{
    const CKnobZone zone;
    EXPECT_NEAR(zone.positionAt(-1.0, 1.0), 0.0, 1e-12);
    EXPECT_NEAR(zone.positionAt(1.0, 1.0), 1.0, 1e-12);
    EXPECT_NEAR(zone.positionAt(0.0, -1.0), 0.5, 1e-12);
    EXPECT_NEAR(zone.positionAt(-1.0, 0.0), 1.0 / 6.0, 1e-12);
    EXPECT_NEAR(zone.positionAt(-1.0, -0.0), 1.0 / 6.0, 1e-12);
    // The gap below.
    EXPECT_EQ(zone.positionAt(0.1, 1.0), 1.0);
    EXPECT_EQ(zone.positionAt(-0.1, 1.0), 0.0);
    EXPECT_EQ(zone.positionAt(0.0, 1.0), 1.0) << "the middle of the gap";
    for (double position = 0.0; position <= 1.0; position += 0.125) {
        const double angle = zone.angleOf(position);
        EXPECT_NEAR(zone.positionAt(20.0 * std::cos(angle), 20.0 * std::sin(angle)), position, 1e-9);
    }
}

class ValueDrag : public ::testing::Test
{
protected:
    void begin(CValueDrag::Mode mode, std::vector<double> starts, double pivot = 0.0)
    {
        drag_.begin(mode, pivot, std::move(starts));
    }
    CValueDrag drag_;
};

TEST_F(ValueDrag, KeepsDifferencesOrRatios)
{
    begin(CValueDrag::Mode::kAdditive, {0.2, 0.5, 0.9});
    drag_.move(10.0, 0.02, false);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.4);
    EXPECT_DOUBLE_EQ(drag_.getPosition(1), 0.7);
    EXPECT_DOUBLE_EQ(drag_.getPosition(2), 1.0);
    drag_.move(-10.0, 0.02, false);
    EXPECT_DOUBLE_EQ(drag_.getPosition(2), 0.9) << "the end has not flattened the group";

    begin(CValueDrag::Mode::kProportional, {0.2, 0.4});
    drag_.move(10.0, 0.05, false);
    EXPECT_DOUBLE_EQ(drag_.getPosition(1) / drag_.getPosition(0), 2.0);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.3);

    begin(CValueDrag::Mode::kProportional, {0.6, 0.4}, 0.5);
    drag_.move(-20.0, 0.1, false);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.4);
    EXPECT_DOUBLE_EQ(drag_.getPosition(1), 0.6);
}

TEST_F(ValueDrag, AnotherStepCountsFromWhereTheValueIs)
{
    begin(CValueDrag::Mode::kAdditive, {0.5});
    drag_.move(10.0, 0.01, true);
    drag_.move(0.0, 0.001, true);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.6);
    drag_.move(-10.0, 0.001, true);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.59);
}

TEST_F(ValueDrag, TheWayBackFromAnEndBeginsAtOnceOnlyIfAskedFor)
{
    for (const bool stops : {true, false}) {
        begin(CValueDrag::Mode::kAdditive, {0.9});
        drag_.move(30.0, 0.01, stops);
        EXPECT_DOUBLE_EQ(drag_.getPosition(0), 1.0);
        drag_.move(-10.0, 0.01, stops);
        EXPECT_DOUBLE_EQ(drag_.getPosition(0), stops ? 0.9 : 1.0);
    }
}

TEST_F(ValueDrag, SmoothingDelaysButLosesNothing)
{
    drag_.setSmoothed(true);
    begin(CValueDrag::Mode::kAdditive, {0.0});
    drag_.move(8.0, 0.01, false);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.02);
    for (int i = 0; i < 3; ++i) {
        drag_.move(0.0, 0.01, false);
    }
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.08);
    drag_.move(4.0, 0.001, false);
    drag_.move(400.0, 0.001, false);
    EXPECT_DOUBLE_EQ(drag_.getPosition(0), 0.08 + 0.404) << "a flick arrives whole";
}

} // namespace
} // namespace qel
