// Two samples side by side, and what lets a kernel be written once for one channel and for two.
#pragma once

#include "CKernelCall.h"

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

template <class Sample>
inline constexpr std::size_t kLanes = sizeof(Sample) / sizeof(double);

// get(lane) for each lane. `Sample` is double or SamplePair.
template <class Sample, class Get>
[[gnu::always_inline]] inline Sample gatherLanes(Get get)
{
    if constexpr (kLanes<Sample> == 1) {
        return get(std::size_t{0});
    } else {
        return Sample{get(std::size_t{0}), get(std::size_t{1})};
    }
}

// put(lane, value) for each lane.
[[gnu::always_inline]] inline void scatterLanes(double value, auto put)
{
    put(std::size_t{0}, value);
}
[[gnu::always_inline]] inline void scatterLanes(SamplePair value, auto put)
{
    put(std::size_t{0}, value[0]);
    put(std::size_t{1}, value[1]);
}

// Two samples that follow each other; they need not be aligned for vectors.
[[gnu::always_inline]] inline SamplePair loadPair(const double* samples)
{
    SamplePair pair;
    std::memcpy(&pair, samples, sizeof pair);
    return pair;
}
[[gnu::always_inline]] inline void storePair(double* samples, SamplePair pair)
{
    std::memcpy(samples, &pair, sizeof pair);
}

// `a` where the condition holds. Both are there already: nothing is skipped, and no branch mispredicted.
[[gnu::always_inline]] inline double chosen(bool condition, double a, double b)
{
    return condition ? a : b;
}
[[gnu::always_inline]] inline SamplePair chosen(SamplePairMask condition, SamplePair a, SamplePair b)
{
    return condition ? a : b;
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

// A signal operand of one or two channels.
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
