// sin, cos, tan and atan. Methods: Cody and Waite's reduction with pi / 2 in four parts up to 2^20, Payne and
// Hanek's above; then a table of 128 steps a unit with the addition theorem, and Taylor series of what
// remains.
#include "Math/CDoublePair.h"
#include "Math/Elementary.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace qel::math {

namespace {

constexpr CDoublePair kHalfPi{0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};

// Below this size sin x, tan x and atan x are x to within 2^-58.
constexpr double kTinyAngle = 0x1p-29;

// --- tables, computed in double pairs by the compiler

constexpr double kStepsPerUnit = 128;
constexpr std::size_t kSinCosSteps = 102; // up to pi / 4
constexpr std::size_t kAtanSteps = 129;   // up to 1

// What sin(c + d) = sin c + cos c sin d + sin c (cos d - 1) takes from a table, or the same for cos(c + d).
// The factor of sin d is split into 1 (or 0 for the cosine) and the rest: 1 * d is added without loss, and
// next to the sum the rest is small for every c, so that one formula is accurate from d = 0 up.
struct CAngleStep
{
    double hi = 0; // sin c or cos c
    double lo = 0;
    double whole = 0; // 1 or 0
    double rest = 0;  // cos c - 1 or -sin c
};

// The Taylor series x^first / first! - x^(first + 2) / (first + 2)! + ..., for x below 0.8.
constexpr CDoublePair alternatingSeries(double x, int first)
{
    const CDoublePair square = multiply({x, 0}, {x, 0});
    CDoublePair sum{1, 0};
    for (int n = first + 26; n > first; n -= 2) {
        const double factors = n * (n - 1.0);
        sum = add({1, 0}, negate(divide(multiply(square, sum), {factors, 0})));
    }
    return first == 0 ? sum : multiply({x, 0}, sum);
}

constexpr auto makeSinCosTable()
{
    std::array<std::array<CAngleStep, 2>, kSinCosSteps> table{};
    for (std::size_t i = 0; i < kSinCosSteps; ++i) {
        const double x = static_cast<double>(i) / kStepsPerUnit;
        const CDoublePair sin = alternatingSeries(x, 1);
        const CDoublePair cos = alternatingSeries(x, 0);
        table[i][0] = {sin.hi, sin.lo, 1, (cos.hi - 1) + cos.lo};
        table[i][1] = {cos.hi, cos.lo, 0, -sin.hi};
    }
    return table;
}

// The table of atan(i / 128) by the sum of atan c' - atan c = atan((c' - c) / (1 + c c')), an angle below
// 1/128, whose series leaves 2^-133 after 9 terms.
constexpr auto makeAtanTable()
{
    std::array<CDoublePair, kAtanSteps> table{};
    for (std::size_t i = 1; i < kAtanSteps; ++i) {
        const double c = static_cast<double>(i) / kStepsPerUnit;
        const double before = static_cast<double>(i - 1) / kStepsPerUnit;
        const CDoublePair t = divide({1 / kStepsPerUnit, 0}, {1 + c * before, 0});
        const CDoublePair square = multiply(t, t);
        CDoublePair sum{};
        for (int n = 17; n > 0; n -= 2) {
            sum = add(divide({1, 0}, {static_cast<double>(n), 0}), negate(multiply(sum, square)));
        }
        table[i] = add(table[i - 1], multiply(t, sum));
    }
    return table;
}

constexpr auto kSinCosTable = makeSinCosTable();
constexpr auto kAtanTable = makeAtanTable();

// The first 1216 bits of 2 / pi behind one word of zeros: floor(2^1216 * 2 / pi), from a 2000 bit evaluation
// of pi. The largest exponent reaches into the last word.
constexpr std::array<std::uint64_t, 20> kTwoOverPi = {
    0x0000000000000000, 0xa2f9836e4e441529, 0xfc2757d1f534ddc0, 0xdb6295993c439041, 0xfe5163abdebbc561,
    0xb7246e3a424dd2e0, 0x06492eea09d1921c, 0xfe1deb1cb129a73e, 0xe88235f52ebb4484, 0xe99c7026b45f7e41,
    0x3991d639835339f4, 0x9c845f8bbdf9283b, 0x1ff897ffde05980f, 0xef2f118b5a0a6d1f, 0x6d367ecf27cb09b7,
    0x4f463f669e5fea2d, 0x7527bac7ebe5f17b, 0x3d0739f78a5292ea, 0x6bfb5fb11f8d5d08, 0x56033046fc7b6bab};

// --- argument reduction: x = quadrant * pi / 2 + rest (modulo 2 pi), |rest| at most a hair over pi / 4

struct CReducedAngle
{
    CDoublePair rest;
    unsigned quadrant = 0;
};

// For 0 <= x <= 2^20. The first three parts of pi / 2 have 33 bits at most, so that their products with the
// quadrant are exact; all four reach to 2^-157.
CReducedAngle reduceByParts(double x)
{
    constexpr double kToInteger = 0x1.8p52;
    const double n = (x * 0x1.45f306dc9c883p-1 + kToInteger) - kToInteger;
    const double first = x - n * 0x1.921fb544p+0; // exact
    if (std::fabs(first) > 0x1p-12) { // no cancellation to come: three parts are enough, to 2^-102
        const double product = n * 0x1.0b4611a6p-34;
        const CDoublePair rest = fastTwoSum(first, -product);
        return {fastTwoSum(rest.hi, rest.lo - n * 0x1.3198a2e037073p-69), static_cast<unsigned>(n)};
    }
    const CDoublePair second = twoSum(first, -(n * 0x1.0b4611a6p-34));
    const CDoublePair third = twoSum(second.hi, -(n * 0x1.3198a2ep-69));
    const double lo = (second.lo + third.lo) - n * 0x1.b839a252049c1p-104;
    return {fastTwoSum(third.hi, lo), static_cast<unsigned>(n)};
}

__extension__ using Wide = unsigned __int128;

// The upper 106 bits of a 192 bit fraction below 1/2, words from high to low.
CDoublePair fractionToPair(std::uint64_t high, std::uint64_t middle, std::uint64_t low)
{
    double scale = 1;
    if (high == 0) {
        high = middle;
        middle = low;
        scale = 0x1p-64;
    }
    const int zeros = std::countl_zero(high);
    if (zeros == 64) {
        return {}; // out of reach: no double comes that close to a multiple of pi / 2
    }
    if (zeros > 0) {
        high = (high << zeros) | (middle >> (64 - zeros));
        middle <<= zeros;
    }
    scale *= std::bit_cast<double>(static_cast<std::uint64_t>(1023 - zeros) << 52);
    const double upper = static_cast<double>(high >> 11) * 0x1p-53;
    const double lower = static_cast<double>(((high & 0x7ff) << 42) | (middle >> 22)) * 0x1p-106;
    return fastTwoSum(upper * scale, lower * scale);
}

// For finite x >= 2^20: the 53 bit significand times those 192 bits of 2 / pi that reach the fraction and the
// last two bits of the quotient; what is cut off is below 2^-137.
CReducedAngle reduceByBits(double x)
{
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    const std::uint64_t significand = (bits & 0x000fffffffffffff) | 0x0010000000000000;
    const std::uint64_t exponent = bits >> 52;
    const std::uint64_t skip =
        exponent - 1075 + 62; // bits whose products are multiples of 4, and the zeros in front
    const std::size_t word = skip / 64;
    const unsigned shift = skip % 64;
    const auto window = [&](std::size_t i) {
        const std::uint64_t here = kTwoOverPi[word + i];
        return shift == 0 ? here : (here << shift) | (kTwoOverPi[word + i + 1] >> (64 - shift));
    };
    const Wide low = Wide{significand} * window(2);
    const Wide middle = Wide{significand} * window(1) + static_cast<std::uint64_t>(low >> 64);
    const std::uint64_t word0 = static_cast<std::uint64_t>(low);
    const std::uint64_t word1 = static_cast<std::uint64_t>(middle);
    const std::uint64_t word2 = significand * window(0) + static_cast<std::uint64_t>(middle >> 64);

    auto quadrant = static_cast<unsigned>(word2 >> 62);
    std::uint64_t high = (word2 << 2) | (word1 >> 62);
    std::uint64_t mid = (word1 << 2) | (word0 >> 62);
    std::uint64_t rest = word0 << 2;
    const bool roundUp = (high >> 63) != 0;
    if (roundUp) { // nearer to the next multiple: the distance to it, counted down
        ++quadrant;
        high = ~high;
        mid = ~mid;
        rest = ~rest;
    }
    const CDoublePair angle = multiply(fractionToPair(high, mid, rest), kHalfPi);
    return {roundUp ? negate(angle) : angle, quadrant};
}

CReducedAngle reduceAngle(double x)
{
    if (x <= 0.785) {
        return {{x, 0}, 0};
    }
    return x < 0x1p20 ? reduceByParts(x) : reduceByBits(x);
}

// --- kernels

constexpr std::uint64_t kSignBit = 0x8000000000000000;

// x, negated if the sign bit of `sign` is set. Branches on the sign or quadrant of an angle would be guesses.
double flipSign(double x, std::uint64_t sign)
{
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) ^ (sign & kSignBit));
}

// sin x (isCos 0) or cos x (1) for 0 <= x <= pi / 4 and a hair, unrounded.
CDoublePair sinOrCos(CDoublePair x, unsigned isCos)
{
    const auto i = static_cast<std::size_t>(static_cast<int>(x.hi * kStepsPerUnit + 0.5));
    const CAngleStep& step = kSinCosTable[i][isCos];
    const double d = x.hi - static_cast<double>(i) * (1 / kStepsPerUnit); // exact, at most 2^-8
    const double d2 = d * d;
    // The terms left out are below 2^-68 and 2^-79.
    const double sinRest = d * d2 * (-1.0 / 6 + d2 * (1.0 / 120)) + x.lo;
    const double cosMinus1 = d2 * (-0.5 + d2 * (1.0 / 24 - d2 * (1.0 / 720)));
    const CDoublePair sum = fastTwoSum(step.hi, step.whole * d);
    const double slope = (step.whole + step.rest) * sinRest + step.rest * d;
    return {sum.hi, (sum.lo + step.lo) + (slope + step.hi * cosMinus1)};
}

// sin of quadrant * pi / 2 + x, rounded.
double sinOfReduced(CDoublePair x, unsigned quadrant)
{
    const std::uint64_t sign = std::bit_cast<std::uint64_t>(x.hi);
    const unsigned isCos = quadrant & 1;
    const CDoublePair result = sinOrCos({std::fabs(x.hi), flipSign(x.lo, sign)}, isCos);
    const std::uint64_t argumentSign = isCos == 0 ? sign : 0;
    return flipSign(result.hi + result.lo, argumentSign ^ (std::uint64_t{quadrant & 2} << 62));
}

// atan of 0 <= x <= 1, unrounded.
CDoublePair atanKernel(CDoublePair x)
{
    if (x.hi < 0.125) {
        const double z = x.hi * x.hi;
        const double z2 = z * z;
        const double low = (-1.0 / 3 + z * (1.0 / 5)) + z2 * (-1.0 / 7 + z * (1.0 / 9));
        const double high = (-1.0 / 11 + z * (1.0 / 13)) + z2 * (-1.0 / 15 + z * (1.0 / 17));
        return {x.hi, x.hi * z * (low + z2 * z2 * high) + x.lo * (1 - z)};
    }
    const auto i = static_cast<std::size_t>(static_cast<int>(x.hi * kStepsPerUnit + 0.5));
    const double c = static_cast<double>(i) * (1 / kStepsPerUnit);
    const double d = ((x.hi - c) + x.lo) / (1 + c * x.hi);
    const double d2 = d * d;
    const double small = d + d * d2 * (-1.0 / 3 + d2 * (1.0 / 5 - d2 * (1.0 / 7)));
    return {kAtanTable[i].hi, kAtanTable[i].lo + small};
}

} // namespace

double sin(double x)
{
    const double size = std::fabs(x);
    if (!(size >= kTinyAngle)) {
        return x;
    }
    if (size > std::numeric_limits<double>::max()) {
        return kNan;
    }
    const CReducedAngle angle = reduceAngle(size);
    const double value = sinOfReduced(angle.rest, angle.quadrant);
    return x < 0 ? -value : value;
}

double cos(double x)
{
    const double size = std::fabs(x);
    if (!(size <= std::numeric_limits<double>::max())) {
        return x != x ? x : kNan;
    }
    const CReducedAngle angle = reduceAngle(size);
    return sinOfReduced(angle.rest, angle.quadrant + 1);
}

double tan(double x)
{
    const double size = std::fabs(x);
    if (!(size >= kTinyAngle)) {
        return x;
    }
    if (size > std::numeric_limits<double>::max()) {
        return kNan;
    }
    const CReducedAngle angle = reduceAngle(size);
    const bool negative = (angle.rest.hi < 0) != (x < 0);
    const CDoublePair rest = angle.rest.hi < 0 ? negate(angle.rest) : angle.rest;
    const CDoublePair sinUnrounded = sinOrCos(rest, 0);
    const CDoublePair cosUnrounded = sinOrCos(rest, 1);
    const CDoublePair s = fastTwoSum(sinUnrounded.hi, sinUnrounded.lo);
    const CDoublePair c = fastTwoSum(cosUnrounded.hi, cosUnrounded.lo);
    const bool isOdd = angle.quadrant % 2 != 0; // tan(x + pi / 2) = -cos x / sin x
    const CDoublePair quotient = isOdd ? divide(c, s) : divide(s, c);
    const double value = quotient.hi + quotient.lo;
    return negative != isOdd ? -value : value;
}

double atan(double x)
{
    const double size = std::fabs(x);
    if (!(size >= kTinyAngle)) {
        return x;
    }
    double value = kHalfPi.hi;
    if (size <= 1) {
        const CDoublePair angle = atanKernel({size, 0});
        value = angle.hi + angle.lo;
    } else if (size < 0x1p60) {
        const CDoublePair angle = atanKernel(divide({1, 0}, {size, 0}));
        const CDoublePair difference = twoSum(kHalfPi.hi, -angle.hi);
        value = difference.hi + (difference.lo + (kHalfPi.lo - angle.lo));
    }
    return x < 0 ? -value : value;
}

} // namespace qel::math
