// Kernels of the sub-harmonic shifter.
#include "PShiftKernels.h"

#include "Math/Elementary.h"

#include <algorithm>
#include <numbers>

namespace qel {

namespace {

// So that the last of the four taps of a head that starts at 0 reads the sample just written.
constexpr std::int32_t kFirstWrite = 3;

// Interpolates between p1 and p2 (Catmull-Rom spline); t runs from 0 to 1.
inline double interpolate(double p0, double p1, double p2, double p3, double t)
{
    return p1 + (0.5 * (p2 - p0) +
                 (p0 - 2.5 * p1 + 2.0 * p2 - 0.5 * p3 + (1.5 * (p1 - p2) + 0.5 * (p3 - p0)) * t) * t) *
                    t;
}

// Two heads read the ring at half speed, half a grain apart. Each jumps back when it has read a grain, and is
// silent then: a raised cosine, from a two-multiply oscillator, fades between them.
void shift(const CKernelCall& call)
{
    double* out = call.samples(0);
    PShiftState& state = *call.state<PShiftState>(1);
    double* ring = call.samples(2);
    const double* in = call.samples(3);
    const std::int32_t grain = state.grain;
    const std::int32_t halfGrain = state.halfGrain;
    const std::int32_t lastWrite = state.lastWrite;
    const double twoCos = state.twoCos;
    std::int32_t writePosition = state.writePosition;
    std::int32_t headA = state.headA;
    std::int32_t headB = state.headB;
    double window = state.window;
    double previous = state.previous;
    for (std::size_t i = 0; i < call.count; ++i) {
        ring[writePosition] = in[i];
        ring[writePosition + grain] = in[i];
        writePosition = writePosition == lastWrite ? 0 : writePosition + 1;

        std::int32_t a = headA >> 1;
        if (a >= halfGrain) {
            // The oscillator drifts; it is started afresh while nothing is heard of this head.
            window = state.startWindow;
            previous = state.startPrevious;
            a -= halfGrain;
            headA -= grain;
        }
        const double t = 0.5 * (headA & 1);
        ++headA;
        std::int32_t b = headB >> 1;
        if (b >= grain) {
            b -= halfGrain;
            headB -= grain;
        }
        ++headB;

        const double weightA = window + 0.5;
        const double weightB = 1.0 - weightA;
        const double next = twoCos * window - previous;
        previous = window;
        window = next;

        const double* tapsA = ring + a;
        const double* tapsB = ring + b;
        out[i] =
            interpolate(tapsA[0] * weightA + tapsB[0] * weightB, tapsA[1] * weightA + tapsB[1] * weightB,
                        tapsA[2] * weightA + tapsB[2] * weightB, tapsA[3] * weightA + tapsB[3] * weightB, t);
    }
    state.writePosition = writePosition;
    state.headA = headA;
    state.headB = headB;
    state.window = window;
    state.previous = previous;
}

void restart(PShiftState& state, double* ring)
{
    constexpr double kQuarterTurn = std::numbers::pi / 2.0;
    const double w = 2.0 * std::numbers::pi / state.grain;
    state.lastWrite = state.grain - 1;
    state.twoCos = 2.0 * math::cos(w);
    state.startWindow = 0.5 * math::sin(-kQuarterTurn);
    state.startPrevious = 0.5 * math::sin(-kQuarterTurn - w);
    state.writePosition = kFirstWrite;
    state.headA = 0;
    state.headB = 2 * state.grain - state.halfGrain;
    state.window = state.startWindow;
    state.previous = state.startPrevious;
    std::fill_n(ring, PShiftState::ringSamples(state.grain), 0.0);
}

void init(const CKernelCall& call)
{
    PShiftState& state = *call.state<PShiftState>(0);
    state.halfGrain = state.grain / 2;
    restart(state, call.samples(1));
}

void clear(const CKernelCall& call)
{
    restart(*call.state<PShiftState>(0), call.samples(1));
}

constexpr CKernelDef kTable[] = {
    {"pshift", shift, 4, 7},
    {"pshifti", init, 2, 3},
    {"pshiftc", clear, 2, 3},
};

} // namespace

std::span<const CKernelDef> pshiftKernels()
{
    return kTable;
}

} // namespace qel
