#include "CrunchKernels.h"

#include "StateRig.h"

#include <gtest/gtest.h>
#include <limits>

namespace qel {
namespace {

using test::Signal;
using EType = CrunchAtkState::EType;

constexpr double kRateHz = 48000.0;

class ReleaseRig : public test::StateRig<CrunchRlsState>
{
public:
    ReleaseRig(double releaseSec, double drive, bool isInverse) : StateRig(crunchRlsKernels())
    {
        set(releaseSec, drive, isInverse);
        run("crunchrlsi", kRateHz);
    }
    void set(double releaseSec, double drive, bool isInverse)
    {
        state().releaseSec = releaseSec;
        state().drive = drive;
        state().isInverse = isInverse;
    }
};

class AttackRig : public test::StateRig<CrunchAtkState>
{
public:
    AttackRig(double attackSec, EType type, bool isInverse = false, bool isShaped = false)
        : StateRig(crunchAtkKernels())
    {
        state().attackSec = attackSec;
        state().type = type;
        state().isInverse = isInverse;
        state().isShaped = isShaped;
        run("crunchatki", kRateHz);
    }
};

double drivenLevel(double level, double drive)
{
    return std::max(level * drive * 0.375, 0.005);
}

// The gain law without its memory, calibrated over sines given in closed form.
double referenceNorm(double drive, bool isInverse)
{
    double sum = 0.0;
    for (const auto& [w, count] : {std::pair(0.07123792865282977, 88), std::pair(0.2849517146113191, 22)}) {
        double squares = 0.0;
        for (int i = 0; i < count; ++i) {
            const double v = drivenLevel(std::fabs(std::sin(w * i)), drive);
            const double gain = std::log1p(v) / v;
            squares += isInverse ? 1.0 / (gain * gain) : gain * gain;
        }
        sum += squares / count;
    }
    return 1.0 / std::sqrt(sum * 0.5);
}

double referenceTarget(double level, double drive, bool isInverse, double norm)
{
    const double v = drivenLevel(level, drive);
    return isInverse ? v / norm / std::log1p(v) : std::log1p(v) * norm / v;
}

struct ReferenceStages
{
    double e[4];

    explicit ReferenceStages(double value) : e{value, value, value, value} {}
    void follow(double target, double w1, double w2, double w4)
    {
        const double k[] = {test::referenceOnePoleGain(w1), test::referenceOnePoleGain(w2),
                            test::referenceOnePoleGain(w2), test::referenceOnePoleGain(w4)};
        for (int i = 0; i < 4; ++i) {
            e[i] += ((i == 0 ? target : e[i - 1]) - e[i]) * k[i];
        }
    }
};

Signal referenceRelease(const Signal& in, double releaseSec, double drive, bool isInverse)
{
    const double norm = referenceNorm(drive, isInverse);
    ReferenceStages stages(isInverse ? 1.0 / norm : norm);
    Signal out;
    for (const double level : in) {
        const double target = referenceTarget(level, drive, isInverse, norm);
        double& gain = stages.e[3];
        if (isInverse ? gain <= target : gain >= target) {
            stages = ReferenceStages(target);
        } else {
            const double ratio = isInverse ? target / gain : gain / target;
            const double i = std::max(1.0, std::floor(127.0 * ratio + 0.5));
            const double w = 2.0 * test::kReferencePi / kRateHz * i / 127.0 / releaseSec;
            stages.follow(target, 7.56 * w, 1.31 * w, 1.5 * w);
        }
        out.push_back(gain);
    }
    return out;
}

Signal referenceAttack(const Signal& in, double attackSec, EType type)
{
    ReferenceStages stages(1.0);
    Signal out;
    for (const double x : in) {
        const double ratio = std::min(stages.e[3], x) / std::max(stages.e[3], x);
        const double i = type == EType::kFixed ? 127.0 : std::max(1.0, std::floor(127.0 * ratio + 0.5));
        const double w = std::max(2.0 * test::kReferencePi / kRateHz / (attackSec * i / 127.0), 0.0001);
        const bool isEven = type == EType::kEven;
        stages.follow(x, (isEven ? 6.0 : 7.56) * w, (isEven ? 6.0 : 1.31) * w, (isEven ? 6.0 : 1.5) * w);
        out.push_back(stages.e[3]);
    }
    return out;
}

// Gains between about 0.05 and 1 that jump down and creep up.
Signal gainSteps(std::size_t count)
{
    Signal gains = test::beats(count, 9);
    for (double& gain : gains) {
        gain = 1.0 / (1.0 + 20.0 * gain);
    }
    return gains;
}

TEST(CrunchRelease, FollowsItsFormula)
{
    const Signal in = test::beats(12000, 1);
    for (const bool isInverse : {false, true}) {
        for (const double drive : {1.0, 10.0, 300.0}) {
            for (const double releaseSec : {0.001, 0.15, 4.0}) {
                ReleaseRig rig(releaseSec, drive, isInverse);
                EXPECT_LT(test::worstDifference(rig.process("crunchrls", in),
                                                referenceRelease(in, releaseSec, drive, isInverse)),
                          1e-7)
                    << isInverse << ' ' << drive << ' ' << releaseSec;
            }
        }
    }
}

TEST(CrunchRelease, RestsAtTheCalibratedGainAndFallsAtOnce)
{
    const double drive = 20.0;
    const double norm = referenceNorm(drive, false);
    ReleaseRig rig(0.15, drive, false);
    EXPECT_NEAR(rig.process("crunchrls", Signal(48000, 0.0)).back(), norm * std::log1p(0.005) / 0.005, 1e-6);

    const Signal fallen = rig.process("crunchrls", {1.0, 1.0});
    EXPECT_NEAR(fallen[0], referenceTarget(1.0, drive, false, norm), 1e-9);
    EXPECT_EQ(fallen[0], fallen[1]);

    const Signal recovery = rig.process("crunchrls", Signal(96000, 0.0));
    EXPECT_TRUE(std::is_sorted(recovery.begin(), recovery.end()));
    EXPECT_LT(recovery[480], 0.5 * norm);
    EXPECT_NEAR(recovery.back(), norm, 0.01 * norm);
}

TEST(CrunchRelease, TakesUpARunningStateWithoutAJump)
{
    const Signal loud = test::beats(1000, 2);
    ReleaseRig running(0.15, 10.0, false);
    running.process("crunchrls", loud);
    const CrunchStages before = running.state().stages;

    // Beside the running state and in its place.
    ReleaseRig fresh(1.0, 30.0, false);
    const CBufferRef old = running.stateRef();
    const CBufferRef successor = running.rig().bytes(sizeof(CrunchRlsState));
    auto& taken = *static_cast<CrunchRlsState*>(running.rig().context().address(successor));
    for (CrunchRlsState* state : {&taken, &running.state()}) {
        state->releaseSec = 1.0;
        state->drive = 30.0;
        state->isInverse = false;
    }
    running.rig().run("crunchrlsu", 0, kRateHz, {successor, old});
    running.rig().run("crunchrlsu", 0, kRateHz, {old, old});
    for (const CrunchRlsState* state : {&taken, &running.state()}) {
        EXPECT_EQ(state->stages.e1, before.e1);
        EXPECT_EQ(state->stages.e4, before.e4);
        EXPECT_EQ(state->norm, fresh.state().norm);
        EXPECT_EQ(state->tables.first[64], fresh.state().tables.first[64]);
    }
}

TEST(CrunchRelease, GetsOverALevelThatIsNoNumber)
{
    for (const bool isInverse : {false, true}) {
        ReleaseRig rig(0.05, 10.0, isInverse);
        rig.process("crunchrls", {0.5, NAN, std::numeric_limits<double>::infinity(), -1.0});
        EXPECT_TRUE(test::isAllFinite(rig.process("crunchrls", test::beats(500, 3)))) << isInverse;
    }
}

TEST(CrunchAttack, FollowsItsFormulaForEachType)
{
    const Signal in = gainSteps(12000);
    for (const EType type : {EType::kFixed, EType::kVariable, EType::kEven}) {
        for (const double attackSec : {0.0005, 0.02, 0.4}) {
            AttackRig rig(attackSec, type);
            EXPECT_LT(
                test::worstDifference(rig.process("crunchatk", in), referenceAttack(in, attackSec, type)),
                1e-7)
                << static_cast<int>(type) << ' ' << attackSec;
        }
    }
}

TEST(CrunchAttack, PutsOutTheRatioOrTheReciprocalWhereToldTo)
{
    const Signal in = gainSteps(3000);
    const Signal gain = AttackRig(0.02, EType::kVariable).process("crunchatk", in);
    const Signal ratio = AttackRig(0.02, EType::kVariable, true).process("crunchatk", in);
    const Signal shapedRatio = AttackRig(0.02, EType::kVariable, true, true).process("crunchatk", in);
    const Signal reciprocal = AttackRig(0.02, EType::kVariable, false, true).process("crunchatk", in);
    EXPECT_TRUE(test::isSameBits(ratio, shapedRatio));
    for (std::size_t i = 0; i < in.size(); ++i) {
        const double last = i == 0 ? 1.0 : gain[i - 1];
        ASSERT_DOUBLE_EQ(ratio[i], std::min(last, in[i]) / std::max(last, in[i])) << i;
        ASSERT_DOUBLE_EQ(reciprocal[i], 1.0 / gain[i]) << i;
    }
}

TEST(CrunchAttack, MovesAtTheExtremeRatiosToo)
{
    for (const EType type : {EType::kVariable, EType::kEven}) {
        AttackRig rig(0.01, type);
        const Signal fall = rig.process("crunchatk", Signal(48000, 1e-6));
        EXPECT_NEAR(fall.back(), 1e-6, 1e-7) << static_cast<int>(type);
        EXPECT_NEAR(rig.process("crunchatk", Signal(48000, 1.0)).back(), 1.0, 1e-3) << static_cast<int>(type);
        EXPECT_TRUE(test::isAllFinite(rig.process("crunchatk", Signal(48000, 0.0))))
            << static_cast<int>(type);
    }
}

TEST(CrunchAttack, ReadsNothingBesideItsTablesWhateverTheGain)
{
    for (const EType type : {EType::kFixed, EType::kVariable, EType::kEven}) {
        AttackRig rig(0.01, type);
        rig.process("crunchatk",
                    {-5.0, 1e300, 0.0, -1e300, std::numeric_limits<double>::infinity(), NAN, 1.0});
        rig.run("crunchatkc");
        EXPECT_TRUE(test::isAllFinite(rig.process("crunchatk", {0.5, 0.7}))) << static_cast<int>(type);
    }
}

TEST(CrunchAttack, TakesUpARunningStateWithoutAJump)
{
    AttackRig rig(0.02, EType::kFixed);
    rig.process("crunchatk", gainSteps(1000));
    const double before = rig.state().stages.e4;
    ASSERT_NE(before, 1.0);
    rig.state().attackSec = 0.1;
    rig.state().type = EType::kEven;
    rig.rig().run("crunchatku", 0, kRateHz, {rig.stateRef(), rig.stateRef()});
    EXPECT_EQ(rig.state().stages.e4, before);
    EXPECT_EQ(rig.state().tables.last[100], AttackRig(0.1, EType::kEven).state().tables.last[100]);
}

TEST(CrunchKernels, ReleaseGivesTheDropAndAttackTheTime)
{
    ReleaseRig release(0.15, 30.0, false);
    AttackRig attack(0.02, EType::kFixed);
    attack.process("crunchatk", release.process("crunchrls", Signal(48000, 0.0)));
    const Signal target = release.process("crunchrls", Signal(4800, 1.0));
    const Signal gain = attack.process("crunchatk", target);
    EXPECT_EQ(target.front(), target.back());
    EXPECT_TRUE(std::is_sorted(gain.rbegin(), gain.rend()));
    EXPECT_GT(gain[48], 2.0 * target.front());
    EXPECT_NEAR(gain.back(), target.front(), 0.01 * target.front());
}

TEST(CrunchKernels, ClearReturnsToRest)
{
    const Signal in = gainSteps(5000);
    for (const bool isInverse : {false, true}) {
        ReleaseRig release(0.05, 10.0, isInverse);
        AttackRig attack(0.02, EType::kVariable, isInverse);
        const auto pass = [&] { return attack.process("crunchatk", release.process("crunchrls", in)); };
        const Signal out = pass();
        release.run("crunchrlsc");
        attack.run("crunchatkc");
        EXPECT_TRUE(test::isSameBits(out, pass()));
    }
}

} // namespace
} // namespace qel
