// The coefficient of the one-pole followers that first-order filters and envelopes are made of.
#pragma once

#include "Math/Elementary.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

// k for a follower y += (input - y) * k whose -3 dB point is at `w` radians a sample, 0 or more:
// k = 1 + sqrt(x^2 - 1) - x with x = 2 - cos w. At pi it is 0.83, and stays there for every w beyond: the
// formula alone would close the filter again, down to a standstill at 2 pi. Low sample rates get there (the
// saturator's smoothers at 8 kHz), and so do corners of filters near half the rate.
inline double onePoleGain(double w)
{
    const double x = 2.0 - math::cos(std::min(w, std::numbers::pi));
    return 1.0 + std::sqrt(x * x - 1.0) - x;
}

// Four followers in series move smoothly where a single one would start with a corner. The envelopes set
// their cut-offs as these multiples of one frequency; the second and the third follower are alike.
inline constexpr double kCascadeFirst = 7.56;
inline constexpr double kCascadeMiddle = 1.31;
inline constexpr double kCascadeLast = 1.5;

} // namespace qel
