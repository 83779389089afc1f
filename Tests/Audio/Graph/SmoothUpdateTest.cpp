// Crossfades from one module instance to the next, and the simple modules.
#include "GraphHost/CKernelRecording.h"
#include "GraphRig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace qel {
namespace {

using test::Channels;
using test::GraphRig;

std::string smoothGain(double fadeSec)
{
    return R"(<audio:process-def name="main"><audio:modGain name="g" is-smooth-update="true" xfade-length=")" +
           std::to_string(fadeSec) + R"("><audio:param-alloc param-name="gain" index="0"/>
        <audio:param-alloc param-name="mute" index="1"/>
        <audio:param name="gain" is-global="true" converter="real" min-values="-100" max-values="100" def-values="1"/>
        <audio:param name="mute" is-global="true" converter="real" min-values="0" max-values="1" def-values="0"/>
      </audio:modGain></audio:process-def>)";
}

// Weight of the new instance at sample i of a fade of n samples.
double fadeWeight(std::size_t i, std::size_t n)
{
    return 0.5 - 0.5 * std::cos(std::numbers::pi * static_cast<double>(i) / static_cast<double>(n));
}

TEST(SmoothUpdate, FadesOverExactlyTheFadeLengthWhateverTheBlocks)
{
    constexpr std::size_t kFade = 480; // 0.01 s
    for (const int block : {1, 7, 64, 500, 512, 2000}) {
        GraphRig graph(smoothGain(0.01));
        const Channels input(1, std::vector<double>(4000, 1.0));
        const Channels output = graph.run(input, {2000, block}, [&](std::size_t position) {
            if (position == 2000) {
                graph.set("g.gain", 3.0);
            }
        });
        for (std::size_t i = 0; i < 4000; ++i) {
            const double weight = i < 2000 ? 0.0 : i < 2000 + kFade ? fadeWeight(i - 2000, kFade) : 1.0;
            ASSERT_NEAR(output[0][i], 1.0 + 2.0 * weight, 1e-9) << i << " in blocks of " << block;
        }
    }
}

TEST(SmoothUpdate, StartsTheNextFadeFromTheLatestValueWhenOneIsUnderWay)
{
    constexpr std::size_t kFade = 480;
    GraphRig graph(smoothGain(0.01));
    const Channels input(1, std::vector<double>(3000, 1.0));
    const Channels output = graph.run(input, {100}, [&](std::size_t position) {
        if (position == 0 || position == 100 || position == 200) {
            graph.set("g.gain", position == 0 ? 2.0 : position == 100 ? 7.0 : 5.0);
        }
    });
    // The value at the first block is no change: the instance starts with it.
    for (std::size_t i = 0; i < 3000; ++i) {
        double expected = 2.0;
        if (i >= 100 && i < 100 + kFade) {
            expected += 5.0 * fadeWeight(i - 100, kFade);
        } else if (i >= 100 + kFade) {
            expected = 7.0 - 2.0 * (i < 100 + 2 * kFade ? fadeWeight(i - 100 - kFade, kFade) : 1.0);
        }
        ASSERT_NEAR(output[0][i], expected, 1e-9) << i;
    }
}

TEST(SmoothUpdate, RunsOnlyOneInstanceAtRest)
{
    GraphRig graph(smoothGain(0.01));
    CKernelRecording recording;
    const Channels input(1, std::vector<double>(64, 1.0));
    graph.set("g.gain", 2.0);
    graph.run(input, {64});
    graph.set("g.gain", 2.0); // written with its old value: no fade
    graph.kernels().setObserver(&recording);
    graph.run(input, {64});
    EXPECT_EQ(recording.calls().size(), 1u);
    graph.set("g.gain", 3.0);
    recording.clear();
    graph.run(input, {64});
    EXPECT_EQ(recording.calls().size(), 5u); // the fade's start, both instances, the fade's places, the fade
    graph.kernels().setObserver(nullptr);
}

} // namespace
} // namespace qel
