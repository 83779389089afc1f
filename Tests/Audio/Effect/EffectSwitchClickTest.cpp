// Switching while music plays: what a change puts above the music, where a click would be heard.
#include "../Presets/ProductFixture.h"
#include "EffectRig.h"

namespace qel::test {
namespace {

constexpr std::size_t kChange = 48611; // not where the tone is zero, nor at a multiple of the block size
constexpr std::size_t kLength = 2 * 48000;

// A 60 Hz sine, and drums without any edge of their own.
Signal lowMusic(std::size_t count)
{
    Signal signal = sine(60.0, kRateHz, count, 0.25);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / kRateHz;
        const double beat = std::fmod(t + 0.02, 0.25);
        const double rise = std::min({1.0, beat / 0.02, (0.25 - beat) / 0.05});
        const double level = std::pow(0.5 - 0.5 * std::cos(std::numbers::pi * rise), 3.0);
        signal[i] += 0.5 * level * std::exp(-12.0 * beat) * std::sin(2.0 * std::numbers::pi * 55.0 * t);
    }
    return signal;
}

// What lies above 8 kHz: 511 taps under a Kaiser window, 110 dB down at 7.5 kHz.
double peakAbove8k(const Signal& signal, std::size_t from, std::size_t to)
{
    constexpr int kHalf = 255;
    static const Signal kTaps = [] {
        Signal taps(2 * kHalf + 1);
        for (int i = -kHalf; i <= kHalf; ++i) {
            const double x = static_cast<double>(i) / kHalf;
            const double window =
                std::cyl_bessel_i(0.0, 12.0 * std::sqrt(1.0 - x * x)) / std::cyl_bessel_i(0.0, 12.0);
            const double low = 2.0 * 8000.0 / kRateHz;
            const double sinc = i == 0 ? low : std::sin(std::numbers::pi * low * i) / (std::numbers::pi * i);
            taps[static_cast<std::size_t>(i + kHalf)] = window * ((i == 0 ? 1.0 : 0.0) - sinc);
        }
        return taps;
    }();
    double highest = 0.0;
    for (std::size_t i = from; i < to; ++i) {
        double sum = 0.0;
        for (std::size_t tap = 0; tap < kTaps.size(); ++tap) {
            const std::size_t at = i + kHalf - tap;
            sum += at < signal.size() ? kTaps[tap] * signal[at] : 0.0;
        }
        highest = std::max(highest, std::fabs(sum));
    }
    return highest;
}

struct Click
{
    double changeDb; // peak above 8 kHz around the change, over that of the whole
    double restDb;   // the same well before and behind it
};

Click clickOf(const Signal& output)
{
    const double whole = peak(Signal(output.begin() + 24000, output.end()));
    const double rest = std::max(peakAbove8k(output, kChange - 12000, kChange - 600),
                                 peakAbove8k(output, kLength - 12600, kLength - 600));
    return {20.0 * std::log10(peakAbove8k(output, kChange - 600, kChange + 14400) / whole),
            20.0 * std::log10(rest / whole)};
}

class SwitchClicks : public ProductFixture
{
protected:
    // Runs music on both channels, the right one softer, and makes the change in its midst.
    template <class Change>
    Click measure(TestHost& host, Change&& change, std::size_t channel = 0)
    {
        const Signal left = lowMusic(kLength);
        Signal right = left;
        for (double& sample : right) {
            sample *= 0.4;
        }
        const auto run = [&](std::size_t from, std::size_t to) {
            const auto part = [&](const Signal& signal) {
                return Signal(signal.begin() + static_cast<std::ptrdiff_t>(from),
                              signal.begin() + static_cast<std::ptrdiff_t>(to));
            };
            return host.run<double>({part(left), part(right)}, {512})[channel];
        };
        Signal output = run(0, kChange);
        change();
        const Signal after = run(kChange, kLength);
        output.insert(output.end(), after.begin(), after.end());
        return clickOf(output);
    }
    void expectNoClick(const std::string& what, const Click& click)
    {
        // The shifter's grains have edges of their own.
        EXPECT_LT(click.changeDb, std::max(-60.0, click.restDb + 3.0))
            << what << ", at rest " << click.restDb;
    }
    static void set(TestHost& host, const std::string& name, double value)
    {
        CAudioParamContext context;
        paramOf(host, name).setValue(0, 0, 0, value, context);
    }
};

struct Turn
{
    const char* name;
    double from;
    double to;
};

constexpr Turn kTurns[] = {
    {"modDrumfell.sat-enable", 0, 1},
    {"modDrumfell.sat-enable", 1, 0},
    {"modDrumfell.sub-enable", 0, 1},
    {"modDrumfell.sub-enable", 1, 0},
    {"modDrumfell.comp-enable", 0, 1},
    {"modDrumfell.comp-enable", 1, 0},
    {"modDrumfell.punch-enable", 0, 1},
    {"modDrumfell.punch-enable", 1, 0},
    {"modDrumfell.mono-enable", 0, 1},
    {"modDrumfell.mono-enable", 1, 0},
    {"modDrumfell.xover-type", 0, 2},
    {"modDrumfell.xover-type", 2, 1},
    {"modDrumfell.xover-type", 1, 0},
    {"modDrumfell.xover-freq", 300, 20},
    {"modDrumfell.xover-freq", 20, 300},
    {"modDrumfell.dcfilter-params.type", 0, 10},
    {"modDrumfell.dcfilter-params.type", 10, 0},
    {"modDrumfell.dcfilter-params.type", 9, 2},
    {"modDrumfell.dcfilter-params.freq", 1, 100},
    {"modDrumfell.dcfilter-params.freq", 100, 1},
    {"modDrumfell.sat-lpf", 20, 20000},
    {"modDrumfell.sat-lpf", 20000, 20},
    {"modDrumfell.sat-mode", 0, 1},
    {"modDrumfell.lf-enable", 1, 0},
    {"modDrumfell.lf-mon", 0, 1},
    {"modDrumfell.lf-mon", 1, 0},
    {"modBypass.enable", 0, 1},
    {"modBypass.enable", 1, 0},
    {"denorm-enable", 0, 1},
    {"denorm-enable", 1, 0},
    {"oversampling", 1, 2},
    {"oversampling", 2, 1},
    {"oversampling", 1, 4},
    {"oversampling", 4, 1},
    {"oversampling", 4, 2},
};

TEST_F(SwitchClicks, NoSwitchClicks)
{
    for (const Turn& turn : kTurns) {
        TestHost host;
        bringUp(host);
        for (const auto& [name, value] : Settings{{"sat-drive", linear(12)},
                                                  {"sat-lpf", 300},
                                                  {"comp-drive", linear(20)},
                                                  {"punch-gain", linear(6)}}) {
            set(host, "modDrumfell." + name, value);
        }
        set(host, turn.name, turn.from);
        const Click click = measure(host, [&] { set(host, turn.name, turn.to); });
        expectNoClick(std::string(turn.name) + " " + std::to_string(turn.from) + " -> " +
                          std::to_string(turn.to),
                      click);
    }
}

TEST_F(SwitchClicks, NoProgramClicks)
{
    for (int program = 0; program < 13; ++program) {
        TestHost host;
        bringUp(host);
        requireOk(host.activateProgram(program));
        const int next = (program + 1) % 13;
        const Click click = measure(host, [&] { requireOk(host.activateProgram(next)); });
        expectNoClick("program " + std::to_string(program) + " -> " + std::to_string(next), click);
    }
}

// Channels that go another way: the sides exchanged, one side into a group of its own, a pair made or undone.
TEST_F(SwitchClicks, NoRoutingClicks)
{
    struct Turnout
    {
        const char* name;
        std::vector<double> from;
        std::vector<double> to;
    };
    const Turnout turnouts[] = {
        {"in-routing", {1, 2}, {2, 1}},   {"out-routing", {1, 2}, {2, 1}}, {"grouping", {0, 0}, {0, 1}},
        {"grouping", {0, 1}, {0, 0}},     {"ms-pairs", {0, 0}, {2, 2}},    {"ms-pairs", {2, 2}, {0, 0}},
        {"channel-group-solo", {0}, {1}},
    };
    for (const Turnout& turnout : turnouts) {
        TestHost host;
        bringUp(host);
        const auto route = [&](const std::vector<double>& values) {
            CAudioParam& param = paramOf(host, std::string("io-params.") + turnout.name);
            CAudioParamContext context;
            for (std::size_t i = 0; i < values.size(); ++i) {
                param.setValue(0, static_cast<int>(i), 0, values[i], context);
            }
        };
        set(host, "modDrumfell.sat-enable", 1);
        route(turnout.from);
        const Click click = measure(
            host, [&] { route(turnout.to); }, 1);
        expectNoClick(turnout.name, click);
    }
}

} // namespace
} // namespace qel::test
