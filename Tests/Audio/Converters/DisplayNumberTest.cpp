// Numbers as users read and type them.
#include "DisplayNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace qel {
namespace {

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
