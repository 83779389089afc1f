// Kernels of the saturator.
#pragma once

#include "CKernelCall.h"

#include <cstdint>
#include <span>

namespace qel {

// State of one saturator, in a pool buffer. The module writes the parameters and runs `satdrfi`, which
// calculates and calibrates the rest, unless it is there, and clears the signal; `satdrfc` only clears the
// signal.
struct SatDRFState
{
    enum class EMode : std::int32_t
    {
        kPrecise,
        kPumping, // with a slow ride of the gain
    };

    struct Coefficients
    {
        double drive;
        double b1, b2, c1, c2; // phase rotation
        double smooth;         // of the gain
        double pumpFirst;
        double pumpUp[4];   // while the gain recovers
        double pumpDown[4]; // while it is reduced
    };
    // As it is at rest.
    struct Signal
    {
        double y1 = 0.0, y2 = 0.0;               // phase rotation
        double e1 = 1.0, e2 = 1.0;               // smoothed gain
        double p[5] = {1.0, 1.0, 1.0, 1.0, 1.0}; // pumping chain
    };

    struct Parameters
    {
        EMode mode;
        double drive; // linear
        double phaseFreqHz;
        bool operator==(const Parameters&) const = default;
    };
    // What follows from the parameters, and those that it was worked out from.
    struct Derived
    {
        double sampleRateHz; // 0: nothing yet
        Parameters from;
        Coefficients coefficients;
        double norm; // keeps the level of a sine of full scale
    };

    Parameters parameters;
    Derived derived;
    Signal signal;
};

// `satdrf` (out, state, in), `satdrfi` (state; the scalar is the sample rate), `satdrfc` (state).
std::span<const CKernelDef> satDRFKernels();

} // namespace qel
