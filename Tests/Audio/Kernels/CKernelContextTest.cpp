#include "CKernelContext.h"

#include "KernelRig.h"

#include <gtest/gtest.h>

#include <string>

namespace qel {
namespace {

using test::KernelRig;
using test::Signal;

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

} // namespace
} // namespace qel
