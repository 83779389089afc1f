// The elementary functions that kernels use.
#pragma once

#include "Math/Elementary.h"

#include <numbers>

namespace qel::kernelmath {

inline constexpr double kPi = std::numbers::pi;

using math::cos;
using math::sin;

} // namespace qel::kernelmath
