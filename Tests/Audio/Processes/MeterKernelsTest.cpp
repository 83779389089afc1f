// Level meters against plain loops and closed forms.
#include "MeterKernels.h"
#include "../Kernels/KernelRig.h"

#include <cmath>
#include <deque>
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
    Signal history() { return rig_.read(history_, static_cast<std::size_t>(state_->historyLength)); }

private:
    test::KernelRig rig_;
    std::string kernel_;
    std::string readOut_;
    CBufferRef stateRef_;
    CBufferRef history_;
    CBufferRef out_;
    CMeterState* state_;
};

// What a meter is, written down without frames cut into calls or a maximum kept along.
struct Reference
{
    explicit Reference(const MeterSetup& wanted, bool isSmallest = false)
        : setup(wanted), sign(isSmallest ? -1.0 : 1.0),
          frames(static_cast<std::size_t>(wanted.history), wanted.start)
    {
        const double x = 2.0 - std::cos(2.0 * std::numbers::pi / setup.rmsSec / kRate);
        c = 1.0 + std::sqrt(x * x - 1.0) - x;
        release = setup.releaseSec < 0.0001 ? 1.0 : 1.0 - std::pow(0.01, 1.0 / (setup.releaseSec * kRate));
        s1 = s2 = held = frameMax = setup.start;
    }
    double extreme(double a, double b) const { return sign * a > sign * b ? a : b; }
    void feed(double x)
    {
        s1 += (x * x - s1) * c;
        s2 += (s1 - s2) * c;
        held = sign * s2 > sign * held ? s2 : held + (s2 - held) * release;
        frameMax = extreme(frameMax, extreme(x * x, held));
        if (++samples % setup.frame == 0) {
            frames.pop_front();
            frames.push_back(frameMax);
            frameMax = held;
        }
    }
    double peak() const
    {
        double found = frameMax;
        for (const double frame : frames) {
            found = extreme(found, frame);
        }
        return std::sqrt(found);
    }

    MeterSetup setup;
    double sign;
    std::deque<double> frames;
    double c, release, s1, s2, held, frameMax;
    std::int64_t samples = 0;
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

TEST(MeterKernels, FollowTheirDefinitionSampleBySample)
{
    for (const bool isCompression : {false, true}) {
        for (const MeterSetup& setup :
             {MeterSetup{}, MeterSetup{.history = 1}, MeterSetup{.history = 3, .frame = 1},
              MeterSetup{.start = 1.0, .history = 7, .frame = 333, .releaseSec = 0.0}}) {
            Meter meter(setup, isCompression ? "meterc" : "meter", isCompression ? "metersubc" : "metersub");
            Reference reference(setup, isCompression);
            const Signal in = bursts(20000);
            for (std::size_t at = 0, block = 0; at < in.size(); ++block) {
                const std::size_t size = std::min<std::size_t>(block * 37 % 500, in.size() - at);
                meter.feed(
                    Signal(in.begin() + static_cast<long>(at), in.begin() + static_cast<long>(at + size)));
                for (std::size_t i = at; i < at + size; ++i) {
                    reference.feed(in[i]);
                }
                at += size;
                const Signal out = meter.read(2.0);
                ASSERT_NEAR(out[0], static_cast<double>(at) / kRate, 1e-12);
                ASSERT_NEAR(out[1], 2.0 * std::sqrt(reference.held), 1e-9) << at;
                ASSERT_NEAR(out[2], 2.0 * reference.peak(), 1e-9) << at;
            }
        }
    }
}

TEST(MeterKernels, GiveTheSameBitsHoweverTheInputIsCut)
{
    const Signal a = bursts(5000);
    const Signal b = noiseSignal(5000, 8);
    for (const bool isDifference : {false, true}) {
        Meter whole({}, isDifference ? "meterd" : "meter", isDifference ? "metersubd" : "metersub");
        Meter cut({}, isDifference ? "meterd" : "meter", isDifference ? "metersubd" : "metersub");
        whole.feed(a, isDifference ? b : Signal());
        for (std::size_t at = 0, size = 0; at < a.size(); at += size) {
            size = std::min<std::size_t>(1 + at % 250, a.size() - at);
            const auto part = [&](const Signal& s) {
                return Signal(s.begin() + static_cast<long>(at), s.begin() + static_cast<long>(at + size));
            };
            cut.feed(part(a), isDifference ? part(b) : Signal());
        }
        EXPECT_TRUE(isSameBits(whole.history(), cut.history()));
        EXPECT_TRUE(isSameBits(whole.read(), cut.read()));
    }
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
