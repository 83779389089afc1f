// Noise of +-1e-11, which keeps the recursive stages behind it out of the denormal range.
#include "KernelFamilies.h"

#include <cstdint>

namespace qel {

namespace {

// -220 dB: far below what any converter shows, far above where doubles become denormal.
constexpr double kLevel = 1e-11;
constexpr double kSpan = 2e-11;

// One random bit a sample, from a linear congruential generator modulo 2^32. Its high bits are the random
// ones.
double nextBit(std::uint32_t& seed)
{
    const std::uint32_t bit = (seed >> 23) & 1;
    seed = seed * 30013 + 30011;
    return bit;
}

void addNoise(const CKernelCall& call)
{
    double* out = call.samples(0);
    const double* in = call.samples(2);
    std::uint32_t seed = *call.state<std::uint32_t>(1);
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] = in[i] - kLevel + nextBit(seed) * kSpan;
    }
    *call.state<std::uint32_t>(1) = seed;
}

// Side by side, each generator has twice the time for its next state.
void addNoisePair(const CKernelCall* calls)
{
    double* out0 = calls[0].samples(0);
    double* out1 = calls[1].samples(0);
    const double* in0 = calls[0].samples(2);
    const double* in1 = calls[1].samples(2);
    std::uint32_t seed0 = *calls[0].state<std::uint32_t>(1);
    std::uint32_t seed1 = *calls[1].state<std::uint32_t>(1);
    for (std::size_t i = 0; i < calls->count; ++i) {
        out0[i] = in0[i] - kLevel + nextBit(seed0) * kSpan;
        out1[i] = in1[i] - kLevel + nextBit(seed1) * kSpan;
    }
    *calls[0].state<std::uint32_t>(1) = seed0;
    *calls[1].state<std::uint32_t>(1) = seed1;
}

void noise(const CKernelCall& call)
{
    double* out = call.samples(0);
    std::uint32_t seed = *call.state<std::uint32_t>(1);
    for (std::size_t i = 0; i < call.count; ++i) {
        out[i] = nextBit(seed) * kSpan - kLevel;
    }
    *call.state<std::uint32_t>(1) = seed;
}

constexpr CKernelDef kTable[] = {
    {"denorm", addNoise, 3, 3, addNoisePair},
    {"denormn", noise, 2, 3},
};

} // namespace

std::span<const CKernelDef> noiseKernels()
{
    return kTable;
}

} // namespace qel
