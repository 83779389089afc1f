// Level meters against plain loops and closed forms.
#include "MeterKernels.h"
#include "../Kernels/KernelRig.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace qel {
namespace {

using test::isSameBits;
using test::noiseSignal;
using test::Signal;

constexpr double kRate = 48000.0;

struct MeterSetup
{
    double start = 0.0;
    int history = 10;
    int frame = 100;
    double rmsSec = 0.01;
    double releaseSec = 0.1;
};

class Meter
{
public:
    Meter(const MeterSetup& setup, const char* kernel, const char* readOut)
        : kernel_(kernel), readOut_(readOut)
    {
        rig_.context().addKernels(meterKernels());
        stateRef_ = rig_.context().allocate(sizeof(CMeterState));
        state_ = new (rig_.context().address(stateRef_)) CMeterState;
        history_ = rig_.context().allocateSamples(static_cast<std::size_t>(setup.history));
        out_ = rig_.context().allocateSamples(3);
        state_->start = setup.start;
        state_->historyLength = setup.history;
        state_->frameLength = setup.frame;
        state_->rmsCutoffHz = 1.0 / setup.rmsSec;
        state_->releaseSec = setup.releaseSec;
        rig_.run("meteri", 0, kRate, {stateRef_, history_});
    }

    void feed(const Signal& in) { feed(in, {}); }
    void feed(const Signal& a, const Signal& b)
    {
        const CBufferRef first = rig_.buffer(a);
        if (b.empty()) {
            rig_.run(kernel_, a.size(), 0.0, {stateRef_, history_, first});
        } else {
            rig_.run(kernel_, a.size(), 0.0, {stateRef_, history_, first, rig_.buffer(b)});
        }
    }
    // Time, level, peak.
    Signal read(double gain = 1.0)
    {
        rig_.run(readOut_, 0, gain, {out_, stateRef_});
        return rig_.read(out_, 3);
    }
    const CMeterState& state() const { return *state_; }

private:
    test::KernelRig rig_;
    std::string kernel_;
    std::string readOut_;
    CBufferRef stateRef_;
    CBufferRef history_;
    CBufferRef out_;
    CMeterState* state_;
};

// Bursts of falling loudness with silence between them, so that maxima expire and ties happen.
Signal bursts(std::size_t count)
{
    Signal signal = noiseSignal(count, 7);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t burst = i / 700;
        signal[i] *= burst % 3 == 2 ? 0.0 : 1.0 / static_cast<double>(1 + burst % 7);
    }
    return signal;
}

TEST(MeterKernels, HoldAPeakForExactlyTheHistoryAndLetItFallInOneStep)
{
    const MeterSetup setup{.history = 10, .frame = 100, .releaseSec = 0.0};
    Meter meter(setup, "meter", "metersub");
    Signal click(100, 0.0);
    click[30] = 0.5;
    meter.feed(click);
    for (int frame = 1; frame < setup.history; ++frame) {
        meter.feed(Signal(100, 0.0));
        ASSERT_EQ(meter.read()[2], 0.5) << frame;
    }
    meter.feed(Signal(99, 0.0));
    EXPECT_EQ(meter.read()[2], 0.5);
    meter.feed(Signal(1, 0.0));
    EXPECT_LT(meter.read()[2], 0.1);
}

TEST(MeterKernels, FallByTwentyDecibelsOfPowerInTheReleaseTime)
{
    const double releaseSec = 0.2;
    // A smoother so fast that what falls is the hold.
    Meter meter({.rmsSec = 1e-4, .releaseSec = releaseSec}, "meter", "metersub");
    meter.feed(Signal(4800, 1.0));
    meter.feed(Signal(static_cast<std::size_t>(releaseSec * kRate), 0.0));
    EXPECT_NEAR(20.0 * std::log10(meter.read()[1]), -20.0, 0.1);
    // Without release the hold is the smoothed square in both directions.
    Meter free({.releaseSec = 0.0}, "meter", "metersub");
    free.feed(bursts(3000));
    EXPECT_EQ(free.state().held, free.state().s2);
}

TEST(MeterKernels, MeasureTheRatioOfTwoInputs)
{
    const Signal b = noiseSignal(48000, 3);
    Signal a = b;
    for (double& x : a) {
        x *= 2.0;
    }
    Meter meter({}, "meterd", "metersubd");
    EXPECT_EQ(meter.read()[1], 1.0);
    meter.feed(a, b);
    EXPECT_NEAR(meter.read()[1], 2.0, 1e-12);
    EXPECT_NEAR(meter.read(5.0)[2], 2.0, 1e-12) << "a ratio takes no gain";
    Meter silent({}, "meterd", "metersubd");
    silent.feed(a, Signal(a.size(), 0.0));
    EXPECT_EQ(silent.read()[1], 1.0);
    EXPECT_EQ(silent.read()[2], 1.0);
}

} // namespace
} // namespace qel
