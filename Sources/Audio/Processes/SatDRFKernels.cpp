// Kernels of the saturator.
#include "SatDRFKernels.h"

#include "OnePoleGain.h"
#include "Unrolled.h"

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

inline double curveGain(double u)
{
    const double v = u - 1.0;
    if (v <= kArcStart) {
        return 1.0;
    }
    if (v < kArcEnd) {
        const double along = v - kArcStart;
        return 1.0 + (std::sqrt(kArcRadiusSquared - along * along) + kArcCentre) / u;
    }
    return 1.0 + kLineSlope * v / u;
}

// The gain for the next sample x. A copy of x, driven and turned in phase, goes through the curve: its
// positive half-waves in the first stage and its negative ones, with the sign turned, in the second. Both
// gains together are smoothed, and ride further down the pumping chain.
template <bool kPumps>
inline double nextGain(double x, const SatDRFState::Coefficients& k, SatDRFState::Signal& s)
{
    const double f = k.drive * x + k.c1 * s.y1 + k.c2 * s.y2;
    const double u = (f + k.b1 * s.y1 + k.b2 * s.y2) * kPoleRadiusSquared;
    s.y2 = s.y1;
    s.y1 = f;
    const double g1 = curveGain(u);
    const double g2 = curveGain(u * (-g1 / 3.0));
    s.e1 += (g1 * g2 - s.e1) * k.smooth;
    s.e2 += (s.e1 - s.e2) * k.smooth;
    if constexpr (!kPumps) {
        return s.e2;
    }
    s.p[0] += (s.e2 - s.p[0]) * k.pumpFirst;
    unrolled<4>([&](auto i) {
        const double target = s.p[i];
        double& stage = s.p[i + 1];
        stage += (target - stage) * (stage <= target ? k.pumpUp[i] : k.pumpDown[i]);
    });
    return s.e2 * s.p[4];
}

template <bool kPumps>
void saturate(const CKernelCall& call)
{
    double* out = call.samples(0);
    SatDRFState& state = *call.state<SatDRFState>(1);
    const double* in = call.samples(2);
    const SatDRFState::Coefficients coefficients = state.coefficients;
    const double norm = state.norm;
    SatDRFState::Signal signal = state.signal;
    for (std::size_t i = 0; i < call.count; ++i) {
        const double x = in[i];
        out[i] = x * nextGain<kPumps>(x, coefficients, signal) * norm;
    }
    state.signal = signal;
}

void run(const CKernelCall& call)
{
    if (call.state<SatDRFState>(1)->mode == SatDRFState::EMode::kPumping) {
        saturate<true>(call);
    } else {
        saturate<false>(call);
    }
}

SatDRFState::Coefficients coefficientsOf(const SatDRFState& state, double sampleRateHz)
{
    const double q = kTwoPi / sampleRateHz;
    const double up = q / kRecoverySec;
    const double down = q / kReductionSec;
    const double cosine = math::cos(kTwoPi * state.phaseFreqHz / sampleRateHz);

    SatDRFState::Coefficients k;
    k.drive = state.drive;
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
    SatDRFState::Signal signal;
    double sums[2] = {0.0, 0.0};
    int counts[2] = {0, 0};
    for (int i = 0; i < count; ++i) {
        const double out = sine * nextGain<kPumps>(sine, coefficients, signal);
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

void init(const CKernelCall& call)
{
    SatDRFState& state = *call.state<SatDRFState>(0);
    state.coefficients = coefficientsOf(state, call.scalar);
    state.norm = state.mode == SatDRFState::EMode::kPumping
                     ? calibrate<true>(state.coefficients, call.scalar)
                     : calibrate<false>(state.coefficients, call.scalar);
    state.signal = {};
}

void clear(const CKernelCall& call)
{
    call.state<SatDRFState>(0)->signal = {};
}

constexpr CKernelDef kTable[] = {
    {"satdrf", run, 3, 3},
    {"satdrfi", init, 1, 1},
    {"satdrfc", clear, 1, 1},
};

} // namespace

std::span<const CKernelDef> satDRFKernels()
{
    return kTable;
}

} // namespace qel
