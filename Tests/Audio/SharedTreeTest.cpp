// The shared tree as delivered: that it compiles, that its names hold together, and that an instance can be
// made of it.
#include "CAudioParam.h"
#include "CTrace.h"
#include "GraphFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numbers>
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

TEST_F(SharedTreeTest, IsComplete)
{
    std::map<std::string, int> counts;
    visit([&](const CTreeNode& node, const auto&) { ++counts[node.tag]; });
    EXPECT_EQ(counts["audio:ext-param"], 24);
    EXPECT_EQ(counts["audio:param-remap"], 34);
    EXPECT_EQ(counts["audio:process-link"], 37 + 4);
    EXPECT_EQ(counts["audio:process-bypass-state"], 8 + 3);
    EXPECT_EQ(counts["audio:fltgen-array"], 8);
    EXPECT_EQ(counts["audio:param-registry"], 3);
    // Presets are made of these.
    int storable = 0;
    visit([&](const CTreeNode& node, const auto&) { storable += attribute(node, "is-storable") == "true"; });
    EXPECT_EQ(storable, 32);
}

// Values that look like slips, and that users' presets and habits depend on.
TEST_F(SharedTreeTest, KeepsWhatIsIrregular)
{
    const struct
    {
        const char* path;
        const char* key;
        const char* value;
    } cases[] = {
        {"audio.modMain.modDrumfell.dcfilter-params.type", "max-values", "13"},
        {"audio.modMain.modOutGain.gain", "is-global", "false"},
        {"audio.modMain.modOutGain.mute", "visual-name", "Output gain"},
        {"audio.modMain.denorm-enable", "converter", "real"},
        {"audio.modMain.meter-rmstime", "is-storable", ""},
        {"audio.modMain.instance-name", "is-persistent", "true"},
        {"audio.modMain.modDrumfell.sat-mode", "converter", "/audio.paramcvt-sat-mode"},
        {"audio.modMain.modDrumfell.modSat.drive", "def-values", "1.0"},
        {"audio.modMain.modDrumfell.modPShift.block-size", "def-values", "2205"},
        {"audio.modMain.modDrumfell.modLPFilter.mod1.index", "max-values", "3"},
        {"audio.modMain.modMeterIODiff.rms-time", "def-values", "3000"},
        {"audio.modUpsamplerFilter2.index", "max-values", "2"},
        {"plugin.param-registry-dcfilter", "id", "7qtzA"},
    };
    for (const auto& c : cases) {
        const CTreeNode* node = find(c.path);
        ASSERT_TRUE(node) << c.path;
        EXPECT_EQ(attribute(*node, c.key), c.value) << c.path;
    }
    const std::string names = attribute(*find("audio.modMain.io-params.in-channel-names"), "def-values");
    EXPECT_EQ(split(names, ',').size(), 16u);
}

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

TEST_F(SharedTreeTest, NumbersTheSlotsOfEachModuleWithoutGaps)
{
    visit([](const CTreeNode& node, const auto&) {
        int expected = 0;
        for (const CTreeNode& each : node.children) {
            if (each.tag == "audio:param-alloc") {
                EXPECT_EQ(attribute(each, "index"), std::to_string(expected++)) << node.name;
            }
        }
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

TEST_F(SharedTreeTest, MakesAnInstanceWithAllParametersInRealUnits)
{
    tools::CGraphHost host(tree_, {});
    const struct
    {
        const char* name;
        double value;
    } cases[] = {
        {"modDrumfell.xover-freq", 100.0}, {"modDrumfell.lf-gain", 1.0}, {"modDrumfell.lf-enable", 1.0},
        {"modDrumfell.lf-mute", 0.0},      {"modDrumfell.drymix", 0.0},  {"modOutGain.gain", 1.0},
        {"meter-releasetime", 0.75},       {"modMeterOut-enable", 0.0},  {"modMeterIODiff-enable", 0.0},
        {"io-params.in-routing", 1.0},     {"host-bpm", 140.0},
    };
    for (const auto& c : cases) {
        const CAudioParam& param = host.params().getParam(CString("plugin.modMain.") + c.name);
        ASSERT_TRUE(param.hasInfo()) << c.name;
        EXPECT_NEAR(param.getValue(0, 0), c.value, 1e-12) << c.name;
    }
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
