// What users do with scroll bars.
#include "ControlFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::node;
using test::view;

// A scrolled view of 100 x 62, with a vertical bar 12 wide: two buttons of 6 and a track of 50.
class Scroller : public test::ControlFixture
{
protected:
    void loadScroller(const Attrs& viewAttrs, Attrs barAttrs = {})
    {
        const Tile end{12, 3, 255};
        addImages("scroller", {end, {12, 1, 200}, {12, 4, 100}, {12, 1, 200}, end, {12, 6, 50}, {12, 6, 50}},
                  {{"VBar", 0, 4}, {"VBase", 5, 5}, {"VButtonPrev", 6, 6}});
        barAttrs.insert(barAttrs.end(), {{"placement", "full"},
                                         {"width", "full"},
                                         {"height", "full"},
                                         {"is-vertical", "true"},
                                         {"image-set", "is.scroller"},
                                         {"color", "White"}});
        Attrs attrs = viewAttrs;
        attrs.insert(attrs.end(), {{"placement", "overlay"},
                                   {"is-scrollable", "true"},
                                   {"width", "100"},
                                   {"height", "62"},
                                   {"scroller-width", "12"},
                                   {"color", "Black"}});
        loadControls(
            {view("s", attrs,
                  {view("scroller-v", {{"placement", "scroller-v"}, {"width", "12"}, {"color", "Black"}},
                        {node("ui:scroller-bar", "bar", barAttrs)})})});
    }
    CView& bar() { return at("w.s.scroller-v.bar"); }
    CError drag(int fromY, int toY, int x = 94)
    {
        QEL_TRY(bar().onMousePress(pointer(x, fromY)), {});
        return bar().onMouseMove(pointer(x, toY));
    }
    double offset() { return real("w.s", "offset-y"); }
    // Rows that are painted in the bar's own colour.
    std::string barRows() { return valuesDown(90, 6, 56); }
};

TEST_F(Scroller, TheBarShowsWhatIsSeenAndMovesIt)
{
    loadScroller({{"ratio-y", "0.5"}, {"offset-y", "0.25"}});
    EXPECT_TRUE(bar().isStateActive("shown"));
    EXPECT_EQ(barRows(), "1x13 255x3 200x7 100x4 200x8 255x3 1x12") << "half of it, in the middle";

    EXPECT_OK(drag(30, 35));
    EXPECT_NEAR(offset(), 0.25 + 5.0 / 50.0, 0.02) << "as far as the pointer";
    EXPECT_TRUE(bar().isStateActive("Hilite"));
    EXPECT_OK(bar().onMouseMove(pointer(94, 300)));
    EXPECT_NEAR(offset(), 0.5, 1e-9) << "the end of the content at the end of the view";
    frame(0.1);
    EXPECT_EQ(barRows().substr(0, 4), "1x25");
    EXPECT_OK(bar().onMouseMove(pointer(94, -300)));
    EXPECT_EQ(offset(), 0.0);
    EXPECT_OK(bar().onMouseRelease(pointer(94, -300)));
    EXPECT_OK(bar().onMouseMove(pointer(94, 40)));
    EXPECT_EQ(offset(), 0.0) << "let go";
    EXPECT_FALSE(bar().isStateActive("Hilite"));

    set("w.s", "offset-y", "0.5");
    frame(0.2);
    EXPECT_EQ(barRows().substr(0, 4), "1x25") << "follows what others do";
    set("w.s", "ratio-y", "1.0");
    frame(0.3);
    EXPECT_FALSE(bar().isStateActive("shown"));
    EXPECT_EQ(barRows(), "0x50");
    EXPECT_OK(drag(30, 35));
    EXPECT_EQ(offset(), 0.5);
    set("w.s", "ratio-y", "0.01");
    frame(0.4);
    EXPECT_EQ(barRows(), "1x20 255x3 100x4 255x3 1x20") << "never too short to be caught";
}

TEST_F(Scroller, ButtonsStepAndRepeatWhileTheyAreHeld)
{
    loadScroller({{"ratio-y", "0.2"}});
    setTime(1.0);
    EXPECT_OK(bar().onMousePress(pointer(94, 60)));
    EXPECT_NEAR(offset(), 0.01, 1e-9);
    frame(1.2);
    EXPECT_NEAR(offset(), 0.01, 1e-9) << "a click is one step";
    frame(1.501);
    EXPECT_NEAR(offset(), 0.06, 1e-9) << "5 steps in the 0.2 s since the first repetition";
    EXPECT_OK(bar().onMouseMove(pointer(20, 60)));
    frame(1.7);
    EXPECT_NEAR(offset(), 0.06, 1e-9) << "the pointer has left the button";
    EXPECT_OK(bar().onMouseCancel(pointer(20, 60)));
    EXPECT_TRUE(context().getTimer().isIdle() || bar().isStateMoving());
    EXPECT_OK(bar().onMousePress(pointer(94, 2)));
    EXPECT_NEAR(offset(), 0.05, 1e-9);
    EXPECT_OK(bar().onMouseRelease(pointer(94, 2)));
}

TEST_F(Scroller, PagesByTheTrackScrollsByTheWheelAndBothWaysByTheRightButton)
{
    loadScroller({{"ratio-y", "0.2"}, {"ratio-x", "0.5"}});
    EXPECT_OK(bar().onMousePress(pointer(94, 50)));
    EXPECT_OK(bar().onMouseRelease(pointer(94, 50)));
    EXPECT_NEAR(offset(), 0.2, 1e-9) << "a page";
    CAttrMap wheel;
    wheel["delta"] = CAttrValue(-2.0);
    ASSERT_TRUE(at("w.s").handlesEvent("mouse-wheel"));
    EXPECT_OK(at("w.s").receiveEvent("mouse-wheel", wheel));
    EXPECT_NEAR(offset(), 0.26, 1e-9) << "down";
    wheel["delta"] = CAttrValue(100.0);
    EXPECT_OK(at("w.s").receiveEvent("mouse-wheel", wheel));
    EXPECT_EQ(offset(), 0.0);

    EXPECT_OK(bar().onMousePressR(pointer(94, 30)));
    EXPECT_OK(bar().onMouseMove(pointer(104, 61)));
    EXPECT_NEAR(offset(), 0.5, 1e-9);
    EXPECT_NEAR(real("w.s", "offset-x"), 0.1, 1e-9);
    EXPECT_OK(bar().onMouseReleaseR(pointer(104, 61)));

    set("w.s", "is-disabled", "true");
    EXPECT_OK(bar().onMousePress(pointer(94, 10)));
    EXPECT_NEAR(offset(), 0.5, 1e-9);
}

TEST_F(Scroller, ABarThatResizesZoomsByItsEndsAndRemembersWhatWasShown)
{
    loadScroller({{"min-ratio-y", "0.1"}}, {{"is-resizeable", "true"}, {"is-snapshots-enabled", "true"}});
    EXPECT_EQ(barRows().substr(0, 5), "255x3") << "also where all is seen";
    EXPECT_OK(drag(55, 30));
    EXPECT_NEAR(real("w.s", "ratio-y"), 0.5, 1e-9);
    EXPECT_OK(bar().onMouseMove(pointer(94, 0)));
    EXPECT_NEAR(real("w.s", "ratio-y"), 0.1, 1e-9) << "the least";
    EXPECT_OK(bar().onMouseMove(pointer(94, 30)));
    EXPECT_OK(bar().onMouseRelease(pointer(94, 30)));
    EXPECT_OK(drag(7, 17));
    EXPECT_OK(bar().onMouseRelease(pointer(94, 17)));
    EXPECT_NEAR(real("w.s", "ratio-y"), 0.3, 1e-9);
    EXPECT_NEAR(offset(), 0.2, 1e-9) << "the other end stays";
    for (const double ratio : {1.0, 0.3}) {
        EXPECT_OK(bar().onMousePress(pointer(94, 24, "is-double-click")));
        EXPECT_NEAR(real("w.s", "ratio-y"), ratio, 1e-9);
    }
    EXPECT_NEAR(offset(), 0.2, 1e-9);
}

} // namespace
} // namespace qel
