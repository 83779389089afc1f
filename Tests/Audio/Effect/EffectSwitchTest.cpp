// What each control does to the sound, and what it leaves alone.
#include "EffectFixture.h"

#include <functional>

namespace qel {
namespace {

using namespace test;

class EffectSwitches : public EffectFixture
{};

constexpr double kDcHz = 20.0; // of the DC filter: lets responses end soon

// --- linear controls, against transfer functions of their own

// The analog frequency that the bilinear transform puts at `freqHz`, in corners.
Complex prototypeS(double freqHz, double cornerHz)
{
    return {0.0,
            std::tan(std::numbers::pi * freqHz / kRateHz) / std::tan(std::numbers::pi * cornerHz / kRateHz)};
}

Complex follower(double freqHz, double cornerHz)
{
    const double x = 2.0 - std::cos(2.0 * std::numbers::pi * cornerHz / kRateHz);
    const double k = 1.0 + std::sqrt(x * x - 1.0) - x;
    return k / (1.0 - (1.0 - k) * std::polar(1.0, -2.0 * std::numbers::pi * freqHz / kRateHz));
}

struct Bands
{
    Complex low;
    Complex high;
};

Bands crossover(int type, double freqHz, double cornerHz)
{
    const Complex s = prototypeS(freqHz, cornerHz);
    if (type == 0) {
        return {follower(freqHz, cornerHz), 1.0 - follower(freqHz, cornerHz)};
    }
    const double q = type == 1 ? 0.5 : 0.7071;
    const Complex low = 1.0 / (s * s + s / q + 1.0);
    const Complex high = s * s * low;
    return type == 1 ? Bands{low, -high} : Bands{low * low, high * high};
}

// Impulse response of the left channel behind all fades.
Signal impulseResponse(EffectHost& host, std::size_t count)
{
    host.run<double>(Signals(2, Signal(2048)), {512});
    Signals input(2, Signal(count));
    input[0][0] = 1.0;
    return host.run<double>(input, {512})[0];
}

TEST_F(EffectSwitches, LinearControlsHaveTheirTransferFunctions)
{
    struct Case
    {
        Settings settings;
        std::function<Complex(const Bands&)> expected;
    };
    const auto flat = [](const Bands& b) { return b.low + b.high; };
    const Settings idle{{".punch-gain", linear(12)}, {".sat-drive", linear(50)}, {".sat-mode", 1},
                        {".sat-gain", linear(24)},   {".sat-lpf", 20},           {".sat-hpf", 5000},
                        {".sub-gain", linear(24)},   {".comp-drive", linear(50)}};
    const Case cases[] = {
        {{}, flat},
        {idle, flat},
        {{{".lf-enable", 0}}, [](const Bands& b) { return b.high; }},
        {{{".lf-enable", 0}, {".drymix", 1}}, flat},
        {{{".lf-gain", 4}, {".drymix", 0.25}}, [](const Bands& b) { return 3.25 * b.low + b.high; }},
        {{{".lf-gain", 0.5}}, [](const Bands& b) { return 0.5 * b.low + b.high; }},
        {{{".mix-gain", 2}, {".lf-gain", 3}}, [](const Bands& b) { return 6.0 * b.low + b.high; }},
        {{{".lf-mon", 1}}, [](const Bands& b) { return b.low; }},
        {{{".lf-mon", 1}, {".lf-enable", 0}}, [](const Bands&) { return Complex(); }},
        {{{"modOutGain.gain", 3}}, [](const Bands& b) { return 3.0 * (b.low + b.high); }},
        {{{"modOutGain.mute", 1}}, [](const Bands&) { return Complex(); }},
    };
    for (int type = 0; type < 3; ++type) {
        for (const double cornerHz : {30.0, 100.0, 300.0}) {
            for (const Case& c : cases) {
                EffectHost host(c.settings);
                host.set(".xover-type", type);
                host.set(".xover-freq", cornerHz);
                host.set(".dcfilter-params.freq", kDcHz);
                const Signal response = impulseResponse(host, 16384);
                for (const double freqHz : {5.0, 30.0, 100.0, 260.0, 3000.0, 20000.0}) {
                    const Complex dc = 1.0 - follower(freqHz, kDcHz);
                    ASSERT_LT(std::abs(transform(response, freqHz, kRateHz) -
                                       dc * c.expected(crossover(type, freqHz, cornerHz))),
                              1e-6)
                        << "case " << &c - cases << ", type " << type << ", " << cornerHz << ": " << freqHz;
                }
            }
        }
    }
}

TEST_F(EffectSwitches, BypassGivesTheInputBack)
{
    EffectHost host(busySettings());
    host.set("modBypass.enable", 1.0);
    host.run<double>(Signals(2, Signal(4096)), {512});
    const Signals input{music(kRateHz, 5000, 1), music(kRateHz, 5000, 2)};
    EXPECT_EQ(host.run<double>(input, {512}), input);
}

TEST_F(EffectSwitches, DCFilterTypesHaveTheirOrderAndCorner)
{
    for (int type = 0; type < 14; ++type) {
        EffectHost host({{".dcfilter-params.type", type}, {".dcfilter-params.freq", 80}});
        const Signal response = impulseResponse(host, 32768);
        const auto power = [&](double freqHz) { return std::norm(transform(response, freqHz, kRateHz)); };
        if (type > 10) {
            EXPECT_NEAR(power(20.0), 1.0, 1e-3) << "there is no such filter";
            continue;
        }
        EXPECT_NEAR(power(80.0), 0.5, 0.02) << type;
        if (type % 2 == 0) { // Butterworth
            const int order = type / 2 + 1;
            EXPECT_NEAR(power(20.0) * (1.0 + std::pow(4.0, 2 * order)), 1.0, 0.015) << type;
        }
    }
}

// --- effects

class EffectLines : public EffectSwitches
{
protected:
    // Two periods in half a grain of the shifter, so that its two heads agree.
    static constexpr double kLowHz = kRateHz / 551.0;
    static constexpr double kHighHz = 3000.0;

    static Signals stimulus()
    {
        constexpr std::size_t kCount = 96000;
        const Signal high = sine(kHighHz, kRateHz, kCount, 0.05);
        return {sine(kLowHz, kRateHz, kCount, 0.6) + high, sine(kLowHz, kRateHz, kCount, 0.2) + high};
    }
    Signals output(const Settings& settings)
    {
        EffectHost host(settings);
        host.set(".xover-freq", 300.0);
        return host.run<double>(stimulus(), {512});
    }
    static double line(const Signal& signal, double freqHz) { return lineAmplitude(signal, freqHz, kRateHz); }
};

TEST_F(EffectLines, EffectsChangeTheLowBandAndNothingElse)
{
    const Signals off = output({});
    EXPECT_LT(line(off[0], 3.0 * kLowHz), 1e-5) << "without effects there are no harmonics";
    EXPECT_LT(line(off[0], 0.5 * kLowHz), 1e-5);
    const struct
    {
        const char* what;
        Settings settings;
        double freqHz;  // the line that tells
        double atLeast; // its amplitude, left
        double atMost;
    } cases[] = {
        {"punch leaves a steady tone",
         {{".punch-enable", 1}, {".punch-gain", linear(12)}},
         kLowHz,
         0.57,
         0.62},
        {"punch down", {{".punch-enable", 1}, {".punch-gain", linear(-12)}}, kLowHz, 0.57, 0.62},
        {"saturator", {{".sat-enable", 1}, {".sat-drive", linear(12)}}, 3.0 * kLowHz, 0.02, 0.5},
        {"pumping",
         {{".sat-enable", 1}, {".sat-drive", linear(12)}, {".sat-mode", 1}},
         3 * kLowHz,
         0.005,
         0.5},
        {"shifter", {{".sub-enable", 1}}, 0.5 * kLowHz, 0.2, 0.6},
        {"shifter down", {{".sub-enable", 1}, {".sub-gain", linear(-24)}}, 0.5 * kLowHz, 0.2 / 16, 0.6 / 15},
        {"compressor", {{".comp-enable", 1}, {".comp-drive", linear(40)}}, kLowHz, 0.1, 0.45},
        {"all", busySettings(), kLowHz, 0.1, 5.0},
    };
    for (const auto& c : cases) {
        const Signals on = output(c.settings);
        const double amplitude = line(on[0], c.freqHz);
        EXPECT_GT(amplitude, c.atLeast) << c.what;
        EXPECT_LT(amplitude, c.atMost) << c.what;
        for (std::size_t channel = 0; channel < 2; ++channel) {
            EXPECT_NEAR(line(on[channel], kHighHz), line(off[channel], kHighHz), 1e-5) << c.what;
        }
    }
}

TEST_F(EffectLines, MonoMixesTheLowBandAlone)
{
    const Signals off = output({});
    const Signals on = output({{".mono-enable", 1}});
    for (std::size_t channel = 0; channel < 2; ++channel) {
        EXPECT_NEAR(line(on[channel], kLowHz), 0.5 * (line(off[0], kLowHz) + line(off[1], kLowHz)), 0.01);
        EXPECT_NEAR(line(on[channel], kHighHz), line(off[channel], kHighHz), 1e-5);
    }
}

// A beat is louder against its tail, or softer, and a gain of 0 dB is nearly none.
TEST_F(EffectSwitches, PuncherActsOnTheEnvelopeOfABeat)
{
    const auto energies = [](double gainDb, bool isOn) {
        EffectHost host({{".punch-enable", isOn}, {".punch-gain", linear(gainDb)}});
        Signals input(2, Signal(48000));
        input[0] = input[1] = music(kRateHz, 48000, 1);
        const Signal out = host.run<double>(input, {512})[0];
        double energy = 0.0;
        for (std::size_t i = 24000; i < out.size(); ++i) {
            energy += out[i] * out[i];
        }
        return energy;
    };
    const double off = energies(12, false);
    EXPECT_NEAR(energies(0, true) / off, 1.0, 0.01);
    EXPECT_GT(energies(12, true) / off, 1.5);
    EXPECT_LT(energies(-12, true) / off, 0.7);
}

} // namespace
} // namespace qel
