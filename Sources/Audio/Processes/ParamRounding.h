// Whole numbers out of parameter values.
#pragma once

#include <cmath>

namespace qel {

// The nearest whole number, ties away from zero. What no index can be, NaN included, gives -1.
inline int roundParam(double value)
{
    constexpr double kLimit = 1e9;
    return std::fabs(value) < kLimit ? static_cast<int>(std::lround(value)) : -1;
}

} // namespace qel
