// Host channels to internal channels and groups, and back.
#include "GraphHost/CKernelRecording.h"
#include "ProcessRig.h"

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

std::vector<std::string> kernelsOf(GraphRig& graph, const Channels& input)
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

TEST(Router, GivesAHostChannelTheMeanOfWhatIsRoutedToIt)
{
    for (const int sources : {1, 2, 3, 4, 5, 7, 8}) {
        std::string routing = "4";
        for (int i = 1; i < 8; ++i) {
            routing += i < sources ? ",4" : ",0";
        }
        GraphRig graph(compound(router("out", routing.c_str(), "0", true)));
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

// Down to a gain that exists once for each group, and back.
const std::string kWholeWay = compound(router("in", "1,2,0,0", "0,0,1,1") +
                                       R"(<audio:process-def name="each" is-stacked="true" is-grouped="true">
      <audio:modGain name="g">)" + globalSlot("gain", 0, "1") +
                                       globalSlot("mute", 1, "0") + "</audio:modGain></audio:process-def>" +
                                       router("out", "1,2,0,0", "0", true));

TEST(Router, StopsTheStreamWhereNothingIsRoutedAndTakesItUpAgain)
{
    GraphRig graph(kWholeWay);
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
