// One stage of a filter cascade.
#pragma once

#include "CInlineArray.h"
#include "WellKnownKernels.h"

namespace qel {

// The transfer function (b0 + b1/z + b2/z^2) / (a0 + a1/z + a2/z^2).
struct CBiquadPolynomials
{
    double b0;
    double b1;
    double b2;
    double a0;
    double a1;
    double a2;
};

// What a filter generator says about one stage: the kernel family that runs it, its output factor, and the
// family's coefficient block in two parts. A plain value; the room inside is enough for every family, so
// filling one never allocates.
struct CFilterSection
{
    static constexpr std::size_t kMaxCoefficients = 16;

    EFilterFamily kind = EFilterFamily::kBiquadCommon;
    double gain = 1.0;
    CInlineArray<double, kMaxCoefficients / 2> zeros;
    CInlineArray<double, kMaxCoefficients / 2> poles;

    // The section of this transfer function. The family must be one of the biquads, and one with a fixed
    // numerator must have been given that numerator.
    static CFilterSection biquad(EFilterFamily family, const CBiquadPolynomials& polynomials);

    std::size_t coefficientCount() const { return zeros.size() + poles.size(); }
    // Writes the block that the family's init and update kernels read: the zeros, then the poles.
    void writeCoefficients(double* block) const;

    // Delay at 0 Hz that the section adds to the latency of a stream, in samples at its own rate. Only
    // half-band filters count: they are there to resample, and delay all of the signal alike. 0 for all
    // others.
    double latencySamples() const;
};

// A cascade. Room for the longest in use, six poles as three second-order sections, and one more.
using CFilterSections = CInlineArray<CFilterSection, 4>;

} // namespace qel
