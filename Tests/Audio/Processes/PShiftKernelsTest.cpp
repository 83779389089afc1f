#include "PShiftKernels.h"

#include "StateRig.h"

#include <complex>
#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;

class PShiftRig
{
public:
    explicit PShiftRig(std::int32_t grain)
    {
        rig_.context().addKernels(pshiftKernels());
        state_ = rig_.bytes(sizeof(PShiftState));
        ring_ = rig_.bytes(PShiftState::ringSamples(grain) * sizeof(double));
        static_cast<PShiftState*>(rig_.context().address(state_))->grain = grain;
        run("pshifti");
    }
    void run(const char* name) { rig_.run(name, 0, 0.0, {state_, ring_}); }
    Signal process(const Signal& in)
    {
        const CBufferRef input = rig_.buffer(in);
        const CBufferRef output = rig_.context().allocateSamples(in.size());
        rig_.run("pshift", in.size(), 0.0, {output, state_, ring_, input});
        Signal out = rig_.read(output, in.size());
        rig_.context().release(output);
        rig_.context().release(input);
        return out;
    }

private:
    test::KernelRig rig_;
    CBufferRef state_;
    CBufferRef ring_;
};

// The heads as positions in time instead of in a ring, and the window as a cosine.
class Reference
{
public:
    Reference(const Signal& in, int grain) : in_(in), grain_(grain) {}

    double operator()(int n) const
    {
        const int half = grain_ / 2;
        const bool isOdd = grain_ % 2 != 0;
        // An odd grain is one shorter the first time and starts a half sample earlier from then on.
        const int inGrain = isOdd && n >= grain_ - 1 ? (n + 1) % grain_ : n % grain_;
        const int countA = isOdd && n >= grain_ - 1 ? inGrain - 1 : inGrain;
        const int a = (countA + 1) / 2 - (countA & 1);
        const int countB = grain_ + (n + grain_ - half) % grain_;
        const int b = countB == grain_ ? grain_ - half : countB / 2;
        const double t = (countA & 1) != 0 ? 0.5 : 0.0;
        const double weight = 0.5 - 0.5 * std::cos(2.0 * test::kReferencePi * inGrain / grain_);

        double p[4];
        for (int i = 0; i < 4; ++i) {
            p[i] = heard(n, a + i) * weight + heard(n, b + i) * (1.0 - weight);
        }
        // Catmull-Rom by its basis functions.
        return 0.5 * ((-t + 2 * t * t - t * t * t) * p[0] + (2 - 5 * t * t + 3 * t * t * t) * p[1] +
                      (t + 4 * t * t - 3 * t * t * t) * p[2] + (-t * t + t * t * t) * p[3]);
    }

private:
    // What was written last, up to the time n, at a position of a ring of one grain that begins at 3.
    double heard(int n, int position) const
    {
        const int age = ((n + 3 - position) % grain_ + grain_) % grain_;
        return n - age >= 0 ? in_[static_cast<std::size_t>(n - age)] : 0.0;
    }

    const Signal& in_;
    int grain_;
};

// Strength of one frequency, under a Hann window.
double strength(const Signal& signal, double frequencyHz, double rateHz)
{
    std::complex<double> sum;
    const auto length = static_cast<double>(signal.size());
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const auto time = static_cast<double>(i);
        const double window = 0.5 - 0.5 * std::cos(2.0 * test::kReferencePi * time / length);
        sum += window * signal[i] * std::polar(1.0, -2.0 * test::kReferencePi * frequencyHz * time / rateHz);
    }
    return std::abs(sum) / length;
}

// Of a signal that has nothing of weight above a fortieth of its rate.
double strongestLineHz(const Signal& signal, double upToHz, double rateHz)
{
    constexpr std::size_t kThinning = 20;
    Signal thinned;
    for (std::size_t i = 0; i < signal.size(); i += kThinning) {
        thinned.push_back(signal[i]);
    }
    double bestHz = 0.0;
    double best = 0.0;
    for (double frequencyHz = 5.0; frequencyHz <= upToHz; frequencyHz += 0.5) {
        const double found = strength(thinned, frequencyHz, rateHz / kThinning);
        if (found > best) {
            best = found;
            bestHz = frequencyHz;
        }
    }
    return bestHz;
}

TEST(PShiftKernels, HeadsWindowAndInterpolationFollowTheirClosedForms)
{
    for (const int grain : {16, 17, 18, 19, 101, 102, 2205}) {
        const Signal in = test::noiseSignal(static_cast<std::size_t>(grain) * 5 + 7, 1);
        PShiftRig rig(grain);
        const Signal out = rig.process(in);
        const Reference reference(in, grain);
        Signal expected;
        for (std::size_t i = 0; i < in.size(); ++i) {
            expected.push_back(reference(static_cast<int>(i)));
        }
        EXPECT_LT(test::worstDifference(out, expected), 1e-9) << grain;
    }
}

TEST(PShiftKernels, ASineHasItsStrongestLineAtHalfItsFrequency)
{
    constexpr double kRateHz = 44100.0;
    constexpr int kGrain = 2205;
    // Where a grain is a whole number of output periods the line itself is the strongest; elsewhere the jumps
    // of the heads can move it by up to the rate of the grains.
    for (const double frequencyHz : {80.0, 160.0, 240.0}) {
        const Signal out = PShiftRig(kGrain).process(test::sineSignal(44100, frequencyHz, kRateHz));
        EXPECT_NEAR(strongestLineHz(out, 300.0, kRateHz), frequencyHz / 2.0, 1.0) << frequencyHz;
    }
    for (const double frequencyHz : {55.0, 100.0, 130.0, 210.0}) {
        const Signal out = PShiftRig(kGrain).process(test::sineSignal(44100, frequencyHz, kRateHz));
        EXPECT_NEAR(strongestLineHz(out, 300.0, kRateHz), frequencyHz / 2.0, kRateHz / kGrain) << frequencyHz;
    }
}

TEST(PShiftKernels, SplitEqualsWholeAndClearStartsAnew)
{
    const Signal in = test::noiseSignal(3000, 2);
    for (const int grain : {16, 101, 1000}) {
        PShiftRig whole(grain);
        PShiftRig split(grain);
        const Signal out = whole.process(in);
        Signal pieces;
        std::size_t at = 0;
        for (const std::size_t length : test::randomSplit(in.size(), 3)) {
            const Signal piece = split.process(Signal(in.begin() + static_cast<std::ptrdiff_t>(at),
                                                      in.begin() + static_cast<std::ptrdiff_t>(at + length)));
            pieces.insert(pieces.end(), piece.begin(), piece.end());
            at += length;
        }
        EXPECT_TRUE(test::isSameBits(out, pieces)) << grain;
        whole.run("pshiftc");
        EXPECT_TRUE(test::isSameBits(out, whole.process(in))) << grain;
    }
}

TEST(PShiftKernels, ASampleThatIsNoNumberLeavesWithItsGrain)
{
    constexpr int kGrain = 100;
    PShiftRig rig(kGrain);
    Signal in = test::noiseSignal(1000, 4);
    in[300] = NAN;
    const Signal out = rig.process(in);
    EXPECT_FALSE(test::isAllFinite(out));
    EXPECT_TRUE(test::isAllFinite(Signal(out.begin() + 300 + 2 * kGrain, out.end())));
}

} // namespace
} // namespace qel
