// The engine of one plug-in instance that runs all signal arithmetic.
#pragma once

#include "CBufferPool.h"
#include "CKernelCall.h"
#include "CKernelRegistry.h"
#include "WellKnownKernels.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>

namespace qel {

// Kernel registry, buffer pool and submission. Modules never touch samples: they name a kernel and buffers,
// and submit. A call runs to its end inside submit, so calls take effect in the order of submission and a
// buffer may be released as soon as the call that uses it has been submitted.
//
// Owned by the object tree of one plug-in instance; what it makes lies in its memory and its pool. It
// outlives all modules. Registration and look-ups happen while the graph is built; everything else is the
// audio thread's, takes no lock, and no memory but what control threads have provided (see CAudioMemory).
// Sizes are in bytes, counts in samples of 8 bytes.
//
// Errors: a call of no kernel (-1), with a wrong number of operands, or with a none reference (the pool was
// exhausted) does not run and is counted in refusedCalls(): its output keeps what it held, and the host is
// never taken down.
class CKernelContext
{
public:
    static constexpr std::string_view kNamePrefix = "qel.dcdaw.";

    CKernelContext();
    CKernelContext(const CKernelContext&) = delete;
    CKernelContext& operator=(const CKernelContext&) = delete;

    // --- while the graph is built
    // Full names ("qel.dcdaw.add2"); see CKernelRegistry for the rules.
    int addKernel(std::string_view name, CKernelFunction function, int operandCount, std::uint32_t writeMask);
    int findKernel(std::string_view name) const { return registry_.find(name); }
    // Names without the prefix, as tables give them.
    int addKernel(const CKernelDef& kernel);
    void addKernels(std::span<const CKernelDef> kernels);
    int findShortName(std::string_view name) const;

    int kernel(EKernel kernel) const { return known_[kernel]; }
    const CFilterKernels& filterKernels(EFilterFamily family) const { return known_[family]; }
    // By a section's kind; a number outside the families gives the one without kernels.
    const CFilterKernels& filterKernels(int kind) const;

    // For all that the graph makes while it runs.
    CAudioMemory& memory() { return memory_; }

    // --- audio thread: no locks, and no memory but that above
    CBufferRef allocate(std::size_t bytes) { return pool_.allocate(bytes); }
    // All sample buffers get the room of the longest asked for so far: blocks whose length changes at every
    // call then find what the longest one left, and touch no heap. Beyond this length, which few need, they
    // are apart from the others.
    static constexpr std::size_t kShortSamples = 256;
    CBufferRef allocateSamples(std::size_t count)
    {
        std::size_t& longest = longestSamples_[count > kShortSamples];
        longest = std::max(longest, count);
        longestOfLate_ = std::max(longestOfLate_, count);
        return pool_.allocate(longest * sizeof(double));
    }
    // The longest asked for since the last call.
    std::size_t takeLongestOfLate() { return std::exchange(longestOfLate_, 0); }
    void addRef(CBufferRef ref) { pool_.addRef(ref); }
    void release(CBufferRef ref) { pool_.release(ref); }
    void* address(CBufferRef ref) const { return pool_.address(ref); }
    double* samples(CBufferRef ref) const { return reinterpret_cast<double*>(pool_.address(ref)); }

    void submit(int kernelId, std::uint32_t count, double scalar, std::span<const CBufferRef> operands);
    void submit(int kernelId, std::uint32_t count, double scalar, std::initializer_list<CBufferRef> operands)
    {
        submit(kernelId, count, scalar, std::span(operands.begin(), operands.size()));
    }
    void submit(EKernel kernel, std::uint32_t count, double scalar,
                std::initializer_list<CBufferRef> operands)
    {
        submit(known_[kernel], count, scalar, operands);
    }

    // --- for tests and tools
    // Null ends observation. The observer is the caller's and must outlive it.
    void setObserver(CKernelObserver* observer) { observer_ = observer; }
    bool hasObserver() const { return observer_ != nullptr; }
    const CBufferPool& pool() const { return pool_; }
    const CKernelRegistry& registry() const { return registry_; }
    std::size_t refusedCalls() const { return refusedCalls_; }

private:
    CKernelRegistry& registry_ = CKernelRegistry::get();
    CAudioMemory memory_;
    CBufferPool pool_{memory_};
    std::size_t longestSamples_[2] = {}; // of short ones, and of all others
    std::size_t longestOfLate_ = 0;
    CKernelObserver* observer_ = nullptr;
    std::size_t refusedCalls_ = 0;
    CWellKnownKernels known_;
};

} // namespace qel
