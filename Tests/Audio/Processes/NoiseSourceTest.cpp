// The noise against denormals.
#include "../Kernels/KernelRig.h"
#include "CNoiseSource.h"
#include "KernelFamilies.h"

#include <gtest/gtest.h>

#include <array>

namespace qel::test {
namespace {

// By source.
std::array<Signal, 2> noiseOfTwo(std::size_t first)
{
    constexpr int kCount = 100;
    CNoiseSource::restartSeeds();
    KernelRig rig;
    rig.context().addKernels(noiseKernels());
    std::array<CNoiseSource, 2> sources{CNoiseSource(rig.context()), CNoiseSource(rig.context())};
    std::array<Signal, 2> noise;
    for (const std::size_t i : {first, 1 - first}) {
        sources[i].resolveKernels();
        const CBufferRef buffer = sources[i].make(kCount);
        noise[i] = rig.read(buffer, kCount);
        rig.context().release(buffer);
    }
    return noise;
}

TEST(NoiseSource, IsTheSameWhicheverIsHeardFirst)
{
    const auto noise = noiseOfTwo(0);
    EXPECT_NE(noise[0], noise[1]);
    EXPECT_EQ(noise, noiseOfTwo(1));
}

} // namespace
} // namespace qel::test
