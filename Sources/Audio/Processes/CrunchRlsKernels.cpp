// Kernels of the compressor's release: a level becomes a gain.
#include "CrunchKernels.h"
#include "LaneLog.h"
#include "OnePoleGain.h"
#include "WideLanes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {

namespace {

// The drive that a user sets is stronger than what the law below needs.
constexpr double kDriveScale = 0.375;
// Below this the law is flat; it keeps the quotient clear of 0 / 0.
constexpr double kMinLevel = 0.005;

// NaN becomes the least level.
template <class Sample>
[[gnu::always_inline]] inline Sample drivenLevel(Sample x, double drive)
{
    const Sample v = x * drive;
    return chosen(v > kMinLevel, v, Sample{} + kMinLevel);
}

// The static curve: log(1 + v) / v, which is about 1 for low levels and falls like 1 / v for high ones, so
// that loudness grows with the logarithm of the level. The inverse form is scaled alike.
template <bool kIsInverse, class Sample>
[[gnu::always_inline]] inline Sample targetGain(Sample v, double norm)
{
    const Sample log = logAboveOne(1.0 + v);
    return kIsInverse ? v * norm / log : log * norm / v;
}

// Targets are calculated some samples ahead, where none waits for another.
constexpr std::size_t kTile = 64;

// What one channel's levels ask for, as many at once as there are lanes.
template <bool kIsInverse, class Sample>
void applyCurveBy(double drive, double norm, const double* levels, std::size_t count, double* targets)
{
    const auto target = [&](auto level) __attribute__((always_inline))
    {
        return targetGain<kIsInverse>(drivenLevel(level, drive), norm);
    };
    std::size_t i = 0;
    for (; i + kLanes<Sample> <= count; i += kLanes<Sample>) {
        storeSamples(targets + i, target(loadSamples<Sample>(levels + i)));
    }
    for (; i < count; ++i) {
        targets[i] = target(levels[i]);
    }
}

template <bool kIsInverse>
void applyCurve(double drive, double norm, const double* levels, std::size_t count, double* targets)
{
    const auto function =
        hasWideLanes() ? kWide<&applyCurveBy<kIsInverse, SampleQuad>> : &applyCurveBy<kIsInverse, SamplePair>;
    function(drive, norm, levels, count, targets);
}

template <bool kIsInverse>
void findTargets(const CrunchRlsState& state, const double* levels, std::size_t count, double* targets)
{
    const double norm = kIsInverse ? state.derived.curve.inverseNorm : state.derived.curve.norm;
    applyCurve<kIsInverse>(state.drive, norm, levels, count, targets);
}

// A louder level is answered at once (the attack stage gives that its time); a softer one through the
// followers, the faster the nearer the gain has come to its target.
template <class Sample, bool kIsInverse>
class Release
{
public:
    // The gain of some samples ago is there long before the last one, and moves little in so few samples:
    // where the level is turbulent, the next sample need not wait for a quotient and a look-up. Several
    // channels have no time to spare for that.
    static constexpr bool kLooksBack = kLanes<Sample> == 1;

    [[gnu::always_inline]] explicit Release(auto stateOf) : follower_(stateOf, 0) {}
    [[gnu::always_inline]] void store(auto stateOf) const { follower_.store(stateOf); }

    Sample last() const { return follower_.last(); }
    // `gainBefore` gives the gain of some samples ago.
    [[gnu::always_inline]] Sample next(Sample target, auto gainBefore)
    {
        const Sample gain = last();
        const Sample lower = kIsInverse ? target : gain;
        const Sample higher = kIsInverse ? gain : target;
        // Asked this way round, a NaN gain is replaced by the next target.
        const auto isSofter = lower < higher;
        if (isTrueEverywhere(bothOf(isSofter, follower_.holds(lower, higher)))) [[likely]] {
            follower_.follow(target);
            return last();
        }
        bool isFound = false;
        if constexpr (kLooksBack) {
            const double before = gainBefore();
            follower_.guess(kIsInverse ? target : before, kIsInverse ? before : target);
            isFound = !isSofter || follower_.holds(lower, higher);
        }
        if (!isFound) {
            follower_.take([&](std::size_t lane) {
                return CrunchTables::entry(CrunchTables::kSteps * laneOf(lower, lane) / laneOf(higher, lane) +
                                           0.5);
            });
        }
        follower_.follow(target);
        follower_.setUnless(isSofter, target);
        return last();
    }

private:
    CrunchFollower<Sample> follower_;
};

// shape(gain) goes to the output.
template <class Sample, bool kIsInverse>
[[gnu::always_inline]] inline void releaseTo(const LaneOutput<Sample>& out, const LaneCalls& calls,
                                             auto shape)
{
    constexpr std::size_t kPast = 4;
    const auto stateOf = [&](std::size_t lane) -> CrunchRlsState& {
        return *calls[lane].state<CrunchRlsState>(1);
    };
    const LaneInput<Sample> in(calls, 2);
    Release<Sample, kIsInverse> stage(stateOf);
    // Gains of the last samples, and targets, which become gains.
    double tile[kLanes<Sample>][kPast + kTile];
    for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
        std::fill_n(tile[lane], kPast, laneOf(stage.last(), lane));
    }
    const auto tileAt = [&](std::size_t i) __attribute__((always_inline))
    {
        return gatherLanes<Sample>([&](std::size_t lane) { return tile[lane][i]; });
    };
    const std::size_t length = calls[0].count;
    for (std::size_t begin = 0; begin < length; begin += kTile) {
        const std::size_t count = std::min(kTile, length - begin);
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            findTargets<kIsInverse>(stateOf(lane), in.samples[lane] + begin, count, tile[lane] + kPast);
        }
        for (std::size_t i = 0; i < count; ++i) {
            const Sample gain = stage.next(tileAt(kPast + i), [&] { return tileAt(i); });
            if constexpr (stage.kLooksBack) {
                tile[0][kPast + i] = gain;
            }
            out.set(begin + i, shape(gain));
        }
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            std::copy_n(tile[lane] + count, kPast, tile[lane]);
        }
    }
    stage.store(stateOf);
}

template <bool kIsInverse>
void release(const CKernelCall& call)
{
    const LaneCalls calls{&call, 1};
    releaseTo<double, kIsInverse>({calls, 0}, calls, [](double gain) { return gain; });
}

void run(const CKernelCall& call)
{
    if (call.state<CrunchRlsState>(1)->isInverse) {
        release<true>(call);
    } else {
        release<false>(call);
    }
}

// A release and its attack.
template <class Sample, bool kIsFixed>
void releaseAndAttack(const CKernelCall* calls)
{
    constexpr std::size_t kParts = 2;
    const LaneCalls attacks{calls + 1, kParts};
    const auto stateOf = [&](std::size_t lane) -> CrunchAtkState& {
        return *attacks[lane].state<CrunchAtkState>(1);
    };
    CrunchAttack<Sample, kIsFixed> attack(stateOf);
    releaseTo<Sample, false>(
        {attacks, 0},
        {calls, kParts}, [&](Sample gain) __attribute__((always_inline)) { return attack.follow(gain); });
    attack.store(stateOf);
}

// The forms that no chain uses: what passes between them has no memory of its own.
void runInTurn(CKernelCall releaseCall, CKernelCall attackCall)
{
    releaseCall.data[0] = attackCall.data[0];
    attackCall.data[2] = attackCall.data[0];
    run(releaseCall);
    runCrunchAttack(attackCall);
}

template <class Sample>
void runWithAttack(const CKernelCall* calls)
{
    constexpr std::size_t kChannels = kLanes<Sample>;
    const auto type = calls[1].state<CrunchAtkState>(1)->type;
    bool isAlike = true;
    for (std::size_t channel = 0; channel < kChannels; ++channel) {
        const auto& attack = *calls[2 * channel + 1].state<CrunchAtkState>(1);
        isAlike = isAlike && !calls[2 * channel].state<CrunchRlsState>(1)->isInverse && !attack.isInverse &&
                  !attack.isShaped && attack.type == type;
    }
    if (!isAlike) {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            runInTurn(calls[2 * channel], calls[2 * channel + 1]);
        }
    } else if (type == CrunchAtkState::EType::kFixed) {
        releaseAndAttack<Sample, true>(calls);
    } else {
        releaseAndAttack<Sample, false>(calls);
    }
}

void fillTables(CrunchRlsState& state, double sampleRateHz)
{
    CrunchRlsState::Derived& derived = state.derived;
    if (derived.isFor(sampleRateHz, state.releaseSec)) {
        return;
    }
    derived.sampleRateHz = sampleRateHz;
    derived.releaseSec = state.releaseSec;
    const double q = 2.0 * std::numbers::pi / sampleRateHz;
    CrunchTables& tables = derived.tables;
    for (std::size_t i = 1; i < CrunchTables::kEntries; ++i) {
        const double w = q * static_cast<double>(i) / (CrunchTables::kSteps * state.releaseSec);
        tables.first[i] = envelopeGain(kCascadeFirst * w);
        tables.middle[i] = envelopeGain(kCascadeMiddle * w);
        tables.last[i] = envelopeGain(kCascadeLast * w);
    }
    // A frequency of 0 would let the gain stick.
    tables.first[0] = tables.first[1];
    tables.middle[0] = tables.middle[1];
    tables.last[0] = tables.last[1];
}

// Levels of a sine of amplitude 1 and `w` radians a sample.
template <std::size_t kCount>
struct SineLevels
{
    explicit SineLevels(double w)
    {
        const double twoCos = 2.0 * math::cos(w);
        double sine = 0.0;
        double previous = math::sin(-w);
        for (double& level : levels) {
            level = std::fabs(sine);
            const double next = twoCos * sine - previous;
            previous = sine;
            sine = next;
        }
    }

    double levels[kCount];
};

// One period of 500 Hz and one of 2 kHz at 44.1 kHz; the static gain has no memory, so any rate will do.
const SineLevels<88> kLowSine(0.07123792865282977);
const SineLevels<22> kHighSine(0.2849517146113191);

// Mean square of the static gain.
template <std::size_t kCount>
double meanSquareGain(const CrunchRlsState& state, const SineLevels<kCount>& sine)
{
    double gains[kCount];
    const auto find = state.isInverse ? &applyCurve<true> : &applyCurve<false>;
    find(state.drive, 1.0, sine.levels, kCount, gains);
    double sum = 0.0;
    for (const double gain : gains) {
        sum += gain * gain;
    }
    return sum / static_cast<int>(kCount);
}

// Over a sine of full scale that is followed without delay, the gain has a mean square of 1 whatever the
// drive: turning the drive up brings soft signals up and loud ones down. In the inverse form the quotient is
// scaled by the same mean once more and not back to 1.
void calibrate(CrunchRlsState& state)
{
    CrunchRlsState::Derived::Curve& curve = state.derived.curve;
    if (curve.drive == state.drive && curve.isInverse == state.isInverse) {
        return;
    }
    curve.drive = state.drive;
    curve.isInverse = state.isInverse;
    const double low = meanSquareGain(state, kLowSine);
    const double high = meanSquareGain(state, kHighSine);
    curve.norm = 1.0 / std::sqrt((low + high) * 0.5);
    curve.inverseNorm = 1.0 / curve.norm;
}

void prepare(CrunchRlsState& state, double sampleRateHz)
{
    fillTables(state, sampleRateHz);
    state.drive *= kDriveScale;
    calibrate(state);
}

void init(const CKernelCall& call)
{
    CrunchRlsState& state = *call.state<CrunchRlsState>(0);
    prepare(state, call.scalar);
    state.stages.set(state.restValue());
}

void update(const CKernelCall& call)
{
    CrunchRlsState& state = *call.state<CrunchRlsState>(0);
    const CrunchRlsState& running = *call.state<CrunchRlsState>(1);
    prepare(state, call.scalar);
    state.stages = running.stages;
}

void clear(const CKernelCall& call)
{
    CrunchRlsState& state = *call.state<CrunchRlsState>(0);
    state.stages.set(state.restValue());
}

constexpr CKernelPart kParts[] = {{run, CKernelPart::kInput}, {runCrunchAttack, 0}};
constexpr CKernelJoin kJoins[] = {
    {kParts, runWithAttack<double>, runWithAttack<SamplePair>, kWide<&runWithAttack<SampleQuad>>}};

constexpr CKernelDef kTable[] = {
    {"crunchrls", run, 3, 3, nullptr, nullptr, kJoins},
    {"crunchrlsi", init, 1, 1},
    {"crunchrlsu", update, 2, 1},
    {"crunchrlsc", clear, 1, 1},
};

} // namespace

std::span<const CKernelDef> crunchRlsKernels()
{
    return kTable;
}

} // namespace qel
