// The tables of exp and log, computed in double pairs by the compiler.
#pragma once

#include "Math/CDoublePair.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qel::math {

inline constexpr CDoublePair kLn2{0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

inline constexpr int kExpBits = 7;
inline constexpr int kExpSteps = 1 << kExpBits;
inline constexpr int kLogSteps = 128;

// 2^(i / kExpSteps) by the Taylor series of exp, Horner form; 0.7^28 / 28! is below 2^-110.
constexpr CDoublePair exp2Fraction(int i)
{
    const CDoublePair x = multiply(kLn2, {static_cast<double>(i) / kExpSteps, 0});
    CDoublePair sum{1, 0};
    for (int n = 28; n > 0; --n) {
        sum = add({1, 0}, divide(multiply(x, sum), {static_cast<double>(n), 0}));
    }
    return sum;
}

constexpr auto makeExpTable()
{
    std::array<CDoublePair, kExpSteps> table{};
    for (int i = 0; i < kExpSteps; ++i) {
        table[static_cast<std::size_t>(i)] = exp2Fraction(i);
    }
    return table;
}

// log(c) for c in [0.7, 1.42] by 2 atanh((c - 1) / (c + 1)); the argument is below 0.18, and 0.18^44 is below
// 2^-108.
constexpr CDoublePair logOf(double c)
{
    const CDoublePair s = divide({c - 1, 0}, {c + 1, 0});
    const CDoublePair square = multiply(s, s);
    CDoublePair sum{};
    for (int n = 43; n > 0; n -= 2) {
        sum = add(multiply(sum, square), divide({1, 0}, {static_cast<double>(n), 0}));
    }
    return multiply({2 * s.hi, 2 * s.lo}, sum);
}

// One interval of significands: a short reciprocal of its middle, and the logarithm of 1 / inverse, whose
// upper part is a multiple of 2^-42 so that adding k ln 2 to it is exact (Tang 1990).
struct CLogStep
{
    double inverse = 1;
    double logHi = 0;
    double logLo = 0;
};

// Significands are taken from [0x1.6ap-1, 0x1.6ap0), about [1/sqrt 2, sqrt 2), which keeps the logarithms of
// numbers on both sides of 1 free of cancellation.
inline constexpr std::uint64_t kLogBase = 0x3fe6a00000000000;

// The reciprocal has 8 fraction bits for significands from 1 up and 7 below, so that z * inverse - 1 is a
// multiple of 2^-60; it is below 2^-7, hence a double exactly. The two intervals that touch 1 have the
// reciprocal 1, for which the table adds nothing and small logarithms keep their relative accuracy.
constexpr CLogStep makeLogStep(int i)
{
    const std::uint64_t bits = kLogBase + (static_cast<std::uint64_t>(i) << 45);
    const double first = std::bit_cast<double>(bits);
    const double end = std::bit_cast<double>(bits + (std::uint64_t{1} << 45));
    if (first == 1) {
        return {};
    }
    const double grid = first < 1 ? 128 : 256;
    const double inverse = static_cast<int>(grid * 2 / (first + end) + 0.5) / grid;
    const CDoublePair log = negate(logOf(inverse));
    const double hi = (log.hi + 0x1.8p10) - 0x1.8p10;
    const CDoublePair lo = add(log, {-hi, 0});
    return {inverse, hi, lo.hi};
}

constexpr auto makeLogTable()
{
    std::array<CLogStep, kLogSteps> table{};
    for (int i = 0; i < kLogSteps; ++i) {
        table[static_cast<std::size_t>(i)] = makeLogStep(i);
    }
    return table;
}

inline constexpr auto kExpTable = makeExpTable();
inline constexpr auto kLogTable = makeLogTable();

} // namespace qel::math
