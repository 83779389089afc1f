// What views are told about their places, and how trees of views come and go.
#include "CreatorRegistry.h"
#include "LayoutRig.h"
#include "Trace.h"
#include "TreeCompiler/ToolError.h"

#include <gtest/gtest.h>

#include <functional>

namespace qel {
namespace {

// A view that keeps what it is told.
class CToldView : public CViewBasePlacement, public CViewAreaUpdateHandler
{
public:
    void onAreaBounds(const CRect& visible, const CRect& whole) override
    {
        visible_ = visible;
        whole_ = whole;
        ++reports_;
    }
    CError onAreaSettled() override
    {
        if (onSettled_) {
            onSettled_(*this);
        }
        return {};
    }

    CRect visible_;
    CRect whole_;
    int reports_ = 0;
    std::function<void(CToldView&)> onSettled_;
};

class ViewArea : public ::testing::Test
{
protected:
    void load(const std::string& views, const std::string& rootAttributes = {})
    {
        tree_.emplace(views, rootAttributes);
        ASSERT_FALSE(registerCreator({"told", &newObject<CToldView>, &CToldView::buildClassInfo}));
    }
    CToldView& told(const std::string& parent, const CAttrMap& attributes)
    {
        CToldView* view = nullptr;
        const CError error =
            tree_->view("root" + parent).createChild(view, "told", "told", false, nullptr, &attributes);
        EXPECT_FALSE(error) << error.text();
        tree_->solve();
        return *view;
    }
    CToldView& told(const std::string& parent, double x, double y, double size, const char* unclip = "0",
                    const char* spread = "0")
    {
        CAttrMap attributes;
        attributes["placement"] = CAttrValue(CString("overlay"));
        attributes["width"] = attributes["height"] = CAttrValue(CString(std::to_string(size)));
        attributes["outer-border"] = CAttrValue(CString("L" + std::to_string(x) + " T" + std::to_string(y)));
        attributes["unclip-level"] = CAttrValue(CString(unclip));
        attributes["spread"] = CAttrValue(CString(spread));
        return told(parent, attributes);
    }

    std::optional<test::LayoutRig> tree_;
};

TEST_F(ViewArea, ClipsAtItsParentOrAtTheAncestorThatItsUnclipLevelLeads)
{
    load(R"(<v n="a" placement="overlay" width="100" height="100" outer-border="LT50">
              <v n="b" placement="overlay" width="40" height="40" outer-border="LT80"/></v>)");
    CToldView& inB = told(".a.b", 30, 0, 50);
    EXPECT_EQ(inB.whole_, (CRect{160, 130, 50, 50}));
    EXPECT_EQ(inB.visible_, CRect());
    CToldView& outOfB = told(".a.b", -20, -30, 50, "1", "2");
    EXPECT_EQ(outOfB.visible_, (CRect{108, 98, 42, 52}));
    CToldView& outOfAll = told(".a.b", -300, 0, 200, "9");
    EXPECT_EQ(outOfAll.visible_, (CRect{0, 130, 30, 170}));

    // The clip of one ancestor changes, and no rectangle with it.
    tree_->change(".a", "width", "90");
    EXPECT_EQ(outOfB.visible_, (CRect{108, 98, 32, 52}));
    EXPECT_EQ(inB.reports_, 1);
    tree_->change(".a", "width", "300");
    EXPECT_EQ(outOfB.visible_, (CRect{108, 98, 54, 52}));
    EXPECT_EQ(inB.visible_, (CRect{160, 130, 10, 20}));
}

TEST_F(ViewArea, IsToldOfChangesOnceAndOfHidingAsOfAnEmptyPlace)
{
    load(R"(<v n="a" placement="left" width="100" height="100"><v n="b" width="full" height="full"/></v>)");
    CToldView& view = told(".a.b", 10, 10, 20);
    EXPECT_EQ(view.reports_, 1);
    tree_->change(".a", "width", "100.00005");
    tree_->change(".a", "height", "90");
    EXPECT_EQ(view.reports_, 1);
    view.getViewArea().requestReport();
    tree_->solve();
    EXPECT_EQ(view.reports_, 2);
    tree_->change(".a", "is-visible", "0");
    EXPECT_EQ(view.reports_, 3);
    EXPECT_EQ(view.visible_, CRect());
    EXPECT_EQ(view.whole_, CRect());
    tree_->change(".a.b", "is-visible", "0");
    tree_->change(".a", "is-visible", "1");
    EXPECT_EQ(view.reports_, 3);
    tree_->change(".a.b", "is-visible", "1");
    EXPECT_EQ(view.whole_, (CRect{10, 10, 20, 20}));

    // A bounds handler that wants another size gets it in the same solve; one that is never content ends it.
    view.onSettled_ = [](CToldView& self) { ASSERT_FALSE(self.setAttribute("width", "33", true)); };
    tree_->change(".a", "outer-border", "L5");
    EXPECT_EQ(view.whole_, (CRect{15, 10, 33, 20}));
    int rounds = 0;
    view.onSettled_ = [&](CToldView& self) {
        ASSERT_FALSE(self.setAttribute("width", CString::number(++rounds % 50 + 1), true));
        ASSERT_FALSE(self.solveLayout());
    };
    tree_->change(".a", "outer-border", "L6");
    EXPECT_GT(rounds, 1);
    EXPECT_LT(rounds, 1000);

    // It may end itself.
    view.onSettled_ = [](CToldView& self) { CObject::releaseObject(&self); };
    tree_->change(".a", "outer-border", "L7");
    EXPECT_EQ(tree_->view("root.a.b").getChildCount(), 0u);
}

TEST_F(ViewArea, FreesItsRoomAndItsVariablesWhenItGoes)
{
    load(R"(<v n="a" width="10" height="10"/><v n="m" placement="match" placement-match="^a"/>
            <v n="b" width="20" height="10"/>)");
    CValueNetwork& network = tree_->view("root").getLayoutContext().getNetwork();
    CObject::releaseObject(&tree_->view("root.m"));
    tree_->solve();
    const std::size_t before = network.getVariableCount();
    for (int i = 0; i < 3000; ++i) {
        CViewBasePlacement* panel = nullptr;
        CViewBasePlacement* inner = nullptr;
        ASSERT_FALSE(tree_->view("root").createChild(panel, "ui:view", "panel"));
        ASSERT_FALSE(panel->createChild(inner, "ui:view", "inner"));
        ASSERT_FALSE(inner->setAttribute("placement-match", "root.a", true));
        ASSERT_FALSE(inner->setAttribute("placement", "match", true));
        ASSERT_FALSE(panel->setAttribute("is-new-inline-row", "1", true));
        tree_->solve();
        CObject::releaseObject(panel);
        tree_->solve();
        ASSERT_EQ(network.getVariableCount(), before);
    }
    CObject::releaseObject(&tree_->view("root.a"));
    tree_->solve();
    EXPECT_EQ(tree_->rect(".b"), (CRect{0, 0, 20, 10}));
}

TEST_F(ViewArea, AMatchedViewThatIsHiddenOrGoesLeavesNothingBehind)
{
    load(
        R"(<v n="h"><v n="a" width="10" height="10"/></v><v n="p"><v n="m" placement="match" placement-match="root.h.a"/></v>)");
    EXPECT_EQ(tree_->rect(".p.m"), (CRect{0, 0, 10, 10}));
    tree_->change(".h", "is-visible", "0");
    EXPECT_EQ(tree_->rect(".p.m"), CRect());
    tree_->change(".h", "is-visible", "1");
    EXPECT_EQ(tree_->rect(".p.m"), (CRect{0, 0, 10, 10}));
    CObject::releaseObject(&tree_->view("root.h.a"));
    tree_->solve();
    EXPECT_EQ(tree_->rect(".p.m"), CRect());
}

TEST_F(ViewArea, LongRowsAndStacksAreLaidOutToTheLastChild)
{
    std::string views = R"(<v n="row" placement="top" width="compact">)";
    for (int i = 0; i < 400; ++i) {
        views += "<v n=\"v\" width=\"3\" height=\"2\" outer-border=\"1\"/>";
    }
    views += R"(</v><v n="stack" placement="top" is-inline-vertical="1">)";
    for (int i = 0; i < 400; ++i) {
        views += "<v n=\"v\" width=\"3\" height=\"2\" outer-border=\"1\"/>";
    }
    views += R"(</v><v n="docked" placement="top" width="9">)";
    for (int i = 0; i < 400; ++i) {
        views += "<v n=\"v\" placement=\"top\" width=\"full\" height=\"2\" outer-border=\"1\"/>";
    }
    load(views + R"(</v><v n="rows" placement="top">)" + [] {
        std::string rows;
        for (int i = 0; i < 300; ++i) {
            rows += "<v n=\"v\" width=\"3\" height=\"2\" is-new-inline-row=\"1\"/>";
        }
        return rows;
    }() + "</v>");
    EXPECT_EQ(tree_->rect(".row"), (CRect{0, 0, 2000, 4}));
    EXPECT_EQ(tree_->rect(".row.v#399"), (CRect{1996, 1, 3, 2}));
    EXPECT_EQ(tree_->rect(".stack"), (CRect{0, 4, 5, 1600}));
    EXPECT_EQ(tree_->rect(".stack.v#399"), (CRect{1, 1601, 3, 2}));
    EXPECT_EQ(tree_->rect(".docked.v#399"), (CRect{1, 3201, 7, 2}));
    EXPECT_EQ(tree_->rect(".rows"), (CRect{0, 3204, 3, 600}));
    EXPECT_EQ(tree_->rect(".rows.v#299"), (CRect{0, 3802, 3, 2}));
    tree_->change(".docked.v", "height", "12");
    EXPECT_EQ(tree_->rect(".docked.v#399"), (CRect{1, 3211, 7, 2}));
    EXPECT_EQ(tree_->rect(".rows.v#299"), (CRect{0, 3812, 3, 2}));
}

TEST_F(ViewArea, OrderAndMotionAreInheritedAsDeclared)
{
    load(R"(<v n="a" z-index="3" z-index-dynamic-childs="10" z-index-static-childs="1">
              <v n="still"/><v n="moving" is-dynamic="1"><v n="in"/><v n="kept" is-force-non-dynamic="1"/></v>
              <v n="own" z-index="-2"/><v n="like" z-index="^still"/></v>)");
    const auto order = [this](const char* path) { return tree_->view(path).getZIndex(); };
    EXPECT_EQ(order("root.a"), 3);
    EXPECT_EQ(order("root.a.still"), 4);
    EXPECT_EQ(order("root.a.moving"), 13);
    EXPECT_EQ(order("root.a.moving.in"), 13);
    EXPECT_EQ(order("root.a.own"), 1);
    EXPECT_EQ(order("root.a.like"), 4);
    EXPECT_TRUE(tree_->view("root.a.moving.in").isDynamic());
    EXPECT_FALSE(tree_->view("root.a.moving.kept").isDynamic());
}

} // namespace
} // namespace qel
