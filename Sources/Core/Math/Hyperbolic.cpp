// sinh, cosh, tanh and asinh, from exp and log in double pairs, and Taylor series where those would cancel.
#include "Math/Elementary.h"
#include "Math/ExpLogCore.h"

#include <cmath>
#include <limits>

namespace qel::math {

namespace {

// Below this size all of them but cosh are x to within 2^-58.
constexpr double kTiny = 0x1p-29;
// From here on exp(-2 x) is below 2^-63 of 1.
constexpr double kOneSided = 22;

struct CExpPair
{
    CDoublePair up;   // exp(x) / 2
    CDoublePair down; // exp(-x) / 2
};

// For 0 <= x <= kOneSided.
CExpPair halfExponentials(double x)
{
    const CScaledPair exp = expScaled(x, 0);
    const double scale = powerOf2(exp.exponent - 1);
    const CDoublePair up = fastTwoSum(exp.value.hi * scale, exp.value.lo * scale);
    return {up, divide({0.25, 0}, up)};
}

// exp(x) / 2 for x >= kOneSided; exceeds the range of a double only where sinh and cosh do.
double halfExponential(double x)
{
    if (x > 720) {
        return kInfinity;
    }
    CScaledPair exp = expScaled(x, 0);
    --exp.exponent;
    return roundScaled(exp);
}

// sinh of 0 <= x < 0.3 by its series to x^13, unrounded.
CDoublePair sinhSeries(double x)
{
    const double z = x * x;
    const double z2 = z * z;
    const double low = 1.0 / 6 + z * (1.0 / 120);
    const double mid = 1.0 / 5040 + z * (1.0 / 362880);
    const double high = 1.0 / 39916800 + z * (1.0 / 6227020800);
    return fastTwoSum(x, x * z * (low + z2 * (mid + z2 * high)));
}

constexpr double kSeriesLimit = 0.3;

// sinh of 0 <= x <= kOneSided, unrounded.
CDoublePair sinhPair(double x, const CExpPair& half)
{
    return x < kSeriesLimit ? sinhSeries(x) : add(half.up, negate(half.down));
}

// sqrt(a) for a > 0.
CDoublePair squareRoot(CDoublePair a)
{
    const double root = std::sqrt(a.hi);
    const CDoublePair square = twoProduct(root, root);
    return fastTwoSum(root, (((a.hi - square.hi) - square.lo) + a.lo) / (2 * root));
}

// asinh of 0 <= x < 1/8 by its series, whose coefficients are (-1)^n (2n)! / (4^n n!^2 (2n + 1)).
double asinhSeries(double x)
{
    const double z = x * x;
    const double z2 = z * z;
    const double low = (-1.0 / 6 + z * (3.0 / 40)) + z2 * (-15.0 / 336 + z * (105.0 / 3456));
    const double high =
        (-945.0 / 42240 + z * (10395.0 / 599040)) + z2 * (-135135.0 / 9676800 + z * (2027025.0 / 175472640));
    return x + x * z * (low + z2 * z2 * high);
}

// asinh of x >= 1/8 as log(x + sqrt(x^2 + 1)).
double asinhByLog(double x)
{
    if (x > 0x1p31) { // 1 no longer counts; log(2 x) without the overflow
        const CDoublePair log = logPair(x, 1);
        return log.hi + log.lo;
    }
    const CDoublePair root = squareRoot(add(twoProduct(x, x), {1, 0}));
    const CDoublePair sum = add(root, {x, 0});
    const CDoublePair log = logPair(sum.hi);
    return log.hi + (log.lo + sum.lo / sum.hi);
}

} // namespace

double sinh(double x)
{
    const double size = std::fabs(x);
    if (!(size >= kTiny)) {
        return x;
    }
    double value = 0;
    if (size < kSeriesLimit) {
        const CDoublePair sum = sinhSeries(size);
        value = sum.hi + sum.lo;
    } else if (size < kOneSided) {
        const CDoublePair sum = sinhPair(size, halfExponentials(size));
        value = sum.hi + sum.lo;
    } else {
        value = halfExponential(size);
    }
    return x < 0 ? -value : value;
}

double cosh(double x)
{
    const double size = std::fabs(x);
    if (size < kOneSided) {
        const CExpPair half = halfExponentials(size);
        const CDoublePair sum = add(half.up, half.down);
        return sum.hi + sum.lo;
    }
    return size != size ? x : halfExponential(size);
}

double tanh(double x)
{
    const double size = std::fabs(x);
    if (!(size >= kTiny)) {
        return x;
    }
    double value = 1;
    if (size < kOneSided) {
        const CExpPair half = halfExponentials(size);
        const CDoublePair quotient = divide(sinhPair(size, half), add(half.up, half.down));
        value = quotient.hi + quotient.lo;
    }
    return x < 0 ? -value : value;
}

double asinh(double x)
{
    const double size = std::fabs(x);
    if (!(size >= kTiny) || size == kInfinity) {
        return x;
    }
    const double value = size < 0.125 ? asinhSeries(size) : asinhByLog(size);
    return x < 0 ? -value : value;
}

} // namespace qel::math
