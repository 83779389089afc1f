// Mid and side.
#include "GraphHost/CKernelRecording.h"
#include "ProcessTestTree.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qel::test {
namespace {

std::string coder(const char* name, const char* pairs, const char* mode)
{
    return std::string("<audio:modMSCoder name=\"") + name + "\">" + globalSlot("pairs", 0, pairs) +
           globalSlot("mode", 1, mode) + globalSlot("bypass", 2, "0") + "</audio:modMSCoder>";
}

std::string compound(const std::string& content)
{
    return "<audio:process-def name=\"main\">" + content + "</audio:process-def>";
}

TEST(MSCoder, CodesPairsInChannelOrderAndPassesTheRest)
{
    // 0 and 3 are a pair, and 2 and 4; 1 stands alone, 5 comes third to its pair, 6 has none, 7 asks for a
    // fifth pair.
    GraphFixture graph(compound(coder("enc", "2,1,3,2,3,2,0,5", "0")));
    const Channels input = noise(8, 40, 1);
    CKernelRecording recording;
    graph.kernels().setObserver(&recording);
    const Channels output = graph.run(input, {40});
    graph.kernels().setObserver(nullptr);
    EXPECT_EQ(recording.calls().size(), 2u);
    for (const auto& [left, right] : {std::pair<std::size_t, std::size_t>{0, 3}, {2, 4}}) {
        for (std::size_t i = 0; i < 40; ++i) {
            const double half = (input[right][i] - input[left][i]) * -0.5;
            ASSERT_EQ(output[left][i], input[right][i] + half);
            ASSERT_EQ(output[right][i], half);
        }
    }
    for (const std::size_t channel : {1u, 5u, 6u, 7u}) {
        EXPECT_EQ(output[channel], input[channel]) << channel;
    }
}

TEST(MSCoder, RestoresWhatItHasCoded)
{
    GraphFixture graph(compound(coder("enc", "1,1,4,4", "0") + coder("dec", "1,1,4,4", "1")));
    const Channels input = noise(4, 3000, 2);
    const Channels output = graph.run(input, {1, 100, 37});
    for (std::size_t channel = 0; channel < 4; ++channel) {
        ASSERT_EQ(output[channel].size(), 3000u);
        for (std::size_t i = 0; i < 3000; ++i) {
            ASSERT_NEAR(output[channel][i], input[channel][i], 2.3e-16) << i;
        }
    }
}

TEST(MSCoder, FollowsBypassModeAndPairsWhileItRuns)
{
    GraphFixture graph(compound(coder("m", "0,0", "0")));
    const Channels input = noise(2, 10, 3);
    EXPECT_EQ(graph.run(input, {10}), input);
    setList(graph, "m.pairs", {1, 1});
    EXPECT_DOUBLE_EQ(graph.run(input, {10})[0][4], (input[0][4] + input[1][4]) / 2);
    graph.set("m.mode", 1.0);
    EXPECT_EQ(graph.run(input, {10})[1][4], input[0][4] - input[1][4]);
    graph.set("m.bypass", 1.0);
    EXPECT_EQ(graph.run(input, {10}), input);
    graph.set("m.bypass", 0.0);
    // The partner has gone: what is left passes.
    EXPECT_EQ(graph.run({input[0]}, {10})[0], input[0]);
}

} // namespace
} // namespace qel::test
