// Trees that would load without end.
#include "TreeFixture.h"

namespace qel {
namespace {

using test::TreeNode;
using LoaderTest = test::TreeFixture;

TEST_F(LoaderTest, RefusesBodiesThatAreTemplatesAndNestingWithoutEnd)
{
    const TreeNode inner = TreeNode::templateOf("inner", TreeNode("core:object"));
    ASSERT_OK(root_.load(TreeNode().child(TreeNode::templateOf("outer", inner))));
    CObject* instance = nullptr;
    EXPECT_FAILS(root_->createChild(instance, "outer", "x"), "is a template itself");

    TreeNode nest("core:object", "n");
    for (int depth = 0; depth < 200; ++depth) {
        TreeNode around("core:object", "n");
        around.child(nest);
        nest = around;
    }
    EXPECT_FAILS(root_.load(nest), "nested deeper than 128 nodes");
}

} // namespace
} // namespace qel
