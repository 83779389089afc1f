#include "ElementaryGolden.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace qel::test {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();

// Same value, same sign of zero; any NaN is as good as another.
bool isSame(double a, double b)
{
    return (a != a && b != b) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

TEST(Elementary, PassesNanOnAndKeepsTheSymmetryOfEachFunction)
{
    for (const CGoldenCase& golden : kGoldenCases) {
        EXPECT_TRUE(std::isnan(golden.function(kNan))) << golden.name;
    }
    CArguments arguments(3);
    for (int i = 0; i < 10000; ++i) {
        const double x = i == 0 ? 0 : i == 1 ? kLeast : arguments.scattered(-1022, 1023, false);
        for (const auto function : {math::sin, math::tan, math::atan, math::sinh, math::tanh, math::asinh}) {
            ASSERT_TRUE(isSame(function(-x), -function(x))) << std::hexfloat << x;
        }
        ASSERT_TRUE(isSame(math::cos(-x), math::cos(x))) << std::hexfloat << x;
        ASSERT_TRUE(isSame(math::cosh(-x), math::cosh(x))) << std::hexfloat << x;
    }
    for (const double x : {0.0, kLeast, 1e-310, 1e-300}) {
        for (const auto function : {math::sin, math::tan, math::atan, math::sinh, math::tanh, math::asinh}) {
            EXPECT_TRUE(isSame(function(x), x)) << x;
        }
    }
}

// A difference here on another platform or compiler means that the same preset sounds different there.
TEST(Elementary, GivesTheSameBitsOnEveryPlatform)
{
    for (const CGoldenCase& golden : kGoldenCases) {
        EXPECT_EQ(hashOfResults(golden), golden.hash) << golden.name;
    }
}

} // namespace
} // namespace qel::test
