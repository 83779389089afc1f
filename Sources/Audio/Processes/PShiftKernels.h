// Kernels of the sub-harmonic shifter.
#pragma once

#include "CKernelCall.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace qel {

// State of one shifter, in a pool buffer beside the ring of ringSamples(grain) samples. The module writes
// `grain` and runs `pshifti`, which fills in the rest and clears the ring; `pshiftc` starts anew with the
// same grain.
struct PShiftState
{
    // Length of a grain, in samples, and half of it, cut. From 3 on; the ring is read past a grain's end.
    std::int32_t grain;
    std::int32_t halfGrain;
    std::int32_t lastWrite; // highest write position

    // The window of head A less 0.5, and what its oscillator starts each grain with.
    double twoCos;
    double startWindow;
    double startPrevious;

    std::int32_t writePosition;
    // Read positions of the two heads, in halves of a sample.
    std::int32_t headA;
    std::int32_t headB;
    double window;
    double previous;

    friend bool operator==(const PShiftState&, const PShiftState&) = default;

    // The first samples of a grain stand behind its last one too, so that the four taps of a head never have
    // to wrap.
    static constexpr std::int32_t kCopies = 3;
    static constexpr std::size_t ringSamples(std::int32_t grain)
    {
        return static_cast<std::size_t>(grain + kCopies);
    }
};

// `pshift` (out, state, ring, in), `pshifti` and `pshiftc` (state, ring).
std::span<const CKernelDef> pshiftKernels();

} // namespace qel
