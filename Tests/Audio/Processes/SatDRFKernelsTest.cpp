#include "SatDRFKernels.h"

#include "StateRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;
using EMode = SatDRFState::EMode;

class SatDRFRig : public test::StateRig<SatDRFState>
{
public:
    SatDRFRig(EMode mode, double drive, double phaseFreqHz, double sampleRateHz) : StateRig(satDRFKernels())
    {
        state().mode = mode;
        state().drive = drive;
        state().phaseFreqHz = phaseFreqHz;
        run("satdrfi", sampleRateHz);
    }
};

// The gain law: a circle through (-0.99, 0) with its centre below, touched by h = -v.
double referenceGain(double u)
{
    const double v = u - 1.0;
    const double centre = -0.99 * std::tan((test::kReferencePi - std::atan(1.0)) / 2.0);
    double h = 0.0;
    if (v >= 0.700034704510532) {
        h = -v;
    } else if (v > -0.99) {
        h = std::sqrt(centre * centre - (v + 0.99) * (v + 0.99)) + centre;
    }
    return u == 0.0 ? 1.0 : 1.0 + h / u;
}

Signal reference(EMode mode, double drive, double phaseFreqHz, double rateHz, double norm, const Signal& in)
{
    const double a = 0.71349439;
    const double q = 2.0 * test::kReferencePi / rateHz;
    const double cosW = std::cos(q * phaseFreqHz);
    const double multiples[] = {7.56, 1.31, 1.31, 1.5};
    double y1 = 0.0, y2 = 0.0, e1 = 1.0, e2 = 1.0;
    double p[5] = {1.0, 1.0, 1.0, 1.0, 1.0};
    Signal out;
    for (const double x : in) {
        const double f = drive * x + 2.0 * a * cosW * y1 - a * a * y2;
        const double u = (f - 2.0 * cosW / a * y1 + y2 / (a * a)) * 0.5090742445614721;
        y2 = y1;
        y1 = f;
        const double g1 = referenceGain(u);
        const double g2 = referenceGain(u * -g1 / 3.0);
        e1 += (g1 * g2 - e1) * test::referenceOnePoleGain(8000.0 * q);
        e2 += (e1 - e2) * test::referenceOnePoleGain(8000.0 * q);
        double gain = e2;
        if (mode == EMode::kPumping) {
            p[0] += (e2 - p[0]) * test::referenceOnePoleGain(50.0 * q);
            for (int i = 1; i <= 4; ++i) {
                const double w = multiples[i - 1] * q / (p[i] <= p[i - 1] ? 0.083 : 0.00083);
                p[i] += (p[i - 1] - p[i]) * test::referenceOnePoleGain(w);
            }
            gain = e2 * p[4];
        }
        out.push_back(x * gain * norm);
    }
    return out;
}

double rms(const Signal& signal, bool isPositiveHalf)
{
    double sum = 0.0;
    int count = 0;
    for (const double v : signal) {
        if ((v >= 0.0) == isPositiveHalf) {
            sum += v * v;
            ++count;
        }
    }
    return count > 0 ? std::sqrt(sum / count) : 0.0;
}

// A sine as the calibration makes it: which half-wave a zero crossing belongs to depends on its rounding.
Signal recurrentSine(std::size_t count, double frequencyHz, double rateHz)
{
    const double w = 2.0 * test::kReferencePi * frequencyHz / rateHz;
    Signal signal{0.0, std::sin(w)};
    while (signal.size() < count) {
        signal.push_back(2.0 * std::cos(w) * signal.back() - signal[signal.size() - 2]);
    }
    signal.resize(count);
    return signal;
}

TEST(SatDRFCurve, PassesBendsAndHolds)
{
    for (const double u : {-1e6, -3.0, -0.5, -0.0, 0.0, 0.005, 0.0099}) {
        EXPECT_EQ(satDRFCurveGain(u), 1.0) << u;
    }
    for (const double u : {1.7, 1.7001, 2.0, 10.0, 1e6}) {
        EXPECT_NEAR(u * satDRFCurveGain(u), 1.0, 1e-9) << u;
    }
    for (double u = 0.02; u < 1.7; u += 0.01) {
        EXPECT_NEAR(satDRFCurveGain(u), referenceGain(u), 1e-14) << u;
    }
}

TEST(SatDRFCurve, HasNoCornerAndNeverTurnsBack)
{
    const auto curve = [](double u) { return u * satDRFCurveGain(u); };
    const double step = 1e-4;
    double lastSlope = 1.0;
    for (double u = 0.0; u < 2.0; u += step) {
        const double slope = (curve(u + step) - curve(u)) / step;
        ASSERT_GE(slope, -1e-9) << u;
        ASSERT_LE(slope, lastSlope + 1e-9) << u;
        ASSERT_NEAR(slope, lastSlope, 5e-4) << u;
        lastSlope = slope;
    }
}

TEST(SatDRFKernels, RunFollowsTheFormulaInBothModes)
{
    const Signal noise = test::noiseSignal(4000, 1);
    const Signal sine = test::sineSignal(4000, 110.0, 44100.0, 0.7);
    for (const EMode mode : {EMode::kPrecise, EMode::kPumping}) {
        for (const double drive : {0.1, 1.0, 8.0, 300.0}) {
            for (const Signal& in : {noise, sine}) {
                SatDRFRig rig(mode, drive, 120.0, 44100.0);
                const Signal expected = reference(mode, drive, 120.0, 44100.0, rig.state().norm, in);
                EXPECT_LT(test::worstDifference(rig.process("satdrf", in), expected), 1e-9)
                    << static_cast<int>(mode) << ' ' << drive;
            }
        }
    }
}

TEST(SatDRFKernels, CalibrationPeriodsKeepTheirSummedHalfWaveRms)
{
    for (const double rateHz : {22050.0, 44100.0, 96000.0, 384000.0}) {
        for (const EMode mode : {EMode::kPrecise, EMode::kPumping}) {
            for (const double drive : {0.1, 1.0, 10.0, 316.0}) {
                for (const double phaseFreqHz : {20.0, 300.0}) {
                    SatDRFRig rig(mode, drive, phaseFreqHz, rateHz);
                    double total = 0.0;
                    for (const double testHz : {500.0, 2000.0}) {
                        rig.run("satdrfc");
                        const auto count = static_cast<std::size_t>(rateHz / testHz + 0.5);
                        const Signal out = rig.process("satdrf", recurrentSine(count, testHz, rateHz));
                        total += rms(out, true) + rms(out, false);
                    }
                    EXPECT_NEAR(total, 2.8284, 1e-9) << rateHz << ' ' << drive << ' ' << phaseFreqHz;
                }
            }
        }
    }
}

TEST(SatDRFKernels, SplitEqualsWholeAndClearStartsAnew)
{
    const Signal in = test::noiseSignal(5000, 3);
    for (const EMode mode : {EMode::kPrecise, EMode::kPumping}) {
        SatDRFRig whole(mode, 6.0, 80.0, 48000.0);
        SatDRFRig split(mode, 6.0, 80.0, 48000.0);
        const Signal out = whole.process("satdrf", in);
        EXPECT_TRUE(test::isSameBits(out, split.processSplit("satdrf", in)));
        whole.run("satdrfc");
        EXPECT_TRUE(test::isSameBits(out, whole.process("satdrf", in)));
    }
}

TEST(SatDRFKernels, NoiseAtTheInputKeepsTheStateClearOfDenormals)
{
    SatDRFRig rig(EMode::kPumping, 1.0, 20.0, 44100.0);
    rig.process("satdrf", test::noiseSignal(2000, 5));
    for (unsigned block = 0; block < 100; ++block) {
        const Signal out = rig.process("satdrf", test::antiDenormalNoise(2048, block));
        ASSERT_EQ(test::denormalCount(out.data(), out.size()), 0);
        ASSERT_EQ(test::denormalCount(&rig.state().signal.y1, 9), 0);
    }
}

} // namespace
} // namespace qel
