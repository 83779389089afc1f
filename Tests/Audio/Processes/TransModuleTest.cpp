#include "CModTrans.h"
#include "ModuleGraph.h"
#include "StateRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;

constexpr double kRateHz = 48000.0;

Signal expected(const char* curve, double sense, const Signal& in)
{
    test::StateRig<TransState> rig(transKernels());
    rig.state() = {};
    rig.state().sense = sense;
    rig.state().scale = 2.5;
    rig.state().timeSec = 0.03;
    rig.state().decaySec = 0.09;
    rig.run("transi", kRateHz);
    return rig.processInPlace("transdecay", rig.process(curve, in));
}

TEST(TransModule, RunsTheCurveItIsSetToAndStartsAnewOnAChange)
{
    const Signal in = test::beats(8000, 1);
    const Signal secondHalf(in.begin() + 4000, in.end());
    const char* const curves[] = {"transvh", "transh", "transm", "transl", "transvl"};
    for (int curve = 0; curve < 5; ++curve) {
        test::ModuleGraph<CModTransDef> graph({{"sensefunc", static_cast<double>(curve)},
                                               {"sense", 0.25},
                                               {"scale", 2.5},
                                               {"time", 0.03},
                                               {"decay-time", 0.09}});
        const Signal out = graph->run({in}, {500, 77, 423}, [&](std::size_t position) {
            if (position == 4000) {
                graph.set("sense", 0.75);
            }
        })[0];
        const Signal head(out.begin(), out.begin() + 4000);
        const Signal tail(out.begin() + 4000, out.end());
        const Signal whole = expected(curves[curve], 0.25, in);
        EXPECT_TRUE(test::isSameBits(head, Signal(whole.begin(), whole.begin() + 4000))) << curve;
        EXPECT_TRUE(test::isSameBits(tail, expected(curves[curve], 0.75, secondHalf))) << curve;
    }
}

} // namespace
} // namespace qel
