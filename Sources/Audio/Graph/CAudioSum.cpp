// Sums or averages spans of samples with as few kernel calls as there can be.
#include "CAudioSum.h"

#include <algorithm>

namespace qel {

CAudioSum::~CAudioSum()
{
    for (std::size_t i = 0; i < held_; ++i) {
        kernels_.release(parts_[i]);
    }
}

void CAudioSum::add(CBufferRef source)
{
    parts_[held_++] = source;
    ++sources_;
    if (held_ == parts_.size()) {
        collapse(EKernel::kAdd4, 0.0);
    }
}

CBufferRef CAudioSum::take()
{
    if (held_ == 2) {
        collapse(EKernel::kAdd2, 0.0);
    } else if (held_ == 3) {
        collapse(EKernel::kAdd3, 0.0);
    }
    if (held_ == 0) {
        return {};
    }
    held_ = 0;
    return parts_[0];
}

CBufferRef CAudioSum::takeMean()
{
    return takeScaled(static_cast<double>(1.0f / static_cast<float>(std::max(sources_, 1))));
}

CBufferRef CAudioSum::takeScaled(double scale)
{
    if (sources_ > 1) {
        collapse(held_ == 1 ? EKernel::kMulC : held_ == 2 ? EKernel::kAdd2Mul : EKernel::kAdd3Mul, scale);
    }
    return take();
}

void CAudioSum::collapse(EKernel kernel, double scalar)
{
    std::array<CBufferRef, 5> operands;
    operands[0] = kernels_.allocateSamples(static_cast<std::size_t>(count_));
    std::copy_n(parts_.begin(), held_, operands.begin() + 1);
    kernels_.submit(kernels_.kernel(kernel), static_cast<std::uint32_t>(count_), scalar,
                    std::span(operands).first(held_ + 1));
    for (std::size_t i = 0; i < held_; ++i) {
        kernels_.release(parts_[i]);
    }
    parts_[0] = operands[0];
    held_ = 1;
}

} // namespace qel
