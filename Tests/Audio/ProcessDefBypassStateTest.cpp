// Definitions of bypass states: ranges, conditions, messages.
#include "CreatorRegistry.h"
#include "Definitions/CAudioProcessBypassStateDef.h"
#include "TreeFixture.h"

#include <limits>

namespace qel {
namespace {

using test::TreeNode;

class ProcessDefBypassStateTest : public test::TreeFixture
{
protected:
    ProcessDefBypassStateTest()
    {
        releaseError(registerCreator({"audio:process-bypass-state", &newObject<CAudioProcessBypassStateDef>,
                                      &CAudioProcessBypassStateDef::buildClassInfo}));
    }
    ~ProcessDefBypassStateTest() override { clearCreators(); }

    static TreeNode state(const char* name)
    {
        return TreeNode("audio:process-bypass-state", name).attr("id", "0").attr("param", "enable");
    }
    const CAudioProcessBypassStateDef& load(const TreeNode& node)
    {
        EXPECT_OK(root_.load(TreeNode().child(node)));
        const CObject* last = root_->getChild(root_->getChildCount() - 1);
        return dynamic_cast<const CAudioProcessBypassStateDef&>(*last);
    }
};

TEST_F(ProcessDefBypassStateTest, ComparesWithTheValueWithinATenthInclusive)
{
    const auto& byDefault = load(state("s"));
    for (const double value : {0.9, 0.95, 1.0, 1.05}) {
        EXPECT_TRUE(byDefault.isActive(value)) << value;
    }
    // In doubles 1.1 - 1.0 is a little more than 0.1.
    for (const double value : {0.0, 0.89, 1.1, 1.5, -1.0}) {
        EXPECT_FALSE(byDefault.isActive(value)) << value;
    }
    const auto& atZero = load(state("s").attr("value", "0"));
    EXPECT_TRUE(atZero.isActive(0.1));
    EXPECT_TRUE(atZero.isActive(-0.1));
    EXPECT_FALSE(atZero.isActive(0.11));
    EXPECT_FALSE(atZero.isActive(std::numeric_limits<double>::quiet_NaN()));
}

TEST_F(ProcessDefBypassStateTest, HoldsTheRoundedValueAgainstTheRange)
{
    constexpr double kHuge = 1e300;
    static const struct
    {
        const char* range;
        std::vector<double> inside;
        std::vector<double> outside;
    } kRanges[] = {
        {"[1;2]", {0.51, 1.0, 1.4, 2.0, 2.5}, {0.5, 0.0, 2.51, 3.0, 77.0, kHuge}},
        {"1;2", {}, {0.0, 1.0, 1.5, 2.0, 3.0}},
        {"1;3", {1.5, 2.0, 2.5}, {1.0, 1.49, 2.51, 3.0}},
        {"[1;3", {1.0, 2.0}, {0.0, 3.0}},
        {"1;3]", {2.0, 3.0}, {1.0, 4.0}},
        {";3]", {-kHuge, -5.0, 3.0, 3.49}, {3.5, 4.0, kHuge}},
        {";3", {-kHuge, 2.5}, {2.51, 3.0}},
        {"[3;", {3.0, kHuge}, {2.5, -kHuge}},
        {"3;", {4.0, kHuge}, {3.0}},
        {";", {-kHuge, 0.0, kHuge}, {}},
        {"[;]", {-kHuge, 0.0, kHuge}, {}},
        {"[-2;-0x1]", {-2.0, -1.0, -1.5}, {-0.5, 0.0, -2.51}},
        {"[2;1]", {}, {1.0, 1.5, 2.0}},
        {"[2147483647;", {2147483647.0, 1e10}, {2147483646.0}},
    };
    for (const auto& row : kRanges) {
        // A range leaves "value" without effect.
        const auto& made = load(state("s").attr("range", row.range).attr("value", "77"));
        for (const double value : row.inside) {
            EXPECT_TRUE(made.isActive(value)) << row.range << " at " << value;
        }
        for (const double value : row.outside) {
            EXPECT_FALSE(made.isActive(value)) << row.range << " at " << value;
        }
    }
}

TEST_F(ProcessDefBypassStateTest, JoinsBothConditionsAndInvertsTheWhole)
{
    const TreeNode both =
        state("s").attr("and-param", "mode").attr("and-range", "[2;3]").attr("and-value", "9");
    const auto& plain = load(both);
    const auto& inverted = load(TreeNode(both).attr("is-inverted", "true"));
    const auto& byValue = load(state("s").attr("and-param", "mode").attr("and-value", "9"));
    const auto& single = load(state("s").attr("and-range", "[2;3]"));
    EXPECT_TRUE(plain.hasAndParam());
    EXPECT_EQ(plain.andParam(), "mode");
    EXPECT_FALSE(single.hasAndParam());

    for (const double first : {0.0, 1.0}) {
        for (const double second : {1.0, 2.0, 9.0}) {
            SCOPED_TRACE(::testing::Message() << first << " and " << second);
            EXPECT_EQ(plain.isActive(first, second), first == 1.0 && second == 2.0);
            EXPECT_EQ(inverted.isActive(first, second), !(first == 1.0 && second == 2.0));
            EXPECT_EQ(byValue.isActive(first, second), first == 1.0 && second == 9.0);
            EXPECT_EQ(single.isActive(first, second), first == 1.0);
        }
    }
}

} // namespace
} // namespace qel
