// How movements of the hand become movements of a value.
#include "KnobLaws.h"
#include "CValueDrag.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qel {
namespace {

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
