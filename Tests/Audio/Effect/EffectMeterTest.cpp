// The meters in the graph, and what they hand to the collector.
#include "CAudioVizCollector.h"
#include "EffectFixture.h"

namespace qel {
namespace {

using namespace test;

class EffectMeters : public EffectFixture
{
protected:
    static CAudioVizCollector& collector(EffectHost& host)
    {
        return dynamic_cast<CAudioVizCollector&>(*host.getRoot()->findObject("plugin.viz-collector"));
    }
    // What a meter says while a signal runs.
    static std::vector<CAudioVizDataMeter> listen(EffectHost& host, const char* meter, const Signals& input,
                                                  const std::vector<int>& sizes)
    {
        CAudioVizCollector& viz = collector(host);
        const std::int32_t id = viz.findSource(CString("plugin.modMain.") + meter);
        viz.addListener(id);
        std::vector<CAudioVizDataMeter> all;
        constexpr std::size_t kPart = 9600;
        for (std::size_t start = 0; start < input[0].size(); start += kPart) {
            Signals part;
            for (const Signal& channel : input) {
                const auto from = channel.begin() + static_cast<std::ptrdiff_t>(start);
                part.emplace_back(from, from + kPart);
            }
            host.run<double>(part, sizes);
            viz.take(all);
        }
        viz.removeListener(id);
        for (const CAudioVizDataMeter& data : all) {
            EXPECT_EQ(data.id, id);
        }
        return all;
    }
};

TEST_F(EffectMeters, OutputMeterTellsLevelAndPeakOfEachChannelAtASteadyRate)
{
    // Blocks of several frames, and frames of several blocks.
    for (const std::vector<int>& sizes : std::vector<std::vector<int>>{{9600}, {100, 1, 513}}) {
        EffectHost host({{"oversampling", 2}});
        host.setList("io-params.grouping", {0, 5});
        host.set("modOutGain.gain", 0.5, 5);
        const Signal tone = sine(1000.0, kRateHz, 96000, 0.8);
        const auto findings = listen(host, "modMeterOut", {tone, tone}, sizes);
        std::map<int, std::vector<CAudioVizDataMeter>> byChannel;
        for (const CAudioVizDataMeter& data : findings) {
            byChannel[data.element].push_back(data);
            ASSERT_EQ(data.group, data.element == 0 ? 0 : 5)
                << "of its channel, though settings are those of 0";
        }
        ASSERT_EQ(byChannel.size(), 2u);
        for (const auto& [channel, list] : byChannel) {
            ASSERT_NEAR(static_cast<double>(list.size()), 60.0, 6.0) << "two seconds of 30 frames";
            for (std::size_t i = 1; i < list.size(); ++i) {
                ASSERT_NEAR(list[i].timeSec - list[i - 1].timeSec, 1.0 / 30.0, 1e-6);
            }
            const double amplitude = channel == 0 ? 0.8 : 0.4;
            EXPECT_NEAR(list.back().peak, amplitude, 0.01);
            EXPECT_NEAR(list.back().level, amplitude * std::sqrt(0.5), 0.05 * amplitude);
        }
    }
}

TEST_F(EffectMeters, DifferenceMeterTellsTheRatioOfOutputToInput)
{
    EffectHost host({{"modOutGain.gain", 2}});
    const Signal tone = sine(1000.0, kRateHz, 48000, 0.25);
    const auto findings = listen(host, "modMeterIODiff", {tone, Signal(48000)}, {512});
    ASSERT_GT(findings.size(), 40u);
    for (const CAudioVizDataMeter& data : findings) {
        if (data.timeSec > 0.5) {
            EXPECT_NEAR(data.level, data.element == 0 ? 2.0 : 1.0, 0.02) << "channel " << data.element;
        }
    }
}

TEST_F(EffectMeters, MetersRunWhileSomebodyLooksAndChangeNothing)
{
    const Signals input{music(kRateHz, 20000, 1), music(kRateHz, 20000, 2)};
    EffectHost unseen(busySettings());
    const Signals expected = unseen.run<double>(input, {512});
    const auto isMetering = [](EffectHost& host) {
        const auto kernels = host.kernelsOfBlock();
        return kernels.contains("meter") + 2 * kernels.contains("meterd");
    };
    EXPECT_EQ(isMetering(unseen), 0);

    EffectHost seen(busySettings());
    CAudioVizCollector& viz = collector(seen);
    const std::int32_t out = viz.findSource("plugin.modMain.modMeterOut");
    const std::int32_t difference = viz.findSource("plugin.modMain.modMeterIODiff");
    viz.addListener(out);
    viz.addListener(difference);
    EXPECT_EQ(seen.run<double>(input, {512}), expected);
    EXPECT_EQ(isMetering(seen), 3);
    viz.removeListener(out);
    EXPECT_EQ(isMetering(seen), 2);
    viz.removeListener(difference);
    EXPECT_EQ(isMetering(seen), 0);
}

} // namespace
} // namespace qel
