// Kernels of the transient detector.
#include "TransKernels.h"

#include "OnePoleGain.h"
#include "SampleLanes.h"
#include "WideLanes.h"

#include <numbers>
#include <type_traits>

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
    static auto measure(auto r)
    {
        r *= r;
        r *= r;
        r *= r;
        r *= r;
        return 1.0 - r;
    }
    static constexpr double TransState::*kGain = &TransState::gainVeryHigh;
};

struct High
{
    static auto measure(auto r)
    {
        r *= r;
        r *= r;
        return 1.0 - r;
    }
    static constexpr double TransState::*kGain = &TransState::gain;
};

struct Medium
{
    static auto measure(auto r) { return 1.0 - r; }
    static constexpr double TransState::*kGain = &TransState::gainMedium;
};

struct Low
{
    static auto measure(auto r) { return 1.0 - squareRoot(squareRoot(r)); }
    static constexpr double TransState::*kGain = &TransState::gainLow;
};

struct VeryLow
{
    static auto measure(auto r) { return 1.0 - squareRoot(squareRoot(squareRoot(squareRoot(r)))); }
    static constexpr double TransState::*kGain = &TransState::gainVeryLow;
};

enum : std::size_t
{
    kOutput,
    kState,
    kLevel
};

// A follower with a time constant of its own for each direction.
template <class Sample>
class Decay
{
public:
    [[gnu::always_inline]] explicit Decay(const LaneCalls& calls)
        : attack_(calls.load<Sample>(kState, &TransState::attack)),
          decay_(calls.load<Sample>(kState, &TransState::decay)),
          decayed_(calls.load<Sample>(kState, &TransState::decayed))
    {}
    [[gnu::always_inline]] Sample next(Sample v)
    {
        return decayed_ += (v - decayed_) * chosen(decayed_ < v, attack_, decay_);
    }
    [[gnu::always_inline]] void store(const LaneCalls& calls) const
    {
        calls.store(kState, &TransState::decayed, decayed_);
    }

private:
    const Sample attack_;
    const Sample decay_;
    Sample decayed_;
};

// The four followers in series that smooth the measure.
template <class Sample>
class Smoother
{
public:
    [[gnu::always_inline]] explicit Smoother(const LaneCalls& calls)
    {
        unrolled<4>([&](auto i) {
            gains_[i] = gatherLanes<Sample>([&](std::size_t lane) { return stateOf(calls[lane]).smooth[i]; });
            levels_[i] =
                gatherLanes<Sample>([&](std::size_t lane) { return stateOf(calls[lane]).smoothed[i]; });
        });
    }
    [[gnu::always_inline]] Sample next(Sample v)
    {
        unrolled<4>([&](auto i) { v = levels_[i] += (v - levels_[i]) * gains_[i]; });
        return v;
    }
    [[gnu::always_inline]] void store(const LaneCalls& calls) const
    {
        unrolled<4>([&](auto i) {
            scatterLanes(levels_[i],
                         [&](std::size_t lane, double part) { stateOf(calls[lane]).smoothed[i] = part; });
        });
    }

private:
    static TransState& stateOf(const CKernelCall& call) { return *call.state<TransState>(kState); }

    Sample gains_[4];
    Sample levels_[4];
};

// A fast and a slow follower of the level.
template <class Sample>
class Levels
{
public:
    [[gnu::always_inline]] explicit Levels(const LaneCalls& calls)
        : slowGain_(calls.load<Sample>(kState, &TransState::slow)),
          rise_(calls.load<Sample>(kState, &TransState::rise)),
          fall_(calls.load<Sample>(kState, &TransState::fall)),
          slow_(calls.load<Sample>(kState, &TransState::slowLevel)),
          fast_(calls.load<Sample>(kState, &TransState::fastLevel))
    {}
    [[gnu::always_inline]] void next(Sample x)
    {
        slow_ += (x - slow_) * slowGain_;
        fast_ += (x - fast_) * chosen(x <= fast_, fall_, rise_);
    }
    Sample slow() const { return slow_; }
    Sample fast() const { return fast_; }
    [[gnu::always_inline]] void store(const LaneCalls& calls) const
    {
        calls.store(kState, &TransState::slowLevel, slow_);
        calls.store(kState, &TransState::fastLevel, fast_);
    }

private:
    const Sample slowGain_, rise_, fall_;
    Sample slow_, fast_;
};

// Where the fast follower has fallen below the slow one, the curve of their ratio is the measure.
template <class Curve, class Sample>
[[gnu::always_inline]] inline Sample measure(Sample fast, Sample slow, Sample gain)
{
    constexpr Sample kOne = Sample{} + 1.0;
    constexpr Sample kRest = Sample{} + kFloor;
    const auto isFalling = fast < slow;
    // Levels fall seldom and for long, so the processor bets well on whether there is anything to measure.
    if (!isTrueAnywhere(isFalling)) {
        return kRest;
    }
    const Sample measured = Curve::measure(fast / slow) * gain + kFloor;
    // In this form NaN becomes 1 too, and cannot settle in the followers behind.
    return chosen(isFalling, chosen(measured < kOne, measured, kOne), kRest);
}

// The measure of the levels is smoothed, and follows the decay where that is joined.
template <class Curve, class Sample, bool kDecays>
[[gnu::always_inline]] inline void detectTo(const LaneOutput<Sample>& out, const LaneCalls& calls)
{
    // A single channel has the lanes for two samples, and so half the quotients and roots.
    constexpr bool kIsSingle = kLanes<Sample> == 1;
    using Measured = std::conditional_t<kIsSingle, SamplePair, Sample>;
    constexpr std::size_t kAtOnce = kIsSingle ? 2 : 1;
    // So many turns a measure takes, at most: what waits for it stands behind, where it blocks nothing.
    constexpr std::size_t kDelay = kIsSingle ? 3 : 6;
    constexpr std::size_t kRing = 8;

    const LaneInput<Sample> in(calls, kLevel);
    const auto gain = calls.load<Sample>(kState, Curve::kGain);
    const Measured gains = Measured{} + gain;
    Levels<Sample> levels(calls);
    Smoother<Sample> smoother(calls);
    Decay<Sample> decay(calls);
    const auto put = [&](std::size_t i, Sample measured) __attribute__((always_inline))
    {
        const Sample smoothed = smoother.next(measured);
        out.set(i, kDecays ? decay.next(smoothed) : smoothed);
    };
    const auto measureFrom = [&](std::size_t i) __attribute__((always_inline))
    {
        levels.next(in[i]);
        if constexpr (kIsSingle) {
            const Sample fast = levels.fast();
            const Sample slow = levels.slow();
            levels.next(in[i + 1]);
            return measure<Curve>(Measured{fast, levels.fast()}, Measured{slow, levels.slow()}, gains);
        } else {
            return measure<Curve>(levels.fast(), levels.slow(), gains);
        }
    };
    const auto putFrom = [&](std::size_t i, Measured measured) __attribute__((always_inline))
    {
        if constexpr (kIsSingle) {
            put(i, laneOf(measured, 0));
            put(i + 1, laneOf(measured, 1));
        } else {
            put(i, measured);
        }
    };
    Measured pending[kRing];
    const std::size_t count = calls[0].count;
    staggered<kDelay + 1>(
        count / kAtOnce, [&](auto step, std::size_t turn) __attribute__((always_inline)) {
            if constexpr (step == 0) {
                pending[turn % kRing] = measureFrom(turn * kAtOnce);
            } else if constexpr (step == kDelay) {
                putFrom(turn * kAtOnce, pending[turn % kRing]);
            }
        });
    if (count % kAtOnce != 0) {
        levels.next(in[count - 1]);
        put(count - 1, measure<Curve>(levels.fast(), levels.slow(), gain));
    }
    levels.store(calls);
    smoother.store(calls);
    if (kDecays) {
        decay.store(calls);
    }
}

template <class Curve>
void detect(const CKernelCall& call)
{
    const LaneCalls calls{&call, 1};
    detectTo<Curve, double, false>({calls, kOutput}, calls);
}

// In place.
void runDecay(const CKernelCall& call)
{
    const LaneCalls calls{&call, 1};
    double* const signal = call.samples(kOutput);
    Decay<double> decay(calls);
    for (std::size_t i = 0; i < call.count; ++i) {
        signal[i] = decay.next(signal[i]);
    }
    decay.store(calls);
}

// A detector and its decay.
template <class Curve, class Sample>
void detectAndDecay(const CKernelCall* calls)
{
    constexpr std::size_t kParts = 2;
    detectTo<Curve, Sample, true>({{calls + 1, kParts}, kOutput}, {calls, kParts});
}

template <class Curve>
struct Join
{
    static constexpr CKernelPart kParts[] = {{detect<Curve>, CKernelPart::kInput}, {runDecay, 0}};
    static constexpr CKernelJoin kJoins[] = {{kParts, detectAndDecay<Curve, double>,
                                              detectAndDecay<Curve, SamplePair>,
                                              kWide<&detectAndDecay<Curve, SampleQuad>>}};
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
    {"transvh", detect<VeryHigh>, 3, 3, nullptr, nullptr, Join<VeryHigh>::kJoins},
    {"transh", detect<High>, 3, 3, nullptr, nullptr, Join<High>::kJoins},
    {"transm", detect<Medium>, 3, 3, nullptr, nullptr, Join<Medium>::kJoins},
    {"transl", detect<Low>, 3, 3, nullptr, nullptr, Join<Low>::kJoins},
    {"transvl", detect<VeryLow>, 3, 3, nullptr, nullptr, Join<VeryLow>::kJoins},
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
