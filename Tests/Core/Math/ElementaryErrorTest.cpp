// How far results may be from the true value, which the system's longer floating-point numbers stand for:
// Windows has none.
#include "ElementaryGolden.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace qel::test {
namespace {

constexpr double kMax = std::numeric_limits<double>::max();

// The distance of a result from the true value in units of the last bit of the true value as a double.
double errorInUlps(double result, long double truth)
{
    int exponent = 0;
    std::frexp(truth, &exponent);
    const int lastBit = std::max(exponent - 53, -1074);
    return static_cast<double>(std::ldexp(std::fabs(static_cast<long double>(result) - truth), -lastBit));
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

TEST(ElementaryError, StaysWithinTheStatedBound)
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

TEST(ElementaryError, OfPowersStaysWithinTheStatedBound)
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

} // namespace
} // namespace qel::test
