// Definitions of processes: attributes, and what a compound makes of its children.
#include "ProcessDefTest.h"

namespace qel {
namespace {

using test::ProcessDefTest;
using test::TreeNode;

struct Flag
{
    const char* name;
    bool (CAudioProcessDef::*get)() const;
    bool fallback;
};

constexpr Flag kFlags[] = {
    {"is-stacked", &CAudioProcessDef::isStacked, false},
    {"is-smooth-update", &CAudioProcessDef::isSmoothUpdate, false},
    {"is-multiband", &CAudioProcessDef::isMultiband, false},
    {"is-grouped", &CAudioProcessDef::isGrouped, false},
    {"is-whole", &CAudioProcessDef::isWhole, false},
    {"is-terminal-whole", &CAudioProcessDef::isTerminalWhole, false},
    {"is-prototype", &CAudioProcessDef::isPrototype, false},
    {"is-outoforder", &CAudioProcessDef::isOutOfOrder, false},
    {"is-group0", &CAudioProcessDef::isGroup0, false},
    {"is-element0", &CAudioProcessDef::isElement0, false},
    {"use-time-shift", &CAudioProcessDef::usesTimeShift, true},
    {"is-weighted-input", &CAudioProcessDef::isWeightedInput, false},
    {"is-auto-links", &CAudioProcessDef::isAutoLinks, true},
};

// Each flag is set alone and all others are looked at, so that no two can be mixed up.
TEST_F(ProcessDefTest, ReadsEachFlagIntoItsOwnPlace)
{
    for (const Flag& set : kFlags) {
        const std::string name = std::string("p-") + set.name;
        ASSERT_OK(
            root_.load(TreeNode().child(process(name.c_str()).attr(set.name, set.fallback ? "0" : "1"))));
        const auto& def = get<CAudioProcessDef>(name.c_str());
        for (const Flag& flag : kFlags) {
            EXPECT_EQ((def.*flag.get)(), flag.fallback != (&flag == &set)) << set.name << ", " << flag.name;
        }
    }
}

TEST_F(ProcessDefTest, RefusesANegativeStackIndexShiftInPrototypesToo)
{
    const TreeNode bad = process("mod1").attr("is-prototype", "true").attr("stack-index-shift", "-3");
    const CError error = root_.load(TreeNode().child(process("compound").child(bad)));
    EXPECT_NE(error.text().find("CAudioProcessDefBase.cpp"), std::string::npos) << error.text();
    EXPECT_NE(error.text().find("compound.mod1: Invalid stack index shift value '-3' specified."),
              std::string::npos)
        << error.text();
}

TEST_F(ProcessDefTest, SortsChildrenByClassInTheOrderOfTheTree)
{
    ASSERT_OK(root_.load(TreeNode().child(process("compound")
                                              .child(state("s1"))
                                              .child(link("*", "b"))
                                              .child(process("b"))
                                              .child(TreeNode("core:object", "group").child(process("inner")))
                                              .child(link("b", "a/1"))
                                              .child(process("a").attr("is-prototype", "true"))
                                              .child(TreeNode::templateOf("t", process("t")))
                                              .child(state("s0")))));
    const auto& compound = get<CAudioProcessDef>("compound");
    using Processes = std::vector<const CAudioProcessDefBase*>;
    using Links = std::vector<const CAudioProcessLinkDef*>;
    using States = std::vector<const CAudioProcessBypassStateDef*>;
    EXPECT_EQ(compound.processDefs(),
              (Processes{&get<CAudioProcessDef>("compound.b"), &get<CAudioProcessDef>("compound.a")}));
    EXPECT_EQ(compound.linkDefs(), (Links{&get<CAudioProcessLinkDef>("compound.link"),
                                          &get<CAudioProcessLinkDef>("compound.link#1")}));
    EXPECT_EQ(compound.bypassStateDefs(), (States{&get<CAudioProcessBypassStateDef>("compound.s1"),
                                                  &get<CAudioProcessBypassStateDef>("compound.s0")}));
}

TEST_F(ProcessDefTest, ReadsCompoundsMadeOfTemplates)
{
    const TreeNode body =
        process("t").attr("is-auto-links", "false").child(link("*", "a")).child(process("a"));
    ASSERT_OK(root_.load(TreeNode().child(TreeNode::templateOf("t", body))));
    CAudioProcessDef* compound = nullptr;
    ASSERT_OK(root_->createChild(compound, "t", "made"));
    EXPECT_FALSE(compound->isAutoLinks());
    EXPECT_EQ(compound->processDefs().size(), 1u);
    EXPECT_EQ(compound->linkDefs().size(), 1u);
}

} // namespace
} // namespace qel
