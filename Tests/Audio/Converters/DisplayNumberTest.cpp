// Numbers as users read and type them.
#include "DisplayNumber.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <random>

namespace qel {
namespace {

TEST(DisplayNumber, RoundsHalvesAwayFromZero)
{
    const struct
    {
        double value;
        int decimals;
        const char* text;
    } cases[] = {
        {0.25, 1, "0.3"},
        {-0.25, 1, "-0.3"},
        {0.125, 2, "0.13"},
        {0.5, 0, "1"},
        {1.5, 0, "2"},
        {2.5, 0, "3"},
        {-2.5, 0, "-3"},
        {0.24, 1, "0.2"},
        {9.96, 1, "10.0"},
        {1.0, 7, "1.0000000"},
        {0.0000000001, 10, "0.0000000001"},
        {123456.789, 2, "123456.79"},
        {0.0, 1, "0.0"},
        {-0.0, 1, "0.0"},
        {-0.04, 1, "0.0"},
        {-0.4, 0, "0"},
        {-0.06, 1, "-0.1"},
        {4503599627370497.0, 0, "4503599627370497"}, // 2^52 + 1: adding a half would round up
        {1e20, 1, "100000000000000000000.0"},
        {-1e20, 0, "-100000000000000000000"},
        {std::numeric_limits<double>::infinity(), 1, ""},
        {std::numeric_limits<double>::quiet_NaN(), 1, ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(formatDisplayNumber(c.value, c.decimals).toUtf8(), c.text)
            << c.value << " with " << c.decimals << " decimals";
    }
    EXPECT_EQ(roundHalfAway(-1.5), -2.0);
    EXPECT_EQ(roundHalfAway(4503599627370497.0), 4503599627370497.0);
    EXPECT_FALSE(std::signbit(roundHalfAway(-0.3)));
}

// Text that was shown and is read back shows the same again, as long as it has no more digits than a double.
TEST(DisplayNumber, ReadsBackWhatItShows)
{
    constexpr unsigned kSeed = 7;
    std::mt19937_64 random(kSeed);
    std::uniform_real_distribution<double> exponent(-12.0, 15.0);
    for (int i = 0; i < 20000; ++i) {
        const int decimals = static_cast<int>(random() % 11);
        const double value = std::pow(10.0, exponent(random) - decimals) * (random() % 2 ? 1.0 : -1.0);
        const CString text = formatDisplayNumber(value, decimals);
        const auto parsed = parseDisplayNumber(text);
        ASSERT_TRUE(parsed) << text.toUtf8();
        // Half a unit of the last place, and what scaling by a power of ten rounds.
        ASSERT_NEAR(*parsed, value, 0.5 * std::pow(10.0, -decimals) + 1e-15 * std::abs(value))
            << "seed " << kSeed;
        ASSERT_EQ(formatDisplayNumber(*parsed, decimals), text) << "seed " << kSeed;
    }
}

} // namespace
} // namespace qel
