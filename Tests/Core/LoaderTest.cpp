// Decoding of compiled trees: the stated leniencies, and data that is damaged or lies.
#include "Streams/CMemoryWriteBuffer.h"
#include "Streams/CResourceMap.h"
#include "TestTree.h"

namespace qel {
namespace {

using test::TreeNode;
using LoaderTest = test::ObjectTreeTest;

CError loadBytes(CObject& object, std::span<const std::uint8_t> bytes)
{
    CNodeCursor cursor(bytes);
    return object.loadNode(cursor, true, true, false, false);
}

TreeNode sampleTree()
{
    TreeNode leaf("core:object", "leaf");
    leaf.attr("text", "caf\xC3\xA9 \xE2\x82\xAC").attr("eq", "1").attr("eq", "2");
    TreeNode body("core:object");
    body.attr("a", "1").child(leaf);
    TreeNode root;
    root.attr("who", "root").child(TreeNode::templateOf("t", body)).child(leaf).child(leaf);
    return root;
}

TEST_F(LoaderTest, DecodesValuesAsUtf8AndKeysAsBytes)
{
    TreeNode root;
    root.attr("k\xE9y", "caf\xC3\xA9").attr("wide", "\xE2\x82\xAC").attr("cut", "ab\xC3");
    root.attr("nul", std::string("x\0y", 3)).attr("many", "1").attr("many", "2").attr("many", "{} x");
    ASSERT_OK(root_.load(root));
    EXPECT_EQ(root_->getAttrString("k\xE9y"), "caf\xe9");
    EXPECT_EQ(root_->getAttrString("wide"), CString(std::u16string_view(u"\u20ac")));
    EXPECT_EQ(root_->getAttrString("cut"), "ab");
    EXPECT_EQ(root_->getAttrString("nul"), "x");
    EXPECT_EQ(root_->getAttrString("many"), "2 x");
    EXPECT_EQ(root_->getInitState(), CObject::InitState::kReady);
}

TEST_F(LoaderTest, TakesAnyNonZeroTemplateFlagAndNegativeCountsAsNone)
{
    std::vector<std::uint8_t> holder =
        TreeNode().child(TreeNode::templateOf("t", TreeNode("core:object"))).bytes();
    const std::size_t flag = 4 + 4 + 4 + 4 + 4 + (4 + 8) + (4 + 1);
    ASSERT_EQ(holder[flag], 1);
    holder[flag] = 2;
    ASSERT_OK(loadBytes(*root_, holder));
    EXPECT_TRUE(root_->hasTemplate("t"));

    std::vector<std::uint8_t> negative = TreeNode().bytes();
    std::fill_n(negative.begin() + 12, 4, std::uint8_t{0xFF});
    EXPECT_OK(loadBytes(*root_, negative));
}

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

TEST_F(LoaderTest, LoadsAResourceAndNamesTheWholeWayDownOnFailure)
{
    CByteBuffer payload(sampleTree().bytes());
    CMemoryWriteBuffer file;
    ASSERT_OK(file.writeCompressedData(payload, 0x6C6D7863));
    CByteBuffer chunk;
    file.copyTo(chunk);
    registerResource("good.xml", chunk.bytes());
    EXPECT_OK(root_->loadCompiled("good.xml", true));
    EXPECT_NE(root_->findObject("leaf#1"), nullptr);

    CByteBuffer damaged = chunk;
    damaged.data()[4] ^= 1; // the size field: caught by its check, before any inflating
    registerResource("bad.xml", damaged.bytes());
    CObject* object = nullptr;
    ASSERT_OK(root_->createChild(object, "core:object", "here"));
    const CError error = object->loadCompiled("bad.xml", true);
    ASSERT_TRUE(error);
    EXPECT_NE(error.text().find("Invalid CRC encountered when reading compressed data"), std::string::npos);
    EXPECT_NE(error.lines().back().toUtf8().find("// here"), std::string::npos) << error.text();
    EXPECT_FAILS(object->loadCompiled("none.xml", true), "There is no built-in resource 'none.xml'");
}

} // namespace
} // namespace qel
