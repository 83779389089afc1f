// Which view hears of pointer and keys.
#include "WindowFixture.h"

namespace qel {
namespace {

using test::Attrs;
using test::command;
using test::node;
using test::TreeNode;
using test::view;
using Lines = std::vector<std::string>;

class WindowEvents : public test::WindowFixture
{
protected:
    // A view that notes these events, as "name event".
    static TreeNode noter(const std::string& name, const Lines& events, Attrs attrs,
                          std::vector<TreeNode> children = {})
    {
        for (const std::string& event : events) {
            children.push_back(command(
                event, {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}},
                {node("core:object", "p", {{"text", name + " " + event}})}));
        }
        return view(name, attrs, children);
    }
    Lines taken()
    {
        Lines lines;
        for (const std::string& line : log()) {
            const bool isNoted = line.starts_with("text=");
            if (isNoted) {
                lines.push_back(line.substr(5));
            }
        }
        log().clear();
        return lines;
    }
    static inline const Lines kChain = {"mouse-enter", "mouse-exit", "mouse-top-exit"};
    static inline const Lines kButtons = {"mouse-press",   "mouse-release",   "mouse-cancel",
                                          "mouse-press-r", "mouse-release-r", "mouse-cancel-r"};
};

TEST_F(WindowEvents, EnterAndLeaveChainsOfViewsInOrder)
{
    open({noter("a", kChain, {{"width", "50"}, {"height", "50"}, {"hint", "Hint of a"}},
                {noter("b", kChain, {{"width", "20"}, {"height", "20"}, {"hint", "Hint of b"}})}),
          noter("c", kChain, {{"width", "50"}, {"height", "50"}}),
          view("status", {{"width", "10"}, {"height", "10"}})},
         {{"window-status-path", ".status"}});
    user().moveTo(in("a.b"));
    EXPECT_EQ(taken(), (Lines{"a mouse-enter", "b mouse-enter"}));
    EXPECT_EQ(attr("ui.main-window.status", "title"), "Hint of b");
    EXPECT_TRUE(in("a").isStateActive("hover"));
    user().moveTo(window(), 40, 40);
    EXPECT_EQ(taken(), (Lines{"b mouse-top-exit", "b mouse-exit"}));
    EXPECT_EQ(attr("ui.main-window.status", "title"), "Hint of a");
    set("ui.main-window.a", "hint", "Other");
    EXPECT_EQ(attr("ui.main-window.status", "title"), "Other");
    user().moveTo(in("c"));
    EXPECT_EQ(taken(), (Lines{"a mouse-top-exit", "a mouse-exit", "c mouse-enter"}));
    EXPECT_EQ(attr("ui.main-window.status", "title"), "");
    set("ui.window-shared-data", "is-show-hints", "false");
    user().moveTo(in("a"));
    EXPECT_EQ(attr("ui.main-window.status", "title"), "");
    user().leave();
    EXPECT_FALSE(in("a").isStateActive("hover"));

    // What comes to lie under a pointer that rests is entered with the next frame.
    user().moveTo(in("c"));
    taken();
    set("ui.main-window.a", "is-visible", "false");
    user().advance(0.1);
    EXPECT_EQ(taken(), (Lines{"c mouse-top-exit", "c mouse-exit"}));
}

TEST_F(WindowEvents, CaptureTheButtonsAndTellAReleaseFromACancel)
{
    open({noter("a", kButtons, {{"width", "50"}, {"height", "50"}},
                {noter("inner", {"mouse-press"}, {{"width", "9"}, {"height", "9"}})}),
          noter("b", {"mouse-enter", "mouse-press", "mouse-move"}, {{"width", "50"}, {"height", "50"}})});
    user().click(in("a"));
    EXPECT_EQ(taken(), (Lines{"a mouse-press", "a mouse-release"}));

    user().press();
    user().moveTo(in("b"));
    EXPECT_EQ(taken(), (Lines{"a mouse-press"})) << "what is dragged over stays as it is";
    EXPECT_FALSE(in("a").isStateActive("hover"));
    user().release();
    EXPECT_EQ(taken(), (Lines{"a mouse-cancel", "b mouse-enter"}));

    // Both buttons, each told where it went down; the second one goes to what holds the pointer.
    user().moveTo(in("a"));
    user().press(platform::MouseButton::kRight);
    user().moveTo(in("b"));
    user().press();
    user().release(platform::MouseButton::kRight);
    user().moveTo(window(), 300, 300);
    user().release();
    EXPECT_EQ(taken(), (Lines{"a mouse-press-r", "a mouse-press", "a mouse-cancel-r", "a mouse-cancel"}));

    // The system takes the pointer away.
    user().moveTo(in("a"));
    user().press();
    window().onCaptureLost();
    user().release();
    EXPECT_EQ(taken(), (Lines{"a mouse-press", "a mouse-cancel"}));

    // What was pressed on goes away meanwhile; the rest of the press is nobody's.
    user().press();
    CObject::releaseObject(&in("a"));
    user().moveTo(window(), 60, 10);
    user().release();
    EXPECT_EQ(taken(), (Lines{"a mouse-press", "b mouse-move", "b mouse-enter"}));
}

TEST_F(WindowEvents, TellWhereThePointerIsAndWhatIsHeld)
{
    const TreeNode forward =
        command("mouse-press",
                {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-forward-params", "true"}});
    open({view("a", {{"width", "50"}, {"height", "50"}}, {forward})});
    user().setModifiers({true, false, true});
    user().moveTo(window(), 7, 9);
    user().press(platform::MouseButton::kLeft, true);
    EXPECT_EQ(log(), (Lines{"actual-x=407", "actual-y=209", "button=l", "is-alt=true", "is-button-l=true",
                            "is-button-r=false", "is-ctrl=false", "is-double-click=true", "is-shift=true",
                            "x=7", "y=9"}));
}

TEST_F(WindowEvents, GiveTheWheelToTheNearestViewThatTakesIt)
{
    open({noter("list", {"mouse-wheel"}, {{"width", "60"}, {"height", "60"}},
                {noter("item", {"mouse-move"}, {{"width", "50"}, {"height", "50"}})})});
    user().moveTo(in("list.item"));
    taken();
    user().wheel(-1.0);
    EXPECT_EQ(taken(), (Lines{"list mouse-wheel"}));
    set("ui.main-window.list", "is-disabled", "true");
    user().wheel(-1.0);
    user().click(in("list.item"));
    EXPECT_EQ(taken(), Lines{}) << "disabled views fire nothing";
}

TEST_F(WindowEvents, GiveKeysToTheViewWithTheFocusAlone)
{
    const Lines events = {"focus", "blur", "key-press", "key-release", "focus-lost"};
    open({noter("a", events, {{"width", "50"}, {"height", "50"}}),
          noter("b", events, {{"width", "50"}, {"height", "50"}},
                {command("key-press", {{"run-event", "note"},
                                       {"run-event-target", "log"},
                                       {"run-event-forward-params", "true"}})})});
    user().type(U"x");
    EXPECT_EQ(taken(), Lines{});
    ASSERT_OK(window().setKeyFocus(&in("a"), false));
    user().key(platform::key::kEnter);
    EXPECT_EQ(taken(), (Lines{"a focus", "a key-press", "a key-release"}));
    ASSERT_OK(window().setKeyFocus(&in("a"), false));
    EXPECT_EQ(taken(), Lines{}) << "it has the focus already";
    CAttrMap parameters;
    parameters["key-focus-view"] = CAttrValue("ui.main-window.b");
    ASSERT_OK(window().notifyTo("ui.main-window.window-renderer", "key-focus", parameters, false));
    EXPECT_EQ(taken(), (Lines{"a blur", "b focus"}));
    user().type(U"\u03A9");
    EXPECT_EQ(log(), (Lines{"is-alt=false", "is-character=true", "is-ctrl=false", "is-shift=false",
                            "keycode=937", "text=b key-press", "text=b key-release"}));
    taken();
    user().click(in("b"));
    EXPECT_EQ(taken(), Lines{});
    user().click(in("a"));
    EXPECT_EQ(taken(), (Lines{"b blur"})) << "a press elsewhere ends what is typed";
    ASSERT_OK(window().setKeyFocus(&in("b"), false));
    taken();
    window().onFocus(false);
    EXPECT_EQ(taken(), (Lines{"b focus-lost"}));
    CObject::releaseObject(&in("b"));
    EXPECT_EQ(window().getKeyFocus(), nullptr);
    user().key(platform::key::kEnter);
    EXPECT_EQ(taken(), Lines{});
}

TEST_F(WindowEvents, ClickByThemselvesWhereThePointerRests)
{
    open({noter("a", {"auto-click"}, {{"width", "50"}, {"height", "50"}})}, {},
         {{"auto-click-timeout", "0.2"}});
    user().advance(1.0);
    EXPECT_EQ(taken(), Lines{}) << "the pointer is elsewhere";
    user().moveTo(in("a"));
    user().advance(0.15);
    user().moveBy(1, 0);
    user().advance(0.15);
    EXPECT_EQ(taken(), Lines{}) << "it still moves";
    user().advance(1.0);
    EXPECT_EQ(taken(), (Lines{"a auto-click"})) << "once for each rest";
    user().moveBy(1, 0);
    user().advance(0.3);
    EXPECT_EQ(taken(), (Lines{"a auto-click"}));
    set("ui.main-window.window-renderer", "auto-click-timeout", "-1");
    user().moveBy(1, 0);
    user().advance(0.3);
    EXPECT_EQ(taken(), Lines{});
}

// Handlers end the view that was pressed, its parent, or the whole window.
TEST_F(WindowEvents, OutliveWhatHandlersRelease)
{
    const auto ending = [](const std::string& event, const std::string& path) {
        return command(
            event,
            {{"run-event", "release-child-bridged"}, {"run-event-target", "ui"}, {"run-event-params", "p"}},
            {node("core:object", "p", {{"sender", path}})});
    };
    const Attrs size = {{"width", "30"}, {"height", "30"}};
    open({view("a", size, {view("b", size, {ending("mouse-press", "ui.main-window.a")})}),
          view("c", size, {view("d", size, {ending("mouse-enter", "ui.main-window.c")})}),
          view("e", size, {ending("mouse-release", "ui.main-window")})});
    user().click(in("a.b"));
    EXPECT_EQ(root_->findObject("ui.main-window.a"), nullptr);
    user().advance(0.1);
    EXPECT_EQ(root_->findObject("ui.main-window.c"), nullptr) << "it came to lie under the pointer";
    user().advance(0.1);
    user().click(in("e"));
    EXPECT_EQ(root_->findObject("ui.main-window"), nullptr);
    user().advance(0.1);
    user().press();
}

} // namespace
} // namespace qel
