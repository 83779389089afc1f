#include "ElementaryGolden.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace qel::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();
constexpr double kMax = std::numeric_limits<double>::max();

// The distance of a result from the true value in units of the last bit of the true value as a double.
double errorInUlps(double result, long double truth)
{
    int exponent = 0;
    std::frexp(truth, &exponent);
    const int lastBit = std::max(exponent - 53, -1074);
    return static_cast<double>(std::ldexp(std::fabs(static_cast<long double>(result) - truth), -lastBit));
}

// Same value, same sign of zero; any NaN is as good as another.
bool isSame(double a, double b)
{
    return (a != a && b != b) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

struct CAccuracyCase
{
    const char* name;
    double (*function)(double);
    long double (*reference)(long double);
    double bound; // ulps
    std::vector<std::array<double, 2>> ranges;
    int lowExponent;
    int highExponent;
};

const CAccuracyCase kAccuracyCases[] = {
    {"exp", math::exp, expl, 0.515, {{-745.1, -708}, {-708, 709.7}, {-1, 1}}, -60, 9},
    {"exp2", math::exp2, exp2l, 0.515, {{-1074.9, -1021}, {-1022, 1023.9}, {-1, 1}}, -60, 9},
    {"log", math::log, logl, 0.525, {{1e-320, 2.3e-308}, {0.1, 4}, {0.98, 1.02}, {1, 1 + 1e-9}}, -1022, 1023},
    {"log2", math::log2, log2l, 0.525, {{1e-320, 2.3e-308}, {0.1, 4}, {0.98, 1.02}}, -1022, 1023},
    {"log10", math::log10, log10l, 0.525, {{1e-320, 2.3e-308}, {0.1, 4}, {0.98, 1.02}}, -1022, 1023},
    {"sin", math::sin, sinl, 0.515, {{-0.3, 0.3}, {-7, 7}, {-4000, 4000}, {-2e6, 2e6}}, -60, 1023},
    {"cos", math::cos, cosl, 0.515, {{-0.3, 0.3}, {-7, 7}, {-4000, 4000}, {-2e6, 2e6}}, -60, 1023},
    {"tan", math::tan, tanl, 0.515, {{-0.3, 0.3}, {-7, 7}, {-4000, 4000}, {-2e6, 2e6}}, -60, 1023},
    {"atan", math::atan, atanl, 0.545, {{-0.3, 0.3}, {-2, 2}, {-100, 100}}, -60, 1023},
    {"sinh", math::sinh, sinhl, 0.535, {{-0.4, 0.4}, {-25, 25}, {700, 710.47}}, -60, 9},
    {"cosh", math::cosh, coshl, 0.515, {{-0.4, 0.4}, {-25, 25}, {700, 710.47}}, -60, 9},
    {"tanh", math::tanh, tanhl, 0.545, {{-0.4, 0.4}, {-25, 25}}, -60, 9},
    {"asinh", math::asinh, asinhl, 0.515, {{-0.2, 0.2}, {-10, 10}}, -60, 1023},
};

TEST(Elementary, StaysWithinTheStatedErrorOfTheTrueValue)
{
    for (const CAccuracyCase& test : kAccuracyCases) {
        CArguments arguments(7);
        double worst = 0;
        double worstAt = 0;
        const auto check = [&](double x) {
            const double error = errorInUlps(test.function(x), test.reference(x));
            if (!(error <= worst)) {
                worst = error;
                worstAt = x;
            }
        };
        const bool isSigned = test.ranges[0][0] < 0;
        for (int i = 0; i < 100000; ++i) {
            for (const auto& [first, end] : test.ranges) {
                check(arguments.uniform(first, end));
            }
            check(arguments.scattered(test.lowExponent, test.highExponent, isSigned));
        }
        EXPECT_LE(worst, test.bound) << test.name << " at " << std::hexfloat << worstAt;
    }
}

TEST(Elementary, RaisesToPowersWithinTheStatedError)
{
    CArguments arguments(11);
    double worst = 0;
    for (int i = 0; i < 400000; ++i) {
        double x = arguments.uniform(0, 4);
        double y = arguments.uniform(-10, 10);
        if (i % 4 == 1) { // over the whole range of results, subnormals included
            x = arguments.scattered(-1022, 1023, false);
            y = arguments.uniform(-1, 1) * 1074 / std::fabs(std::log2(x));
        } else if (i % 4 == 2) { // where an error of the logarithm is magnified most
            x = 1 + arguments.scattered(-40, -3, true);
            y = arguments.uniform(-700, 700) / std::fabs(std::log(x));
        } else if (i % 4 == 3) {
            x = -x;
            y = std::round(y);
        }
        const long double truth = std::pow(static_cast<long double>(x), static_cast<long double>(y));
        if (std::fabs(truth) < kMax) {
            const double error = errorInUlps(math::pow(x, y), truth);
            ASSERT_LE(error, 0.515) << std::hexfloat << x << " to the power " << y;
            worst = std::max(worst, error);
        }
    }
    EXPECT_GT(worst, 0.45); // the sweep did compare roundings
}

// Multiples of pi / 2 are where argument reduction loses most; doubles next to them are near the worst there
// is.
TEST(Elementary, ReducesAnglesNextToMultiplesOfHalfPi)
{
    const long double halfPi = std::acos(-1.0L) / 2;
    for (long double n = 1; n < 1e18L; n = std::floor(n * 1.01L) + 1) {
        const auto nearest = static_cast<double>(n * halfPi);
        for (const double x : {std::nextafter(nearest, 0.0), nearest, std::nextafter(nearest, kInfinity)}) {
            ASSERT_LE(errorInUlps(math::sin(x), sinl(x)), 0.515) << std::hexfloat << x;
            ASSERT_LE(errorInUlps(math::cos(x), cosl(x)), 0.515) << std::hexfloat << x;
            ASSERT_LE(errorInUlps(math::tan(x), tanl(x)), 0.515) << std::hexfloat << x;
        }
    }
    for (int n = 1; n < 660000; ++n) { // every one below 2^20, where the parts of pi / 2 cancel
        const auto x = static_cast<double>(n * halfPi);
        const bool isEven = n % 2 == 0;
        const double error = isEven ? errorInUlps(math::sin(x), sinl(x)) : errorInUlps(math::cos(x), cosl(x));
        ASSERT_LE(error, 0.515) << std::hexfloat << x;
    }
    // 6381956970095103 * 2^797 is the double nearest to a multiple of pi / 2, about 2^-61 away.
    const double hardest = std::ldexp(6381956970095103.0, 797);
    EXPECT_LE(errorInUlps(math::cos(hardest), cosl(hardest)), 0.515);
    EXPECT_EQ(math::cos(hardest), -4.68716592425462761112e-19);
}

TEST(Elementary, GivesExactResultsWhereTheyExist)
{
    for (int i = -1074; i < 1024; ++i) {
        const double power = std::ldexp(1.0, i);
        ASSERT_EQ(math::exp2(i), power);
        ASSERT_EQ(math::log2(power), i);
        ASSERT_EQ(math::pow(2, i), power);
    }
    double power = 1;
    for (int i = 0; i <= 22; ++i, power *= 10) { // 10^22 is the last exact one
        EXPECT_EQ(math::log10(power), i);
        EXPECT_EQ(math::pow(10, i), power);
        EXPECT_EQ(math::pow(-10, i), i % 2 == 0 ? power : -power);
    }
    EXPECT_EQ(math::pow(6.25, 0.5), 2.5);
}

TEST(Elementary, TreatsSpecialArgumentsAsIeeeRecommends)
{
    struct CCase
    {
        const char* name;
        double result;
        double expected;
    };
    const double halfPi = 0x1.921fb54442d18p0;
    const CCase cases[] = {
        {"exp 0", math::exp(0), 1},
        {"exp -inf", math::exp(-kInfinity), 0},
        {"exp inf", math::exp(kInfinity), kInfinity},
        {"exp 710", math::exp(710), kInfinity},
        {"exp 1e300", math::exp(1e300), kInfinity},
        {"exp -745.2", math::exp(-745.2), 0},
        {"exp -745.1", math::exp(-745.1), kLeast},
        {"exp2 1024", math::exp2(1024), kInfinity},
        {"exp2 -1075", math::exp2(-1075), 0},
        {"exp2 -1e300", math::exp2(-1e300), 0},
        {"log 1", math::log(1), 0},
        {"log 0", math::log(0), -kInfinity},
        {"log -0", math::log(-0.0), -kInfinity},
        {"log -1", math::log(-1), kNan},
        {"log inf", math::log(kInfinity), kInfinity},
        {"log2 1", math::log2(1), 0},
        {"log10 1", math::log10(1), 0},
        {"log10 -inf", math::log10(-kInfinity), kNan},
        {"sin inf", math::sin(kInfinity), kNan},
        {"cos -inf", math::cos(-kInfinity), kNan},
        {"cos 0", math::cos(0), 1},
        {"tan inf", math::tan(kInfinity), kNan},
        {"atan inf", math::atan(kInfinity), halfPi},
        {"atan -inf", math::atan(-kInfinity), -halfPi},
        {"sinh -inf", math::sinh(-kInfinity), -kInfinity},
        {"sinh 711", math::sinh(711), kInfinity},
        {"cosh -inf", math::cosh(-kInfinity), kInfinity},
        {"cosh 0", math::cosh(0), 1},
        {"tanh -inf", math::tanh(-kInfinity), -1},
        {"asinh -inf", math::asinh(-kInfinity), -kInfinity},
        {"1^nan", math::pow(1, kNan), 1},
        {"nan^0", math::pow(kNan, 0), 1},
        {"inf^-0", math::pow(kInfinity, -0.0), 1},
        {"nan^1", math::pow(kNan, 1), kNan},
        {"2^nan", math::pow(2, kNan), kNan},
        {"0^-3", math::pow(0, -3), kInfinity},
        {"-0^-3", math::pow(-0.0, -3), -kInfinity},
        {"-0^-2", math::pow(-0.0, -2), kInfinity},
        {"-0^3", math::pow(-0.0, 3), -0.0},
        {"-0^0.5", math::pow(-0.0, 0.5), 0},
        {"0^2", math::pow(0, 2), 0},
        {"-1^inf", math::pow(-1, kInfinity), 1},
        {"0.5^-inf", math::pow(0.5, -kInfinity), kInfinity},
        {"-2^inf", math::pow(-2, kInfinity), kInfinity},
        {"2^-inf", math::pow(2, -kInfinity), 0},
        {"-inf^3", math::pow(-kInfinity, 3), -kInfinity},
        {"-inf^-3", math::pow(-kInfinity, -3), -0.0},
        {"-inf^2.5", math::pow(-kInfinity, 2.5), kInfinity},
        {"-2^0.5", math::pow(-2, 0.5), kNan},
        {"-2^1025", math::pow(-2, 1025), -kInfinity},
        {"-2^-1077", math::pow(-2, -1077), -0.0},
        {"-1^(2^53+2)", math::pow(-1, 0x1p53 + 2), 1},
        {"-1^(2^53-1)", math::pow(-1, 0x1p53 - 1), -1},
        {"max^1e-320", math::pow(kMax, 1e-320), 1},
        {"least^max", math::pow(kLeast, kMax), 0},
        {"least^1", math::pow(kLeast, 1), kLeast},
        {"max^1", math::pow(kMax, 1), kMax},
    };
    for (const CCase& test : cases) {
        EXPECT_TRUE(isSame(test.result, test.expected)) << test.name << " gave " << test.result;
    }
}

TEST(Elementary, PassesNanOnAndKeepsTheSymmetryOfEachFunction)
{
    for (const CAccuracyCase& test : kAccuracyCases) {
        EXPECT_TRUE(std::isnan(test.function(kNan))) << test.name;
    }
    CArguments arguments(3);
    for (int i = 0; i < 10000; ++i) {
        const double x = i == 0 ? 0 : i == 1 ? kLeast : arguments.scattered(-1022, 1023, false);
        for (const auto function : {math::sin, math::tan, math::atan, math::sinh, math::tanh, math::asinh}) {
            ASSERT_TRUE(isSame(function(-x), -function(x))) << std::hexfloat << x;
        }
        ASSERT_TRUE(isSame(math::cos(-x), math::cos(x))) << std::hexfloat << x;
        ASSERT_TRUE(isSame(math::cosh(-x), math::cosh(x))) << std::hexfloat << x;
    }
    for (const double x : {0.0, kLeast, 1e-310, 1e-300}) {
        for (const auto function : {math::sin, math::tan, math::atan, math::sinh, math::tanh, math::asinh}) {
            EXPECT_TRUE(isSame(function(x), x)) << x;
        }
    }
}

// A difference here on another platform or compiler means that the same preset sounds different there.
TEST(Elementary, GivesTheSameBitsOnEveryPlatform)
{
    for (const CGoldenCase& golden : kGoldenCases) {
        EXPECT_EQ(hashOfResults(golden), golden.hash) << golden.name;
    }
}

} // namespace
} // namespace qel::test
