// Kernels of the compressor's release: a level becomes a gain.
#include "CrunchKernels.h"
#include "OnePoleGain.h"
#include "Unrolled.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace qel {

namespace {

// The drive that a user sets is stronger than what the law below needs.
constexpr double kDriveScale = 0.375;
// Below this the law is flat; it keeps the quotient clear of 0 / 0.
constexpr double kMinLevel = 0.005;

// NaN becomes the least level.
inline double drivenLevel(double x, double drive)
{
    const double v = x * drive;
    return v > kMinLevel ? v : kMinLevel;
}

// The static curve: log(1 + v) / v, which is about 1 for low levels and falls like 1 / v for high ones, so
// that loudness grows with the logarithm of the level.
inline double targetGain(double v, double norm)
{
    return math::log(1.0 + v) * norm / v;
}

inline double inverseTargetGain(double v, double inverseNorm)
{
    return v * inverseNorm / math::log(1.0 + v);
}

// Targets are calculated some samples ahead, where none waits for another.
constexpr std::size_t kTile = 64;

// A louder level is answered at once (the attack stage gives that its time); a softer one through the
// followers, the faster the nearer the gain has come to its target.
template <bool kIsInverse>
class Release
{
public:
    explicit Release(const CrunchRlsState& state)
        : drive_(state.drive), norm_(kIsInverse ? state.derived.inverseNorm : state.derived.norm),
          follower_(state.stages, state.derived.tables, 0)
    {}
    void findTargets(const double* levels, std::size_t count, double* targets) const
    {
        for (std::size_t i = 0; i < count; ++i) {
            const double v = drivenLevel(levels[i], drive_);
            targets[i] = kIsInverse ? inverseTargetGain(v, norm_) : targetGain(v, norm_);
        }
    }
    double next(double target)
    {
        const double gain = follower_.last();
        // Asked this way round, a NaN gain is replaced by the next target.
        if (!(kIsInverse ? gain > target : gain < target)) {
            follower_.set(target);
        } else {
            const double lower = kIsInverse ? target : gain;
            const double higher = kIsInverse ? gain : target;
            const double position = CrunchTables::kSteps * lower / higher + 0.5;
            follower_.follow(target, CrunchTables::entry(position));
        }
        return follower_.last();
    }
    void store(CrunchRlsState& state) const { state.stages = follower_.stages(); }

private:
    const double drive_;
    const double norm_;
    CrunchFollower follower_;
};

template <bool kIsInverse>
void release(const CKernelCall& call)
{
    double* out = call.samples(0);
    CrunchRlsState& state = *call.state<CrunchRlsState>(1);
    const double* in = call.samples(2);
    Release<kIsInverse> stage(state);
    for (std::size_t begin = 0; begin < call.count; begin += kTile) {
        const std::size_t count = std::min<std::size_t>(kTile, call.count - begin);
        double targets[kTile];
        stage.findTargets(in + begin, count, targets);
        for (std::size_t i = 0; i < count; ++i) {
            out[begin + i] = stage.next(targets[i]);
        }
    }
    stage.store(state);
}

void run(const CKernelCall& call)
{
    if (call.state<CrunchRlsState>(1)->isInverse) {
        release<true>(call);
    } else {
        release<false>(call);
    }
}

// A release and its attack. Each sample waits for the one before; a second channel has that time for itself.
template <std::size_t kChannels, bool kIsFixed>
void releaseAndAttack(const CKernelCall* calls)
{
    const auto releaseState = [&](std::size_t channel) -> CrunchRlsState& {
        return *calls[2 * channel].state<CrunchRlsState>(1);
    };
    const auto attackState = [&](std::size_t channel) -> CrunchAtkState& {
        return *calls[2 * channel + 1].state<CrunchAtkState>(1);
    };
    [&]<std::size_t... kChannel>(std::index_sequence<kChannel...>)
    {
        Release<false> releases[] = {Release<false>(releaseState(kChannel))...};
        CrunchAttack<kIsFixed> attacks[] = {CrunchAttack<kIsFixed>(attackState(kChannel))...};
        const double* const in[] = {calls[2 * kChannel].samples(2)...};
        double* const out[] = {calls[2 * kChannel + 1].samples(0)...};
        const std::size_t length = calls->count;
        for (std::size_t begin = 0; begin < length; begin += kTile) {
            const std::size_t count = std::min(kTile, length - begin);
            double targets[kChannels][kTile];
            (releases[kChannel].findTargets(in[kChannel] + begin, count, targets[kChannel]), ...);
            for (std::size_t i = 0; i < count; ++i) {
                unrolled<kChannels>([&](auto channel) {
                    const double gain = releases[channel].next(targets[channel][i]);
                    auto& attack = attacks[channel];
                    out[channel][begin + i] = attack.follow(gain, kIsFixed ? 1.0 : attack.ratio(gain));
                });
            }
        }
        (releases[kChannel].store(releaseState(kChannel)), ...);
        (attacks[kChannel].store(attackState(kChannel)), ...);
    }
    (std::make_index_sequence<kChannels>{});
}

// The forms that no chain uses: what passes between them has no memory of its own.
void runInTurn(CKernelCall releaseCall, CKernelCall attackCall)
{
    releaseCall.data[0] = attackCall.data[0];
    attackCall.data[2] = attackCall.data[0];
    run(releaseCall);
    runCrunchAttack(attackCall);
}

template <std::size_t kChannels>
void runWithAttack(const CKernelCall* calls)
{
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
        releaseAndAttack<kChannels, true>(calls);
    } else {
        releaseAndAttack<kChannels, false>(calls);
    }
}

void fillTables(CrunchRlsState& state, double sampleRateHz)
{
    CrunchRlsState::Derived& derived = state.derived;
    if (derived.sampleRateHz == sampleRateHz && derived.releaseSec == state.releaseSec) {
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

// Mean square of the static gain over a sine of amplitude 1 and `w` radians a sample.
double meanSquareGain(const CrunchRlsState& state, double w, int count)
{
    const double twoCos = 2.0 * math::cos(w);
    double sine = 0.0;
    double previous = math::sin(-w);
    double sum = 0.0;
    for (int i = 0; i < count; ++i) {
        const double v = drivenLevel(std::fabs(sine), state.drive);
        const double gain = state.isInverse ? inverseTargetGain(v, 1.0) : targetGain(v, 1.0);
        sum += gain * gain;
        const double next = twoCos * sine - previous;
        previous = sine;
        sine = next;
    }
    return sum / count;
}

// Over a sine of full scale that is followed without delay, the gain has a mean square of 1 whatever the
// drive: turning the drive up brings soft signals up and loud ones down. In the inverse form the quotient is
// scaled by the same mean once more and not back to 1.
void calibrate(CrunchRlsState& state)
{
    CrunchRlsState::Derived& derived = state.derived;
    if (derived.drive == state.drive && derived.isInverse == state.isInverse) {
        return;
    }
    derived.drive = state.drive;
    derived.isInverse = state.isInverse;
    // One period of 500 Hz and one of 2 kHz at 44.1 kHz; the gain has no memory here, so any rate will do.
    constexpr double kTestW[] = {0.07123792865282977, 0.2849517146113191};
    constexpr int kTestCounts[] = {88, 22};
    const double low = meanSquareGain(state, kTestW[0], kTestCounts[0]);
    const double high = meanSquareGain(state, kTestW[1], kTestCounts[1]);
    derived.norm = 1.0 / std::sqrt((low + high) * 0.5);
    derived.inverseNorm = 1.0 / derived.norm;
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
constexpr CKernelJoin kJoins[] = {{kParts, runWithAttack<1>, runWithAttack<2>}};

constexpr CKernelDef kTable[] = {
    {"crunchrls", run, 3, 3, nullptr, kJoins},
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
