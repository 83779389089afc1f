// The tables of the kernels that every context has.
#pragma once

#include "CKernelCall.h"

#include <span>

namespace qel {

// Each table stands with its kernels, in the source of the same name. A module's own kernels are added the
// same way: a table of CKernelDef in the module's file, handed to CKernelContext::addKernels.
std::span<const CKernelDef> vectorKernels();
std::span<const CKernelDef> crossfadeKernels();
std::span<const CKernelDef> sharedFadeKernels();
std::span<const CKernelDef> biquadKernels();
std::span<const CKernelDef> firstOrderKernels();
std::span<const CKernelDef> halfBandKernels();
std::span<const CKernelDef> allPassKernels();
std::span<const CKernelDef> equalizerKernels();
std::span<const CKernelDef> spectralKernels();
std::span<const CKernelDef> resamplingKernels();
std::span<const CKernelDef> noiseKernels();

} // namespace qel
