#include "KernelRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace qel {
namespace {

using test::isSameBits;
using test::KernelRig;
using test::noiseSignal;
using test::randomSplit;
using test::Signal;

// The weight of operand 3 over a whole fade and the sample after it.
Signal fadeWeights(std::size_t length, double direction)
{
    KernelRig rig;
    const CBufferRef state = rig.bytes(24);
    const CBufferRef out = rig.buffer(Signal(length + 1));
    rig.run("xfadei", length, direction, {state});
    rig.run("xfade", length + 1, 0,
            {out, state, rig.buffer(Signal(length + 1, 0.0)), rig.buffer(Signal(length + 1, 1.0))});
    return rig.read(out, length + 1);
}

// The oscillator's coefficient 2 cos v, rounded to 2^-53, stands for an angle that is off by up to 2^-54 /
// sin v, which adds up over the n samples to n^2 2^-54 / pi radians, half of which reaches the weight.
double tolerance(std::size_t length)
{
    const auto n = static_cast<double>(length);
    return 1e-14 + 2e-17 * n * n;
}

TEST(CrossfadeKernels, FollowARaisedCosineInBothDirections)
{
    for (const std::size_t length : {1U, 2U, 5U, 100U, 662U, 10000U, 100000U}) {
        for (const double direction : {0.0, 0.5}) {
            const Signal weights = fadeWeights(length, direction);
            const double sign = direction == 0.0 ? 1 : -1;
            double worst = 0;
            for (std::size_t i = 0; i <= length; ++i) {
                const double angle = std::numbers::pi * static_cast<double>(i) / static_cast<double>(length);
                worst = std::max(worst, std::fabs(weights[i] - (0.5 + sign * 0.5 * std::cos(angle))));
            }
            EXPECT_LE(worst, tolerance(length)) << "length " << length << " direction " << direction;
        }
    }
}

TEST(CrossfadeKernels, GiveTheSameBitsHoweverABlockIsSplit)
{
    KernelRig rig;
    const CBufferRef in2 = rig.buffer(noiseSignal(700, 1));
    const CBufferRef in3 = rig.buffer(noiseSignal(700, 2));
    const CBufferRef state = rig.bytes(24);
    const CBufferRef out = rig.buffer(Signal(700));
    rig.run("xfadei", 662, 0, {state});
    rig.run("xfade", 700, 0, {out, state, in2, in3});
    const Signal whole = rig.read(out, 700);

    rig.run("fill0", 700, 0, {out});
    rig.run("xfadei", 662, 0, {state});
    std::int32_t at = 0;
    for (const std::size_t piece : randomSplit(700, 5)) {
        rig.run("xfade", piece, 0, {out.advancedBy(at), state, in2.advancedBy(at), in3.advancedBy(at)});
        at += static_cast<std::int32_t>(piece);
    }
    EXPECT_TRUE(isSameBits(rig.read(out, 700), whole));
}

} // namespace
} // namespace qel
