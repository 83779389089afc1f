// Windows: how they open, their size, their frames and their end.
#include "CInterfaceScale.h"
#include "WindowFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::command;
using test::node;
using test::state;
using test::TreeNode;
using test::view;
using Lines = std::vector<std::string>;

class Window : public test::WindowFixture
{
protected:
    ~Window() override { CInterfaceScale::set(1.0); }
};

TEST_F(Window, AreAsLargeAsTheirContentAtEachScale)
{
    const struct
    {
        double scale;
        int width;
        int height;
    } cases[] = {{0.8, 432, 298}, {1.0, 540, 373}, {1.25, 675, 466}};
    for (const auto& each : cases) {
        CInterfaceScale::set(each.scale);
        open({view("v", {{"width", "540"}, {"height", "373"}})},
             {{"width", "compact"}, {"height", "compact"}});
        const platform::PixelRect place = window().getScreenPlace();
        EXPECT_EQ(place.width, each.width);
        EXPECT_EQ(place.height, each.height);
        EXPECT_EQ(in("v").getRootView().getViewArea().getRect().width, each.width) << "whole pixels";
        CObject::releaseObject(root_->findObject("ui"));
    }
    CInterfaceScale::set(1.0);
    open({view("v", {{"width", "100"}, {"height", "50"}})}, {{"width", "compact"}, {"height", "compact"}});
    set("ui.main-window.v", "width", "300");
    EXPECT_EQ(window().getScreenPlace().width, 100) << "only when asked";
    ASSERT_OK(in("v").solveAndAdoptWindowSize());
    EXPECT_EQ(window().getScreenPlace().width, 300);
    EXPECT_EQ(in("v").getViewContext().getSectorMap().getColumns(), 3);

    // The host's doing counts from the next frame on.
    window().onResize(129, 60);
    EXPECT_EQ(attr("ui.main-window.window-renderer", "width"), "300");
    user().advance(0.05);
    EXPECT_EQ(attr("ui.main-window.window-renderer", "width"), "129");
    EXPECT_EQ(in("v").getViewContext().getSectorMap().getColumns(), 2);
}

TEST_F(Window, TellViewsOfTheirLife)
{
    const auto note = [](const std::string& event) {
        return command(event, {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}},
                       {node("core:object", "p", {{"text", event}})});
    };
    ASSERT_OK(build({note("window-create"), note("content-ready"), note("activate-window"),
                     note("deactivate-window"), note("close-window"), note("close-app"),
                     note("window-destroy"), view("v", {}, {note("content-ready")})}));
    EXPECT_EQ(log(), Lines{});
    ASSERT_OK(window().open());
    EXPECT_EQ(log(), (Lines{"text=window-create", "text=content-ready", "text=content-ready"}));
    log().clear();
    window().onActivation(true);
    window().onActivation(false);
    window().onCloseRequest();
    EXPECT_EQ(log(), (Lines{"text=activate-window", "text=deactivate-window", "text=close-window",
                            "text=close-app"}))
        << "closing the window itself is the host's";
    EXPECT_TRUE(window().isOpen());
    log().clear();
    CObject::releaseObject(root_->findObject("ui.main-window"));
    EXPECT_EQ(log(), (Lines{"text=window-destroy"}));
}

TEST_F(Window, DrawWhatMovesAndNothingElse)
{
    open({view("v", {{"width", "100"}, {"height", "100"}, {"color", "Panel"}, {"duration", "0.2"}},
               {state("gone", {{"opacity", "0"}})})},
         {{"color", "Knob"}});
    EXPECT_EQ(user().getPixel(in("v")), 0x010203U);
    const auto takeFrames = [&] { return window().getSurface().getMemory().takeInvalidated().count; };
    takeFrames();
    user().advance(1.0);
    EXPECT_EQ(takeFrames(), 0);
    ASSERT_OK(in("v").setState("gone"));
    user().advance(0.1);
    const double opacity = in("v").getAttrReal("opacity");
    EXPECT_GT(opacity, 0.2);
    EXPECT_LT(opacity, 0.8);
    EXPECT_NEAR(takeFrames(), 4, 1) << "40 frames a second";
    user().advance(0.2);
    EXPECT_EQ(in("v").getAttrReal("opacity"), 0.0);
    takeFrames();
    user().advance(1.0);
    EXPECT_EQ(takeFrames(), 0);
    ASSERT_OK(
        root_->findObject("ui.global-settings")->setAttribute("builtin-refresh", CAttrValue(true), true));
    user().advance(1.0);
    EXPECT_NEAR(takeFrames(), 40, 1) << "the user wants the picture on the screen all the time";
}

TEST_F(Window, TickWhatSubscribes)
{
    open({view("v")});
    int gradients = 0;
    int blinks = 0;
    CTickSubscription gradient(in("v"), [&] { ++gradients; });
    CTickSubscription blink(in("v"), [&] { ++blinks; });
    gradient.start(in("v").getViewContext().getGradientTimer());
    blink.start(in("v").getViewContext().getCursorTimer());
    user().advance(2.01);
    EXPECT_EQ(gradients, 40);
    EXPECT_EQ(blinks, 6);
}

TEST_F(Window, PublishWhatDrawingCosts)
{
    open({view("v", {{"width", "100"}, {"height", "100"}, {"is-dynamic", "true"}})}, {},
         {{"is-export-draw-load", "true"}});
    user().advance(1.0);
    EXPECT_EQ(attr("ui.main-window.window-renderer", "draw-load"), "0.0000%");
    for (int i = 0; i < 100; ++i) {
        set("ui.main-window.v", "color", i % 2 ? "Panel" : "Knob");
        user().advance(0.025);
    }
    EXPECT_GT(std::stod(attr("ui.main-window.window-renderer", "draw-load")), 0.1);
}

} // namespace
} // namespace qel
