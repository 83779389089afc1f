// Kernels of the compressor's envelope: a release and an attack.
#pragma once

#include "CKernelCall.h"

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
    void follow(double target, const CrunchTables& tables, std::size_t entry)
    {
        e1 += (target - e1) * tables.first[entry];
        e2 += (e1 - e2) * tables.middle[entry];
        e3 += (e2 - e3) * tables.middle[entry];
        e4 += (e3 - e4) * tables.last[entry];
    }
};

// State of one release stage, in a pool buffer. The module writes the parameters and runs `crunchrlsi`, or
// `crunchrlsu` to go on from a running state; both turn `drive` into the factor that the level gets.
struct CrunchRlsState
{
    double releaseSec;
    double drive;
    bool isInverse; // puts out the reciprocal gain, which rises with the level

    CrunchTables tables;
    double norm;
    double inverseNorm;
    CrunchStages stages;

    double restValue() const { return isInverse ? inverseNorm : norm; }
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

// `crunchrls` (out, state, level), `crunchrlsi` (state), `crunchrlsu` (state, running state, which may be the
// same buffer), `crunchrlsc` (state). The scalar of the second and the third is the sample rate.
std::span<const CKernelDef> crunchRlsKernels();
// `crunchatk` (out, state, gain), `crunchatki`, `crunchatku`, `crunchatkc` likewise.
std::span<const CKernelDef> crunchAtkKernels();

} // namespace qel
