// Rounding as people do it.
#pragma once

#include <cmath>

namespace qel {

// From here on a double has no halves left, and adding one would round.
inline constexpr double kNoHalves = 4503599627370496.0; // 2^52

// Halves go away from zero; never a negative zero.
inline double roundHalfAway(double value)
{
    const double magnitude = std::abs(value);
    if (!(magnitude < kNoHalves)) {
        return value;
    }
    const double rounded = std::floor(magnitude + 0.5);
    return rounded == 0.0 ? 0.0 : std::copysign(rounded, value);
}

} // namespace qel
