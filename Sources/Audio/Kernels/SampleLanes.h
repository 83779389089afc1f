// Samples side by side, and what lets a kernel be written once for one channel, for two and for four.
#pragma once

#include "CKernelCall.h"
#include "Unrolled.h"

#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qel {

// Each half follows the rules of a double, so the same operations in the same order give the bits of two
// separate calculations. A register of SSE2 where there is one, two doubles elsewhere.
using SamplePair [[gnu::vector_size(16)]] = double;
using SamplePairMask = decltype(SamplePair{} < SamplePair{});

// Four, for kernels that are run where the processor has AVX2 (see WideLanes.h). Not on Windows, where GCC
// does not align such registers on the stack, and Clang passes them to no function that was not compiled for
// them: there it is a second name.
#if defined(__x86_64__) && !defined(_WIN32) && !defined(__clang__)
#define QEL_HAS_WIDE_LANES 1
using SampleQuad [[gnu::vector_size(32)]] = double;
using SampleQuadMask = decltype(SampleQuad{} < SampleQuad{});
// All that takes or returns one is inlined.
#pragma GCC diagnostic ignored "-Wpsabi"
#else
#define QEL_HAS_WIDE_LANES 0
using SampleQuad = SamplePair;
#endif

template <class Sample>
inline constexpr std::size_t kLanes = sizeof(Sample) / sizeof(double);

// get(lane) for each lane. `Sample` is double, SamplePair or SampleQuad.
template <class Sample, class Get>
[[gnu::always_inline]] inline Sample gatherLanes(Get get)
{
    if constexpr (kLanes<Sample> == 1) {
        return get(std::size_t{0});
    } else if constexpr (kLanes<Sample> == 2) {
        return Sample{get(std::size_t{0}), get(std::size_t{1})};
    } else {
        return Sample{get(std::size_t{0}), get(std::size_t{1}), get(std::size_t{2}), get(std::size_t{3})};
    }
}

[[gnu::always_inline]] inline double laneOf(double value, std::size_t)
{
    return value;
}
template <class Vector>
[[gnu::always_inline]] inline auto laneOf(const Vector& value, std::size_t lane)
{
    return value[lane];
}

// put(lane, value) for each lane.
template <class Sample>
[[gnu::always_inline]] inline void scatterLanes(Sample value, auto put)
{
    unrolled<kLanes<Sample>>([&](auto lane) { put(std::size_t{lane}, laneOf(value, lane)); });
}

// Samples that follow each other; they need not be aligned for vectors.
template <class Sample>
[[gnu::always_inline]] inline Sample loadSamples(const double* samples)
{
    Sample loaded;
    std::memcpy(&loaded, samples, sizeof loaded);
    return loaded;
}
template <class Sample>
[[gnu::always_inline]] inline void storeSamples(double* samples, Sample value)
{
    std::memcpy(samples, &value, sizeof value);
}

// `a` where the condition holds. Both are there already: nothing is skipped, and no branch mispredicted.
[[gnu::always_inline]] inline double chosen(bool condition, double a, double b)
{
    return condition ? a : b;
}
template <class Mask, class Sample>
[[gnu::always_inline]] inline Sample chosen(Mask condition, Sample a, Sample b)
{
    return condition ? a : b;
}

[[gnu::always_inline]] inline bool bothOf(bool a, bool b)
{
    return a & b;
}
// By hand: with SSE2 alone, GCC takes two conditions that it is to join apart.
[[gnu::always_inline]] inline SamplePairMask bothOf(SamplePairMask a, SamplePairMask b)
{
#if defined(__SSE2__)
    return reinterpret_cast<SamplePairMask>(
        _mm_and_pd(reinterpret_cast<__m128d>(a), reinterpret_cast<__m128d>(b)));
#else
    return a & b;
#endif
}

[[gnu::always_inline]] inline bool isTrueAnywhere(bool condition)
{
    return condition;
}
[[gnu::always_inline]] inline bool isTrueAnywhere(SamplePairMask condition)
{
#if defined(__SSE2__)
    return _mm_movemask_pd(reinterpret_cast<__m128d>(condition)) != 0;
#else
    return condition[0] != 0 || condition[1] != 0;
#endif
}
[[gnu::always_inline]] inline bool isTrueEverywhere(bool condition)
{
    return condition;
}
[[gnu::always_inline]] inline bool isTrueEverywhere(SamplePairMask condition)
{
#if defined(__SSE2__)
    return _mm_movemask_pd(reinterpret_cast<__m128d>(condition)) == 3;
#else
    return condition[0] != 0 && condition[1] != 0;
#endif
}

// Without errno, which would cost a branch and a call.
[[gnu::always_inline]] inline double squareRoot(double x)
{
#if defined(__SSE2__)
    const __m128d packed = _mm_set_sd(x);
    return _mm_cvtsd_f64(_mm_sqrt_sd(packed, packed));
#else
    return std::sqrt(x);
#endif
}
[[gnu::always_inline]] inline SamplePair squareRoot(SamplePair x)
{
#if defined(__SSE2__)
    return _mm_sqrt_pd(x);
#else
    return SamplePair{std::sqrt(x[0]), std::sqrt(x[1])};
#endif
}

#if QEL_HAS_WIDE_LANES

// In halves, for which every processor has instructions.
template <class Quad>
[[gnu::always_inline]] inline auto lowHalf(Quad quad)
{
    return __builtin_shufflevector(quad, quad, 0, 1);
}
template <class Quad>
[[gnu::always_inline]] inline auto highHalf(Quad quad)
{
    return __builtin_shufflevector(quad, quad, 2, 3);
}
[[gnu::always_inline]] inline SampleQuadMask bothOf(SampleQuadMask a, SampleQuadMask b)
{
    return a & b;
}
[[gnu::always_inline]] inline bool isTrueAnywhere(SampleQuadMask condition)
{
    return isTrueAnywhere(lowHalf(condition) | highHalf(condition));
}
[[gnu::always_inline]] inline bool isTrueEverywhere(SampleQuadMask condition)
{
    return isTrueEverywhere(lowHalf(condition) & highHalf(condition));
}
[[gnu::always_inline]] inline SampleQuad squareRoot(SampleQuad x)
{
    return __builtin_shufflevector(squareRoot(lowHalf(x)), squareRoot(highHalf(x)), 0, 1, 2, 3);
}

#endif

// One call a channel, `stride` calls apart.
struct LaneCalls
{
    const CKernelCall* calls;
    std::size_t stride;

    const CKernelCall& operator[](std::size_t lane) const { return calls[lane * stride]; }

    template <class Sample, class State>
    [[gnu::always_inline]] Sample load(std::size_t operand, double State::*field) const
    {
        return gatherLanes<Sample>(
            [&](std::size_t lane) { return (*this)[lane].template state<State>(operand)->*field; });
    }
    template <class Sample, class State>
    [[gnu::always_inline]] void store(std::size_t operand, double State::*field, Sample value) const
    {
        scatterLanes(value, [&](std::size_t lane, double part) {
            (*this)[lane].template state<State>(operand)->*field = part;
        });
    }
    template <class Sample>
    [[gnu::always_inline]] Sample scalars() const
    {
        return gatherLanes<Sample>([&](std::size_t lane) { return (*this)[lane].scalar; });
    }
};

// A signal operand of as many channels as there are lanes.
template <class Sample>
struct LaneInput
{
    const double* samples[kLanes<Sample>];

    [[gnu::always_inline]] LaneInput(const LaneCalls& calls, std::size_t operand)
    {
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            samples[lane] = calls[lane].samples(operand);
        }
    }
    [[gnu::always_inline]] Sample operator[](std::size_t i) const
    {
        return gatherLanes<Sample>([&](std::size_t lane) { return samples[lane][i]; });
    }
};

template <class Sample>
struct LaneOutput
{
    double* samples[kLanes<Sample>];

    [[gnu::always_inline]] LaneOutput(const LaneCalls& calls, std::size_t operand)
    {
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            samples[lane] = calls[lane].samples(operand);
        }
    }
    [[gnu::always_inline]] void set(std::size_t i, Sample value) const
    {
        scatterLanes(value, [&](std::size_t lane, double part) { samples[lane][i] = part; });
    }
};

} // namespace qel
