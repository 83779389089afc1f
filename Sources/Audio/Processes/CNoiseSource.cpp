// The inaudible noise that keeps recursive stages clear of denormals.
#include "CNoiseSource.h"

#include <atomic>
#include <cstring>

namespace qel {

namespace {

std::atomic<std::uint32_t> nextSeed{0};

} // namespace

void CNoiseSource::restartSeeds()
{
    nextSeed = 0;
}

void CNoiseSource::resolveKernels()
{
    noiseKernel_ = kernels_.findShortName("denormn");
    addKernel_ = kernels_.findShortName("denorm");
}

void CNoiseSource::start()
{
    if (seed_.isNone()) {
        const std::uint32_t seed = nextSeed.fetch_add(1, std::memory_order_relaxed);
        seed_ = kernels_.allocate(sizeof seed);
        if (void* memory = kernels_.address(seed_)) {
            std::memcpy(memory, &seed, sizeof seed);
        }
    }
}

void CNoiseSource::stop()
{
    if (!seed_.isNone()) {
        kernels_.release(seed_);
        seed_ = {};
    }
}

CBufferRef CNoiseSource::make(int count)
{
    start();
    const CBufferRef output = kernels_.allocateSamples(static_cast<std::size_t>(count));
    kernels_.submit(noiseKernel_, static_cast<std::uint32_t>(count), 0.0, {output, seed_});
    return output;
}

CBufferRef CNoiseSource::addTo(CBufferRef input, int count)
{
    start();
    const CBufferRef output = kernels_.allocateSamples(static_cast<std::size_t>(count));
    kernels_.submit(addKernel_, static_cast<std::uint32_t>(count), 0.0, {output, seed_, input});
    return output;
}

} // namespace qel
