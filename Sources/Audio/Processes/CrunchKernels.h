// Kernels of the compressor's envelope: a release and an attack.
#pragma once

#include "SampleLanes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qel {

// Coefficients of the followers, by how far the envelope has come: the nearer to its target, the higher the
// entry.
struct CrunchTables
{
    static constexpr std::size_t kEntries = 128;
    static constexpr double kSteps = 127.0;

    double first[kEntries];
    double middle[kEntries]; // of the second and the third follower
    double last[kEntries];

    // The entry for `position`, already rounded up by a half. NaN or a position outside gets the end
    // that is nearest, so that no signal can make a kernel read beside the table.
    static std::size_t entry(double position)
    {
        if (!(position >= 1.0)) {
            return 0;
        }
        return position < static_cast<double>(kEntries) ? static_cast<std::size_t>(position) : kEntries - 1;
    }
};

// Four followers in series.
struct CrunchStages
{
    double e1, e2, e3, e4;

    void set(double value) { e1 = e2 = e3 = e4 = value; }
};

// State of one release stage, in a pool buffer. The module writes the parameters and runs `crunchrlsi`, or
// `crunchrlsu` to go on from a running state; both turn `drive` into the factor that the level gets.
struct CrunchRlsState
{
    // What follows from the parameters, and those that it was worked out from: a sweep of the drive comes
    // with every block, and leaves the tables as they are.
    struct Derived
    {
        // Of the static curve, moved by the drive.
        struct Curve
        {
            double drive; // 0: nothing yet
            bool isInverse;
            double norm;
            double inverseNorm;
        };

        double sampleRateHz; // 0: nothing yet
        double releaseSec;
        CrunchTables tables;
        Curve curve;

        bool isFor(double rateHz, double seconds) const
        {
            return sampleRateHz == rateHz && releaseSec == seconds;
        }
    };

    double releaseSec;
    double drive;
    bool isInverse; // puts out the reciprocal gain, which rises with the level

    Derived derived;
    CrunchStages stages;

    double restValue() const { return isInverse ? derived.curve.inverseNorm : derived.curve.norm; }
};

// State of one attack stage, in a pool buffer; set up as the release stage is.
struct CrunchAtkState
{
    enum class EType : std::int32_t
    {
        kFixed,    // always the time of the last entry
        kVariable, // slower the nearer the target
        kEven,     // the same with all followers alike
    };

    double attackSec;
    EType type;
    bool isShaped;  // puts out 1 / gain
    bool isInverse; // puts out how near the gain was to its target, as the smaller over the larger

    CrunchTables tables;
    CrunchStages stages;
};

inline const CrunchTables& tablesOf(const CrunchRlsState& state)
{
    return state.derived.tables;
}
inline const CrunchTables& tablesOf(const CrunchAtkState& state)
{
    return state.tables;
}

// Stages of one channel, two or four at work, with signal and coefficients in registers from the first sample
// of a call to its last.
template <class Sample>
class CrunchFollower
{
public:
    // `stateOf` gives a lane's CrunchRlsState or CrunchAtkState.
    [[gnu::always_inline]] CrunchFollower(auto stateOf, std::size_t entry)
    {
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            tables_[lane] = &tablesOf(stateOf(lane));
        }
        e1_ = gatherLanes<Sample>([&](std::size_t lane) { return stateOf(lane).stages.e1; });
        e2_ = gatherLanes<Sample>([&](std::size_t lane) { return stateOf(lane).stages.e2; });
        e3_ = gatherLanes<Sample>([&](std::size_t lane) { return stateOf(lane).stages.e3; });
        e4_ = gatherLanes<Sample>([&](std::size_t lane) { return stateOf(lane).stages.e4; });
        take([&](std::size_t) { return entry; });
    }
    [[gnu::always_inline]] void store(auto stateOf) const
    {
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            stateOf(lane).stages = {laneOf(e1_, lane), laneOf(e2_, lane), laneOf(e3_, lane),
                                    laneOf(e4_, lane)};
        }
    }
    Sample last() const { return e4_; }
    // Where `smaller / larger` surely is at the entry that the coefficients are of. The processor bets on
    // that, so that no sample waits for a quotient and a look-up that only find the same entry again.
    [[gnu::always_inline]] auto holds(Sample smaller, Sample larger) const
    {
        const Sample position = CrunchTables::kSteps * smaller;
        return bothOf(position >= from_ * larger, position <= to_ * larger);
    }
    // Takes the coefficients for a position of `smaller / larger`, to be asked afterwards whether it holds.
    [[gnu::always_inline]] void guess(Sample smaller, Sample larger)
    {
        constexpr double kEnd = static_cast<double>(CrunchTables::kEntries);
        Sample position = CrunchTables::kSteps * smaller / larger + 0.5;
        position = chosen(position >= 1.0, position, Sample{});
        position = chosen(position < kEnd, position, Sample{} + CrunchTables::kSteps);
        take([&](std::size_t lane) {
            return static_cast<std::size_t>(static_cast<std::int64_t>(laneOf(position, lane)));
        });
    }
    // Takes the coefficients of the entry that entryOf(lane) gives.
    [[gnu::always_inline]] void take(auto entryOf)
    {
        std::size_t entries[kLanes<Sample>];
        for (std::size_t lane = 0; lane < kLanes<Sample>; ++lane) {
            entries[lane] = entryOf(lane);
        }
        const auto gather = [&](auto field) __attribute__((always_inline))
        {
            return gatherLanes<Sample>(
                [&](std::size_t lane) { return (tables_[lane]->*field)[entries[lane]]; });
        };
        first_ = gather(&CrunchTables::first);
        middle_ = gather(&CrunchTables::middle);
        last_ = gather(&CrunchTables::last);
        // Positions are rounded to the nearest entry; at the edges they are left to the quotient.
        constexpr double kReach = 0.5 - 1e-9;
        const auto middles = gatherLanes<Sample>(
            [&](std::size_t lane) { return static_cast<double>(static_cast<std::int64_t>(entries[lane])); });
        from_ = middles - kReach;
        to_ = middles + kReach;
    }
    [[gnu::always_inline]] void follow(Sample target)
    {
        e1_ += (target - e1_) * first_;
        e2_ += (e1_ - e2_) * middle_;
        e3_ += (e2_ - e3_) * middle_;
        e4_ += (e3_ - e4_) * last_;
    }
    // Where the condition does not hold, all stages get the value.
    [[gnu::always_inline]] void setUnless(auto condition, Sample value)
    {
        e1_ = chosen(condition, e1_, value);
        e2_ = chosen(condition, e2_, value);
        e3_ = chosen(condition, e3_, value);
        e4_ = chosen(condition, e4_, value);
    }

private:
    const CrunchTables* tables_[kLanes<Sample>];
    Sample e1_, e2_, e3_, e4_;
    Sample first_, middle_, last_;
    Sample from_, to_;
};

template <class Sample, bool kIsFixed>
class CrunchAttack
{
public:
    // `stateOf` gives a lane's CrunchAtkState.
    [[gnu::always_inline]] explicit CrunchAttack(auto stateOf)
        : follower_(stateOf, CrunchTables::kEntries - 1)
    {}
    [[gnu::always_inline]] void store(auto stateOf) const { follower_.store(stateOf); }

    // How near a gain is to its target, as the smaller over the larger. Two gains of 0 are equal.
    static double ratio(double gain, double target)
    {
        const double larger = std::max(gain, target);
        return larger != 0.0 ? std::min(gain, target) / larger : 1.0;
    }
    Sample last() const { return follower_.last(); }
    [[gnu::always_inline]] Sample follow(Sample target)
    {
        if constexpr (!kIsFixed) {
            const Sample gain = last();
            const auto isRising = gain < target;
            const bool holds = isTrueEverywhere(
                follower_.holds(chosen(isRising, gain, target), chosen(isRising, target, gain)));
            if (!holds) [[unlikely]] {
                follower_.take([&](std::size_t lane) {
                    const double nearness = ratio(laneOf(gain, lane), laneOf(target, lane));
                    return CrunchTables::entry(nearness * CrunchTables::kSteps + 0.5);
                });
            }
        }
        follower_.follow(target);
        return last();
    }

private:
    CrunchFollower<Sample> follower_;
};

// The kernel `crunchatk`, which a release may be joined with.
void runCrunchAttack(const CKernelCall& call);

// `crunchrls` (out, state, level), `crunchrlsi` (state), `crunchrlsu` (state, running state, which may be the
// same buffer), `crunchrlsc` (state). The scalar of the second and the third is the sample rate.
std::span<const CKernelDef> crunchRlsKernels();
// `crunchatk` (out, state, gain), `crunchatki`, `crunchatku`, `crunchatkc` likewise.
std::span<const CKernelDef> crunchAtkKernels();

} // namespace qel
