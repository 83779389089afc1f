// exp, log and pow. Method: Tang's table-driven exp (1989) and log (1990) with tables of 128 steps and the
// plain Taylor series of what remains, so that every constant follows from its formula.
#include "Math/Elementary.h"
#include "Math/ExpLogCore.h"

#include <cmath>
#include <limits>

namespace qel::math {

namespace {

// 1 / ln 2 and 1 / ln 10 to 106 bits.
constexpr CDoublePair kLog2E{0x1.71547652b82fep+0, 0x1.777d0ffda0d24p-56};
constexpr CDoublePair kLog10E{0x1.bcb7b1526e50ep-2, 0x1.95355baaafad3p-57};

bool isPositiveFinite(double x)
{
    return x > 0 && x < kInfinity;
}

// The logarithm, to any base, of an argument that is not a positive finite number.
double logSpecial(double x)
{
    if (x == 0) {
        return -kInfinity;
    }
    return x < 0 ? kNan : x; // NaN stays NaN, infinity stays infinity
}

double logScaled(double x, CDoublePair factor)
{
    if (!isPositiveFinite(x)) {
        return logSpecial(x);
    }
    const CDoublePair log = logPair(x);
    if (log.hi == 0) {
        return 0; // log(1), which is +0 to every base
    }
    const CDoublePair product = multiply(log, factor);
    return product.hi + product.lo;
}

enum class Parity
{
    kNotInteger,
    kEven,
    kOdd
};

Parity parityOf(double y)
{
    const double size = std::fabs(y);
    if (size >= 0x1p53) {
        return Parity::kEven;
    }
    const auto integer = static_cast<long long>(size);
    if (static_cast<double>(integer) != size) {
        return Parity::kNotInteger;
    }
    return integer % 2 == 0 ? Parity::kEven : Parity::kOdd;
}

// x^y where x is 0 or infinite, or y infinite; neither is NaN, y is not 0, x is not 1.
double powSpecial(double x, double y)
{
    const double size = std::fabs(x);
    if (std::fabs(y) == kInfinity) {
        if (size == 1) {
            return 1;
        }
        return (size > 1) == (y > 0) ? kInfinity : 0;
    }
    const double result = (size > 1) == (y > 0) ? kInfinity : 0;
    return std::signbit(x) && parityOf(y) == Parity::kOdd ? -result : result;
}

// x^y for finite x > 0, x != 1 and finite y != 0.
double powPositive(double x, double y)
{
    const CDoublePair log = logPrecise(x);
    const double estimate = y * log.hi;
    if (!(std::fabs(estimate) < 760)) {
        return estimate > 0 ? kInfinity : 0;
    }
    if (std::fabs(estimate) < 0x1p-60) {
        return 1;
    }
    const CDoublePair product = twoProduct(y, log.hi);
    return roundScaled(expScaled(product.hi, product.lo + y * log.lo));
}

} // namespace

double roundAtRangeEnd(CScaledPair x)
{
    const double value = x.value.hi + x.value.lo;
    if (x.exponent > 0) {
        return x.exponent > 1030 ? kInfinity : value * 0x1p1000 * powerOf2(x.exponent - 1000);
    }
    if (x.exponent < -1080) {
        return 0;
    }
    // Scaled to 8 at the least normal number, below which the place of the last bit is fixed. Adding 8, whose
    // last bit is worth as much, makes the one rounding happen there.
    const double scale = powerOf2(x.exponent + 1025);
    if (value * scale >= 8) {
        return value * scale * 0x1p-3 * 0x1p-1022;
    }
    const CDoublePair sum = twoSum(8, x.value.hi * scale);
    return ((sum.hi + (sum.lo + x.value.lo * scale)) - 8) * 0x1p-3 * 0x1p-1022;
}

double exp(double x)
{
    if (!(std::fabs(x) < 750)) {
        if (x != x) {
            return x;
        }
        return x > 0 ? kInfinity : 0;
    }
    return roundScaled(expScaled(x, 0));
}

double exp2(double x)
{
    if (!(std::fabs(x) < 1080)) {
        if (x != x) {
            return x;
        }
        return x > 0 ? kInfinity : 0;
    }
    // The integer is taken out exactly; what remains is turned into a natural exponent in a double pair.
    constexpr double kToInteger = 0x1.8p52;
    const double integer = (x + kToInteger) - kToInteger;
    const double fraction = x - integer;
    const CDoublePair product = twoProduct(fraction, kLn2.hi);
    CScaledPair result = expScaled(product.hi, product.lo + fraction * kLn2.lo);
    result.exponent += static_cast<int>(integer);
    return roundScaled(result);
}

double log(double x)
{
    if (!isPositiveFinite(x)) {
        return logSpecial(x);
    }
    const CDoublePair log = logPair(x);
    return log.hi + log.lo;
}

double log2(double x)
{
    return logScaled(x, kLog2E);
}

double log10(double x)
{
    return logScaled(x, kLog10E);
}

double pow(double x, double y)
{
    if (y == 0 || x == 1) {
        return 1;
    }
    if (x != x || y != y) {
        return x != x ? x : y;
    }
    const double size = std::fabs(x);
    if (size == 0 || size == kInfinity || std::fabs(y) == kInfinity) {
        return powSpecial(x, y);
    }
    if (x > 0) {
        return powPositive(x, y);
    }
    const Parity parity = parityOf(y);
    if (parity == Parity::kNotInteger) {
        return kNan;
    }
    const double result = size == 1 ? 1 : powPositive(size, y);
    return parity == Parity::kOdd ? -result : result;
}

} // namespace qel::math
