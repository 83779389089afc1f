// Channels, groups and mid/side of the whole effect.
#include "EffectFixture.h"

namespace qel {
namespace {

using namespace test;

class EffectChannels : public EffectFixture
{};

Signals differentMusic(std::size_t channels, std::size_t count)
{
    Signals signals;
    for (std::size_t i = 0; i < channels; ++i) {
        signals.push_back(music(kRateHz, count, static_cast<unsigned>(i) + 1));
    }
    return signals;
}

TEST_F(EffectChannels, HostChannelsGoWhereTheTablesSay)
{
    EffectHost host(Settings(), kRateHz, 16);
    for (int group = 0; group < 4; ++group) {
        host.set("modBypass.enable", 1.0, group);
    }
    host.setList("io-params.in-routing", {16, 1, 3, 3, 0, 9, 12, 2});
    host.setList("io-params.out-routing", {1, 16, 2, 5, 7, 5, 0, 9});
    host.run<double>(Signals(16, Signal(4096)), {512});
    const Signals input = differentMusic(16, 3000);
    const Signals output = host.run<double>(input, {512});

    Signals expected(16, Signal(3000));
    expected[0] = input[15];
    expected[15] = input[0]; // swapped
    expected[1] = input[2];  // one host channel feeds two internal ones
    for (std::size_t i = 0; i < 3000; ++i) {
        expected[4][i] = 0.5 * (input[2][i] + input[8][i]); // two meet in one: their mean
    }
    expected[8] = input[1]; // 7 gets what has no input, and input 12 goes nowhere
    EXPECT_EQ(output, expected);
}

TEST_F(EffectChannels, GroupsProcessTheirChannelsByThemselves)
{
    const Signals input = differentMusic(4, 24000);
    const auto open = [](EffectHost& host) {
        host.setList("io-params.in-routing", {1, 2, 3, 4});
        host.setList("io-params.out-routing", {1, 2, 3, 4});
        host.setList("io-params.grouping", {0, 1, 0, 1});
        host.open(kRateHz, 4);
    };
    const Settings other = {{".xover-freq", 50},
                            {".xover-type", 1},
                            {".sub-enable", 1},
                            {".lf-enable", 0},
                            {"modOutGain.gain", 0.5}};
    EffectHost both;
    both.apply(busySettings(), 0);
    both.apply(other, 1);
    open(both);
    const Signals together = both.run<double>(input, {512});

    // Each group alone in an instance where the other one has nothing to do.
    EffectHost first;
    first.apply(busySettings(), 0);
    open(first);
    const Signals ofFirst = first.run<double>(input, {512});
    EffectHost second;
    second.apply(other, 1);
    open(second);
    const Signals ofSecond = second.run<double>(input, {512});

    EXPECT_EQ(together[0], ofFirst[0]);
    EXPECT_EQ(together[2], ofFirst[2]);
    // A mute is noise of its own.
    EXPECT_LT(worstDifference(together[1], ofSecond[1]), 1e-8);
    EXPECT_LT(worstDifference(together[3], ofSecond[3]), 1e-8);
    EXPECT_GT(worstDifference(together[0], ofSecond[0]), 0.1);
    EXPECT_GT(worstDifference(together[1], ofFirst[1]), 0.1);
}

TEST_F(EffectChannels, SoloSilencesTheOtherGroups)
{
    EffectHost host;
    host.setList("io-params.grouping", {0, 1});
    host.open(kRateHz);
    const Signals input(2, sine(1000.0, kRateHz, 4800, 0.5));
    const auto levels = [&](double ofFirst, double ofSecond, double isBypassed) {
        host.setList("io-params.channel-group-solo", {ofFirst, ofSecond});
        host.set("modBypass.enable", isBypassed);
        const Signals output = host.run<double>(input, {512});
        return std::pair(peak(output[0], 2400) > 0.4     ? 1
                         : peak(output[0], 2400) < 1e-10 ? 0
                                                         : -1,
                         peak(output[1], 2400) > 0.4     ? 1
                         : peak(output[1], 2400) < 1e-10 ? 0
                                                         : -1);
    };
    for (const double isBypassed : {0.0, 1.0}) {
        EXPECT_EQ(levels(0, 0, isBypassed), std::pair(1, 1));
        EXPECT_EQ(levels(1, 0, isBypassed), std::pair(1, 0));
        EXPECT_EQ(levels(0, 1, isBypassed), std::pair(0, 1));
        EXPECT_EQ(levels(1, 1, isBypassed), std::pair(1, 1));
    }
    EXPECT_FALSE(host.parameter("io-params.channel-group-solo").getInfo().isStorable) << "in no preset";
}

TEST_F(EffectChannels, UnusedGroupsCostNothing)
{
    EffectHost host{Settings()};
    const Signals warmUp(2, Signal(4096, 0.1));
    host.run<double>(warmUp, {512});
    const auto atDefaults = host.kernelsOfBlock();
    // Crossover, gain of the sum, mix with the dry band and DC filter; no effect, no meter, no noise.
    EXPECT_EQ(atDefaults, (std::map<std::string, int>{
                              {"fltbiqlpg", 4}, {"fltbiqhpg", 4}, {"mix", 2}, {"add2", 2}, {"flthp1a", 2}}));
    for (int group = 1; group < 8; ++group) {
        host.apply(busySettings(), group);
    }
    host.run<double>(warmUp, {512});
    EXPECT_EQ(host.kernelsOfBlock(), atDefaults) << "a group without channels";

    // One more channel in a group of its own: its calls come on top.
    EffectHost wide;
    wide.setList("io-params.in-routing", {1, 2, 3});
    wide.setList("io-params.out-routing", {1, 2, 3});
    wide.open(kRateHz, 3);
    wide.run<double>(Signals(3, Signal(4096, 0.1)), {512});
    for (const auto& [kernel, count] : wide.kernelsOfBlock(3)) {
        EXPECT_EQ(count, atDefaults.at(kernel) / 2 * 3) << kernel;
    }
}

TEST_F(EffectChannels, MidSideComesBackAndIsWhatTheEffectWorksOn)
{
    const Signals input = differentMusic(2, 24000);
    const auto run = [&](const Settings& ofMid, const Settings& ofSide, bool isCoded) {
        EffectHost host;
        host.apply(ofMid, 0);
        host.apply(ofSide, 1);
        host.setList("io-params.grouping", {0, 1});
        if (isCoded) {
            host.setList("io-params.ms-pairs", {2, 2});
        }
        host.open(kRateHz);
        return host.run<double>(input, {512});
    };
    const Signals plain = run({}, {}, false);
    const Signals coded = run({}, {}, true);
    EXPECT_LT(worstDifference(coded[0], plain[0]), 1e-11);
    EXPECT_LT(worstDifference(coded[1], plain[1]), 1e-11);

    const Signals mid = run({}, {{"modOutGain.mute", 1}}, true);
    EXPECT_LT(worstDifference(mid[0], mid[1], 4800), 1e-10);
    Signal mean = plain[0] + plain[1];
    for (double& sample : mean) {
        sample *= 0.5;
    }
    EXPECT_LT(worstDifference(mid[0], mean, 4800), 1e-10);
}

} // namespace
} // namespace qel
