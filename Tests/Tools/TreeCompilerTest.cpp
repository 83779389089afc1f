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
