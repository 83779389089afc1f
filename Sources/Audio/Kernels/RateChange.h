// The kernels that change the rate, as those that join them with a filter know them.
#pragma once

#include "CKernelCall.h"

#include <span>

namespace qel {

// Zeros between the samples; twice the level makes up for the images that the filter behind takes away. The
// output has twice the count and must lie apart from the input.
void interpolate(const CKernelCall& call);
// The first of every two samples. The count is that of the output; the input has twice as many.
void decimate(const CKernelCall& call);

// An interpolator and a half-band filter behind it.
std::span<const CKernelJoin> interpolatorJoins();

} // namespace qel
