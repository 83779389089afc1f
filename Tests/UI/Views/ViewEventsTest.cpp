// What views do when something happens to them.
#include "ViewFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::command;
using test::node;
using test::view;
using Lines = std::vector<std::string>;

class ViewEvents : public test::ViewFixture
{};

TEST_F(ViewEvents, RunTheActionsOfACommandInTheirOrder)
{
    load({view("v", {{"is-on", "true"}},
               {command("go",
                        {{"run-event", "set-state"},
                         {"run-event-params", "p"},
                         {"set-state", "a"},
                         {"unset-state", "a"},
                         {"toggle-state", "b"},
                         {"toggle-attr", "is-on"},
                         {"reset-shared-attr", "ui.shared"}},
                        {node("core:object", "p", {{"state", "b"}})}),
                command("go", {{"run-event", "nothing"}, {"run-event-target", "gone"}, {"set-state", "c"}}),
                command("go", {{"set-state", "far"}, {"state-target", "^.^.other"}})}),
          view("other")},
         {}, {});
    CObject* shared = nullptr;
    CAttrMap attrs;
    attrs["attribute"] = CAttrValue("scale");
    attrs["def-value"] = CAttrValue("7");
    ASSERT_OK(root_->findObject("ui")->createChild(shared, "core:shared-attribute", "shared", false, nullptr,
                                                   &attrs));
    set("ui", "scale", "9");

    EXPECT_FAILS(at("w.v").fireEvent("go", {}), "Unable to locate event target 'gone'.");
    EXPECT_FALSE(at("w.v").isStateActive("a")) << "set, then unset";
    EXPECT_FALSE(at("w.v").isStateActive("b")) << "set by the event, then toggled";
    EXPECT_TRUE(at("w.v").isStateActive("c")) << "after an action that failed";
    EXPECT_TRUE(at("w.other").isStateActive("far")) << "after a command that failed";
    EXPECT_EQ(attr("w.v", "is-on"), "false");
    EXPECT_EQ(attr("ui", "scale"), "7");
}

TEST_F(ViewEvents, AskForConditionsAndPassParametersOn)
{
    const auto note = [](Attrs attrs, const char* text) {
        attrs.insert(attrs.end(),
                     {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}});
        return command("mouse-press", attrs, {node("core:object", "p", {{"text", text}})});
    };
    load({view("v", {},
               {note({{"condition-state-set", "hover"}}, "set"),
                note({{"condition-state-unset", "hover"}}, "unset"),
                note({{"run-event-forward-params", "true"}}, "forwarded")})});
    CAttrMap parameters;
    parameters["button"] = CAttrValue("l");
    parameters["text"] = CAttrValue("lost");
    CView& v = at("w.v");
    EXPECT_OK(v.onMousePress(parameters));
    EXPECT_OK(v.onMouseEnter({}));
    EXPECT_OK(v.onMousePress(parameters));
    EXPECT_EQ(log(),
              (Lines{"text=unset", "button=l", "text=forwarded", "text=set", "button=l", "text=forwarded"}));
    EXPECT_OK(v.onMouseExit({}));
    EXPECT_FALSE(v.isStateActive("hover"));

    log().clear();
    set("w", "is-disabled", "true");
    EXPECT_OK(v.onMousePress(parameters));
    EXPECT_EQ(log(), Lines{}) << "a view above is disabled";
    set("w", "is-disabled", "false");
    EXPECT_OK(v.onMousePress(parameters));
    EXPECT_EQ(log().size(), 3U);
}

TEST_F(ViewEvents, OutliveTheWindowThatTheyClose)
{
    load(
        {view("panel", {},
              {view("close", {},
                    {command("mouse-release", {{"run-event", "close-window"},
                                               {"set-state", "closed"},
                                               {"state-target", "main.opener"}}),
                     command("mouse-release", {{"set-state", "never"}, {"state-target", "main.opener"}})})})},
        {}, {view("main", {{"is-root-view", "true"}}, {view("opener")})});
    EXPECT_OK(at("w.panel.close").onMouseRelease({}));
    EXPECT_EQ(window_.calls, Lines{"close"});
    EXPECT_EQ(window_.forgotten, 3);
    EXPECT_EQ(root_->findObject("w"), nullptr);
    EXPECT_TRUE(at("main.opener").isStateActive("closed"));
    EXPECT_FALSE(at("main.opener").isStateActive("never")) << "the commands have ended with their view";
}

TEST_F(ViewEvents, MayEndTheViewDuringATick)
{
    load({view("v", {}, {command("state-ready", {{"run-event", "close-window"}})}), view("last")});
    EXPECT_OK(at("w.v").setState("s"));
    EXPECT_OK(at("w.last").setState("s"));
    const auto context = at("w").getViewContext().shared_from_this();
    context->tickTimer();
    EXPECT_EQ(root_->findObject("w"), nullptr);
    EXPECT_TRUE(context->getTimer().isIdle());
}

TEST_F(ViewEvents, ReachTheWindow)
{
    load({view("v", {{"hint", "Turn"}})});
    CView& v = at("w.v");
    window_.calls.clear();
    set("w.v", "hint", "Press");
    for (const char* event : {"block-window", "block-window", "popup-toggle", "popup-result"}) {
        EXPECT_OK(v.receiveEvent(event, {}));
    }
    EXPECT_OK(v.solveAndAdoptWindowSize());
    EXPECT_EQ(window_.calls, (Lines{"hint Press", "exit", "toggle", "result", "size"}));
    EXPECT_EQ(attr("w.window-blocker", "blocked-by"), "w.v");
    EXPECT_OK(v.receiveEvent("unblock-window", {}));
    EXPECT_EQ(root_->findObject("w.window-blocker"), nullptr);
}

TEST_F(ViewEvents, TellWhenTheTreeIsThereAndTellBarsOfScrolling)
{
    const auto note = [](const char* event) {
        return command(event, {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}},
                       {node("core:object", "p", {{event, "1"}})});
    };
    load({view(
        "s", {{"is-scrollable", "true"}, {"width", "50"}, {"height", "50"}},
        {view("scroller-h", {{"placement", "scroller-h"}}, {view("bar", {}, {note("update-scroller")})}),
         note("content-ready")})});
    EXPECT_EQ(log(), (Lines{"content-ready=1", "update-scroller=1"}));
    set("w.s", "ratio-x", "0.5");
    frame(0.1);
    EXPECT_EQ(log().size(), 3U);
    frame(0.2);
    EXPECT_EQ(log().size(), 3U);
}

TEST_F(ViewEvents, TakeThePointerByTheirFlags)
{
    struct Case
    {
        const char* parent; // flags, with blanks in between
        const char* child;
        const char* hit; // at a point in the child
    };
    const Case cases[] = {
        {"", "", "w.p.c.g"},
        {"", "is-click-through", "w.p.c.g"},
        {"is-child-click-through", "", "w.p.c.g"},
        {"is-intercepting", "", "w.p"},
        {"is-intercepting-allow-childs", "", "w.p.c.g"},
        {"", "is-intercepting", "w.p.c"},
        {"is-child-click-through", "is-intercepting", "w.p.c"},
        {"is-intercepting is-click-through", "", "w"},
        {"", "is-decorative", "w.p"},
        {"is-decorative", "", "w"},
        {"is-disabled", "is-disabled", "w.p.c.g"},
    };
    for (const Case& flags : cases) {
        CObject::releaseObject(root_->findObject("w"));
        for (const char* name : {"ui", "pal", "log"}) {
            CObject::releaseObject(root_->findObject(name));
        }
        const auto attrs = [](const char* names) {
            Attrs out{{"width", "60"}, {"height", "60"}};
            for (const CString& name : CString(names).splitWords()) {
                out.emplace_back(name.toUtf8(), "true");
            }
            return out;
        };
        load({view("p", attrs(flags.parent),
                   {view("c", attrs(flags.child), {view("g", {{"width", "30"}, {"height", "30"}})})})});
        const CView* hit = at("w").findViewAt({10.0, 10.0});
        ASSERT_NE(hit, nullptr);
        EXPECT_EQ(hit->getFullName().toUtf8(), flags.hit) << flags.parent << " / " << flags.child;
    }
    EXPECT_EQ(at("w").findViewAt({-1.0, 5.0}), nullptr);
    set("w.p.c", "is-child-click-through", "true");
    EXPECT_EQ(at("w").findViewAt({10.0, 10.0}), &at("w.p.c"));
    set("w.p", "is-visible", "false");
    frame(1.0);
    EXPECT_EQ(at("w").findViewAt({10.0, 10.0}), &at("w"));
}

TEST_F(ViewEvents, GoToTheViewOnTop)
{
    const Attrs whole{{"placement", "overlay"}, {"width", "full"}, {"height", "full"}};
    Attrs raised = whole;
    raised.emplace_back("z-index", "1");
    load({view("a", raised), view("b", whole), view("c", whole)});
    EXPECT_EQ(at("w").findViewAt({10.0, 10.0}), &at("w.a"));
    set("w.a", "is-visible", "false");
    EXPECT_EQ(at("w").findViewAt({10.0, 10.0}), &at("w.c"));
}

} // namespace
} // namespace qel
