// Sums or averages spans of samples with as few kernel calls as there can be.
#pragma once

#include "CKernelContext.h"

#include <array>

namespace qel {

// Collects sources of one length and sums them in the order they come: every four collapse into one partial
// sum, what is left at the end by twos or threes. A single source passes by reference. The mean multiplies by
// 1/N, taken from the single-precision quotient, within the last kernel where there is one. Audio thread.
class CAudioSum
{
public:
    CAudioSum(CKernelContext& kernels, int count) : kernels_(kernels), count_(count) {}
    ~CAudioSum();
    CAudioSum(const CAudioSum&) = delete;
    CAudioSum& operator=(const CAudioSum&) = delete;

    // Takes over one reference.
    void add(CBufferRef source);
    // The result, of which the caller owns one reference; none if nothing was added. Once.
    CBufferRef take();
    CBufferRef takeMean();
    // The sum of two sources or more, times a factor; a single source passes as it is.
    CBufferRef takeScaled(double scale);

private:
    // Replaces what is held by the output of one kernel over it.
    void collapse(EKernel kernel, double scalar);

    CKernelContext& kernels_;
    int count_;
    int sources_ = 0;
    std::size_t held_ = 0;
    std::array<CBufferRef, 4> parts_{};
};

} // namespace qel
