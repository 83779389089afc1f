// Kernels of the transient detector.
#include "TransKernels.h"

#include "OnePoleGain.h"
#include "SamplePair.h"

#include <numbers>

namespace qel {

namespace {

// The slow follower's cut-off is 0.6 / time, in Hz; those of the fast one are fractions of it.
constexpr double kSlowRate = 3.7699111843077517; // 2 pi * 0.6
// The measure is smoothed by a cascade at 240 Hz.
constexpr double kSmoothRate = 1507.9644737231006; // 2 pi * 240
// -300 dB: keeps the smoothing followers out of the denormal range in silence.
constexpr double kFloor = 1e-15;

// The five curves: what a ratio r < 1 of the fast to the slow follower counts for, and the gain it gets.
// Each next one turns steeper near r = 1 and so responds to smaller drops.

struct VeryHigh
{
    static double measure(double r)
    {
        r *= r;
        r *= r;
        r *= r;
        r *= r;
        return 1.0 - r;
    }
    static double gain(const TransState& state) { return state.gainVeryHigh; }
};

struct High
{
    static double measure(double r)
    {
        r *= r;
        r *= r;
        return 1.0 - r;
    }
    static double gain(const TransState& state) { return state.gain; }
};

struct Medium
{
    static double measure(double r) { return 1.0 - r; }
    static double gain(const TransState& state) { return state.gainMedium; }
};

struct Low
{
    static double measure(double r) { return 1.0 - squareRoot(squareRoot(r)); }
    static double gain(const TransState& state) { return state.gainLow; }
};

struct VeryLow
{
    static double measure(double r) { return 1.0 - squareRoot(squareRoot(squareRoot(squareRoot(r)))); }
    static double gain(const TransState& state) { return state.gainVeryLow; }
};

// A follower with a time constant of its own for each direction.
struct Decay
{
    explicit Decay(const TransState& state)
        : attackGain(state.attack), decayGain(state.decay), decayed(state.decayed)
    {}
    double next(double v) { return decayed += (v - decayed) * (decayed < v ? attackGain : decayGain); }

    const double attackGain;
    const double decayGain;
    double decayed;
};

// Two followers of the level; where the fast one has fallen below the slow one, the curve of their ratio is
// the measure. It is smoothed by four followers in series.
template <class Curve, bool kDecays>
void detectTo(double* out, TransState& state, const double* in, std::size_t count)
{
    const double gain = Curve::gain(state);
    const double slow = state.slow;
    const double rise = state.rise;
    const double fall = state.fall;
    const auto [k0, k1, k2, k3] = state.smooth;
    auto [s0, s1, s2, s3] = state.smoothed;
    double slowLevel = state.slowLevel;
    double fastLevel = state.fastLevel;
    Decay decay(state);
    for (std::size_t i = 0; i < count; ++i) {
        const double x = in[i];
        slowLevel += (x - slowLevel) * slow;
        fastLevel += (x - fastLevel) * (x <= fastLevel ? fall : rise);
        double v = kFloor;
        if (fastLevel < slowLevel) {
            v = Curve::measure(fastLevel / slowLevel) * gain + kFloor;
            // In this form NaN becomes 1 too, and cannot settle in the followers behind.
            v = v < 1.0 ? v : 1.0;
        }
        s0 += (v - s0) * k0;
        s1 += (s0 - s1) * k1;
        s2 += (s1 - s2) * k2;
        s3 += (s2 - s3) * k3;
        out[i] = kDecays ? decay.next(s3) : s3;
    }
    state.slowLevel = slowLevel;
    state.fastLevel = fastLevel;
    state.smoothed[0] = s0;
    state.smoothed[1] = s1;
    state.smoothed[2] = s2;
    state.smoothed[3] = s3;
    state.decayed = decay.decayed;
}

template <class Curve>
void detect(const CKernelCall& call)
{
    detectTo<Curve, false>(call.samples(0), *call.state<TransState>(1), call.samples(2), call.count);
}

void runDecay(const CKernelCall& call)
{
    double* signal = call.samples(0);
    TransState& state = *call.state<TransState>(1);
    Decay decay(state);
    for (std::size_t i = 0; i < call.count; ++i) {
        signal[i] = decay.next(signal[i]);
    }
    state.decayed = decay.decayed;
}

// A detector and its decay, which works in place.
template <class Curve, std::size_t kChannels>
void detectAndDecay(const CKernelCall* calls)
{
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        const CKernelCall& detection = calls[2 * channel];
        detectTo<Curve, true>(calls[2 * channel + 1].samples(0), *detection.state<TransState>(1),
                              detection.samples(2), detection.count);
    }
}

template <class Curve>
struct Join
{
    static constexpr CKernelPart kParts[] = {{detect<Curve>, CKernelPart::kInput}, {runDecay, 0}};
    static constexpr CKernelJoin kJoins[] = {{kParts, detectAndDecay<Curve, 1>, detectAndDecay<Curve, 2>}};
};

void clearSignal(TransState& state)
{
    state.slowLevel = 0.0;
    state.fastLevel = 0.0;
    for (double& level : state.smoothed) {
        level = 0.0;
    }
    state.decayed = 0.0;
}

void clear(const CKernelCall& call)
{
    clearSignal(*call.state<TransState>(0));
}

void init(const CKernelCall& call)
{
    TransState& state = *call.state<TransState>(0);
    const double sampleRateHz = call.scalar;

    const double squared = state.sense * state.sense;
    state.gain = (1.0 + 2.5 * (squared * squared)) * state.scale * 0.5;
    state.gainMedium = 3.0 * state.gain;
    state.gainLow = 10.0 * state.gain;
    state.gainVeryLow = 40.0 * state.gain;
    state.gainVeryHigh = 0.55 * state.gain;

    const double slow = kSlowRate / state.timeSec / sampleRateHz;
    const double part = 0.6 * state.sense + 0.2;
    state.slow = envelopeGain(slow);
    state.rise = envelopeGain(slow * part);
    state.fall = envelopeGain(slow * (part * part));

    const double smooth = kSmoothRate / sampleRateHz;
    state.smooth[0] = envelopeGain(kCascadeFirst * smooth);
    state.smooth[1] = envelopeGain(kCascadeMiddle * smooth);
    state.smooth[2] = state.smooth[1];
    state.smooth[3] = envelopeGain(kCascadeLast * smooth);

    constexpr double kTwoPi = 2.0 * std::numbers::pi;
    state.attack = envelopeGain(kTwoPi / state.timeSec / sampleRateHz);
    state.decay = envelopeGain(kTwoPi / state.decaySec / sampleRateHz);
    clearSignal(state);
}

constexpr CKernelDef kTable[] = {
    {"transvh", detect<VeryHigh>, 3, 3, nullptr, Join<VeryHigh>::kJoins},
    {"transh", detect<High>, 3, 3, nullptr, Join<High>::kJoins},
    {"transm", detect<Medium>, 3, 3, nullptr, Join<Medium>::kJoins},
    {"transl", detect<Low>, 3, 3, nullptr, Join<Low>::kJoins},
    {"transvl", detect<VeryLow>, 3, 3, nullptr, Join<VeryLow>::kJoins},
    {"transdecay", runDecay, 2, 3},
    {"transi", init, 1, 1},
    {"transc", clear, 1, 1},
};

} // namespace

std::span<const CKernelDef> transKernels()
{
    return kTable;
}

} // namespace qel
