// The coefficient of the one-pole followers that first-order filters and envelopes are made of.
#pragma once

#include "Math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

// k for a follower y += (input - y) * k whose -3 dB point is at `w` radians a sample, 0 or more:
// k = 1 + sqrt(x^2 - 1) - x with x = 2 - cos w. It is 0.83 at pi and falls again beyond, down to 0 at 2 pi.
inline double onePoleGain(double w)
{
    const double x = 2.0 - math::cos(w);
    return 1.0 + std::sqrt(x * x - 1.0) - x;
}

// The same for envelopes, which stay at their fastest for every w beyond pi: at low sample rates they get
// there (the saturator's smoothers at 8 kHz, times near 0), and would stand still at 2 pi.
inline double envelopeGain(double w)
{
    return onePoleGain(std::min(w, std::numbers::pi));
}

// Four followers in series move smoothly where a single one would start with a corner. The envelopes set
// their cut-offs as these multiples of one frequency; the second and the third follower are alike.
inline constexpr double kCascadeFirst = 7.56;
inline constexpr double kCascadeMiddle = 1.31;
inline constexpr double kCascadeLast = 1.5;

} // namespace qel
