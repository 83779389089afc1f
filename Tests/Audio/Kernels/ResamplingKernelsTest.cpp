#include "KernelRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace qel {
namespace {

using test::isSameBits;
using test::KernelRig;
using test::noiseSignal;
using test::randomSplit;
using test::Signal;

TEST(ResamplingKernels, InterpolationFollowedByDecimationDoublesTheLevel)
{
    for (const std::size_t count : {0U, 1U, 7U, 512U}) {
        KernelRig rig;
        const Signal signal = noiseSignal(512, 3);
        const CBufferRef in = rig.buffer(signal);
        const CBufferRef twice = rig.buffer(Signal(1026, 9.0));
        const CBufferRef even = rig.buffer(Signal(513, 9.0));
        const CBufferRef odd = rig.buffer(Signal(513, 9.0));
        rig.run("interp2", count, 0, {twice, in});
        rig.run("decim2", count, 0, {even, twice});
        rig.run("decim2s", count, 0, {odd, twice});
        EXPECT_EQ(rig.read(twice, 1026)[2 * count], 9.0);
        EXPECT_EQ(rig.read(even, 513)[count], 9.0);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(rig.read(even, count)[i], 2 * signal[i]);
            ASSERT_EQ(rig.read(odd, count)[i], 0);
        }
    }
}

TEST(ResamplingKernels, MidSideIsMeanAndHalfDifferenceAndComesBack)
{
    KernelRig rig;
    const Signal left = noiseSignal(401, 1);
    const Signal right = noiseSignal(401, 2);
    const CBufferRef a = rig.buffer(left);
    const CBufferRef b = rig.buffer(right);
    rig.run("msenc", 401, 0, {a, b, a, b});
    const Signal mid = rig.read(a, 401);
    const Signal side = rig.read(b, 401);
    rig.run("msdec", 401, 0, {a, b, a, b});
    for (std::size_t i = 0; i < 401; ++i) {
        ASSERT_NEAR(mid[i], (left[i] + right[i]) / 2, 1e-15);
        ASSERT_EQ(side[i], (left[i] - right[i]) / 2);
        ASSERT_NEAR(rig.read(a, 401)[i], left[i], 1e-15);
        ASSERT_NEAR(rig.read(b, 401)[i], right[i], 1e-15);
    }
}

// The generator in 64-bit arithmetic with an explicit modulus.
Signal noiseBits(std::uint64_t seed, std::size_t count)
{
    Signal bits(count);
    for (double& bit : bits) {
        bit = (seed / 8388608) % 2 == 1 ? 1.0 : 0.0;
        seed = (seed * 30013 + 30011) % 4294967296;
    }
    return bits;
}

TEST(NoiseKernels, AddOrEmitTheStatedBitSequenceHoweverABlockIsSplit)
{
    constexpr std::size_t kCount = 3000;
    for (const std::uint32_t seed : {0U, 1U, 0xDEADBEEFU}) {
        KernelRig rig;
        const Signal in = noiseSignal(kCount, 4);
        const CBufferRef input = rig.buffer(in);
        const CBufferRef added = rig.buffer(Signal(kCount));
        const CBufferRef alone = rig.buffer(Signal(kCount));
        const CBufferRef seedAdded = rig.bytes(4);
        const CBufferRef seedAlone = rig.bytes(4);
        std::memcpy(rig.context().address(seedAdded), &seed, 4);
        std::memcpy(rig.context().address(seedAlone), &seed, 4);
        std::int32_t at = 0;
        for (const std::size_t piece : randomSplit(kCount, 8)) {
            rig.run("denorm", piece, 0, {added.advancedBy(at), seedAdded, input.advancedBy(at)});
            rig.run("denormn", piece, 0, {alone.advancedBy(at), seedAlone});
            at += static_cast<std::int32_t>(piece);
        }
        const Signal bits = noiseBits(seed, kCount);
        Signal expectedAdded(kCount);
        Signal expectedAlone(kCount);
        for (std::size_t i = 0; i < kCount; ++i) {
            expectedAdded[i] = in[i] - 1e-11 + bits[i] * 2e-11;
            expectedAlone[i] = bits[i] * 2e-11 - 1e-11;
        }
        EXPECT_TRUE(isSameBits(rig.read(added, kCount), expectedAdded));
        EXPECT_TRUE(isSameBits(rig.read(alone, kCount), expectedAlone));
    }
}

} // namespace
} // namespace qel
