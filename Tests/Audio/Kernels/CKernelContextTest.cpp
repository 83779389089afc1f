#include "CKernelContext.h"

#include "GraphHost/CKernelRecording.h"
#include "KernelRig.h"

#include <gtest/gtest.h>

#include <string>

namespace qel {
namespace {

using test::KernelRig;
using test::Signal;

void doNothing(const CKernelCall&) {}
void doNothingElse(const CKernelCall& call)
{
    static_cast<void>(call.count);
}

TEST(CKernelContext, RegistersANameOnceAndRefusesADifferentSignature)
{
    KernelRig rig;
    CKernelContext& context = rig.context();
    const int id = context.addKernel("qel.dcdaw.test", doNothing, 2, 1);
    ASSERT_GE(id, 0);
    EXPECT_EQ(context.addKernel("qel.dcdaw.test", doNothing, 2, 1), id);
    EXPECT_EQ(context.addKernel("qel.dcdaw.test", doNothingElse, 2, 1), -1);
    EXPECT_EQ(context.addKernel("qel.dcdaw.test", doNothing, 3, 1), -1);
    EXPECT_EQ(context.addKernel("qel.dcdaw.test", doNothing, 2, 3), -1);
    EXPECT_EQ(context.findKernel("qel.dcdaw.test"), id);
    EXPECT_EQ(context.findShortName("test"), id);
    EXPECT_EQ(context.findKernel("test"), -1);
    EXPECT_EQ(context.addKernel("eight", doNothing, 8, 1), id + 1);
    EXPECT_EQ(context.addKernel("nine", doNothing, 9, 1), -1);
    EXPECT_EQ(context.findKernel("nine"), -1);
}

TEST(CKernelContext, RefusesThe513thKernelButStillKnowsTheOthers)
{
    KernelRig rig;
    CKernelContext& context = rig.context();
    std::size_t added = 0;
    while (context.addKernel("test" + std::to_string(added), doNothing, 1, 1) >= 0) {
        ++added;
    }
    EXPECT_EQ(context.registry().size(), 512U);
    for (std::size_t i = 0; i < added; ++i) {
        const std::string name = "test" + std::to_string(i);
        const int id = context.addKernel(name, doNothing, 1, 1);
        ASSERT_EQ(id, static_cast<int>(512 - added + i));
        ASSERT_EQ(context.registry().entry(id)->name, name);
    }
}

TEST(CKernelContext, GivesEachFilterFamilyItsKernelsAndStateSize)
{
    KernelRig rig;
    CKernelContext& context = rig.context();
    for (int kind = 0; kind < static_cast<int>(kFilterFamilies); ++kind) {
        const CFilterKernels& family = context.filterKernels(kind);
        const bool isEmpty = kind == 21;
        for (const int id : {family.init, family.update, family.run, family.gainRun}) {
            EXPECT_EQ(id == -1, isEmpty) << "kind " << kind;
        }
    }
    const CFilterKernels& highPass3 = context.filterKernels(11);
    EXPECT_EQ(highPass3.init, context.findShortName("fltlphp1i"));
    EXPECT_EQ(highPass3.gainRun, context.findShortName("flthp1cg"));
    EXPECT_EQ(highPass3.stateBytes, 40);
    for (int order = 2; order <= 16; order += 2) {
        const CFilterKernels& halfBand = context.filterKernels(12 + order / 2);
        EXPECT_EQ(halfBand.update, context.findShortName("flthbf" + std::to_string(order) + "u"));
        EXPECT_EQ(halfBand.stateBytes, 80 + 40 * order);
    }
    EXPECT_EQ(context.filterKernels(EFilterFamily::kAllPassChain).run, context.findShortName("fltapf1_6"));
    EXPECT_EQ(context.filterKernels(-1).run, -1);
    EXPECT_EQ(context.filterKernels(24).run, -1);
}

TEST(CKernelContext, RunsACallBeforeSubmitReturns)
{
    KernelRig rig;
    const CBufferRef in = rig.buffer({1, 2, 3, 4});
    const CBufferRef out = rig.buffer({0, 0, 0, 0});
    rig.context().submit(EKernel::kMulC, 2, 10.0, {out.advancedBy(1), in.advancedBy(2)});
    rig.context().release(in);
    EXPECT_EQ(rig.read(out, 4), (Signal{0, 30, 40, 0}));
    EXPECT_EQ(rig.context().pool().refCount(out), 1);
    rig.context().release(out);
    EXPECT_EQ(rig.context().pool().slotsInUse(), 0U);
}

TEST(CKernelContext, DoesNotRunACallThatCannotBeResolved)
{
    KernelRig rig;
    CKernelContext& context = rig.context();
    const CBufferRef out = rig.buffer({5});
    context.submit(-1, 1, 0.0, {out});
    context.submit(512, 1, 0.0, {out});
    context.submit(EKernel::kFill0, 1, 0.0, {CBufferRef{}});
    context.submit(EKernel::kCopy, 1, 0.0, {out});
    context.submit(EKernel::kFill0, 1, 0.0, {out, out});
    EXPECT_EQ(context.refusedCalls(), 5U);
    EXPECT_EQ(rig.read(out, 1), Signal{5});
}

TEST(CKernelContext, TellsItsObserverOfEachCallBeforeItRuns)
{
    struct Observer final : CKernelObserver
    {
        void beforeCall(const CKernelCall& call) override
        {
            log += std::string(call.entry->name) + " " + std::to_string(call.count) + " " +
                   std::to_string(*call.samples(0)) + "\n";
            last = call.operand(0);
        }
        std::string log;
        CBufferRef last;
    } observer;
    KernelRig rig;
    const CBufferRef out = rig.buffer({5, 6});
    rig.context().setObserver(&observer);
    rig.run("fillc", 2, 1.0, {out});
    rig.run("mulci", 1, 3.0, {out.advancedBy(1)});
    rig.context().setObserver(nullptr);
    rig.run("fill0", 2, 0.0, {out});
    EXPECT_EQ(observer.log, "qel.dcdaw.fillc 2 5.000000\nqel.dcdaw.mulci 1 1.000000\n");
    EXPECT_EQ(observer.last, out.advancedBy(1));
}

TEST(CKernelRecording, RepeatsTheRecordedCallsOnTheBuffersAsTheyAre)
{
    KernelRig rig;
    const CBufferRef out = rig.buffer({0, 0});
    const CBufferRef in = rig.buffer({1, 2});
    CKernelRecording recording;
    rig.context().setObserver(&recording);
    rig.run("add2i", 2, 0.0, {out, in});
    rig.run("mulci", 2, 2.0, {out});
    rig.context().setObserver(nullptr);
    ASSERT_EQ(recording.calls().size(), 2U);
    recording.resolve(rig.context());
    recording.replay();
    EXPECT_EQ(rig.read(out, 2), (Signal{6, 12}));
}

} // namespace
} // namespace qel
