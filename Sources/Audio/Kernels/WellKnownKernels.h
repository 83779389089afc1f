// The kernels that modules reach without a look-up.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qel {

class CKernelContext;

// The general kernels, in the order of their registration.
enum class EKernel : std::uint8_t
{
    kCopy,
    kAddC,
    kAddCid,
    kAdd2,
    kAdd2i,
    kAdd3,
    kAdd4,
    kSub2,
    kMax2,
    kMax2i,
    kMax3,
    kMax4,
    kMin2,
    kMin3,
    kMin4,
    kMix,
    kMix2,
    kMixB,
    kAdd2Mul,
    kAdd3Mul,
    kMulC,
    kMulCi,
    kMul2,
    kMul2i,
    kMul2Addi,
    kAbs,
    kSqrt,
    kFill0,
    kFillC,
    kFillD,
    kXfadeI,
    kXfade,
};
inline constexpr std::size_t kGeneralKernels = 32;

// The filter families; a filter section's kind is the number of its family.
enum class EFilterFamily : std::uint8_t
{
    kBiquadCommon,
    kBiquadLowPass,
    kBiquadHighPass,
    kBiquadBandPass,
    kBiquadNotch,
    kLowPass1, // first-order chains of one to four stages
    kLowPass2,
    kLowPass3,
    kLowPass4,
    kHighPass1,
    kHighPass2,
    kHighPass3,
    kHighPass4,
    kHalfBand2,
    kHalfBand4,
    kHalfBand6,
    kHalfBand8,
    kHalfBand10,
    kHalfBand12,
    kHalfBand14,
    kHalfBand16,
    kFree,
    kHighOrderEqualizer, // nothing makes sections of this kind
    kAllPassChain,
};
inline constexpr std::size_t kFilterFamilies = 24;

// How a filter section of one family is set up and run. Identifiers are -1 where there is no kernel.
struct CFilterKernels
{
    std::int32_t init = -1;
    std::int32_t update = -1;
    std::int32_t run = -1;
    std::int32_t gainRun = -1;
    std::int32_t stateBytes = 0;
};

// Identifiers of one context, fixed once it is constructed.
struct CWellKnownKernels
{
    std::array<std::int32_t, kGeneralKernels> general;
    std::array<CFilterKernels, kFilterFamilies> filters;

    std::int32_t operator[](EKernel kernel) const { return general[static_cast<std::size_t>(kernel)]; }
    const CFilterKernels& operator[](EFilterFamily family) const
    {
        return filters[static_cast<std::size_t>(family)];
    }
};

// Registers every kernel of this folder with the context and returns the well-known identifiers.
CWellKnownKernels registerWellKnownKernels(CKernelContext& context);

} // namespace qel
