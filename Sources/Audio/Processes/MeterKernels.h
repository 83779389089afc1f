// Level measurement: the state of a meter and the kernels that work on it.
#pragma once

#include "CKernelCall.h"

#include <cstdint>
#include <span>

namespace qel {

// One channel of a meter, as kernels see it. The module sets the first part and submits "meteri"; from then
// on the kernels alone write it. The history is a buffer of its own, an operand of every kernel that writes
// levels, with one level per frame; levels are squares, but for the difference meter, whose levels are
// ratios.
//
// Kernels and their operands:
//     meteri        state, history            initialises; scalar: sample rate in Hz
//     meter         state, history, in        squares of `in`
//     meterc        state, history, in        the same with the smallest level winning
//     meterd        state, history, a, b      ratio of the levels of a and b
//     metersub      out[3], state             time, level and peak as linear factors; scalar: gain
//     metersubc     out[3], state             the same behind meterc
//     metersubd     out[3], state             time, present ratio, largest ratio; scalar unused
//
// A level is a chain of two one-pole filters on the squares, followed by a hold that rises at once and falls
// with `releaseSec`. Frames of `frameLength` samples end wherever they end: any way of cutting the input into
// calls gives the same state.
struct CMeterState
{
    // Set by the module.
    double start = 0.0;             // what all levels begin with
    std::int32_t historyLength = 1; // frames, at least 1
    std::int32_t frameLength = 1;   // samples, at least 1
    double rmsCutoffHz = 0.0;
    double releaseSec = 0.0; // 20 dB of power; below 0.1 ms the hold falls as it rises
    double biasCutoffHz = 0.0;

    // Written by the kernels.
    double timeSec = 0.0; // runs on through "meteri"
    double dtSec = 0.0;
    double s1 = 0.0, s2 = 0.0; // smoothed squares of the first input
    double t1 = 0.0, t2 = 0.0; // and of the second
    double held = 0.0;
    double peak = 0.0; // extreme of the history
    double rmsCoefficient = 0.0;
    double releaseCoefficient = 0.0;
    double biasCoefficient = 0.0;
    double frameMax = 0.0; // extreme of the frame that runs
    std::int32_t writeIndex = 0;
    std::int32_t samplesLeft = 0; // of the frame that runs
    double windowMax = 0.0;
    std::int32_t windowAge = 0; // frames until windowMax leaves the history
    std::int32_t reserved = 0;
    // timeSec is the first plus so many samples, so that it does not depend on how calls are cut.
    double startSec = 0.0;
    std::int64_t samples = 0;
};

// For CKernelContext::addKernels(); names as above.
std::span<const CKernelDef> meterKernels();

} // namespace qel
