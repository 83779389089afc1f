// Kernels of the compressor's release: a level becomes a gain.
#include "CrunchKernels.h"
#include "OnePoleGain.h"

#include <cmath>
#include <numbers>

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

// A louder level is answered at once (the attack stage gives that its time); a softer one through the
// followers, the faster the nearer the gain has come to its target.
void runGain(const CKernelCall& call)
{
    double* out = call.samples(0);
    CrunchRlsState& state = *call.state<CrunchRlsState>(1);
    const double* in = call.samples(2);
    const double drive = state.drive;
    const double norm = state.norm;
    CrunchStages stages = state.stages;
    for (std::size_t i = 0; i < call.count; ++i) {
        const double target = targetGain(drivenLevel(in[i], drive), norm);
        // Asked this way round, a NaN gain is replaced by the next target.
        if (!(stages.e4 < target)) {
            stages.set(target);
        } else {
            const double position = CrunchTables::kSteps * stages.e4 / target + 0.5;
            stages.follow(target, state.tables, CrunchTables::entry(position));
        }
        out[i] = stages.e4;
    }
    state.stages = stages;
}

void runInverse(const CKernelCall& call)
{
    double* out = call.samples(0);
    CrunchRlsState& state = *call.state<CrunchRlsState>(1);
    const double* in = call.samples(2);
    const double drive = state.drive;
    const double inverseNorm = state.inverseNorm;
    CrunchStages stages = state.stages;
    for (std::size_t i = 0; i < call.count; ++i) {
        const double target = inverseTargetGain(drivenLevel(in[i], drive), inverseNorm);
        if (!(stages.e4 > target)) {
            stages.set(target);
        } else {
            const double position = CrunchTables::kSteps * target / stages.e4 + 0.5;
            stages.follow(target, state.tables, CrunchTables::entry(position));
        }
        out[i] = stages.e4;
    }
    state.stages = stages;
}

void run(const CKernelCall& call)
{
    if (call.state<CrunchRlsState>(1)->isInverse) {
        runInverse(call);
    } else {
        runGain(call);
    }
}

void fillTables(CrunchRlsState& state, double sampleRateHz)
{
    const double q = 2.0 * std::numbers::pi / sampleRateHz;
    CrunchTables& tables = state.tables;
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
        const double gain =
            state.isInverse ? inverseTargetGain(v, state.inverseNorm) : targetGain(v, state.norm);
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
    // One period of 500 Hz and one of 2 kHz at 44.1 kHz; the gain has no memory here, so any rate will do.
    constexpr double kTestW[] = {0.07123792865282977, 0.2849517146113191};
    constexpr int kTestCounts[] = {88, 22};
    state.norm = 1.0;
    state.inverseNorm = 1.0;
    const double low = meanSquareGain(state, kTestW[0], kTestCounts[0]);
    const double high = meanSquareGain(state, kTestW[1], kTestCounts[1]);
    state.norm = 1.0 / std::sqrt((low + high) * 0.5);
    state.inverseNorm = 1.0 / state.norm;
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
    const CrunchStages running = call.state<CrunchRlsState>(1)->stages;
    prepare(state, call.scalar);
    state.stages = running;
}

void clear(const CKernelCall& call)
{
    CrunchRlsState& state = *call.state<CrunchRlsState>(0);
    state.stages.set(state.restValue());
}

constexpr CKernelDef kTable[] = {
    {"crunchrls", run, 3, 3},
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
