// Kernels of the sub-harmonic shifter.
#include "PShiftKernels.h"

#include "Math/Elementary.h"
#include "SampleLanes.h"

#include <algorithm>
#include <numbers>

namespace qel {

namespace {

// So that the last of the four taps of a head that starts at 0 reads the sample just written.
constexpr std::int32_t kFirstWrite = 3;

// Interpolates between p1 and p2 (Catmull-Rom spline); t runs from 0 to 1.
template <class Sample>
inline Sample interpolate(Sample p0, Sample p1, Sample p2, Sample p3, double t)
{
    return p1 + (0.5 * (p2 - p0) +
                 (p0 - 2.5 * p1 + 2.0 * p2 - 0.5 * p3 + (1.5 * (p1 - p2) + 0.5 * (p3 - p0)) * t) * t) *
                    t;
}

// Two heads read the ring at half speed, half a grain apart. Each jumps back when it has read a grain, and is
// silent then: a raised cosine, from a two-multiply oscillator, fades between them.
//
// Channels whose heads stand alike share all that does not touch samples.
template <class Sample>
void shift(const LaneCalls& calls)
{
    constexpr std::size_t kChannels = kLanes<Sample>;
    const LaneOutput<Sample> out(calls, 0);
    const LaneOutput<Sample> rings(calls, 2);
    const LaneInput<Sample> in(calls, 3);
    PShiftState& state = *calls[0].state<PShiftState>(1);
    const std::int32_t grain = state.grain;
    const std::int32_t halfGrain = state.halfGrain;
    const std::int32_t lastWrite = state.lastWrite;
    const double twoCos = state.twoCos;
    std::int32_t writePosition = state.writePosition;
    std::int32_t headA = state.headA;
    std::int32_t headB = state.headB;
    double window = state.window;
    double previous = state.previous;
    const std::size_t count = calls[0].count;
    for (std::size_t i = 0; i < count; ++i) {
        const bool hasCopy = writePosition < PShiftState::kCopies;
        const std::int32_t copyPosition = hasCopy ? writePosition + grain : writePosition;
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            double* const ring = rings.samples[channel];
            ring[writePosition] = in.samples[channel][i];
            ring[copyPosition] = in.samples[channel][i];
        }
        writePosition = writePosition == lastWrite ? 0 : writePosition + 1;

        std::int32_t a = headA >> 1;
        if (a >= halfGrain) {
            // The oscillator drifts; it is started afresh while nothing is heard of this head.
            window = state.startWindow;
            previous = state.startPrevious;
            a -= halfGrain;
            headA -= grain;
        }
        const bool isBetweenTaps = (headA & 1) != 0;
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

        if (!isBetweenTaps) {
            // Every other sample stands on a tap, and the spline goes through it. A zero takes the long way:
            // which of the two it becomes, the slope decides.
            const auto onTap = gatherLanes<Sample>([&](std::size_t lane) {
                return rings.samples[lane][a + 1] * weightA + rings.samples[lane][b + 1] * weightB;
            });
            if (!isTrueAnywhere(onTap == 0.0)) {
                out.set(i, onTap);
                continue;
            }
        }
        // Two taps at a time.
        SamplePair taps[kChannels][2];
        unrolled<kChannels>([&](auto channel) {
            const double* const ring = rings.samples[channel];
            taps[channel][0] =
                loadSamples<SamplePair>(ring + a) * weightA + loadSamples<SamplePair>(ring + b) * weightB;
            taps[channel][1] = loadSamples<SamplePair>(ring + a + 2) * weightA +
                               loadSamples<SamplePair>(ring + b + 2) * weightB;
        });
        const auto tap = [&](auto index) {
            return gatherLanes<Sample>([&](std::size_t lane) { return taps[lane][index / 2][index % 2]; });
        };
        out.set(i, interpolate(tap(0), tap(1), tap(2), tap(3), isBetweenTaps ? 0.5 : 0.0));
    }
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        PShiftState& moved = *calls[channel].state<PShiftState>(1);
        moved.writePosition = writePosition;
        moved.headA = headA;
        moved.headB = headB;
        moved.window = window;
        moved.previous = previous;
    }
}

void run(const CKernelCall& call)
{
    shift<double>({&call, 1});
}

void runPair(const CKernelCall* calls)
{
    if (*calls[0].state<PShiftState>(1) == *calls[1].state<PShiftState>(1)) {
        shift<SamplePair>({calls, 1});
    } else {
        run(calls[0]);
        run(calls[1]);
    }
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
    {"pshift", run, 4, 7, runPair},
    {"pshifti", init, 2, 3},
    {"pshiftc", clear, 2, 3},
};

} // namespace

std::span<const CKernelDef> pshiftKernels()
{
    return kTable;
}

} // namespace qel
