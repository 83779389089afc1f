// The state record of a kernel, in a pool buffer.
#pragma once

#include "CKernelContext.h"

#include <new>

namespace qel {

// Holds one buffer with one record as long as it lives. Records are plain; they begin with all values 0.
// Audio thread.
template <class State>
class CKernelState
{
public:
    explicit CKernelState(CKernelContext& kernels) : kernels_(kernels), ref_(kernels.allocate(sizeof(State)))
    {
        if (void* memory = kernels_.address(ref_)) {
            new (memory) State{};
        }
    }
    ~CKernelState()
    {
        if (!ref_.isNone()) {
            kernels_.release(ref_);
        }
    }
    CKernelState(const CKernelState&) = delete;
    CKernelState& operator=(const CKernelState&) = delete;

    // As an operand. None if the pool was exhausted; the context then refuses the calls.
    CBufferRef ref() const { return ref_; }
    // Null if the pool was exhausted.
    State* get() const { return static_cast<State*>(kernels_.address(ref_)); }

private:
    CKernelContext& kernels_;
    CBufferRef ref_;
};

} // namespace qel
