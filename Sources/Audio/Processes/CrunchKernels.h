// Kernels of the compressor's envelope: a release and an attack.
#pragma once

#include "CKernelCall.h"

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
        double sampleRateHz; // 0: nothing yet
        double releaseSec;
        CrunchTables tables;

        double drive; // 0: nothing yet
        bool isInverse;
        double norm;
        double inverseNorm;
    };

    double releaseSec;
    double drive;
    bool isInverse; // puts out the reciprocal gain, which rises with the level

    Derived derived;
    CrunchStages stages;

    double restValue() const { return isInverse ? derived.inverseNorm : derived.norm; }
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

// Stages at work, with signal and coefficients in registers from the first sample of a call to its last.
class CrunchFollower
{
public:
    CrunchFollower(const CrunchStages& stages, const CrunchTables& tables, std::size_t entry)
        : tables_(tables), stages_(stages)
    {
        take(entry);
    }
    const CrunchStages& stages() const { return stages_; }
    double last() const { return stages_.e4; }
    void set(double value) { stages_.set(value); }
    // The coefficients stay while the entry does. The processor bets on that, so that no sample waits for the
    // quotient and the look-up that only find the same entry again.
    void follow(double target, std::size_t entry)
    {
        if (entry != entry_) [[unlikely]] {
            take(entry);
        }
        stages_.e1 += (target - stages_.e1) * first_;
        stages_.e2 += (stages_.e1 - stages_.e2) * middle_;
        stages_.e3 += (stages_.e2 - stages_.e3) * middle_;
        stages_.e4 += (stages_.e3 - stages_.e4) * last_;
    }

private:
    void take(std::size_t entry)
    {
        entry_ = entry;
        first_ = tables_.first[entry];
        middle_ = tables_.middle[entry];
        last_ = tables_.last[entry];
    }

    const CrunchTables& tables_;
    CrunchStages stages_;
    std::size_t entry_ = 0;
    double first_ = 0.0;
    double middle_ = 0.0;
    double last_ = 0.0;
};

template <bool kIsFixed>
class CrunchAttack
{
public:
    explicit CrunchAttack(const CrunchAtkState& state)
        : follower_(state.stages, state.tables, CrunchTables::kEntries - 1)
    {}

    // How near the gain is to its target, as the smaller over the larger. Two gains of 0 are equal.
    double ratio(double target) const
    {
        const double larger = std::max(follower_.last(), target);
        return larger != 0.0 ? std::min(follower_.last(), target) / larger : 1.0;
    }
    double follow(double target, double ratio)
    {
        const std::size_t entry =
            kIsFixed ? CrunchTables::kEntries - 1 : CrunchTables::entry(ratio * CrunchTables::kSteps + 0.5);
        follower_.follow(target, entry);
        return follower_.last();
    }
    void store(CrunchAtkState& state) const { state.stages = follower_.stages(); }

private:
    CrunchFollower follower_;
};

// The kernel `crunchatk`, which a release may be joined with.
void runCrunchAttack(const CKernelCall& call);

// `crunchrls` (out, state, level), `crunchrlsi` (state), `crunchrlsu` (state, running state, which may be the
// same buffer), `crunchrlsc` (state). The scalar of the second and the third is the sample rate.
std::span<const CKernelDef> crunchRlsKernels();
// `crunchatk` (out, state, gain), `crunchatki`, `crunchatku`, `crunchatkc` likewise.
std::span<const CKernelDef> crunchAtkKernels();

} // namespace qel
