#include "CModCrunchAtk.h"
#include "CModCrunchRls.h"
#include "ModuleGraph.h"
#include "StateRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;

constexpr double kRateHz = 48000.0;

TEST(CrunchRlsModule, RunsWithItsParametersAndKeepsTheGainOnAChange)
{
    const Signal in = test::beats(6000, 1);
    test::ModuleGraph<CModCrunchRlsDef> graph({{"release", 0.2}, {"drive", 8.0}, {"inverse", 0.0}});
    const Signal out = graph->run({in}, {250}, [&](std::size_t position) {
        if (position == 3000) {
            graph.set("release", 0.4);
            graph.set("drive", 20.0);
        }
    })[0];

    test::StateRig<CrunchRlsState> rig(crunchRlsKernels());
    rig.state().releaseSec = 0.2;
    rig.state().drive = 8.0;
    rig.state().isInverse = false;
    rig.run("crunchrlsi", kRateHz);
    Signal expected = rig.process("crunchrls", Signal(in.begin(), in.begin() + 3000));
    rig.state().releaseSec = 0.4;
    rig.state().drive = 20.0;
    rig.rig().run("crunchrlsu", 0, kRateHz, {rig.stateRef(), rig.stateRef()});
    const Signal tail = rig.process("crunchrls", Signal(in.begin() + 3000, in.end()));
    expected.insert(expected.end(), tail.begin(), tail.end());
    EXPECT_TRUE(test::isSameBits(out, expected));
}

TEST(CrunchRlsModule, ASuccessorTakesUpTheRunningGain)
{
    // In silence after a beat, so that the gain is under way.
    Signal in(12000, 0.0);
    std::fill(in.begin(), in.begin() + 100, 1.0);
    const std::vector<test::ModuleParameter> parameters{{"release", 0.1}, {"drive", 30.0}, {"inverse", 0.0}};
    const auto outOf = [&](const char* attributes) {
        test::ModuleGraph<CModCrunchRlsDef> graph(parameters, attributes);
        return graph->run({in}, {200}, [&](std::size_t position) {
            if (position == 4000) {
                graph.set("release", 0.11);
            }
        })[0];
    };
    const Signal sudden = outOf("");
    const Signal smooth = outOf(R"(is-smooth-update="true" xfade-length="0.01")");
    ASSERT_LT(sudden[4000], 0.9 * sudden[11999]) << "the gain should be under way";
    for (std::size_t i = 0; i < in.size(); ++i) {
        ASSERT_NEAR(smooth[i], sudden[i], 1e-2 * sudden[i]) << i;
    }
    EXPECT_EQ(smooth.back(), sudden.back());
}

TEST(CrunchAtkModule, RunsEachTypeAndKeepsTheGainOnAChange)
{
    Signal in = test::beats(6000, 2);
    for (double& gain : in) {
        gain = 1.0 / (1.0 + 20.0 * gain);
    }
    for (int type = 0; type < 3; ++type) {
        test::ModuleGraph<CModCrunchAtkDef> graph(
            {{"attack", 0.02}, {"attack-type", static_cast<double>(type)}, {"inverse", 0.0}});
        const Signal out = graph->run({in}, {250}, [&](std::size_t position) {
            if (position == 3000) {
                graph.set("attack", 0.05);
            }
        })[0];

        test::StateRig<CrunchAtkState> rig(crunchAtkKernels());
        rig.state().attackSec = 0.02;
        rig.state().type = static_cast<CrunchAtkState::EType>(type);
        rig.state().isInverse = false;
        rig.state().isShaped = false;
        rig.run("crunchatki", kRateHz);
        Signal expected = rig.process("crunchatk", Signal(in.begin(), in.begin() + 3000));
        rig.state().attackSec = 0.05;
        rig.rig().run("crunchatku", 0, kRateHz, {rig.stateRef(), rig.stateRef()});
        const Signal tail = rig.process("crunchatk", Signal(in.begin() + 3000, in.end()));
        expected.insert(expected.end(), tail.begin(), tail.end());
        EXPECT_TRUE(test::isSameBits(out, expected)) << type;
    }
}

} // namespace
} // namespace qel
