// Numbers of about 106 bits, each the unevaluated sum of two doubles.
#pragma once

#include <cfloat>
#include <limits>

namespace qel::math {

#ifdef __FAST_MATH__
#error "the pairs below lose their meaning when the compiler rearranges sums"
#endif
static_assert(FLT_EVAL_METHOD == 0, "every operation must round to a double");

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A sum hi + lo with |lo| far below |hi|; most functions leave it at most half an ulp of hi. Carries the bits
// that a double drops through the inner steps of the elementary functions and through the tables built at
// compile time. Only + - * / in a fixed order and no fused multiply-add, hence the same bits everywhere;
// exact in round to nearest, for magnitudes between about 1e-280 and 1e290. Methods: Dekker 1971, Knuth's
// two-sum, Veltkamp's split; no state, so any thread.
struct CDoublePair
{
    double hi = 0;
    double lo = 0;
};

// a + b exactly.
constexpr CDoublePair twoSum(double a, double b)
{
    const double sum = a + b;
    const double bPart = sum - a;
    return {sum, (a - (sum - bPart)) + (b - bPart)};
}

// a + b exactly, if |a| >= |b| or a is 0.
constexpr CDoublePair fastTwoSum(double a, double b)
{
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

// The upper 26 bits of a and the rest, each short enough for exact products.
constexpr CDoublePair split(double a)
{
    const double scaled = 0x1.0000002p27 * a;
    const double hi = scaled - (scaled - a);
    return {hi, a - hi};
}

// a * b exactly.
constexpr CDoublePair twoProduct(double a, double b)
{
    const double product = a * b;
    const CDoublePair x = split(a);
    const CDoublePair y = split(b);
    return {product, ((x.hi * y.hi - product) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo};
}

constexpr CDoublePair negate(CDoublePair a)
{
    return {-a.hi, -a.lo};
}

constexpr CDoublePair add(CDoublePair a, CDoublePair b)
{
    const CDoublePair hi = twoSum(a.hi, b.hi);
    const CDoublePair lo = twoSum(a.lo, b.lo);
    const CDoublePair sum = fastTwoSum(hi.hi, hi.lo + lo.hi);
    return fastTwoSum(sum.hi, sum.lo + lo.lo);
}

constexpr CDoublePair multiply(CDoublePair a, CDoublePair b)
{
    const CDoublePair product = twoProduct(a.hi, b.hi);
    return fastTwoSum(product.hi, product.lo + (a.hi * b.lo + a.lo * b.hi));
}

// The quotient; its relative error is below 2^-100 if both operands are that good.
constexpr CDoublePair divide(CDoublePair a, CDoublePair b)
{
    const double quotient = a.hi / b.hi;
    const CDoublePair product = twoProduct(quotient, b.hi);
    const double rest = (((a.hi - product.hi) - product.lo) + a.lo) - quotient * b.lo;
    return fastTwoSum(quotient, rest / b.hi);
}

} // namespace qel::math
