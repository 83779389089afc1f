// The kernel context as an object of the instance's tree.
#include "CCreatorRegistry.h"
#include "CDCDAWContextObject.h"
#include "CKernelContext.h"
#include "TestTree.h"

namespace qel {
namespace {

using test::TreeNode;

class ProcessDefContextTest : public test::ObjectTreeTest
{
protected:
    ProcessDefContextTest()
    {
        releaseError(registerCreator(
            {"audio:dcdaw-context", &newObject<CDCDAWContextObject>, &CDCDAWContextObject::buildClassInfo}));
    }
    ~ProcessDefContextTest() override { clearCreators(); }
};

// Two instances in one process share nothing: what one registers and holds, the other does not see.
TEST_F(ProcessDefContextTest, GivesEachInstanceAContextOfItsOwn)
{
    const TreeNode node = TreeNode("audio:dcdaw-context", "dcdaw-context");
    ASSERT_OK(root_.load(TreeNode().child(TreeNode("core:object", "plugin").child(node))));
    test::TreeRoot second;
    ASSERT_OK(second.load(TreeNode().child(TreeNode("core:object", "plugin").child(node))));

    std::vector<CKernelContext*> contexts;
    for (const test::TreeRoot* root : {&root_, &second}) {
        auto* object = dynamic_cast<CDCDAWContextObject*>((*root)->findObject("plugin.dcdaw-context"));
        ASSERT_NE(object, nullptr);
        ASSERT_NE(object->context(), nullptr);
        contexts.push_back(object->context());
    }
    const int known = contexts[0]->addKernel(
        "qel.dcdaw.test-only", [](const CKernelCall&) {}, 1, 1);
    EXPECT_GE(known, 0);
    EXPECT_EQ(contexts[0]->findKernel("qel.dcdaw.test-only"), known);
    EXPECT_EQ(contexts[1]->findKernel("qel.dcdaw.test-only"), -1);

    // Memory grown by a running graph goes with the tree.
    const CBufferRef samples = contexts[0]->allocateSamples(4);
    contexts[0]->submit(EKernel::kFillC, 4, 2.5, {samples});
    EXPECT_EQ(contexts[0]->samples(samples)[3], 2.5);
}

} // namespace
} // namespace qel
