// The elementary functions that kernels use.
#pragma once

#include <cmath>
#include <numbers>

namespace qel::kernelmath {

inline constexpr double kPi = std::numbers::pi;

using std::cos;
using std::sin;

} // namespace qel::kernelmath
