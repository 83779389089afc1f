// Rates doubled and halved, and the chains of stages that do it.
#include "CGraphVisitor.h"
#include "CModDownsampler.h"
#include "CModUpsampler.h"
#include "GraphHost/CKernelRecording.h"
#include "ProcessRig.h"

#include <gtest/gtest.h>

namespace qel::test {
namespace {

// The parts that resamplers look for, with stand-ins for the filters: nodes on the way up, gains of one half
// on the way down. So an upsampler and a downsampler of the same factor give back the input, sample for
// sample, if and only if every decimator takes the samples and none of the zeros between them.
std::string halfGain(const char* name)
{
    return std::string("<audio:modGain name=\"") + name + "\">" + slot("gain", 0) +
           R"(<audio:param name="gain" converter="real" min-values="0" max-values="1" def-values="0.5"/></audio:modGain>)";
}

const std::string kParts[] = {
    R"(<audio:modInterpolator name="modUpsamplerInterpolator"/>)",
    R"(<audio:modNode name="modUpsamplerFilter1"/>)",
    R"(<audio:modNode name="modUpsamplerFilter2"/>)",
    R"(<audio:modDecimator name="modDownsamplerDecimator"/>)",
    halfGain("modDownsamplerFilter1"),
    halfGain("modDownsamplerFilter2"),
};

std::string resamplerTree(const std::string& main)
{
    std::string parts;
    for (const std::string& part : kParts) {
        parts += part;
    }
    return R"(<tree><core:object name="audio"><core:object name="paramcvt"><audio:cvt-real name="real" decimals="2"/>
        </core:object>)" +
           parts + R"(</core:object><audio:process-def name="main">)" + globalParam("mode", "1") +
           globalParam("host-mode", "0") + main + "</audio:process-def></tree>";
}

std::string resampler(const char* tag, const char* name)
{
    return std::string("<audio:") + tag + " name=\"" + name + "\">" + slot("mode", 0) + slot("host-mode", 1) +
           R"(<audio:param-remap orig="mode" new="^mode"/><audio:param-remap orig="host-mode" new="^host-mode"/></audio:)" +
           tag + ">";
}

const std::string kUp = resampler("modUpsampler", "up");
const std::string kDown = resampler("modDownsampler", "down");

class ResamplerGraph : public tools::CGraphHost
{
public:
    explicit ResamplerGraph(const std::string& tree)
        : CGraphHost(compileXml(tree), Options{"main", "plugin.main", 48000.0})
    {}
};

std::vector<std::string> chain(const CModResampler& resampler)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < resampler.activeCount(); ++i) {
        names.push_back(resampler.active(i).def().getAttrString("name").toUtf8());
    }
    return names;
}

TEST(Resampler, BuildsMirroredChainsWithTheSteepFilterAtTheLowestRate)
{
    ResamplerGraph graph(resamplerTree(kUp + kDown));
    const std::string interpolator = "modUpsamplerInterpolator";
    const std::string decimator = "modDownsamplerDecimator";
    const std::vector<std::string> up = {interpolator,          "modUpsamplerFilter1", interpolator,
                                         "modUpsamplerFilter2", interpolator,          "modUpsamplerFilter2"};
    const std::vector<std::string> down = {"modDownsamplerFilter2", decimator,
                                           "modDownsamplerFilter2", decimator,
                                           "modDownsamplerFilter1", decimator};
    struct Case
    {
        double mode, hostMode;
        std::size_t stages;
    };
    // Every way there: growing, shrinking, by leaps; automatic, and with values between the whole ones.
    const Case cases[] = {{1, 0, 0},    {2, 0, 1},   {3, 3, 2},  {4, 0, 3}, {2, 3, 1}, {0, 2, 2},
                          {0, 3, 3},    {0, 0, 0},   {4, 0, 3},  {1, 3, 0}, {0, 1, 1}, {2.5, 0, 2},
                          {2.49, 0, 1}, {0.4, 2, 2}, {99, 0, 3}, {-7, 2, 0}};
    for (const Case& each : cases) {
        graph.set("mode", each.mode);
        graph.set("host-mode", each.hostMode);
        graph.run(noise(1, 10, 1), {10});
        const auto size = static_cast<std::ptrdiff_t>(2 * each.stages);
        EXPECT_EQ(chain(child<CModUpsampler>(graph, "up")), std::vector(up.begin(), up.begin() + size))
            << each.mode;
        EXPECT_EQ(chain(child<CModDownsampler>(graph, "down")), std::vector(down.end() - size, down.end()))
            << each.mode;
    }
}

TEST(Resampler, CarriesRateAndLatencyInTheFormat)
{
    ResamplerGraph graph(resamplerTree(kUp + R"(<audio:modNode name="probe"/>)" + kDown));
    graph.formatOf = [](int) { return CAudioStreamFormat{48000.0, 3.25, 5}; };
    OutputProbe probe(graph);
    for (int stages = 3; stages >= 0; --stages) {
        graph.set("mode", stages + 1);
        graph.run(noise(1, 16, 3), {16});
        const double factor = 1 << stages;
        EXPECT_EQ(child<CAudioProcessBase>(graph, "probe").format(),
                  (CAudioStreamFormat{48000.0 * factor, 3.25 * factor, 5}));
        ASSERT_TRUE(probe.format(0));
        EXPECT_EQ(*probe.format(0), (CAudioStreamFormat{48000.0, 3.25, 5}));
        probe.link().clear();
    }
}

// Between the resamplers stands what cuts steps into pieces: a crossfade between two equal signals.
const std::string kBetween =
    R"(<audio:modBypass name="between" is-smooth-update="true" xfade-length="0.004">)" +
    globalSlot("enable", 0, "0") + R"(</audio:modBypass>
    <audio:process-link src="up" dst="between/1"/>)";

TEST(Resampler, ChangesBothEndsAtTheSameSample)
{
    // Changes of the factor at any time within a block, at any latency: a single sample decimated with the
    // wrong factor would show, and so would one lost or made up.
    std::mt19937 random(8);
    const Channels input = noise(2, 60000, 9);
    for (const double latencySamples : {0.0, 1.0, 777.7}) {
        ResamplerGraph graph(resamplerTree(kUp + kBetween + kDown));
        graph.formatOf = [&](int) { return CAudioStreamFormat{48000.0, latencySamples, 0}; };
        std::vector<int> sizes(40);
        std::generate(sizes.begin(), sizes.end(), [&] { return 1 + static_cast<int>(random() % 500); });
        std::size_t changes = 0;
        const Channels output = graph.run(input, sizes, [&](std::size_t) {
            const double when = static_cast<double>(random() % 1000) * 1e-5;
            setList(graph, random() % 2 ? "mode" : "host-mode", {static_cast<double>(random() % 5)}, when);
            setList(graph, "between.enable", {static_cast<double>(random() % 2)});
            ++changes;
        });
        ASSERT_GT(changes, 100u);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            ASSERT_EQ(output[channel].size(), 60000u) << latencySamples;
            for (std::size_t i = 0; i < 60000; ++i) {
                ASSERT_NEAR(output[channel][i], input[channel][i], 1e-12)
                    << i << " at latency " << latencySamples;
            }
        }
    }
}

} // namespace
} // namespace qel::test
