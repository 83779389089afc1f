// What a kernel is, and what it is given when it runs.
#pragma once

#include "CBufferRef.h"
#include "KernelPairs.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace qel {

struct CKernelCall;

// A kernel: one pass of arithmetic over the operands of a call. It allocates nothing, knows nothing beyond
// the call, takes any count from 0 up, and keeps what must survive between calls in an operand.
using CKernelFunction = void (*)(const CKernelCall& call);

inline constexpr std::size_t kMaxKernelOperands = 8;

// One row of a kernel family's table. Bit i of `writeMask` says that the kernel writes operand i.
struct CKernelDef
{
    const char* name; // without "qel.dcdaw."
    CKernelFunction function;
    int operandCount;
    std::uint32_t writeMask;
    CKernelGroupFunction pair = nullptr;     // two calls of this kernel; null if that is no faster
    CKernelGroupFunction quad = nullptr;     // four calls, where hasWideLanes(); null likewise
    std::span<const CKernelJoin> joins = {}; // those that begin with this kernel, the longest first
};

struct CKernelEntry;

// One call of a kernel. Filled by CKernelContext::submit and valid only until the kernel returns. Operand 0
// is normally the output; operands may name the same memory where the kernel says so. Entries of
// `operandBits` and `data` from the kernel's operand count on are not set.
struct CKernelCall
{
    std::int32_t kernelId;
    // Number of samples. Spectral kernels keep a length or a number of bins in the low 24 bits and the base-2
    // logarithm of the transform length in the top 8.
    std::uint32_t count;
    const CKernelEntry* entry;
    // A gain, constant or position, as the kernel defines.
    double scalar;
    std::uint32_t
        operandBits[kMaxKernelOperands]; // plain numbers: nothing is spent on those that are not set
    void* data[kMaxKernelOperands];

    CBufferRef operand(std::size_t index) const { return {operandBits[index]}; }
    double* samples(std::size_t operand) const { return static_cast<double*>(data[operand]); }
    // The operand as a kernel's own record.
    template <class State>
    State* state(std::size_t operand) const
    {
        return static_cast<State*>(data[operand]);
    }

    static constexpr int kLengthBits = 24;
    std::uint32_t length() const { return count & ((1U << kLengthBits) - 1); }
    std::uint32_t log2Length() const { return count >> kLengthBits; }
    static constexpr std::uint32_t spectralCount(std::uint32_t length, std::uint32_t log2Length)
    {
        return length | (log2Length << kLengthBits);
    }
};

// Sees every call of a context just before it runs, on the audio thread. The call and its operands' memory
// may be read and copied; they are the context's.
class CKernelObserver
{
public:
    virtual void beforeCall(const CKernelCall& call) = 0;

protected:
    ~CKernelObserver() = default;
};

} // namespace qel
