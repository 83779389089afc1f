#include "CModSatDRF.h"
#include "ModuleGraph.h"
#include "StateRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;

constexpr double kRateHz = 48000.0;

Signal expected(SatDRFState::EMode mode, double drive, double phaseFreqHz, const Signal& in)
{
    test::StateRig<SatDRFState> rig(satDRFKernels());
    rig.state().mode = mode;
    rig.state().drive = drive;
    rig.state().phaseFreqHz = phaseFreqHz;
    rig.run("satdrfi", kRateHz);
    return rig.process("satdrf", in);
}

TEST(SatDRFModule, FadesToANewStateThatStartsFromRest)
{
    const Signal in = test::sineSignal(8000, 90.0, kRateHz, 0.8);
    test::ModuleGraph<CModSatDRFDef> graph({{"mode", 0.0}, {"drive", 3.0}, {"phasefreq", 100.0}},
                                           R"(is-smooth-update="true" xfade-length="0.01")");
    const Signal out = graph->run({in}, {500, 100, 400}, [&](std::size_t position) {
        if (position == 4000) {
            graph.set("mode", 1.0);
            graph.set("drive", 12.0);
            graph.set("phasefreq", 140.0);
        }
    })[0];
    const Signal before = expected(SatDRFState::EMode::kPrecise, 3.0, 100.0, in);
    const Signal after =
        expected(SatDRFState::EMode::kPumping, 12.0, 140.0, Signal(in.begin() + 4000, in.end()));
    for (std::size_t i = 0; i < 4000; ++i) {
        ASSERT_EQ(out[i], before[i]) << i;
    }
    constexpr std::size_t kFade = 480;
    for (std::size_t i = 0; i < 4000; ++i) {
        const double weight =
            i < kFade ? 0.5 - 0.5 * std::cos(test::kReferencePi * static_cast<double>(i) / kFade) : 1.0;
        ASSERT_NEAR(out[4000 + i], before[4000 + i] + (after[i] - before[4000 + i]) * weight, 1e-9) << i;
    }
}

} // namespace
} // namespace qel
