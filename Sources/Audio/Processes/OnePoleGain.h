// The coefficient of the one-pole followers that all envelopes are made of.
#pragma once

#include "Math/Elementary.h"

#include <cmath>

namespace qel {

// k for a follower y += (input - y) * k whose -3 dB point is at `w` radians a sample:
// k = 1 + sqrt(x^2 - 1) - x with x = 2 - cos w. Between 0 and 0.83 for every w.
inline double onePoleGain(double w)
{
    const double x = 2.0 - math::cos(w);
    return 1.0 + std::sqrt(x * x - 1.0) - x;
}

// Four followers in series move smoothly where a single one would start with a corner. The envelopes set
// their cut-offs as these multiples of one frequency; the second and the third follower are alike.
inline constexpr double kCascadeFirst = 7.56;
inline constexpr double kCascadeMiddle = 1.31;
inline constexpr double kCascadeLast = 1.5;

} // namespace qel
