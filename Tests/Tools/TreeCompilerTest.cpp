#include "ToolTestSupport.h"

#include "TestTree.h"
#include "TreeCompiler/ToolError.h"
#include "TreeCompiler/TreeDecompiler.h"

namespace qel::tools {

namespace {

class TreeCompiler : public CFolderTest
{
protected:
    CTreeNode compileText(std::string_view content)
    {
        return compiled(write("in.xml", "<tree>" + std::string(content) + "</tree>"));
    }
};

CTreeNode plain(std::string tag, std::string name)
{
    CTreeNode node;
    node.tag = std::move(tag);
    node.name = std::move(name);
    return node;
}

// A random tree out of everything that is awkward to write in XML.
CTreeNode randomTree(std::mt19937& generator, int depth)
{
    const auto pick = [&](const auto& list) { return std::string(list[generator() % std::size(list)]); };
    constexpr std::string_view kTags[] = {"a",    "ui:view", "",        "node",  "attr", "template",
                                          "tree", "include", "has sp.", "\xE9t", "1st",  "-"};
    constexpr std::string_view kKeys[] = {"name", "tag",  "eq",  "key", "content-tag",
                                          "",     "\xE9", "x y", "min", "eq"};
    constexpr std::string_view kValues[] = {
        "", "{} x", "a\nb\t\r\n", "<&>\"'", "\xE2\x82\xAC", "\x01  two  ", "]]>"};
    CTreeNode node = plain(pick(kTags), pick(kKeys));
    for (auto count = generator() % 6; count > 0; --count) {
        node.attributes.emplace_back(pick(kKeys), pick(kValues));
    }
    for (auto count = depth > 0 ? generator() % 4 : 0; count > 0; --count) {
        CTreeNode child = randomTree(generator, depth - 1);
        if (generator() % 3 == 0) {
            CTreeNode holder = plain("template", std::exchange(child.name, ""));
            holder.templateFlag = CTreeNode::kTemplateFlag;
            holder.contentTag = child.tag;
            holder.children.push_back(std::move(child));
            child = std::move(holder);
        }
        node.children.push_back(std::move(child));
    }
    return node;
}

} // namespace

TEST_F(TreeCompiler, WritesNodesByteForByteAsTheLoaderReadsThem)
{
    const CTreeNode root = compiled(write("in.xml", R"(<?xml version="1.0"?>
<!-- & is free here --><!-- and &here; -->
<tree v="1">
    <audio:param name="lf" min="-24"/>
    <template name="T" content-tag="c" k="&#xE9;"/>
</tree>
)"));
    constexpr char kExpected[] =
        "\0\0\0\0\0\0\0\0\0\0\0\0" // root: no tag, no name, plain
        "\1\0\0\0\1\0\0\0v\1\0\0\0001"
        "\2\0\0\0"
        "\13\0\0\0audio:param\2\0\0\0lf\0\0\0\0\1\0\0\0\3\0\0\0min\3\0\0\0-24\0\0\0\0"
        "\10\0\0\0template\1\0\0\0T\1\0\0\0\1\0\0\0c"
        "\40\0\0\0" // body size
        "\1\0\0\0c\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0k\2\0\0\0\xC3\xA9\0\0\0\0";
    const auto payload = encodeTree(root);
    EXPECT_EQ(std::string(payload.begin(), payload.end()), std::string(kExpected, sizeof kExpected - 1));
}

TEST_F(TreeCompiler, ExtraAttributesFollowThoseOfTheElement)
{
    const CTreeNode root =
        compileText(R"(<x name="n" eq="1"><attr key="eq" value="2"/><attr key="name" value="3"/>
        <y/></x><node tag="tree" name="z" value="v"/>)");
    CTreeNode x = plain("x", "n");
    x.attributes = {{"eq", "1"}, {"eq", "2"}, {"name", "3"}};
    x.children = {plain("y", "")};
    CTreeNode tree = plain("tree", "z");
    tree.attributes = {{"value", "v"}};
    CTreeNode expected;
    expected.children = {x, tree};
    EXPECT_EQ(root, expected);
}

TEST_F(TreeCompiler, IncludesSpliceTheChildrenOfTheOtherRoot)
{
    write("sub/b.xml", "<tree><attr key='k' value='v'/><include file='c.xml'/><two/></tree>");
    write("sub/c.xml", "\xEF\xBB\xBF<tree><one/></tree>");
    const std::string main = write("a.xml", "<tree><group><include file='sub/b.xml'/></group>"
                                            "<include file='sub/c.xml'/></tree>");
    CTreeCompiler compiler;
    ASSERT_TRUE(compiler.compile(main)) << messages(main);
    CTreeNode group = plain("group", "");
    group.attributes = {{"k", "v"}};
    group.children = {plain("one", ""), plain("two", "")};
    CTreeNode expected;
    expected.children = {group, plain("one", "")};
    EXPECT_EQ(compiler.root(), expected);
    EXPECT_EQ(compiler.files().size(), 3u) << "each file once, for the dependency list";
}

TEST_F(TreeCompiler, FaultsComeWithTheirPlace)
{
    const struct
    {
        std::string text;
        std::string messages;
    } cases[] = {
        {"<tree>\n  <a b='1' b='2'/>\n</tree>",
         "in.xml:2:12: attribute 'b' stands twice; repeat it as <attr key=\"b\" value=\"...\"/>\n"},
        {"<tree>\n\n  stray</tree>", "in.xml:3:3: text is not part of a tree; values are attributes\n"},
        {"<tree/>x", "in.xml:1:8: text outside the root element\n"},
        {"<tree/><tree/>", "in.xml:1:8: a second root element\n"},
        {"<a/>", "in.xml:1:1: the root element must be <tree>, not <a>\n"},
        {"", "in.xml:1:1: no root element <tree>\n"},
        {"<tree name='x'/>", "in.xml:1:7: the root has no name; an attribute called 'name' is an <attr>\n"},
        {"<tree>\n<a>\n</tree>", "in.xml:3:3: Start-end tags mismatch\n"},
        {"<tree><a b='&#0;'/></tree>",
         "in.xml:1:13: '&#0;' is a NUL character, where the loader would end the value\n"},
        {"<tree><a b='&#x1F600;'/></tree>", "in.xml:1:10: the value of 'b' holds a character above U+FFFF, "
                                            "which the loader would cut to 16 bits\n"},
        {"<tree><a b='\xF0\x9F\x98\x80'/></tree>", "in.xml:1:10: the value of 'b' holds a character above "
                                                   "U+FFFF, which the loader would cut to 16 bits\n"},
        {"<tree><a b='&#xD800;'/></tree>",
         "in.xml:1:13: '&#xD800;' is a surrogate, which is no character by itself\n"},
        {"<tree><a b='&#x100000041;'/></tree>", "in.xml:1:13: '&#x100000041;' is no character\n"},
        {"<tree><a b='\xC3\xA9\xE2\x82\xAC &nbsp; &'/></tree>",
         "in.xml:1:16: unknown entity '&nbsp;'\nin.xml:1:23: a lone '&' must be written as '&amp;'\n"},
        {"<tree><a b='\xED\xA0\x80'/></tree>", "in.xml:1:13: not valid UTF-8\n"},
        {std::string("<tree>\0</tree>", 14), "in.xml:1:7: NUL character\n"},
        {"<tree><a \xE2\x82\xAC='1'/></tree>",
         "in.xml:1:10: attribute key '\xE2\x82\xAC' has a character outside Latin-1\n"},
        {"<tree><a name='\xE2\x82\xAC'/></tree>",
         "in.xml:1:10: attribute 'name' has a character outside Latin-1\n"},
        {"<tree><template name='x'/></tree>", "in.xml:1:7: <template> needs the attribute 'content-tag'\n"},
        {"<tree><node/><tree/></tree>",
         "in.xml:1:7: <node> needs the attribute 'tag'\n"
         "in.xml:1:14: <tree> is the root; a node with this tag is written as <node tag=\"tree\">\n"},
        {"<tree><a/><attr key='k' value='v'/></tree>",
         "in.xml:1:11: <attr> must stand before the child nodes, since it is applied before they are made\n"},
        {"<tree><attr key='k'/></tree>",
         "in.xml:1:7: <attr> has the attributes 'key' and 'value' and nothing else\n"},
        {"<tree><include file='in.xml'/></tree>", "in.xml:1:16: 'in.xml' includes itself\n"},
        {"<tree><include file='none.xml'/></tree>", "in.xml:1:16: cannot read 'none.xml'\n"},
        {"<tree><a b='{ {'/></tree>", ""},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(messages(write("in.xml", item.text)), item.messages) << item.text;
    }
    EXPECT_EQ(messages((folder_ / "gone.xml").string()), "gone.xml: cannot read 'gone.xml'\n");
}

TEST_F(TreeCompiler, FaultsOfIncludedFilesAreToldOnceAndUnderTheirName)
{
    write("b.xml", "<tree x='1'>\n<include file='a.xml'/></tree>");
    const std::string main = write("a.xml", "<tree><include file='b.xml'/><include file='b.xml'/></tree>");
    EXPECT_EQ(messages(main),
              "b.xml:1:7: the root of an included file has no attributes; they would be lost\n"
              "b.xml:2:10: 'a.xml' includes itself\n");
}

TEST_F(TreeCompiler, NestingEndsWhereTheLoaderEndsIt)
{
    const auto nested = [](int levels) {
        std::string text;
        for (int i = 0; i < levels; ++i) {
            text = "<a>" + text + "</a>";
        }
        return text;
    };
    // The root is a node too.
    const CTreeNode deepest = compileText(nested(CNodeCursor::kMaxDepth - 1));
    EXPECT_EQ(decodeTree(encodeTree(deepest)), deepest);
    const auto column =
        std::to_string(std::string("<tree><a>").size() + 3 * (CNodeCursor::kMaxDepth - 1) - 2);
    const auto limit = std::to_string(CNodeCursor::kMaxDepth);
    EXPECT_EQ(messages(write("in.xml", "<tree>" + nested(CNodeCursor::kMaxDepth) + "</tree>")),
              "in.xml:1:" + column + ": nested deeper than the " + limit + " nodes that the loader allows\n");
    CTreeNode deeper;
    deeper.children.push_back(deepest);
    EXPECT_THROW(decodeTree(encodeTree(deeper)), CToolError);
    EXPECT_NE(messages(write("in.xml", "<tree>" + nested(20000) + "</tree>")), "");
}

TEST_F(TreeCompiler, AnyTreeSurvivesTheWayThroughXmlByteForByte)
{
    std::mt19937 generator(77);
    for (int round = 0; round < 300; ++round) {
        CTreeNode tree = randomTree(generator, 4);
        tree.tag.clear();
        tree.name.clear();
        const std::string xml = decompileTree(tree);
        const CTreeNode back = compiled(write("back.xml", xml));
        ASSERT_EQ(encodeTree(back), encodeTree(tree)) << xml;
        ASSERT_EQ(decodeTree(encodeTree(tree)), tree);
    }
}

TEST_F(TreeCompiler, WhatHasNoXmlFormIsNotDecompiled)
{
    const auto withValue = [](std::string value) {
        CTreeNode root;
        root.children.push_back(plain("a", "b"));
        root.children[0].attributes = {{"k", std::move(value)}};
        return root;
    };
    EXPECT_NO_THROW(decompileTree(withValue("\xC3\xA9")));
    EXPECT_THROW(decompileTree(withValue("cut\xC3")), CToolError);
    EXPECT_THROW(decompileTree(withValue(std::string("a\0b", 3))), CToolError);
    EXPECT_THROW(decompileTree(plain("a", "")), CToolError);
    CTreeNode odd;
    odd.children.push_back(plain("template", "t"));
    odd.children[0].templateFlag = 2;
    odd.children[0].contentTag = "x";
    odd.children[0].children.push_back(plain("x", ""));
    EXPECT_THROW(decompileTree(odd), CToolError);
    EXPECT_EQ(decodeTree(encodeTree(odd)), odd) << "but it can be looked at";
}

TEST_F(TreeCompiler, APayloadCutOrPaddedIsRefused)
{
    const auto payload =
        encodeTree(compileText("<a name='n' k='v'><template name='t' content-tag='c'><d/></template></a>"));
    EXPECT_NO_THROW(decodeTree(payload));
    for (std::size_t length = 0; length < payload.size(); ++length) {
        EXPECT_THROW(decodeTree(std::span(payload).first(length)), CToolError) << length;
    }
    auto padded = payload;
    padded.push_back(0);
    EXPECT_THROW(decodeTree(padded), CToolError);
    auto lying = payload;
    lying[15] = 0x7F; // attribute count of the root
    EXPECT_THROW(decodeTree(lying), CToolError);
}

TEST_F(TreeCompiler, TheLoaderBuildsWhatTheXmlSays)
{
    const std::string path = (folder_ / "tree").string();
    writeCompiledTree(compileText(R"(<attr key="base" value="b"/>
        <group name="g" text="5 &#x20AC;"><attr key="text" value="{} each"/></group>
        <template name="label" content-tag="core:object" from="template"><part name="p" v="1"/></template>)"),
                      path);
    test::TreeRoot shared;
    CObject::setSharedObject(&*shared);
    test::TreeRoot root;
    EXPECT_OK(root->loadCompiled(CString::fromUtf8(path), true));
    EXPECT_EQ(root->getAttrString("base"), "b");
    const CObject* group = root->findChild("g");
    ASSERT_TRUE(group);
    EXPECT_EQ(group->getAttrString("text").toUtf8(), "5 \xE2\x82\xAC each");
    ASSERT_TRUE(root->hasTemplate("label"));
    CObject* instance = nullptr;
    EXPECT_OK(root->createChild(instance, "label", "mine", true));
    ASSERT_TRUE(instance);
    EXPECT_EQ(instance->getAttrString("from"), "template");
    EXPECT_EQ(instance->getAttrString("name"), "mine");
    ASSERT_TRUE(instance->findChild("p"));
    EXPECT_EQ(instance->findChild("p")->getAttrString("v"), "1");
    CObject::setSharedObject(nullptr);
}

TEST_F(TreeCompiler, FilesAreWholeOrNotThere)
{
    const CTreeNode tree = compileText("<a/>");
    const std::string path = (folder_ / "tree").string();
    writeCompiledTree(tree, path);
    EXPECT_EQ(readCompiledTree(path), tree);
    EXPECT_THROW(writeCompiledTree(tree, (folder_ / "no" / "tree").string()), CToolError);
    EXPECT_THROW(readCompiledTree(write("junk", "cxml")), CToolError);
    EXPECT_THROW(readCompiledTree((folder_ / "gone").string()), CToolError);
}

} // namespace qel::tools
