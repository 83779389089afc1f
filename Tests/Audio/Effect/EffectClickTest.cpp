// Turning a knob while a tone plays.
#include "EffectFixture.h"

namespace qel {
namespace {

using namespace test;

class EffectClicks : public EffectFixture
{};

// Largest second difference in a stretch of a signal.
double edge(const Signal& signal, std::size_t from, std::size_t to)
{
    double worst = 0.0;
    for (std::size_t i = from; i + 2 < to; ++i) {
        worst = std::max(worst, std::fabs(signal[i] - 2.0 * signal[i + 1] + signal[i + 2]));
    }
    return worst;
}

struct Turn
{
    const char* name;
    double from;
    double to;
};

// Second differences around a change, over those at rest before and after it, whatever is louder.
double clickFactor(const Settings& others, const Turn& turn, int oversampling)
{
    EffectHost host(others);
    host.set("oversampling", oversampling);
    host.set(turn.name, turn.from);
    const std::size_t count = 72000;
    Signal tone = sine(50.0, kRateHz, count, 0.5);
    const auto run = [&](std::size_t from, std::size_t to) {
        const Signal part(tone.begin() + static_cast<std::ptrdiff_t>(from),
                          tone.begin() + static_cast<std::ptrdiff_t>(to));
        return host.run<double>({part, part}, {512})[0];
    };
    const std::size_t change = 36100; // not where the tone is zero
    Signal output = run(0, change);
    host.set(turn.name, turn.to);
    const Signal after = run(change, count);
    output.insert(output.end(), after.begin(), after.end());
    const double atRest = std::max(edge(output, 24000, change - 10), edge(output, 60000, count));
    return edge(output, change - 10, 48000) / atRest;
}

// What joins or cuts links and what changes rates stands in the test of switches.
TEST_F(EffectClicks, NoKnobClicks)
{
    constexpr double kLoud = 15.8; // 24 dB
    constexpr Turn kTurns[] = {
        {".xover-freq", 20, 300},
        {".xover-freq", 300, 20},
        {".lf-enable", 1, 0},
        {".lf-enable", 0, 1},
        {".lf-mon", 0, 1},
        {".lf-mon", 1, 0},
        {".lf-gain", 1, kLoud},
        {".punch-gain", 0.25, 4},
        {".sat-drive", 0.1, 316},
        {".sat-drive", 316, 0.1},
        {".sat-mode", 0, 1},
        {".sat-lpf", 20, 20000},
        {".sat-lpf", 20000, 20},
        {".sat-hpf", 1, 5000},
        {".sat-gain", 1 / kLoud, kLoud},
        {".comp-drive", 0.1, 316},
        {".comp-drive", 316, 0.1},
        {".mix-gain", kLoud, 1 / kLoud},
        {".drymix", 0, 1},
        {".dcfilter-params.freq", 1, 100},
        {".dcfilter-params.freq", 100, 1},
        {".dcfilter-params.type", 0, 10},
        {".dcfilter-params.type", 10, 0},
        {"modOutGain.gain", 0.25, 4},
        {"modOutGain.mute", 0, 1},
        {"modBypass.enable", 0, 1},
        {"modBypass.enable", 1, 0},
    };
    Settings others = busySettings();
    others[".sub-enable"] = 0; // its grains make edges of their own
    for (const Turn& turn : kTurns) {
        for (const int oversampling : {1, 3}) {
            // A biquad keeps its memory as it is when its corner moves: the largest jump of the crossover
            // makes 15, which is 86 dB below the tone where clicks are heard, above 8 kHz.
            EXPECT_LT(clickFactor(others, turn, oversampling), 16.0)
                << turn.name << " from " << turn.from << " to " << turn.to << ", oversampling "
                << oversampling;
        }
    }
    others[".sub-enable"] = 1;
    EXPECT_LT(clickFactor(others, {".sub-gain", kLoud, 1 / kLoud}, 1), 1.5);
    EXPECT_LT(clickFactor(others, {".sub-gain", 1 / kLoud, kLoud}, 1), 1.5);
}

// What a filter takes over from its predecessor may not send it swinging, whatever it has heard.
TEST_F(EffectClicks, CrossoverDoesNotThump)
{
    for (const double toneHz : {30.0, 150.0, 1000.0, 8000.0}) {
        for (const auto& [from, to] : {std::pair(300.0, 20.0), std::pair(20.0, 300.0)}) {
            EffectHost host({{".xover-freq", from}});
            const Signal tone = sine(toneHz, kRateHz, 24000, 0.5);
            host.run<double>({tone, tone}, {512});
            host.set(".xover-freq", to);
            EXPECT_LT(peak(host.run<double>({tone, tone}, {512})[0]), 0.55) << toneHz << " Hz, to " << to;
        }
    }
}

} // namespace
} // namespace qel
