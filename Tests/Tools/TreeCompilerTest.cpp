#include "FolderFixture.h"

#include "TreeCompiler/ToolError.h"
#include "TreeCompiler/TreeDecompiler.h"
#include "TreeFixture.h"

namespace qel::tools {

namespace {

class TreeCompiler : public FolderFixture
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

TEST_F(TreeCompiler, DefinitionsStandForTheirContentWithWhatIsAdded)
{
    const CTreeNode root = compileText(R"(
        <define name="view" width="10" height="20"/>
        <define name="cell" base="view" tag="box" height="30" border="1">
            <part name="a"><part name="b" x="1" y="2"/></part>
        </define>
        <cell name="one" caption="c" width="5" border="{} 2"><extend child="a.b" y="3"><tail/></extend><more/></cell>
        <template name="t" like="cell" width="6"/>)");
    CTreeNode part = plain("part", "b");
    part.attributes = {{"y", "3"}, {"x", "1"}};
    part.children = {plain("tail", "")};
    CTreeNode outer = plain("part", "a");
    outer.children = {part};
    CTreeNode one = plain("box", "one");
    one.attributes = {
        {"caption", "c"}, {"width", "5"}, {"height", "30"}, {"border", "1"}, {"border", "{} 2"}};
    one.children = {outer, plain("more", "")};
    ASSERT_EQ(root.children.size(), 2u);
    EXPECT_EQ(root.children[0], one);
    EXPECT_EQ(root.children[1].contentTag, "box");
    EXPECT_EQ(root.children[1].children[0].attributes[0].second, "6");
    EXPECT_EQ(root.children[1].children[0].children[0].children[0].attributes[1].second, "2")
        << "what one use adds stays with it";
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
        {"<tree/><tree/>", "in.xml:1:8: a second root element\n"},
        {"<tree name='x'/>", "in.xml:1:7: the root has no name; an attribute called 'name' is an <attr>\n"},
        {"<tree><a b='&#0;'/></tree>",
         "in.xml:1:13: '&#0;' is a NUL character, where the loader would end the value\n"},
        {"<tree><a b='\xF0\x9F\x98\x80'/></tree>", "in.xml:1:10: the value of 'b' holds a character above "
                                                   "U+FFFF, which the loader would cut to 16 bits\n"},
        {"<tree><a b='\xC3\xA9\xE2\x82\xAC &nbsp; &'/></tree>",
         "in.xml:1:16: unknown entity '&nbsp;'\nin.xml:1:23: a lone '&' must be written as '&amp;'\n"},
        {std::string("<tree>\0</tree>", 14), "in.xml:1:7: NUL character\n"},
        {"<tree><a \xE2\x82\xAC='1'/></tree>",
         "in.xml:1:10: attribute key '\xE2\x82\xAC' has a character outside Latin-1\n"},
        {"<tree><node/><tree/></tree>",
         "in.xml:1:7: <node> needs the attribute 'tag'\n"
         "in.xml:1:14: <tree> is the root; a node with this tag is written as <node tag=\"tree\">\n"},
        {"<tree><a/><attr key='k' value='v'/></tree>",
         "in.xml:1:11: <attr> must stand before the child nodes, since it is applied before they are made\n"},
        {"<tree><define name='a'/><define name='a'/><a><extend child='b'/></a></tree>",
         "in.xml:1:25: 'a' is defined already\n"
         "in.xml:1:46: <extend>: there is no child 'b' to extend\n"},
        {"<tree><include file='in.xml'/></tree>", "in.xml:1:16: 'in.xml' includes itself\n"},
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

} // namespace qel::tools
