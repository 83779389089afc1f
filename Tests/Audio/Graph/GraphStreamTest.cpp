// Streaming through the graph: steps, sums, switching, latency, and the independence of block sizes.
#include "../Processes/ProcessRig.h"
#include "GraphHost/CKernelRecording.h"
#include "Trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace qel {
namespace {

using test::Channels;
using test::GraphRig;
using test::noise;

std::string param(const char* name, const char* defaultValue, const char* extra = "")
{
    return std::string("<audio:param name=\"") + name +
           R"(" converter="real" min-values="-100" max-values="100" )" + "def-values=\"" + defaultValue +
           "\" " + extra + "/>";
}

const std::string kGlobal = R"(is-global="true")";

// A gain whose slot is the global parameter <name>.gain.
std::string gain(const char* name, const char* value, const char* attributes = "")
{
    return std::string("<audio:modGain name=\"") + name + "\" " + attributes + ">" +
           R"(<audio:param-alloc param-name="gain" index="0"/><audio:param-alloc param-name="mute" index="1"/>)" +
           param("gain", value, kGlobal.c_str()) + param("mute", "0", kGlobal.c_str()) + "</audio:modGain>";
}

std::string link(const char* from, const char* to, const char* attributes = "")
{
    return std::string("<audio:process-link src=\"") + from + "\" dst=\"" + to + "\" " + attributes + "/>";
}

std::string compound(const std::string& content, const char* attributes = R"(is-auto-links="false")")
{
    return std::string("<audio:process-def name=\"main\" ") + attributes + ">" + content +
           "</audio:process-def>";
}

const std::vector<std::vector<int>> kBlockSizes = {
    {1}, {7}, {64}, {512}, {513}, {4096}, {3, 511, 64, 1, 1000}};

TEST(GraphStream, ChainsChildrenAutomaticallyInTheirOrder)
{
    // Those that are bypassed are left out of the chain, at its ends too.
    const std::string states =
        param("off", "0", kGlobal.c_str()) + R"(<audio:process-bypass-state id="4" param="off"/>)";
    const char* bypassed = R"(bypass-state-id="4")";
    GraphRig graph(compound(states + gain("head", "8", bypassed) + gain("a", "2") +
                                gain("side", "100", R"(is-outoforder="true")") + gain("b", "0.25") +
                                gain("tail", "4", bypassed),
                            ""));
    const Channels input = noise(2, 1024, 1);
    constexpr std::size_t kFadeEnd = 512 + 240; // 5 ms
    const Channels output = graph.run(input, {64}, [&](std::size_t position) {
        if (position == 512) {
            graph.set("off", 1.0);
        }
    });
    for (std::size_t channel = 0; channel < 2; ++channel) {
        ASSERT_EQ(output[channel].size(), 1024u);
        for (std::size_t i = 0; i < 1024; ++i) {
            if (i < 512 || i >= kFadeEnd) {
                ASSERT_EQ(output[channel][i], input[channel][i] * (i < 512 ? 16.0 : 0.5)) << i;
            }
        }
    }
}

TEST(GraphStream, SumsSourcesInDeclaredOrderWithTheFewestKernels)
{
    // Five sources: one add4 over the first four, one add2 with the fifth.
    std::string content = R"(<audio:modNode name="sum"/>)";
    const char* gains[] = {"0.1", "3.7", "-2.3", "1e0", "7.77"};
    for (int i = 0; i < 5; ++i) {
        const std::string name = "g" + std::to_string(i);
        content += gain(name.c_str(), i == 3 ? "0.9" : gains[i]) + link("*", name.c_str()) +
                   link(name.c_str(), "sum");
    }
    content += link("sum", "*");
    GraphRig graph(compound(content));
    CKernelRecording recording;
    graph.kernels().setObserver(&recording);
    const Channels input = noise(1, 100, 2);
    const Channels output = graph.run(input, {100});
    graph.kernels().setObserver(nullptr);

    std::vector<std::string> calls;
    for (const CKernelCall& call : recording.calls()) {
        calls.emplace_back(call.entry->name);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"qel.dcdaw.mulc", "qel.dcdaw.mulc", "qel.dcdaw.mulc",
                                               "qel.dcdaw.mulc", "qel.dcdaw.mulc", "qel.dcdaw.add4",
                                               "qel.dcdaw.add2"}));
    for (std::size_t i = 0; i < 100; ++i) {
        const double x = input[0][i];
        ASSERT_EQ(output[0][i], (x * 0.1 + x * 3.7 + x * -2.3 + x * 0.9) + x * 7.77);
    }
}

TEST(GraphStream, PassesByReferenceWhereNothingIsComputed)
{
    GraphRig graph(compound(gain("unity", "1") + R"(<audio:modNode name="node"/>)", ""));
    CKernelRecording recording;
    graph.kernels().setObserver(&recording);
    const Channels input = noise(2, 64, 4);
    const Channels output = graph.run(input, {64});
    graph.kernels().setObserver(nullptr);
    EXPECT_TRUE(recording.calls().empty());
    EXPECT_EQ(output, input);
}

// Everything that a fade, a switch and a sum can do wrong at a block border.
const std::string kMixedGraph =
    compound(gain("in", "0.7", R"(is-smooth-update="true")") + R"(
    <audio:param name="wet" is-global="true" converter="real" min-values="0" max-values="1" def-values="1"/>
    <audio:process-bypass-state id="3" param="wet" is-inverted="true"/>
    <audio:modMix name="mix" is-smooth-update="true" xfade-length="0.003">
      <audio:param-alloc param-name="mix" index="0"/>)" +
             param("mix", "0.25", kGlobal.c_str()) + R"(</audio:modMix>
    <audio:modAbs name="abs"/><audio:modMono name="mono"/><audio:modMult name="ring"/><audio:modSignalMix name="blend"/>
    <audio:modNode name="node"/>)" +
             link("*", "in") + link("in", "mix") + link("*", "abs") + link("abs", "mix/1") +
             link("mix", "mono") + link("mono", "ring") + link("in", "ring/1") + link("ring", "blend") +
             link("mix", "blend/1") + link("abs", "blend/2") +
             link("blend", "node", R"(bypass-state-id="3")") + link("mix", "node") + link("node", "*"));

TEST(GraphStream, GivesTheSameSamplesAtEveryBlockSize)
{
    const Channels input = noise(2, 9000, 5);
    Channels reference;
    for (const std::vector<int>& sizes : kBlockSizes) {
        GraphRig graph(kMixedGraph);
        const Channels output = graph.run(input, sizes);
        if (reference.empty()) {
            reference = output;
            // Against the formula, in plain loops.
            for (std::size_t i = 0; i < 9000; ++i) {
                const double mean = [&] {
                    double mixed[2];
                    for (std::size_t c = 0; c < 2; ++c) {
                        const double in = input[c][i] * 0.7;
                        mixed[c] = in + (std::fabs(input[c][i]) - in) * 0.25;
                    }
                    return (mixed[0] + mixed[1]) * 0.5;
                }();
                for (std::size_t c = 0; c < 2; ++c) {
                    const double in = input[c][i] * 0.7;
                    const double mix = in + (std::fabs(input[c][i]) - in) * 0.25;
                    const double blend = mix + (mean * in - mix) * std::fabs(input[c][i]);
                    ASSERT_NEAR(output[c][i], blend + mix, 1e-14) << i;
                }
            }
        }
        EXPECT_EQ(output, reference) << "blocks of " << sizes[0];
    }
}

TEST(GraphStream, SwitchesLinksWithoutLosingQueuedSamples)
{
    // Of an odd block the decimator takes the larger half, so that the links into the mix hold unequal
    // numbers of samples whenever the side chain comes and goes.
    GraphRig graph(compound(param("on", "0", kGlobal.c_str()) + R"(
        <audio:process-bypass-state id="0" param="on" is-inverted="true"/>
        <audio:modDecimator name="down"/><audio:modInterpolator name="up"/>
        <audio:modMix name="mix"><audio:param-alloc param-name="mix" index="0"/>)" +
                            param("mix", "0.25") + "</audio:modMix>" + gain("side", "3") + link("*", "down") +
                            link("down", "up") + link("up", "mix") + link("*", "mix/1") + link("mix", "*") +
                            link("*", "side", R"(bypass-state-id="0")")));
    CKernelRecording recording;
    graph.kernels().setObserver(&recording);
    const Channels input = noise(2, 4995, 7);
    std::size_t blocks = 0;
    const Channels output =
        graph.run(input, {37}, [&](std::size_t) { graph.set("on", ++blocks % 3 == 0 ? 1.0 : 0.0); });
    graph.kernels().setObserver(nullptr);
    const auto sideBlocks =
        std::count_if(recording.calls().begin(), recording.calls().end(), [](const CKernelCall& call) {
            return std::string(call.entry->name) == "qel.dcdaw.mulc";
        });
    EXPECT_EQ(sideBlocks, 2 * 4995 / 37 / 3);
    for (std::size_t c = 0; c < 2; ++c) {
        ASSERT_EQ(output[c].size(), 4995u);
        for (std::size_t i = 0; i < 4995; ++i) {
            const double x = input[c][i];
            const double halved = i % 2 ? 0.0 : 2.0 * x;
            ASSERT_EQ(output[c][i], halved + (x - halved) * 0.25) << i;
        }
    }
}

TEST(GraphStream, CutsOffWhatHasNoSignal)
{
    // The chain behind `a` hangs in the air while its link is cut, and so does what it would feed besides the
    // input.
    const std::string content = R"(
      <audio:param name="on" is-global="true" converter="real" min-values="0" max-values="1" def-values="0"/>
      <audio:process-bypass-state id="0" param="on" is-inverted="true"/>)" +
                                gain("a", "2") + gain("b", "3") + gain("c", "5") +
                                R"(<audio:modNode name="out"/>)" + link("*", "a", R"(bypass-state-id="0")") +
                                link("a", "b") + link("b", "c") + link("c", "*/0") + link("*", "out") +
                                link("out", "*");
    GraphRig graph(compound(content));
    const Channels input = noise(1, 1500, 8);
    const Channels output = graph.run(input, {100}, [&](std::size_t position) {
        if (position == 500 || position == 1000) {
            graph.set("on", position == 500 ? 1.0 : 0.0);
        }
    });
    ASSERT_EQ(output[0].size(), 1500u);
    constexpr double kFade = 240.0; // 5 ms
    for (std::size_t i = 0; i < 1500; ++i) {
        const double since = static_cast<double>(i < 1000 ? i : i - 500) - 500.0;
        const double part = 0.5 - 0.5 * std::cos(std::numbers::pi * std::clamp(since / kFade, 0.0, 1.0));
        const double chain = i < 1000 ? part : 1.0 - part;
        ASSERT_NEAR(output[0][i], input[0][i] * (30.0 * chain + 1.0), 1e-11) << i;
    }
}

TEST(GraphStream, RunsOnAroundACycle)
{
    std::vector<std::string> lines;
    const CTraceHook old = setTraceHook([&](const CString& line) { lines.push_back(line.toUtf8()); });
    {
        GraphRig graph(compound(gain("good", "2") + R"(<audio:modMix name="x"/><audio:modMix name="y"/>)" +
                                link("*", "x") + link("y", "x/1") + link("*", "y") + link("x", "y/1") +
                                link("*", "good") + link("good", "*")));
        const Channels input = noise(1, 64, 9);
        EXPECT_EQ(graph.run(input, {64})[0][5], input[0][5] * 2.0);
        const std::size_t inUse = graph.kernels().pool().slotsInUse();
        for (int block = 0; block < 100; ++block) {
            graph.run(input, {64});
        }
        EXPECT_EQ(graph.kernels().pool().slotsInUse(), inUse) << "nothing piles up before the circle";
    }
    setTraceHook(old);
    EXPECT_NE(std::find_if(lines.begin(), lines.end(),
                           [](const std::string& line) { return line.starts_with("process seq err"); }),
              lines.end());
}

TEST(GraphStream, RunsOneCopyOfAStackForEachGroup)
{
    const std::string stack = R"(<audio:process-def name="inner" is-stacked="true" is-grouped="true">)" +
                              gain("g", "1") + "</audio:process-def>";
    GraphRig graph(compound(stack, ""));
    graph.set("inner.g.gain", 2.0, 0);
    graph.set("inner.g.gain", 3.0, 5);
    graph.formatOf = [](int channel) { return CAudioStreamFormat{48000.0, 0.0, channel == 1 ? 5 : channel}; };
    const Channels input = noise(3, 200, 10);
    const Channels output = graph.run(input, {64});
    for (std::size_t i = 0; i < 200; ++i) {
        ASSERT_EQ(output[0][i], input[0][i] * 2.0);
        ASSERT_EQ(output[1][i], input[1][i] * 3.0);
        ASSERT_EQ(output[2][i], input[2][i]); // a group that nobody touched runs at the defaults
    }
}

TEST(GraphStream, GivesEveryBufferBack)
{
    std::size_t inUse = 0;
    GraphRig graph(kMixedGraph);
    const Channels input = noise(2, 2000, 13);
    for (int round = 0; round < 3; ++round) {
        graph.run(input, {64, 100},
                  [&](std::size_t position) { graph.set("in.gain", 0.001 * double(position)); });
        graph.run(input, {512});
        if (round == 0) {
            inUse = graph.kernels().pool().slotsInUse();
        }
    }
    EXPECT_EQ(graph.kernels().pool().slotsInUse(), inUse);
    EXPECT_EQ(graph.kernels().pool().refusals(), 0u);
    EXPECT_EQ(graph.kernels().refusedCalls(), 0u);
}

TEST(GraphStream, ReportsFaultyTrees)
{
    const auto message = [](const std::string& definition) -> std::string {
        try {
            GraphRig graph(definition);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "built";
    };
    for (const auto& [attributes, fault] :
         {std::pair(R"(is-multiband="true")", "split into frequency bands is not supported"),
          std::pair(R"(multiband-count-param="x")", "split into frequency bands is not supported"),
          std::pair(R"(is-stacked="true")", "not grouped by channel is not supported"),
          std::pair(R"(is-stacked="true" is-grouped="true" stack-param="x")",
                    "chosen by a parameter ('x') is not supported")}) {
        EXPECT_NE(
            message(compound(std::string(R"(<audio:process-def name="p" )") + attributes + "/>")).find(fault),
            std::string::npos)
            << attributes;
    }
    EXPECT_NE(message(compound(R"(<audio:process-bypass-state id="0" param="nobody"/>)"))
                  .find("Invalid parameter name specified."),
              std::string::npos);
    EXPECT_NE(message(compound(gain("a", "1") + link("*", "a/16"))).find("ports 0 to 15"), std::string::npos);
}

} // namespace
} // namespace qel
