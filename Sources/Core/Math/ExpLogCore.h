// The inner steps of exp and log, with more bits than a double; for the functions built on them.
#pragma once

#include "Math/ExpLogTables.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace qel::math {

// ln 2 and ln 2 / 128 cut after 2^-42: their products with any exponent or step count are exact.
inline constexpr double kLn2Hi = 0x1.62e42fefa38p-1;
inline constexpr double kLn2Lo = 0x1.ef35793c7673p-45;
inline constexpr double kStepHi = 0x1.62e42fef8p-8;
inline constexpr double kStepLo = 0x1.1cf79abc9e3b4p-43;

// x = exponent ln 2 + log(1 / step inverse) + log(1 + r), all but the last logarithm ready to add.
struct CLogReduction
{
    double hi;
    double lo;
    double r;
};

inline CLogReduction reduceLog(double x, int exponent)
{
    std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    if (x < std::numeric_limits<double>::min()) {
        bits = std::bit_cast<std::uint64_t>(x * 0x1p52);
        exponent -= 52;
    }
    const std::uint64_t offset = bits - kLogBase;
    const CLogStep& step = kLogTable[(offset >> 45) % kLogSteps];
    const double k = static_cast<double>((static_cast<std::int64_t>(offset) >> 52) + exponent);
    const std::uint64_t zBits = bits - (offset & 0xfff0000000000000);
    const double z = std::bit_cast<double>(zBits);
    const double zHi = std::bit_cast<double>(zBits & 0xfffffffff8000000);
    const double r = (zHi * step.inverse - 1) + (z - zHi) * step.inverse; // each operation is exact
    return {k * kLn2Hi + step.logHi, k * kLn2Lo + step.logLo, r};
}

// value * 2^exponent, not yet rounded to a double.
struct CScaledPair
{
    CDoublePair value;
    int exponent = 0;
};

// exp(x + tail) for |x| < 1100 and a tail below an ulp of x: value in [0.99, 2.01), relative error below
// 2^-60; lo may reach 1/300 of hi.
inline CScaledPair expScaled(double x, double tail)
{
    constexpr double kToInteger = 0x1.8p52; // added and taken away, it rounds to an integer
    const double shifted = x * 0x1.71547652b82fep7 + kToInteger;
    const double steps = shifted - kToInteger;
    const auto k = static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(shifted));
    const double r = ((x - steps * kStepHi) - steps * kStepLo) + tail;
    const CDoublePair& power = kExpTable[static_cast<std::size_t>(k & (kExpSteps - 1))];
    // |r| < 0.0028: the first term left out, r^6 / 720, is below 2^-60.
    const double r2 = r * r;
    const double p = r + r2 * ((0.5 + r * (1.0 / 6)) + r2 * (1.0 / 24 + r * (1.0 / 120)));
    return {{power.hi, power.lo + power.hi * p}, k >> kExpBits};
}

// log(1 + r) - r for |r| < 2^-7, of a double or of several: the Taylor series up to r^8 leaves 2^-59 of r.
template <class Number>
inline Number logTail(Number r)
{
    const Number r2 = r * r;
    const Number r4 = r2 * r2;
    const Number upper = (-1.0 / 6 + r * (1.0 / 7)) + r2 * (-1.0 / 8);
    return r2 * ((-0.5 + r * (1.0 / 3)) + r2 * (-0.25 + r * 0.2) + r4 * upper);
}

// log(x * 2^exponent) for finite x > 0; error below 2^-57 of the result.
inline CDoublePair logPair(double x, int exponent = 0)
{
    const CLogReduction log = reduceLog(x, exponent);
    const CDoublePair sum = twoSum(log.hi, log.r);
    return fastTwoSum(sum.hi, (sum.lo + log.lo) + logTail(log.r));
}

// log(x) for finite x > 0 with a relative error below 2^-66, for pow.
inline CDoublePair logPrecise(double x)
{
    const CLogReduction log = reduceLog(x, 0);
    const double r = log.r;
    const CDoublePair square = twoProduct(r, r);
    // Exact up to r^2 / 2; from r^3 on doubles suffice, up to r^10, which leaves 2^-70 of r.
    const double r2 = square.hi;
    const double r4 = r2 * r2;
    const double low = (1.0 / 3 - r * 0.25) + r2 * (0.2 - r * (1.0 / 6));
    const double high = (1.0 / 7 - r * (1.0 / 8)) + r2 * (1.0 / 9 - r * 0.1);
    const double tail = r * r2 * (low + r4 * high);
    const CDoublePair first = twoSum(log.hi, r);
    const CDoublePair second = twoSum(first.hi, -0.5 * square.hi);
    const double lo = ((first.lo + second.lo) + (log.lo - 0.5 * square.lo)) + tail;
    return fastTwoSum(second.hi, lo);
}

// 2^exponent for -1023 < exponent < 1024.
inline double powerOf2(int exponent)
{
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

// roundScaled for results that may be subnormal or too large.
double roundAtRangeEnd(CScaledPair x);

// Rounds to a double once, subnormal results included; overflows to infinity, underflows to 0.
inline double roundScaled(CScaledPair x)
{
    if (x.exponent >= -1021 && x.exponent <= 1022) {
        return (x.value.hi + x.value.lo) * powerOf2(x.exponent);
    }
    return roundAtRangeEnd(x);
}

} // namespace qel::math
