// The shared tree as delivered: that it compiles, that its names hold together, and that an instance can be
// made of it.
#include "GraphRig.h"
#include "Trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace qel {
namespace {

using tools::CTreeNode;

std::string attribute(const CTreeNode& node, const std::string& key)
{
    std::string value;
    for (const auto& [name, text] : node.attributes) {
        value = name == key ? text : value; // the last one counts
    }
    return value;
}

const CTreeNode* child(const CTreeNode* parent, const std::string& name)
{
    if (!parent) {
        return nullptr;
    }
    for (const CTreeNode& node : parent->children) {
        if (node.name == name) {
            return node.isTemplate() ? &node.children.at(0) : &node;
        }
    }
    return nullptr;
}

std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

const CTreeNode* descend(const CTreeNode* from, const std::string& path)
{
    for (const std::string& name : split(path, '.')) {
        from = child(from, name);
    }
    return from;
}

class SharedTreeTest : public ::testing::Test
{
protected:
    using Visitor = std::function<void(const CTreeNode& node, const std::vector<const CTreeNode*>& parents)>;

    static void SetUpTestSuite()
    {
        tools::CTreeCompiler compiler;
        ASSERT_TRUE(compiler.compile(DRUMFELL_DATA "/SharedData.xml"))
            << compiler.diagnostics().front().text();
        tree_ = compiler.root();
    }
    static void TearDownTestSuite() { tree_ = {}; }

    static const CTreeNode* find(const std::string& path) { return descend(&tree_, path); }
    // A path as the parameters of an instance have it.
    static const CTreeNode* findParam(const std::string& path)
    {
        const std::string root = "plugin.";
        const CTreeNode* node = path.starts_with(root) ? find("audio." + path.substr(root.size())) : nullptr;
        return node && node->tag == "audio:param" ? node : nullptr;
    }
    // Parents come outermost first.
    static void visit(const Visitor& visitor)
    {
        std::vector<const CTreeNode*> parents;
        visit(tree_, parents, visitor);
    }
    static void visit(const CTreeNode& node, std::vector<const CTreeNode*>& parents, const Visitor& visitor)
    {
        visitor(node, parents);
        parents.push_back(&node);
        for (const CTreeNode& each : node.children) {
            visit(each, parents, visitor);
        }
        parents.pop_back();
    }
    static const CTreeNode* followed(std::vector<const CTreeNode*> owners, std::string path)
    {
        if (path.starts_with('/')) {
            return findParam(path.substr(1));
        }
        for (; path.starts_with('^') && !owners.empty(); path.erase(0, 1)) {
            owners.pop_back();
        }
        return owners.empty() ? nullptr : descend(owners.back(), path);
    }

    static inline CTreeNode tree_;
};

TEST_F(SharedTreeTest, ShowsTheHostParametersThatExistUnderShortUniqueNames)
{
    const CTreeNode* list = find("plugin.ext-param-list");
    ASSERT_TRUE(list);
    std::set<std::string> names;
    std::set<std::string> shortNames;
    for (const CTreeNode& param : list->children) {
        EXPECT_TRUE(findParam(attribute(param, "param-name"))) << param.name;
        EXPECT_LE(attribute(param, "ext-name").size(), 7u) << param.name;
        names.insert(param.name);
        shortNames.insert(attribute(param, "ext-name"));
    }
    EXPECT_EQ(names.size(), list->children.size());
    EXPECT_EQ(shortNames.size(), list->children.size());
}

// A remap of a misspelt name would silently leave a module at its local default.
TEST_F(SharedTreeTest, RemapsSlotsThatExistToParametersThatExist)
{
    visit([](const CTreeNode& node, const std::vector<const CTreeNode*>& parents) {
        if (node.tag != "audio:param-remap") {
            return;
        }
        const std::string original = attribute(node, "orig");
        const CTreeNode* target = followed(parents, attribute(node, "new"));
        EXPECT_TRUE(target && target->tag == "audio:param") << original;

        const std::size_t dot = original.rfind('.');
        const std::string slot = dot == std::string::npos ? original : original.substr(dot + 1);
        std::string modulePath = dot == std::string::npos ? "" : original.substr(0, dot);
        if (modulePath.ends_with(".mod")) {
            modulePath += '1'; // stands for whichever the switch has selected
        }
        const CTreeNode* owner = modulePath.empty() ? parents.back() : descend(parents.back(), modulePath);
        ASSERT_TRUE(owner) << original;
        EXPECT_TRUE(std::any_of(owner->children.begin(), owner->children.end(), [&](const CTreeNode& each) {
            return each.tag == "audio:param-alloc" && attribute(each, "param-name") == slot;
        })) << original;
    });
}

TEST_F(SharedTreeTest, GuardsLinksByStatesThatItsCompoundDefines)
{
    visit([](const CTreeNode& node, const std::vector<const CTreeNode*>& parents) {
        const std::string id = attribute(node, "bypass-state-id");
        if (id.empty()) {
            return;
        }
        const auto& siblings = parents.back()->children;
        EXPECT_EQ(std::count_if(siblings.begin(), siblings.end(),
                                [&](const CTreeNode& each) {
                                    return each.tag == "audio:process-bypass-state" &&
                                           attribute(each, "id") == id;
                                }),
                  1)
            << attribute(node, "src") << node.name;
    });
}

TEST_F(SharedTreeTest, GivesNoModuleASlotThatItDoesNotKnow)
{
    std::string lines;
    const CTraceHook before = setTraceHook([&](const CString& line) { lines += line.toUtf8() + "\n"; });
    {
        tools::CGraphHost host(tree_, {});
    }
    setTraceHook(before);
    EXPECT_EQ(lines.find("regModuleParam error"), lines.npos) << lines;
}

} // namespace
} // namespace qel
