// The natural logarithm, also of samples side by side.
#pragma once

#include "Math/Elementary.h"
#include "Math/ExpLogCore.h"
#include "SampleLanes.h"

#include <cfloat>

namespace qel {

// For kernels that are written for both.
[[gnu::always_inline]] inline double logAboveOne(double x)
{
    return math::log(x);
}
// Each lane gets the bits of math::log. For 1 <= x, infinity included. In a loop whose samples do not wait
// for each other it takes half the time of a call for each lane, or less.
template <class Sample>
[[gnu::always_inline]] inline Sample logAboveOne(Sample x)
{
    using Bits [[gnu::vector_size(sizeof(Sample))]] = std::uint64_t;
    constexpr std::uint64_t kExponent = 0xfff0000000000000;
    constexpr std::uint64_t kFirstHalf = 0xfffffffff8000000;
    constexpr double kToDouble = 0x1p52; // whose last bit counts as 1

    // The steps of math::reduceLog.
    const Bits bits = reinterpret_cast<Bits>(x);
    const Bits offset = bits - math::kLogBase;
    const Bits index = (offset >> 45) % math::kLogSteps;
    const math::CLogStep* steps[kLanes<Sample>];
    unrolled<kLanes<Sample>>([&](auto lane) { steps[lane] = &math::kLogTable[laneOf(index, lane)]; });
    const auto inverse = gatherLanes<Sample>([&](std::size_t lane) { return steps[lane]->inverse; });
    const auto logHi = gatherLanes<Sample>([&](std::size_t lane) { return steps[lane]->logHi; });
    const auto logLo = gatherLanes<Sample>([&](std::size_t lane) { return steps[lane]->logLo; });
    const Bits zBits = bits - (offset & kExponent);
    const Sample z = reinterpret_cast<Sample>(zBits);
    const Sample zHi = reinterpret_cast<Sample>(zBits & kFirstHalf);
    const Sample r = (zHi * inverse - 1.0) + (z - zHi) * inverse;
    const Bits exponent = (offset >> 52) | std::bit_cast<std::uint64_t>(kToDouble);
    const Sample k = reinterpret_cast<Sample>(exponent) - kToDouble;
    const Sample hi = k * math::kLn2Hi + logHi;
    const Sample lo = k * math::kLn2Lo + logLo;

    // Those of math::logPair, but for the lower half of the result, which is lost when the halves are added.
    const Sample sum = hi + r;
    const Sample rPart = sum - hi;
    const Sample rest = (hi - (sum - rPart)) + (r - rPart);
    const Sample log = sum + ((rest + lo) + math::logTail(r));
    return chosen(x <= DBL_MAX, log, x);
}

} // namespace qel
