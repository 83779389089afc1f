#include "CModPShift.h"
#include "ModuleGraph.h"
#include "StateRig.h"

#include <gtest/gtest.h>

namespace qel {
namespace {

using test::Signal;

TEST(PShiftModule, StartsANewGrainLengthWithAnEmptyRingBehindTheFade)
{
    const Signal in = test::noiseSignal(6000, 1);
    const std::vector<int> blocks{256, 44};
    const auto runWithChange = [&] {
        test::ModuleGraph<CModPShiftDef> graph({{"block-size", 2205.0}},
                                               R"(is-smooth-update="true" xfade-length="0.01")");
        return graph->run({in}, blocks, [&](std::size_t position) {
            if (position == 3000) {
                graph.set("block-size", 400.0);
            }
        })[0];
    };
    const Signal out = runWithChange();
    const Signal before = test::ModuleGraph<CModPShiftDef>({{"block-size", 2205.0}})->run({in}, blocks)[0];
    const Signal tail(in.begin() + 3000, in.end());
    const Signal after = test::ModuleGraph<CModPShiftDef>({{"block-size", 400.0}})->run({tail}, blocks)[0];
    for (std::size_t i = 0; i < 3000; ++i) {
        ASSERT_EQ(out[i], before[i]) << i;
    }
    for (std::size_t i = 480; i < 3000; ++i) {
        ASSERT_EQ(out[3000 + i], after[i]) << i;
    }
}

TEST(PShiftModule, HoldsTheGrainWithinItsRange)
{
    const Signal in = test::noiseSignal(20000, 2);
    const auto outFor = [&](double grain) {
        return test::ModuleGraph<CModPShiftDef>({{"block-size", grain}})->run({in}, {512})[0];
    };
    for (const double grain : {-7.0, 0.0, 3.0}) {
        EXPECT_TRUE(test::isSameBits(outFor(grain), outFor(16.0))) << grain;
    }
    EXPECT_TRUE(test::isSameBits(outFor(90000.0), outFor(8192.0)));
}

TEST(PShiftModule, GivesItsRingBackWhenTheGrainChanges)
{
    test::ModuleGraph<CModPShiftDef> graph({{"block-size", 2205.0}});
    const Signal in(64, 0.5);
    graph->run({in}, {64});
    const std::size_t inUse = graph->kernels().pool().slotsInUse();
    for (int i = 0; i < 50; ++i) {
        graph.set("block-size", 100.0 + i);
        graph->run({in}, {64});
    }
    EXPECT_EQ(graph->kernels().pool().slotsInUse(), inUse);
    EXPECT_EQ(graph->kernels().refusedCalls(), 0u);
}

} // namespace
} // namespace qel
