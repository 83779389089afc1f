// The inaudible noise that keeps recursive stages clear of denormals.
#include "CNoiseSource.h"

#include <atomic>
#include <cstring>

namespace qel {

namespace {

std::atomic<std::uint32_t> nextSeed{0};

} // namespace

CNoiseSource::CNoiseSource(CKernelContext& kernels)
    : kernels_(kernels), seed_(nextSeed.fetch_add(1, std::memory_order_relaxed))
{}

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
    if (state_.isNone()) {
        state_ = kernels_.allocate(sizeof seed_);
        if (void* memory = kernels_.address(state_)) {
            std::memcpy(memory, &seed_, sizeof seed_);
        }
    }
}

void CNoiseSource::stop()
{
    if (!state_.isNone()) {
        kernels_.release(state_);
        state_ = {};
    }
}

CBufferRef CNoiseSource::make(int count)
{
    start();
    const CBufferRef output = kernels_.allocateSamples(static_cast<std::size_t>(count));
    kernels_.submit(noiseKernel_, static_cast<std::uint32_t>(count), 0.0, {output, state_});
    return output;
}

CBufferRef CNoiseSource::addTo(CBufferRef input, int count)
{
    start();
    const CBufferRef output = kernels_.allocateSamples(static_cast<std::size_t>(count));
    kernels_.submit(addKernel_, static_cast<std::uint32_t>(count), 0.0, {output, state_, input});
    return output;
}

} // namespace qel
