// One of several processes in one place.
#include "CModProcessSwitch.h"
#include "GraphHost/CKernelRecording.h"
#include "ProcessRig.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace qel::test {
namespace {

std::string gainChild(const char* name, const char* slotName)
{
    return std::string("<audio:modGain name=\"") + name + "\" is-prototype=\"true\">" + slot(slotName, 0) +
           "</audio:modGain>";
}

// 0 is a gain, 1 the absolute value, 2 a gain by another parameter of the same compound. Parameters reach
// whichever is selected under the name `mod`.
std::string switchTree(const std::string& attributes)
{
    return R"(<audio:process-def name="main">)" + globalParam("level", "2") + globalParam("other", "7") +
           globalParam("type", "0,0,0") + R"(
      <audio:param-remap orig="s.mod.gain" new="level"/><audio:param-remap orig="s.mod.second" new="other"/>
      <audio:param-remap orig="s.index" new="type"/>
      <audio:modProcessSwitch name="s" def-child-name="mod" )" +
           attributes + ">" + slot("index", 0) + gainChild("mod1", "gain") +
           R"(<audio:modAbs name="mod2" is-prototype="true"/>)" + gainChild("mod3", "second") +
           "</audio:modProcessSwitch></audio:process-def>";
}

const std::string kList = R"(process-list="0:.mod1;1:.mod2;0x2:.mod3" )";

double expected(int index, double sample, double level)
{
    return index == 1 ? std::fabs(sample) : sample * (index == 2 ? 7.0 : level);
}

TEST(ProcessSwitch, RunsTheSelectedChildAndNoOther)
{
    GraphRig graph(switchTree(kList + R"(def-index="1")"));
    const Channels input = noise(2, 64, 1);
    CKernelRecording recording;
    // Index as set, index that counts: what is not listed selects `def-index`.
    for (const auto& [set, counts] :
         {std::pair<double, int>{0, 0}, {1, 1}, {2, 2}, {3, 1}, {-1, 1}, {1.5, 2}, {0.49, 0}}) {
        graph.set("type", set);
        graph.run(noise(2, 300, 8), {64}); // the fade
        graph.kernels().setObserver(&recording);
        const Channels output = graph.run(input, {64});
        graph.kernels().setObserver(nullptr);
        for (std::size_t i = 0; i < 64; ++i) {
            ASSERT_EQ(output[1][i], expected(counts, input[1][i], 2.0)) << set;
        }
        EXPECT_EQ(recording.calls().size(), 2u) << set;
        recording.clear();
    }
}

TEST(ProcessSwitch, LosesNoSampleAndKeepsParametersOfRestingChildrenCurrent)
{
    GraphRig graph(switchTree(kList));
    const Channels input(2, std::vector<double>(20000, 1.0));
    std::mt19937 random(3);
    double level = 2.0;
    const Channels output = graph.run(input, {1, 33, 100, 7}, [&](std::size_t position) {
        if (position > 19500) {
            return;
        }
        if (random() % 2) {
            graph.set("type", static_cast<double>(random() % 3));
        }
        level = static_cast<double>(random() % 50);
        graph.set("level", level);
    });
    graph.set("type", 0.0);
    const Channels last = graph.run(Channels(2, std::vector<double>(600, 1.0)), {64});
    for (std::size_t channel = 0; channel < 2; ++channel) {
        ASSERT_EQ(output[channel].size(), 20000u);
        EXPECT_GE(*std::min_element(output[channel].begin(), output[channel].end()), 0.0);
        EXPECT_LE(*std::max_element(output[channel].begin(), output[channel].end()), 49.0 + 1e-9);
        EXPECT_EQ(last[channel].back(), level);
    }
}

TEST(ProcessSwitch, FeedsEveryPortOfTheSelectedChild)
{
    GraphRig graph(R"(<audio:process-def name="main" is-auto-links="false"><audio:modAbs name="abs"/>
        <audio:modProcessSwitch name="s" process-list="0:.a;1:.b" >)" +
                   globalSlot("index", 0, "0") + R"(<audio:modMult name="a" is-prototype="true"/>
          <audio:modNode name="b" is-prototype="true"/></audio:modProcessSwitch>
        <audio:process-link src="*" dst="s"/><audio:process-link src="*" dst="abs"/>
        <audio:process-link src="abs" dst="s/1"/><audio:process-link src="s" dst="*"/></audio:process-def>)");
    const Channels input = noise(1, 300, 5);
    const double product = input[0][280] * std::fabs(input[0][280]);
    EXPECT_EQ(graph.run(input, {11})[0][280], product);
    graph.set("s.index", 1.0);
    EXPECT_EQ(graph.run(input, {11})[0][280], input[0][280]);
    graph.set("s.index", 0.0);
    EXPECT_EQ(graph.run(input, {11})[0][280], product);
}

} // namespace
} // namespace qel::test
