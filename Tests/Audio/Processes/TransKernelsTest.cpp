#include "TransKernels.h"

#include "OnePoleGain.h"
#include "StateRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;

constexpr double kRateHz = 44100.0;
const char* const kCurves[] = {"transvh", "transh", "transm", "transl", "transvl"};

class TransRig : public test::StateRig<TransState>
{
public:
    TransRig(double sense, double scale, double timeSec, double decaySec) : StateRig(transKernels())
    {
        state().sense = sense;
        state().scale = scale;
        state().timeSec = timeSec;
        state().decaySec = decaySec;
        run("transi", kRateHz);
    }
};

struct Reference
{
    double sense, scale, timeSec, decaySec;

    Signal detect(int curve, const Signal& in) const
    {
        const double exponents[] = {16.0, 4.0, 1.0, 0.25, 0.0625};
        const double multiples[] = {0.55, 1.0, 3.0, 10.0, 40.0};
        const double gain = multiples[curve] * 0.5 * scale * (1.0 + 2.5 * std::pow(sense, 4.0));
        const double slowW = 2.0 * test::kReferencePi * 0.6 / timeSec / kRateHz;
        const double y = 0.6 * sense + 0.2;
        const double d = 2.0 * test::kReferencePi * 240.0 / kRateHz;
        const double k[] = {test::referenceOnePoleGain(7.56 * d), test::referenceOnePoleGain(1.31 * d),
                            test::referenceOnePoleGain(1.31 * d), test::referenceOnePoleGain(1.5 * d)};
        double slow = 0.0;
        double fast = 0.0;
        double stages[4] = {};
        Signal out;
        for (const double x : in) {
            slow += (x - slow) * test::referenceOnePoleGain(slowW);
            const bool isFalling = x <= fast;
            fast += (x - fast) * test::referenceOnePoleGain(isFalling ? slowW * y * y : slowW * y);
            double v = 1e-15;
            if (fast < slow) {
                v = std::min(1.0, (1.0 - std::pow(fast / slow, exponents[curve])) * gain + 1e-15);
            }
            for (int i = 0; i < 4; ++i) {
                stages[i] += ((i == 0 ? v : stages[i - 1]) - stages[i]) * k[i];
            }
            out.push_back(stages[3]);
        }
        return out;
    }

    Signal decay(const Signal& in) const
    {
        const double attack = test::referenceOnePoleGain(2.0 * test::kReferencePi / timeSec / kRateHz);
        const double release = test::referenceOnePoleGain(2.0 * test::kReferencePi / decaySec / kRateHz);
        Signal out;
        double level = 0.0;
        for (const double v : in) {
            level += (v - level) * (level < v ? attack : release);
            out.push_back(level);
        }
        return out;
    }
};

TEST(OnePoleGain, PutsTheFollowersHalfPowerPointAtItsFrequencyAsFarAsThereIsOne)
{
    for (const double w : {1e-4, 1e-3, 0.01, 0.1, 0.5, 1.0, 1.5}) {
        const double k = onePoleGain(w);
        // |H|^2 of y += (x - y) k at w.
        const double power = k * k / (1.0 - 2.0 * (1.0 - k) * std::cos(w) + (1.0 - k) * (1.0 - k));
        EXPECT_NEAR(power, 0.5, 1e-6) << w;
    }
    double previous = 0.0;
    for (double w = 0.01; w < 50.0; w += 0.01) {
        const double k = onePoleGain(w);
        ASSERT_GE(k, previous) << "a higher corner never closes the filter: " << w;
        previous = k;
    }
    EXPECT_LT(previous, 1.0);
}

TEST(TransKernels, EachCurveFollowsItsFormula)
{
    // The gain of a slow follower loses about 1e-9 of itself to cancellation.
    constexpr double kTolerance = 1e-8;
    const Signal in = test::beats(12000, 1);
    for (const double sense : {0.0, 0.3, 1.0}) {
        const Reference reference{sense, 1.7, 0.025, 0.08};
        for (int curve = 0; curve < 5; ++curve) {
            TransRig rig(sense, 1.7, 0.025, 0.08);
            const Signal out = rig.process(kCurves[curve], in);
            const Signal expected = reference.detect(curve, in);
            EXPECT_LT(test::worstDifference(out, expected), kTolerance)
                << kCurves[curve] << " sense " << sense;
            EXPECT_GT(*std::max_element(expected.begin(), expected.end()), 0.01) << "a test without signal";
            EXPECT_LT(test::worstDifference(rig.processInPlace("transdecay", out), reference.decay(expected)),
                      kTolerance)
                << kCurves[curve];
        }
    }
}

TEST(TransKernels, RestsAtTheFloorInSilenceAndUnderAConstantLevel)
{
    for (const char* curve : kCurves) {
        TransRig rig(0.5, 2.0, 0.005, 0.01);
        EXPECT_NEAR(rig.processInPlace("transdecay", rig.process(curve, Signal(20000, 0.0))).back(), 1e-15,
                    1e-20)
            << curve;
        const Signal held = rig.process(curve, Signal(200000, 0.5));
        EXPECT_LT(held.back(), 1e-10) << curve;
        EXPECT_GE(held.back(), 0.9e-15) << curve;
    }
}

TEST(TransKernels, ClearAndInitForgetTheSignal)
{
    const Signal in = test::beats(3000, 3);
    TransRig rig(0.5, 1.0, 0.02, 0.05);
    const auto pass = [&] { return rig.processInPlace("transdecay", rig.process("transl", in)); };
    const Signal fresh = pass();
    rig.run("transc");
    EXPECT_TRUE(test::isSameBits(pass(), fresh));
    rig.run("transi", kRateHz);
    EXPECT_TRUE(test::isSameBits(pass(), fresh));
}

TEST(TransKernels, StaysFiniteWhenTheLevelIsNoNumber)
{
    for (const char* curve : kCurves) {
        TransRig rig(1.0, 4.0, 0.02, 0.05);
        Signal in = test::beats(3000, 4);
        in[500] = NAN;
        in[1500] = -1.0; // no level, and no ratio that has a root
        EXPECT_TRUE(test::isAllFinite(rig.processInPlace("transdecay", rig.process(curve, in)))) << curve;
    }
}

TEST(TransKernels, NoiseAtTheInputKeepsTheStateClearOfDenormals)
{
    TransRig rig(0.5, 1.0, 0.001, 0.001);
    rig.process("transm", test::beats(3000, 5));
    Signal noise = test::antiDenormalNoise(4096, 6);
    std::transform(noise.begin(), noise.end(), noise.begin(), [](double v) { return std::fabs(v); });
    for (int block = 0; block < 200; ++block) {
        rig.processInPlace("transdecay", rig.process("transm", noise));
        ASSERT_EQ(test::denormalCount(&rig.state().slowLevel, 9), 0) << block;
    }
}

} // namespace
} // namespace qel
