// Kernels of the saturator.
#include "SatDRFKernels.h"

#include "OnePoleGain.h"
#include "WideLanes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

// The curve adds h(v) to u = v + 1: nothing up to v = kArcStart, then an arc of a circle that leaves zero
// with zero slope, then the line h = -v, which holds the sum at 1. Centre of the circle: (kArcStart,
// kArcCentre).
constexpr double kArcStart = -0.99;
constexpr double kArcCentre = -2.390071426749364; // -0.99 tan(3 pi / 8): the line is a tangent of this circle
// Where the line takes over. The tangent point lies 1e-6 higher; arc and line are 1e-12 apart here.
constexpr double kArcEnd = 0.700034704510532;
constexpr double kArcRadiusSquared = kArcCentre * kArcCentre;
constexpr double kLineSlope = -1.0;

// Phase rotation: an all-pass of second order with poles of this radius.
constexpr double kPoleRadius = 0.71349439;
constexpr double kPoleRadiusSquared = kPoleRadius * kPoleRadius;

constexpr double kSmoothHz = 8000.0;
constexpr double kPumpHz = 50.0;
constexpr double kRecoverySec = 0.083;
constexpr double kReductionSec = 0.00083;

// The half-waves of two unshaped periods of a sine of full scale have RMS values that add up to this.
constexpr double kUnshapedSum = 2.8284;
constexpr double kTestHz[] = {500.0, 2000.0};

// A saturator in registers, for one channel, two or four. A sample goes through it in steps that a loop can
// stagger.
template <class Sample>
struct Saturator
{
    Sample drive, b1, b2, c1, c2;
    Sample smooth;
    Sample pumpFirst;
    Sample pumpUp[4];
    Sample pumpDown[4];
    Sample y1, y2;
    Sample e1, e2;
    Sample p[5];

    // `coefficients` and `signal` give the lane's record.
    [[gnu::always_inline]] Saturator(auto coefficients, auto signal)
    {
        const auto gather = [](auto record, auto field) {
            return gatherLanes<Sample>([&](std::size_t lane) { return record(lane).*field; });
        };
        using Coefficients = SatDRFState::Coefficients;
        using Signal = SatDRFState::Signal;
        drive = gather(coefficients, &Coefficients::drive);
        b1 = gather(coefficients, &Coefficients::b1);
        b2 = gather(coefficients, &Coefficients::b2);
        c1 = gather(coefficients, &Coefficients::c1);
        c2 = gather(coefficients, &Coefficients::c2);
        smooth = gather(coefficients, &Coefficients::smooth);
        pumpFirst = gather(coefficients, &Coefficients::pumpFirst);
        unrolled<4>([&](auto i) {
            pumpUp[i] = gatherLanes<Sample>([&](std::size_t lane) { return coefficients(lane).pumpUp[i]; });
            pumpDown[i] =
                gatherLanes<Sample>([&](std::size_t lane) { return coefficients(lane).pumpDown[i]; });
        });
        y1 = gather(signal, &Signal::y1);
        y2 = gather(signal, &Signal::y2);
        e1 = gather(signal, &Signal::e1);
        e2 = gather(signal, &Signal::e2);
        unrolled<5>(
            [&](auto i) { p[i] = gatherLanes<Sample>([&](std::size_t lane) { return signal(lane).p[i]; }); });
    }
    [[gnu::always_inline]] void store(auto signal) const
    {
        using Signal = SatDRFState::Signal;
        const auto scatter = [&](auto field, Sample value) {
            scatterLanes(value, [&](std::size_t lane, double part) { signal(lane).*field = part; });
        };
        scatter(&Signal::y1, y1);
        scatter(&Signal::y2, y2);
        scatter(&Signal::e1, e1);
        scatter(&Signal::e2, e2);
        unrolled<5>([&](auto i) {
            scatterLanes(p[i], [&](std::size_t lane, double part) { signal(lane).p[i] = part; });
        });
    }

    // The sample, driven and turned in phase.
    [[gnu::always_inline]] Sample turn(Sample x)
    {
        const Sample f = drive * x + c1 * y1 + c2 * y2;
        const Sample u = (f + b1 * y1 + b2 * y2) * kPoleRadiusSquared;
        y2 = y1;
        y1 = f;
        return u;
    }
    [[gnu::always_inline]] Sample smoothed(Sample gain)
    {
        e1 += (gain - e1) * smooth;
        e2 += (e1 - e2) * smooth;
        return e2;
    }
    // The smoothed gain rides further down the pumping chain, in three steps.
    [[gnu::always_inline]] void startPump(Sample gain)
    {
        p[0] += (gain - p[0]) * pumpFirst;
        pump(0);
    }
    [[gnu::always_inline]] void goOnPumping()
    {
        pump(1);
        pump(2);
    }
    [[gnu::always_inline]] Sample endPump(Sample gain)
    {
        pump(3);
        return gain * p[4];
    }

private:
    [[gnu::always_inline]] void pump(std::size_t i)
    {
        const Sample target = p[i];
        p[i + 1] += (target - p[i + 1]) * chosen(p[i + 1] <= target, pumpUp[i], pumpDown[i]);
    }
};

// The way to the gain for a turned sample. Positive half-waves go through the curve in a first stage, and
// what comes out of it, a third as high and with the sign turned, in a second. The curve has a gain of 1 up
// to kArcStart, so one stage at most does anything, and where it is the second, the first one has left u as
// it was: one curve does for both.
template <class Sample>
struct Curve
{
    Sample u;
    Sample v;
    Sample height; // of the arc over its centre; at first its square

    [[gnu::always_inline]] void enter(Sample turned)
    {
        const auto isFirst = !(turned - 1.0 <= kArcStart);
        u = chosen(isFirst, turned, turned * (-1.0 / 3.0));
        v = u - 1.0;
        const Sample along = v - kArcStart;
        height = kArcRadiusSquared - along * along;
    }
    [[gnu::always_inline]] void climb(const Curve& entered)
    {
        u = entered.u;
        v = entered.v;
        height = squareRoot(entered.height);
    }
    [[gnu::always_inline]] Sample gain() const
    {
        constexpr Sample kOne = Sample{} + 1.0;
        const Sample arc = height + kArcCentre;
        const Sample h = chosen(v < kArcEnd, arc, kLineSlope * v);
        return chosen(v <= kArcStart, kOne, 1.0 + h / u);
    }
};

template <class Sample>
[[gnu::always_inline]] inline Sample curveGain(Sample turned)
{
    Curve<Sample> curve;
    curve.enter(turned);
    curve.climb(curve);
    return curve.gain();
}

template <class Sample, bool kPumps>
void saturate(const LaneCalls& calls)
{
    const auto state = [&](std::size_t lane) { return calls[lane].state<SatDRFState>(1); };
    Saturator<Sample> saturator([&](std::size_t lane) { return state(lane)->derived.coefficients; },
                                [&](std::size_t lane) { return state(lane)->signal; });
    const auto norm = gatherLanes<Sample>([&](std::size_t lane) { return state(lane)->derived.norm; });
    const LaneInput<Sample> in(calls, 2);
    const LaneOutput<Sample> out(calls, 0);
    // What each step leaves for the next. There is one quotient or root to a step at most: what waits for
    // long chains would fill the processor's queues, and keep it from the next sample.
    Sample turned{};
    Curve<Sample> entered{};
    Curve<Sample> climbed{};
    Sample curved{};
    Sample smoothed{};
    Sample pumping{};
    Sample pumped{};
    constexpr std::size_t kSteps = kPumps ? 8 : 5;
    staggered<kSteps>(
        calls[0].count, [&](auto step, std::size_t i) __attribute__((always_inline)) {
            if constexpr (step == 0) {
                turned = saturator.turn(in[i]);
            } else if constexpr (step == 1) {
                entered.enter(turned);
            } else if constexpr (step == 2) {
                climbed.climb(entered);
            } else if constexpr (step == 3) {
                curved = climbed.gain();
            } else if constexpr (step == 4) {
                smoothed = saturator.smoothed(curved);
            } else if constexpr (step == 5) {
                saturator.startPump(smoothed);
                pumping = smoothed;
            } else if constexpr (step == 6) {
                saturator.goOnPumping();
                pumped = pumping;
            }
            if constexpr (step == kSteps - 1) {
                const Sample gain = kPumps ? saturator.endPump(pumped) : smoothed;
                out.set(i, in[i] * gain * norm);
            }
        });
    saturator.store([&](std::size_t lane) -> SatDRFState::Signal& { return state(lane)->signal; });
}

template <class Sample>
void saturateByMode(const LaneCalls& calls)
{
    if (calls[0].state<SatDRFState>(1)->parameters.mode == SatDRFState::EMode::kPumping) {
        saturate<Sample, true>(calls);
    } else {
        saturate<Sample, false>(calls);
    }
}

void run(const CKernelCall& call)
{
    saturateByMode<double>({&call, 1});
}

template <class Sample>
void runLanes(const CKernelCall* calls)
{
    const auto modeOf = [&](std::size_t lane) { return calls[lane].state<SatDRFState>(1)->parameters.mode; };
    bool isAlike = true;
    for (std::size_t lane = 1; lane < kLanes<Sample>; ++lane) {
        isAlike = isAlike && modeOf(lane) == modeOf(0);
    }
    if (isAlike) {
        saturateByMode<Sample>({calls, 1});
        return;
    }
    for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
        run(calls[lane]);
    }
}

SatDRFState::Coefficients coefficientsOf(const SatDRFState::Parameters& parameters, double sampleRateHz)
{
    const double q = kTwoPi / sampleRateHz;
    const double up = q / kRecoverySec;
    const double down = q / kReductionSec;
    const double cosine = math::cos(kTwoPi * parameters.phaseFreqHz / sampleRateHz);

    SatDRFState::Coefficients k;
    k.drive = parameters.drive;
    k.b1 = -2.0 * cosine / kPoleRadius;
    k.b2 = 1.0 / kPoleRadiusSquared;
    k.c1 = 2.0 * kPoleRadius * cosine;
    k.c2 = -kPoleRadiusSquared;
    k.smooth = envelopeGain(kSmoothHz * q);
    k.pumpFirst = envelopeGain(kPumpHz * q);
    constexpr double kMultiples[] = {kCascadeFirst, kCascadeMiddle, kCascadeMiddle, kCascadeLast};
    for (int i = 0; i < 4; ++i) {
        k.pumpUp[i] = envelopeGain(kMultiples[i] * up);
        k.pumpDown[i] = envelopeGain(kMultiples[i] * down);
    }
    return k;
}

// Sum of the RMS values of the two half-waves that come out for one period of a sine of full scale.
template <bool kPumps>
double halfWaveRms(const SatDRFState::Coefficients& coefficients, double frequencyHz, double sampleRateHz)
{
    const int count = static_cast<int>(sampleRateHz / frequencyHz + 0.5);
    const double w = kTwoPi * frequencyHz / sampleRateHz;
    const double twoCos = 2.0 * math::cos(w);
    double sine = 0.0;
    double previous = math::sin(-w);
    Saturator<double> saturator([&](std::size_t) { return coefficients; },
                                [](std::size_t) { return SatDRFState::Signal{}; });
    double sums[2] = {0.0, 0.0};
    int counts[2] = {0, 0};
    for (int i = 0; i < count; ++i) {
        const double gain = saturator.smoothed(curveGain(saturator.turn(sine)));
        double out = sine * gain;
        if constexpr (kPumps) {
            saturator.startPump(gain);
            saturator.goOnPumping();
            out = sine * saturator.endPump(gain);
        }
        const int half = out >= 0.0 ? 0 : 1;
        sums[half] += out * out;
        ++counts[half];
        const double next = twoCos * sine - previous;
        previous = sine;
        sine = next;
    }
    double total = 0.0;
    for (int half = 0; half < 2; ++half) {
        total += counts[half] > 0 ? std::sqrt(sums[half] / counts[half]) : 0.0;
    }
    return total;
}

template <bool kPumps>
double calibrate(const SatDRFState::Coefficients& coefficients, double sampleRateHz)
{
    double total = 0.0;
    for (const double frequencyHz : kTestHz) {
        total += halfWaveRms<kPumps>(coefficients, frequencyHz, sampleRateHz);
    }
    // Nothing comes out only below 1 kHz, where a period is no sample long.
    return total > 0.0 ? kUnshapedSum / total : 1.0;
}

void derive(SatDRFState& state, double sampleRateHz)
{
    SatDRFState::Derived& derived = state.derived;
    if (derived.sampleRateHz == sampleRateHz && derived.from == state.parameters) {
        return;
    }
    derived.sampleRateHz = sampleRateHz;
    derived.from = state.parameters;
    derived.coefficients = coefficientsOf(state.parameters, sampleRateHz);
    derived.norm = state.parameters.mode == SatDRFState::EMode::kPumping
                       ? calibrate<true>(derived.coefficients, sampleRateHz)
                       : calibrate<false>(derived.coefficients, sampleRateHz);
}

void init(const CKernelCall& call)
{
    SatDRFState& state = *call.state<SatDRFState>(0);
    derive(state, call.scalar);
    state.signal = {};
}

void clear(const CKernelCall& call)
{
    call.state<SatDRFState>(0)->signal = {};
}

constexpr CKernelDef kTable[] = {
    {"satdrf", run, 3, 3, runLanes<SamplePair>, kWide<&runLanes<SampleQuad>>},
    {"satdrfi", init, 1, 1},
    {"satdrfc", clear, 1, 1},
};

} // namespace

std::span<const CKernelDef> satDRFKernels()
{
    return kTable;
}

} // namespace qel
