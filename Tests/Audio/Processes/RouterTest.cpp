// Host channels to internal channels and groups, and back.
#include "GraphHost/CKernelRecording.h"
#include "ProcessTestTree.h"

#include <gtest/gtest.h>

namespace qel::test {
namespace {

std::string router(const char* name, const char* routing, const char* grouping, bool isOutput = false)
{
    return std::string("<audio:modRouter name=\"") + name + "\" is-output=\"" +
           (isOutput ? "true" : "false") + "\">" + globalSlot("routing", 0, routing) +
           globalSlot("grouping", 1, grouping) + "</audio:modRouter>";
}

std::string compound(const std::string& content)
{
    return "<audio:process-def name=\"main\">" + content + "</audio:process-def>";
}

std::vector<std::string> kernelsOf(GraphFixture& graph, const Channels& input)
{
    CKernelRecording recording;
    graph.kernels().setObserver(&recording);
    graph.run(input, {static_cast<int>(input[0].size())});
    graph.kernels().setObserver(nullptr);
    std::vector<std::string> calls;
    for (const CKernelCall& call : recording.calls()) {
        calls.emplace_back(call.entry->name);
    }
    return calls;
}

TEST(Router, LooksUpTheHostChannelOfEachInternalOne)
{
    // Internal 0 and 3 share a host channel; 1 has none; 2 asks for one that does not come; 5 for the
    // sixteenth.
    GraphFixture graph(compound(router("in", "2,0,9,2,1,16", "0,1,2,3.5,4,99,0,0")));
    const Channels input = noise(3, 100, 1);
    OutputProbe probe(graph);
    Channels out(kMaxChannels);
    graph.runBlock(input, 0, 100);
    graph.collect(out);
    EXPECT_EQ(probe.link().channels(), 0b011001u);
    EXPECT_EQ(out[0], input[1]);
    EXPECT_EQ(out[3], input[1]);
    EXPECT_EQ(out[4], input[0]);
    EXPECT_EQ(probe.format(0)->group, 0);
    EXPECT_EQ(probe.format(3)->group, 4); // a tie goes away from zero
    EXPECT_EQ(probe.format(4)->group, 4);

    const Channels all = noise(16, 100, 2);
    probe.link().clear();
    out.assign(kMaxChannels, {});
    graph.runBlock(all, 0, 100);
    graph.collect(out);
    EXPECT_EQ(probe.link().channels(), 0b111101u);
    EXPECT_EQ(out[2], all[8]);
    EXPECT_EQ(out[5], all[15]);
    EXPECT_EQ(probe.format(5)->group, 7); // there is no group beyond
    EXPECT_TRUE(kernelsOf(graph, all).empty());
}

TEST(Router, KeepsTheDefaultsOfElementsBehindTheOneThatIsWritten)
{
    GraphFixture graph(compound(router("in", "1,2", "0")));
    const Channels input = noise(3, 20, 8);
    setList(graph, "in.routing", {3});
    EXPECT_EQ(graph.run(input, {20}), (Channels{input[2], input[1], {}}));
}

TEST(Router, GivesAHostChannelTheMeanOfWhatIsRoutedToIt)
{
    for (const int sources : {1, 2, 3, 4, 5, 7, 8}) {
        std::string routing = "4";
        for (int i = 1; i < 8; ++i) {
            routing += i < sources ? ",4" : ",0";
        }
        GraphFixture graph(compound(router("out", routing.c_str(), "0", true)));
        const Channels input = noise(8, 64, 3);
        const Channels output = graph.run(input, {64});
        // 1/N in double precision, within the last kernel of the sum.
        const double scale = 1.0 / sources;
        for (std::size_t i = 0; i < 64; ++i) {
            const auto at = [&](std::size_t channel) { return input[channel][i]; };
            double sum = at(0);
            for (std::size_t channel = 1; channel < static_cast<std::size_t>(sources); ++channel) {
                sum += at(channel);
            }
            if (sources <= 5) {
                ASSERT_EQ(output[3][i], sources == 1 ? at(0) : sum * scale) << sources;
            } else {
                ASSERT_NEAR(output[3][i], sum * scale, 4e-16) << sources;
            }
        }
        EXPECT_TRUE(output[0].empty());
        EXPECT_EQ(kernelsOf(graph, input).size(), sources == 1   ? 0u
                                                  : sources <= 3 ? 1u
                                                  : sources <= 6 ? 2u
                                                                 : 3u)
            << sources;
    }
}

TEST(Router, ReadsTheLastDefaultWhereAGroupIsMissing)
{
    GraphFixture graph(compound(router("out", "1,8,3,16", "1,2,3", true)));
    OutputProbe probe(graph);
    const auto groups = [&] {
        probe.link().clear();
        graph.runBlock(noise(4, 10, 4), 0, 10);
        return std::vector{probe.format(0)->group, probe.format(2)->group, probe.format(7)->group,
                           probe.format(15)->group};
    };
    EXPECT_EQ(groups(), (std::vector{1, 3, 3, 3}));
    setList(graph, "out.grouping", {7, 6, 5, 4, 4, 4, 4, 2});
    EXPECT_EQ(groups(), (std::vector{7, 5, 2, 3}));
}

// Down to a gain that exists once for each group, and back.
const std::string kWholeWay = compound(router("in", "1,2,0,0", "0,0,1,1") +
                                       R"(<audio:process-def name="each" is-stacked="true" is-grouped="true">
      <audio:modGain name="g">)" + globalSlot("gain", 0, "1") +
                                       globalSlot("mute", 1, "0") + "</audio:modGain></audio:process-def>" +
                                       router("out", "1,2,0,0", "0", true));

TEST(Router, SendsEachChannelToTheEffectOfItsGroup)
{
    GraphFixture graph(kWholeWay);
    graph.set("each.g.gain", 2.0, 0);
    graph.set("each.g.gain", 5.0, 1);
    const Channels input = noise(2, 50, 5);
    EXPECT_EQ(graph.run(input, {50})[1][7], input[1][7] * 2.0);
    setList(graph, "in.grouping", {0, 1, 0, 0});
    const Channels split = graph.run(input, {50});
    EXPECT_EQ(split[0][7], input[0][7] * 2.0);
    EXPECT_EQ(split[1][7], input[1][7] * 5.0);
    setList(graph, "in.routing", {0, 0, 1, 2}); // both now through the internal channels 2 and 3, in group 0
    setList(graph, "out.routing", {0, 0, 2, 1});
    const Channels crossed = graph.run(input, {50});
    EXPECT_EQ(crossed[0][7], input[1][7] * 2.0);
    EXPECT_EQ(crossed[1][7], input[0][7] * 2.0);
}

TEST(Router, StopsTheStreamWhereNothingIsRoutedAndTakesItUpAgain)
{
    GraphFixture graph(kWholeWay);
    const Channels input = noise(2, 48000, 6);
    EXPECT_EQ(graph.run(input, {480})[1].size(), 48000u);
    setList(graph, "in.routing", {0, 0, 0, 0});
    const Channels none = graph.run(input, {480});
    EXPECT_TRUE(none[0].empty());
    EXPECT_TRUE(none[1].empty());
    graph.set("each.g.gain", 3.0); // while nothing runs
    setList(graph, "in.routing", {1, 2, 0, 0});
    const Channels back = graph.run(input, {480}, [&](std::size_t position) {
        if (position == 4800) {
            graph.set("each.g.gain", 0.5);
        }
    });
    ASSERT_EQ(back[0].size(), 48000u);
    EXPECT_EQ(back[0][0], input[0][0] * 3.0);
    EXPECT_EQ(back[0][4799], input[0][4799] * 3.0);
    // The second of silence has passed for those who heard nothing, too: a change made now does not wait for
    // it.
    EXPECT_EQ(back[0][4800], input[0][4800] * 0.5);
}

} // namespace
} // namespace qel::test
