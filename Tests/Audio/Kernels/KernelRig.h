// A kernel context and the buffers that a kernel test needs.
#pragma once

#include "CKernelContext.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace qel::test {

using Signal = std::vector<double>;

// Seeded, so that a failure comes back.
inline Signal noiseSignal(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    Signal signal(count);
    std::generate(signal.begin(), signal.end(), [&] { return uniform(random); });
    return signal;
}

// Bit for bit, so that -0 and +0 differ and a NaN equals itself.
inline bool isSameBits(const Signal& a, const Signal& b)
{
    const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
    return std::ranges::equal(a, b, {}, bits, bits);
}

class KernelRig
{
public:
    CKernelContext& context() { return *context_; }

    CBufferRef buffer(const Signal& contents)
    {
        const CBufferRef ref = context_->allocateSamples(contents.size());
        std::copy(contents.begin(), contents.end(), context_->samples(ref));
        return ref;
    }
    CBufferRef bytes(std::size_t size)
    {
        const CBufferRef ref = context_->allocate(size);
        std::memset(context_->address(ref), 0xA5, size);
        return ref;
    }
    Signal read(CBufferRef ref, std::size_t count)
    {
        return {context_->samples(ref), context_->samples(ref) + count};
    }
    void run(const std::string& name, std::size_t count, double scalar,
             std::initializer_list<CBufferRef> operands)
    {
        context_->submit(context_->findShortName(name), static_cast<std::uint32_t>(count), scalar, operands);
    }

private:
    std::unique_ptr<CKernelContext> context_ = std::make_unique<CKernelContext>();
};

// Lengths from 0 to 100 that add up to `total`.
inline std::vector<std::size_t> randomSplit(std::size_t total, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::size_t> pieces;
    while (total > 0) {
        pieces.push_back(std::min<std::size_t>(total, random() % 101));
        total -= pieces.back();
    }
    return pieces;
}

} // namespace qel::test
