#include "CModLeveler.h"

#include "../Kernels/KernelRig.h"
#include "GraphHost/CKernelRecording.h"
#include "ModuleGraph.h"

#include <cmath>
#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Channels;
using test::Signal;

constexpr std::size_t kLength = 33;

Channels levels(std::size_t channels)
{
    Channels made;
    for (std::size_t i = 0; i < channels; ++i) {
        made.push_back(test::noiseSignal(kLength, static_cast<unsigned>(i)));
        for (double& level : made.back()) {
            level = std::fabs(level);
        }
    }
    return made;
}

// One step of a module alone.
class LevelerRig
{
public:
    Channels process(const CModLevelerModule::Settings& settings, const Channels& in)
    {
        CModLevelerModule module(rig_.context());
        module.configure(settings, {});
        CAudioModuleStep step(rig_.context(), kLength, in.size());
        for (const Signal& channel : in) {
            step.inputs.push(rig_.buffer(channel));
        }
        rig_.context().setObserver(&recording_);
        module.process(step);
        rig_.context().setObserver(nullptr);
        Channels out;
        for (const CBufferRef output : step.outputs) {
            out.push_back(rig_.read(output, kLength));
            rig_.context().release(output);
        }
        for (const CBufferRef input : step.inputs) {
            rig_.context().release(input);
        }
        return out;
    }
    std::size_t kernelCalls() const { return recording_.calls().size(); }
    std::size_t buffersLeft() { return rig_.context().pool().slotsInUse(); }

private:
    test::KernelRig rig_;
    CKernelRecording recording_;
};

double reference(const CModLevelerModule::Settings& settings, const Channels& in, std::size_t channel,
                 std::size_t i)
{
    double sum = 0.0;
    double extreme = in[0][i];
    for (const Signal& level : in) {
        sum += level[i];
        extreme = settings.takesSmallest ? std::min(extreme, level[i]) : std::max(extreme, level[i]);
    }
    const double mean = sum / static_cast<double>(in.size());
    const double merged = extreme + (mean - extreme) * settings.mix;
    return merged + (in[channel][i] - merged) * (1.0 - settings.linking);
}

TEST(Leveler, MergesAnyNumberOfChannelsAndLeavesNoBufferBehind)
{
    LevelerRig rig;
    for (std::size_t channels = 1; channels <= 8; ++channels) {
        const Channels in = levels(channels);
        for (const bool takesSmallest : {false, true}) {
            for (const double mix : {0.0, 0.3, 1.0}) {
                for (const double linking : {0.0, 0.6, 1.0}) {
                    const Channels out = rig.process({takesSmallest, mix, linking}, in);
                    ASSERT_EQ(rig.buffersLeft(), 0u) << channels << ' ' << mix << ' ' << linking;
                    for (std::size_t channel = 0; channel < channels; ++channel) {
                        for (std::size_t i = 0; i < kLength; ++i) {
                            // The mean's 1/N is single precision.
                            ASSERT_NEAR(out[channel][i],
                                        reference({takesSmallest, mix, linking}, in, channel, i), 1e-7)
                                << channels << ' ' << takesSmallest << ' ' << mix << ' ' << linking;
                        }
                    }
                }
            }
        }
    }
}

TEST(Leveler, LinksTheChannelsOfOneGroupAndNotOfAnother)
{
    test::ModuleGraph<CModLevelerDef> graph({{"mode", 0.0}, {"mix", 0.0}, {"linking", 1.0}},
                                            R"(is-grouped="true")");
    graph->formatOf = [](int channel) { return CAudioStreamFormat{48000.0, 0.0, channel < 2 ? 0 : 1}; };
    const Channels in = levels(4);
    const Channels out = graph->run(in, {10});
    for (std::size_t i = 0; i < kLength; ++i) {
        for (std::size_t channel = 0; channel < 4; ++channel) {
            const std::size_t first = channel < 2 ? 0 : 2;
            ASSERT_EQ(out[channel][i], std::max(in[first][i], in[first + 1][i])) << channel << ' ' << i;
        }
    }
    graph.set("mode", 1.0);
    const Channels smallest = graph->run(in, {10});
    EXPECT_EQ(smallest[0][5], std::min(in[0][5], in[1][5]));
}

} // namespace
} // namespace qel
