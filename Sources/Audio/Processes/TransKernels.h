// Kernels of the transient detector.
#pragma once

#include "CKernelCall.h"

#include <span>

namespace qel {

// State of one detector, in a pool buffer. The module writes the parameters and runs `transi`, which fills in
// the rest and clears the signal; `transc` only clears the signal.
struct TransState
{
    // Parameters.
    double sense; // 0 to 1
    double scale; // linear
    double timeSec;
    double decaySec;

    // Coefficients. `gain` is the gain of the "High" curve; the others make the ranges of the curves alike.
    double gain;
    double gainMedium;
    double gainLow;
    double gainVeryLow;
    double gainVeryHigh;
    double slow;
    double rise;
    double fall;
    double smooth[4];

    // Signal.
    double slowLevel;
    double fastLevel;
    double smoothed[4];

    // Coefficients and signal of the decay stage.
    double attack;
    double decay;
    double decayed;
};
static_assert(sizeof(TransState) == 25 * sizeof(double));

// `transvh`, `transh`, `transm`, `transl`, `transvl` (out, state, level): the detector with one of five
// curves. `transdecay` (signal in place, state). `transi` (state; the scalar is the sample rate), `transc`
// (state).
std::span<const CKernelDef> transKernels();

} // namespace qel
