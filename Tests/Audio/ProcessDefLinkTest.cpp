// Definitions of links between processes.
#include "ProcessDefTest.h"

namespace qel {
namespace {

using test::TreeNode;

class ProcessDefLinkTest : public test::ProcessDefTest
{
protected:
    // A compound in which the link stands in front of the processes that it may join.
    CError loadWith(const TreeNode& linkNode)
    {
        return root_.load(TreeNode().child(process("compound")
                                               .child(linkNode)
                                               .child(TreeNode("core:object", "param"))
                                               .child(process("modPuncherMix"))
                                               .child(process("proto").attr("is-prototype", "true"))));
    }
};

TEST_F(ProcessDefLinkTest, ReadsNameAndPortOfBothEnds)
{
    static constexpr struct
    {
        const char* text;
        const char* name;
        bool isSelf;
        int port;
    } kEnds[] = {
        {"*", "*", true, 0},
        {"*/1", "*", true, 1},
        {"modPuncherMix", "modPuncherMix", false, 0},
        {"modPuncherMix/2", "modPuncherMix", false, 2},
        {"modPuncherMix/0x1f", "modPuncherMix", false, 31},
        {"modPuncherMix/010", "modPuncherMix", false, 8},
        {".modPuncherMix/3", "modPuncherMix", false, 3},
        {"proto", "proto", false, 0},
    };
    for (const auto& end : kEnds) {
        for (const bool isSource : {true, false}) {
            SCOPED_TRACE(std::string(isSource ? "src " : "dst ") + end.text);
            test::TreeRoot root;
            ASSERT_OK(root.load(
                TreeNode().child(process("compound")
                                     .child(isSource ? link(end.text, "other/7") : link("other/7", end.text))
                                     .child(process("other"))
                                     .child(process("modPuncherMix"))
                                     .child(process("proto").attr("is-prototype", "true")))));
            const auto* made = dynamic_cast<CAudioProcessLinkDef*>(root->findObject("compound.link"));
            ASSERT_NE(made, nullptr);
            const CAudioPortRef& read = isSource ? made->source() : made->destination();
            const CAudioPortRef& other = isSource ? made->destination() : made->source();
            EXPECT_EQ(read.name, end.name);
            EXPECT_EQ(read.isSelf, end.isSelf);
            EXPECT_EQ(read.port, end.port);
            EXPECT_EQ(other.name, "other");
            EXPECT_FALSE(other.isSelf);
            EXPECT_EQ(other.port, 7);
        }
    }
}

TEST_F(ProcessDefLinkTest, RefusesBadPortsAndNamesOfBothEnds)
{
    static const std::string kPort = "Invalid port in the '";
    static const std::string kName = "Invalid process in the '";
    static const struct
    {
        const char* text;
        std::string message;
    } kBad[] = {
        {"modPuncherMix/", kPort},
        {"modPuncherMix/-1", kPort},
        {"modPuncherMix/1/2", kPort},
        {"modPuncherMix/x", kPort},
        {"modPuncherMix/08", kPort},
        {"modPuncherMix/0xFFFFFFFF", kPort}, // fills 32 bits and is negative
        {"modPuncherMix/4294967296", kPort},
        {"*/ 1", kPort},
        {"nobody/", kPort}, // the port is looked at first
        {"", kName},
        {"/1", kName},
        {".", kName},
        {".*", kName},
        {"..modPuncherMix", kName},
        {"nobody", kName},
        {"nobody/1", kName},
        {"compound", kName},
        {"modpunchermix", kName},
        {"param", kName}, // a child, but no process
        {"link", kName},
        {"**", kName},
    };
    for (const auto& bad : kBad) {
        SCOPED_TRACE(bad.text);
        const std::string rest = std::string("' attribute value '") + bad.text + "' specified.";
        EXPECT_FAILS(loadWith(link(bad.text, "*")), bad.message + "src" + rest);
        EXPECT_FAILS(loadWith(link("*", bad.text)), bad.message + "dst" + rest);
    }
}

TEST_F(ProcessDefLinkTest, NeedsBothEnds)
{
    const auto with = [](const char* attribute) {
        return TreeNode("audio:process-link", "l").attr(attribute, "*");
    };
    EXPECT_FAILS(loadWith(TreeNode("audio:process-link", "l")), "No 'src' attribute defined.");
    EXPECT_FAILS(loadWith(with("dst")), "No 'src' attribute defined.");
    EXPECT_FAILS(loadWith(with("src")), "No 'dst' attribute defined.");
}

TEST_F(ProcessDefLinkTest, ReadsTheStateUnderBothNames)
{
    ASSERT_OK(root_.load(
        TreeNode().child(process("compound")
                             .child(link("*", "*"))
                             .child(link("*", "*").attr("state-id", "3"))
                             .child(link("*", "*").attr("bypass-state-id", "0"))
                             .child(link("*", "*").attr("state-id", "3").attr("bypass-state-id", "-1"))
                             .child(link("*", "*").attr("state-id", "none")))));
    const std::vector<int> expected = {-1, 3, 0, -1, -1};
    std::vector<int> ids;
    for (const CAudioProcessLinkDef* made : get<CAudioProcessDef>("compound").linkDefs()) {
        ids.push_back(made->bypassStateId());
    }
    EXPECT_EQ(ids, expected);

    EXPECT_FAILS(loadWith(link("*", "*").attr("state-id", "-2").attr("bypass-state-id", "1")),
                 "Invalid state identifier '-2' specified.");
    EXPECT_FAILS(loadWith(link("*", "*").attr("bypass-state-id", "-7")),
                 "Invalid state identifier '-7' specified.");
}

} // namespace
} // namespace qel
