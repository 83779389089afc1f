// The fixed arguments over which the bits of the elementary functions are compared between platforms.
#pragma once

#include "Math/Elementary.h"

#include <array>
#include <bit>
#include <cstdint>

namespace qel::test {

// Arguments from a 64-bit mixer (Steele, Lea and Flood 2014), made with exact operations only: half spread
// evenly over a range, half with random exponents.
class CArguments
{
public:
    explicit CArguments(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits()
    {
        std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
        return z ^ (z >> 31);
    }
    double uniform(double first, double end)
    {
        return first + (end - first) * (static_cast<double>(bits() >> 11) * 0x1p-53);
    }
    // Size from 2^first up to 2^last (excluded), either sign if isSigned.
    double scattered(int first, int last, bool isSigned)
    {
        const auto span = static_cast<std::uint64_t>(last - first);
        const std::uint64_t exponent = static_cast<std::uint64_t>(first + 1023) + bits() % span;
        const std::uint64_t random = bits();
        const std::uint64_t sign = isSigned ? random & 0x8000000000000000 : 0;
        return std::bit_cast<double>(sign | (exponent << 52) | (random & 0x000fffffffffffff));
    }

private:
    std::uint64_t state_;
};

struct CGoldenCase
{
    const char* name;
    double (*function)(double);
    double first; // range of the even half
    double end;
    int lowExponent; // range of the scattered half, which has both signs if the even half has
    int highExponent;
    std::uint64_t hash; // of 100000 results
};

inline double powOfOneArgument(double x)
{
    return math::pow(x, 3.7 - x * 0.01);
}

inline constexpr std::array<CGoldenCase, 15> kGoldenCases{{
    {"exp", math::exp, -745, 709, -40, 9, 0x30dd37c8ecbf992e},
    {"exp2", math::exp2, -1074, 1023, -40, 9, 0xddbe775050939d30},
    {"log", math::log, 0, 4, -1022, 1023, 0x2a2278ab609e9b94},
    {"log2", math::log2, 0, 4, -1022, 1023, 0x324bc0a981e4468b},
    {"log10", math::log10, 0, 4, -1022, 1023, 0x2057fb5478fd658d},
    {"pow", powOfOneArgument, 0, 4, -200, 10, 0xc9460deb39b30c0f},
    {"sin", math::sin, -4000, 4000, -40, 1023, 0xb5b5d839a14e1ad0},
    {"cos", math::cos, -4000, 4000, -40, 1023, 0x9e415c0875d963d8},
    {"tan", math::tan, -4000, 4000, -40, 1023, 0xcd363877059339f6},
    {"atan", math::atan, -4, 4, -40, 80, 0x03fefeb7a4905c2b},
    {"sinh", math::sinh, -5, 5, -40, 9, 0x0da84b4543c2ed51},
    {"cosh", math::cosh, -5, 5, -40, 9, 0xfcc3cb1021022ed3},
    {"tanh", math::tanh, -5, 5, -40, 6, 0x4e4a28aab1e7dee2},
    {"asinh", math::asinh, -5, 5, -40, 1023, 0x86cf2f188b3588c8},
    {"pow base near 1", [](double y) { return math::pow(1 + 0x1p-12, y); }, -1e6, 1e6, -40, 20,
     0xfa771272aca02f25},
}};

// FNV-1a over the results' bits, low byte first.
inline std::uint64_t hashOfResults(const CGoldenCase& golden)
{
    CArguments arguments(2024);
    const bool isSigned = golden.first < 0;
    std::uint64_t hash = 0xcbf29ce484222325;
    for (int i = 0; i < 100000; ++i) {
        const double x = i % 2 == 0 ? arguments.uniform(golden.first, golden.end)
                                    : arguments.scattered(golden.lowExponent, golden.highExponent, isSigned);
        const auto bits = std::bit_cast<std::uint64_t>(golden.function(x));
        for (int shift = 0; shift < 64; shift += 8) {
            hash = (hash ^ ((bits >> shift) & 0xff)) * 0x100000001b3;
        }
    }
    return hash;
}

} // namespace qel::test
