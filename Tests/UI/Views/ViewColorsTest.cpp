// The colours of views, and how they reach the picture.
#include "AllocationGuard.h"
#include "Trace.h"
#include "ViewFixture.h"

namespace qel {
namespace {

using test::node;
using test::state;
using test::view;

class ViewColors : public test::ViewFixture
{
protected:
    // The red, green and blue of the view's slot.
    std::array<int, 3> color(const char* path, std::size_t slot = 0)
    {
        const CPaletteColor* color = at(path).getColor(slot);
        return {color->red[255], color->green[255], color->blue[255]};
    }
};
using Rgb = std::array<int, 3>;

TEST_F(ViewColors, ComeFromSlotsStatesAndPalettes)
{
    load({view("v", {{"color", "Knob"}, {"color-slots", "3"}},
               {node("ui:view-color-slot", "slot", {{"slot-index", "1"}, {"color", "Panel"}}),
                state("hover", {{"color-state", "Hover"}}), view("child", {{"color", "Panel"}})}),
          view("shared", {{"shared-color", "w.v"}})});
    EXPECT_EQ(color("w.v"), (Rgb{200, 0, 0}));
    EXPECT_EQ(color("w.v", 1), (Rgb{1, 2, 3}));
    EXPECT_EQ(color("w.v", 2), (Rgb{200, 0, 0})) << "a slot without a colour has that of slot 0";
    EXPECT_EQ(color("w.shared", 1), (Rgb{1, 2, 3}));
    EXPECT_EQ(color("w.v.child"), (Rgb{1, 2, 3}));

    EXPECT_OK(at("w.v").setState("hover", true));
    EXPECT_EQ(color("w.v"), (Rgb{0, 200, 0}));
    EXPECT_EQ(color("w.shared"), (Rgb{200, 0, 0})) << "in its own state";

    std::string traced;
    CTraceHook hook = setTraceHook([&](const CString& line) { traced += line.toUtf8() + "\n"; });
    EXPECT_EQ(color("w.v", 3), (Rgb{9, 9, 9}));
    EXPECT_NE(traced.find("WRONG SLOT INDEX 3"), std::string::npos);
    set("w.v.child", "color", "Gone");
    EXPECT_EQ(color("w.v.child"), (Rgb{9, 9, 9}));
    EXPECT_NE(traced.find("Color not found: 'Gone'"), std::string::npos);
    setTraceHook(hook);

    set("w.v.child", "color", "Panel");
    set("w.v", "is-disabled", "true");
    EXPECT_EQ(color("w.v", 1), (Rgb{50, 50, 50}));
    EXPECT_EQ(color("w.v.child"), (Rgb{50, 50, 50}));
    EXPECT_EQ(at("w.v.child").getDisabledTextColor()->red[255], 60);
    set("w.v", "is-disabled", "false");

    // The scheme of the interface changes; a view with a palette of its own stays.
    set("w.shared", "palette", "Test");
    set("ui", "palette-name", "Blue");
    EXPECT_EQ(color("w.v.child"), (Rgb{0, 0, 9}));
    EXPECT_EQ(at("w.shared").getPalette()->findColor("Knob")->red[255], 200);
    EXPECT_FAILS(at("w.v").setAttribute("palette", "Pink", true), "Unable to find palette object 'Pink'.");
    EXPECT_FAILS(at("w.v").setAttribute("palette", "Test.x", true), "Unable to find palette object");
}

TEST_F(ViewColors, RunThroughTheirFrames)
{
    load({view("v", {{"is-gradient-animated", "false"}},
               {view("lamp", {{"color", "Alarm"}, {"width", "10"}, {"height", "10"}})})});
    EXPECT_TRUE(context().getGradientTimer().isIdle());
    EXPECT_EQ(color("w.v.lamp"), (Rgb{10, 0, 0}));
    setTime(5.0);
    set("w.v", "is-gradient-animated", "true");
    // A position of 1 is reached after pi squared / 20 seconds.
    const double wholeSec = 0.4934802200544679;
    frame(5.0 + wholeSec / 2);
    EXPECT_EQ(pixel(5, 5), 0x140000U);
    frame(5.0 + wholeSec);
    EXPECT_EQ(pixel(5, 5), 0x1E0000U);
    set("w.v", "is-gradient-animated", "false");
    EXPECT_EQ(color("w.v.lamp"), (Rgb{10, 0, 0}));
    EXPECT_TRUE(context().getGradientTimer().isIdle());
}

TEST_F(ViewColors, ArePaintedWithoutTouchingTheHeap)
{
    load({view(
        "v",
        {{"color", "Knob"}, {"width", "100"}, {"height", "100"}, {"morph-duration", "1"}, {"opacity", "0.5"}},
        {state("hover", {{"color-state", "Hover"}})})});
    EXPECT_OK(at("w.v").setState("hover"));
    setTime(0.5);
    context().tickTimer();
    CSectorMap& sectors = map();
    ASSERT_TRUE(sectors.isDirty());
    test::AllocationGuard guard;
    sectors.paintDirty();
    EXPECT_EQ(guard.stop().total(), 0U);
    EXPECT_EQ(pixel(5, 5), 0x363604U) << "half of both sides, over the root";
}

TEST_F(ViewColors, GoWithTheirView)
{
    load({view("v", {{"color", "Knob"}, {"width", "50"}, {"height", "50"}})});
    CObject* added = nullptr;
    CAttrMap attrs;
    attrs["color"] = CAttrValue("Panel");
    attrs["placement"] = CAttrValue("overlay");
    attrs["width"] = CAttrValue("full");
    attrs["height"] = CAttrValue("full");
    ASSERT_OK(at("w.v").createChild(added, "ui:view", "late", false, nullptr, &attrs));
    frame(0.1);
    EXPECT_EQ(pixel(5, 5), 0x010203U);
    CObject::releaseObject(added);
    frame(0.2);
    EXPECT_EQ(pixel(5, 5), 0xC80000U);
}

} // namespace
} // namespace qel
