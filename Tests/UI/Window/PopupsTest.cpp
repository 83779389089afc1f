// Pop-ups: lists, menus and dialogs, and what closes them.
#include "CFileDialog.h"
#include "CInterfaceScale.h"
#include "FileSystem.h"
#include "TemporaryFolder.h"
#include "WholeFile.h"
#include "WindowFixture.h"

namespace qel {
namespace {

using platform::PixelRect;
using test::Attrs;
using test::command;
using test::node;
using test::TreeNode;
using test::view;
using Lines = std::vector<std::string>;

TreeNode noteOf(const std::string& event, const std::string& text)
{
    return command(event, {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-params", "p"}},
                   {node("core:object", "p", {{"text", text}})});
}

// A view that opens a pop-up when `event` happens to it, and notes what it hears of it.
TreeNode opener(const std::string& name, const std::string& event, const std::string& handler, Attrs params,
                Attrs attrs = {}, const std::vector<TreeNode>& children = {})
{
    attrs.insert(attrs.end(), {{"placement", "left"}, {"width", "50"}, {"height", "20"}});
    TreeNode made =
        view(name, attrs,
             {command(event, {{"run-event", handler}, {"run-event-params", "settings"}},
                      {node("core:object", "settings", params)}),
              noteOf("popup-changed", name + " changed"), noteOf("popup-closed", name + " closed"),
              noteOf("popup-result", name + " result")});
    for (const TreeNode& child : children) {
        made.child(child);
    }
    return made;
}

TreeNode windowTemplate(const std::string& name, Attrs attrs, const std::vector<TreeNode>& views,
                        const Attrs& rendererAttrs = {})
{
    attrs.insert(attrs.begin(), {{"palette", "{*/ui palette-name}"}});
    TreeNode root =
        node("ui:window-drag", "", attrs, {node("ui:window-renderer", "window-renderer", rendererAttrs)});
    for (const TreeNode& each : views) {
        root.child(each);
    }
    return TreeNode::templateOf(name, root);
}

// The main window lies at (400, 200) and is 200 x 100 large.
class Popups : public test::WindowFixture
{
protected:
    // "a" opens "ui:win-list" when it is pressed, "b" when it is let go; "c" opens a dialog. In the list,
    // "more" opens a menu beside itself, and all can pick.
    void openMain()
    {
        const auto pick = command("mouse-release", {{"run-event", "popup-result"}});
        const Attrs row{{"placement", "top"}, {"width", "60"}, {"height", "20"}};
        open({opener("a", "mouse-press", "popup-toggle",
                     {{"tag", "ui:win-list"},
                      {"window-alignment", "bottom"},
                      {"is-same-width", "true"},
                      {"width-modif", "10"},
                      {"popup-extra", "yes"}}),
              opener("b", "mouse-release", "popup-toggle-check-release",
                     {{"tag", "ui:win-list"}, {"window-alignment", "bottom"}}),
              opener("c", "mouse-release", "popup-toggle", {{"tag", "ui:win-dialog"}}),
              view("rest", {{"placement", "full"}, {"width", "full"}, {"height", "full"}})},
             {}, {},
             {windowTemplate("ui:win-list", {},
                             {view("item", row, {pick}),
                              opener("more", "mouse-release", "popup-toggle",
                                     {{"tag", "ui:win-menu"}, {"window-alignment", "right"}})}),
              windowTemplate("ui:win-menu", {}, {view("item", row, {pick})}),
              windowTemplate("ui:win-dialog",
                             {{"is-drop-down-behavior-disabled", "true"}, {"width", "120"}, {"height", "60"}},
                             {view("title", {{"placement", "top"},
                                             {"width", "full"},
                                             {"height", "20"},
                                             {"is-window-draggable", "true"}}),
                              opener("list", "mouse-release", "popup-toggle", {{"tag", "ui:win-list"}})},
                             {{"unique-name", "dialog"}})});
        log().clear();
    }
    CView* find(const char* path) { return dynamic_cast<CView*>(root_->findObject(path)); }
    bool isOpen(const char* path) { return find(path) != nullptr; }
    PixelRect placeOf(const char* root)
    {
        return window((std::string(root) + ".window-renderer").c_str()).getScreenPlace();
    }
    Lines takeLog() { return std::exchange(log(), {}); }
};

TEST_F(Popups, OpenWhereAndAsTheirOpenerSays)
{
    openMain();
    user().click(in("a"));
    ASSERT_TRUE(isOpen("win-list"));
    EXPECT_EQ(placeOf("win-list"), (PixelRect{400, 220, 60, 40})) << "10 wider than its opener, and under it";
    EXPECT_EQ(attr("win-list", "extra"), "yes");
    EXPECT_EQ(attr("win-list", "opener"), "ui.main-window.a");
    EXPECT_TRUE(in("a").isStateActive("popup"));
    EXPECT_EQ(takeLog(), (Lines{"text=a changed"}));

    user().click(in("a"));
    CInterfaceScale::set(1.25); // for windows to come
    user().click(in("a"));
    CInterfaceScale::set(1.0);
    EXPECT_EQ(placeOf("win-list").width, 60) << "at the scale of its opener";
}

TEST_F(Popups, CloseWithTheSecondPressAndStayClosed)
{
    openMain();
    for (const char* name : {"a", "b"}) {
        SCOPED_TRACE(name);
        for (int i = 0; i < 2; ++i) {
            user().click(in(name));
            EXPECT_TRUE(isOpen("win-list"));
            takeLog();
            user().moveTo(in(name));
            user().press();
            EXPECT_FALSE(isOpen("win-list"));
            user().release();
            EXPECT_FALSE(isOpen("win-list"));
            EXPECT_FALSE(in(name).isStateActive("popup"));
            const std::string text = std::string("text=") + name;
            EXPECT_EQ(takeLog(), (Lines{text + " closed", text + " changed"}));
        }
    }
}

TEST_F(Popups, CloseWhereAPressIsElsewhere)
{
    openMain();
    user().click(in("a"));
    user().click(in("rest"));
    EXPECT_FALSE(isOpen("win-list"));

    // One opener's press closes the other's list and opens its own.
    user().click(in("a"));
    user().click(in("b"));
    EXPECT_TRUE(in("b").isStateActive("popup"));
    EXPECT_FALSE(in("a").isStateActive("popup"));

    // Other programs' windows are watched; a drag that leaves ours is no press elsewhere.
    user().moveTo(*find("win-list.item"));
    user().press();
    user().moveBy(-300, -190);
    user().advance(0.2);
    EXPECT_TRUE(isOpen("win-list"));
    user().release();
    user().advance(0.2);
    EXPECT_TRUE(isOpen("win-list"));
    user().press();
    user().advance(0.1);
    EXPECT_FALSE(isOpen("win-list"));
    user().release();

    user().click(in("c"));
    user().click(in("rest"));
    EXPECT_TRUE(isOpen("win-dialog"));
    EXPECT_EQ(placeOf("win-dialog"), (PixelRect{440, 220, 120, 60}));
}

TEST_F(Popups, FormChains)
{
    openMain();
    const auto openBoth = [&] {
        if (!isOpen("win-list")) {
            user().click(in("b"));
        }
        user().click(*find("win-list.more"));
        EXPECT_TRUE(isOpen("win-menu"));
    };
    openBoth();
    EXPECT_EQ(placeOf("win-menu").x, placeOf("win-list").x + 50);
    user().moveTo(*find("win-menu.item"));
    user().press();
    EXPECT_TRUE(isOpen("win-menu")) << "a press in a child closes no parent";
    user().moveBy(0, 200);
    user().release();
    user().moveTo(*find("win-list.item"));
    user().press();
    EXPECT_TRUE(isOpen("win-list"));
    EXPECT_FALSE(isOpen("win-menu")) << "a press in the parent closes the child";
    user().moveBy(0, 200);
    user().release();

    openBoth();
    ASSERT_OK(sendEvent(*find("win-list"), "close-window", {}));
    EXPECT_FALSE(isOpen("win-menu"));

    openBoth();
    user().click(in("rest"));
    EXPECT_FALSE(isOpen("win-list") || isOpen("win-menu"));

    // A dialog stays when the list goes that was opened from it, and takes the list with it.
    user().click(in("c"));
    user().click(*find("win-dialog.list"));
    EXPECT_TRUE(isOpen("win-list"));
    user().click(in("rest"));
    EXPECT_TRUE(isOpen("win-dialog") && !isOpen("win-list"));
    user().click(*find("win-dialog.list"));
    ASSERT_OK(sendEvent(*find("win-dialog"), "close-window", {}));
    EXPECT_FALSE(isOpen("win-dialog") || isOpen("win-list"));

    // What goes with the opener, or with the main window, is told to nobody.
    openBoth();
    takeLog();
    CObject::releaseObject(&in("b"));
    EXPECT_FALSE(isOpen("win-list") || isOpen("win-menu"));
    user().click(in("a"));
    user().click(*find("win-list.more"));
    takeLog();
    CObject::releaseObject(root_->findObject("ui.main-window"));
    EXPECT_FALSE(isOpen("win-list") || isOpen("win-menu"));
    EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(Popups, BringTheirResultToTheOpenerOrItsTarget)
{
    openMain();
    user().click(in("b"));
    takeLog();
    user().click(*find("win-list.item"));
    EXPECT_EQ(takeLog(), (Lines{"text=b result", "text=b closed", "text=b changed"}));
    EXPECT_FALSE(isOpen("win-list")) << "a list has done its work";

    // From a menu of the list, by way of the list's own target.
    set("ui.main-window.b", "popup-result-target", "ui.main-window.c");
    user().click(in("b"));
    ASSERT_OK(find("win-list.more")->setAttribute("popup-result-target", "ui.main-window.b", true));
    user().click(*find("win-list.more"));
    takeLog();
    user().click(*find("win-menu.item"));
    const Lines results = takeLog();
    ASSERT_GE(results.size(), 3U);
    EXPECT_EQ(Lines(results.begin(), results.begin() + 3),
              (Lines{"text=more result", "text=b result", "text=c result"}));
    EXPECT_FALSE(isOpen("win-list") || isOpen("win-menu"));

    // In a circle, and back to the sender: each hears of it once.
    set("ui.main-window.c", "popup-result-target", "ui.main-window.b");
    user().click(in("b"));
    takeLog();
    user().click(*find("win-list.item"));
    EXPECT_EQ(takeLog(),
              (Lines{"text=b result", "text=c result", "text=b result", "text=b closed", "text=b changed"}));
    set("ui.main-window.b", "popup-result-target", "win-list.item");
    user().click(in("b"));
    takeLog();
    user().click(*find("win-list.item"));
    EXPECT_EQ(takeLog().front(), "text=b result");

    // A dialog stays.
    set("ui.main-window.c", "popup-result-target", "");
    user().click(in("c"));
    ASSERT_OK(sendEvent(*find("win-dialog.title"), "popup-result", {}));
    EXPECT_TRUE(isOpen("win-dialog"));
    ASSERT_OK(sendEvent(*find("win-dialog.title"), "popup-close", {}));
    EXPECT_FALSE(isOpen("win-dialog"));
}

TEST_F(Popups, LeaveTheOpenerAsItWasWhereTheyCannotOpen)
{
    openMain();
    const struct
    {
        const char* tag;
        const char* alignment;
        const char* message;
    } cases[] = {
        {"ui:win-list", "below", "Invalid window alignment 'below'"},
        {"ui:win-none", "bottom", "Run-time template 'ui:win-none' does not exist."},
    };
    for (const auto& each : cases) {
        CAttrMap parameters;
        parameters["tag"] = CAttrValue(each.tag);
        parameters["window-alignment"] = CAttrValue(each.alignment);
        EXPECT_FAILS(sendEvent(in("rest"), "popup-toggle", parameters), each.message);
        EXPECT_FALSE(isOpen("win-list"));
        EXPECT_FALSE(in("rest").isStateActive("popup"));
        EXPECT_EQ(takeLog(), Lines{});
    }
}

TEST_F(Popups, WithAUniqueNameAreThereOnce)
{
    openMain();
    user().click(in("c"));
    CAttrMap parameters;
    parameters["tag"] = CAttrValue("ui:win-dialog");
    ASSERT_OK(sendEvent(in("rest"), "popup-toggle", parameters));
    EXPECT_EQ(window().getSystem().getWindows().size(), 2U);
    EXPECT_FALSE(in("rest").isStateActive("popup"));
    EXPECT_TRUE(in("c").isStateActive("popup"));
}

TEST_F(Popups, ThatBlockAWindowStayAboveIt)
{
    const auto block = [](const char* event, const char* handler) {
        return command(event, {{"run-event", handler}, {"run-event-target", "{opener}"}});
    };
    open({opener("a", "mouse-release", "popup-toggle", {{"tag", "ui:win-message"}}),
          opener("b", "mouse-release", "popup-toggle", {{"tag", "ui:win-dialog"}})},
         {}, {},
         {windowTemplate("ui:win-message",
                         {{"is-drop-down-behavior-disabled", "true"}, {"width", "60"}, {"height", "20"}},
                         {block("window-create", "block-window"), block("window-destroy", "unblock-window")}),
          windowTemplate("ui:win-dialog",
                         {{"is-drop-down-behavior-disabled", "true"}, {"width", "60"}, {"height", "20"}}, {}),
          TreeNode::templateOf(
              "ui:window-blocker",
              view("", {{"placement", "window-overlay"}, {"width", "full"}, {"height", "full"}}))});
    user().click(in("a"));
    ASSERT_TRUE(isOpen("win-message"));
    user().advance(0.05);
    user().click(in("b"));
    EXPECT_FALSE(isOpen("win-dialog"));

    window().raise();
    const auto top = [&] { return window().getSystem().getWindows().back()->getFullName().toUtf8(); };
    user().click(in("b"));
    EXPECT_EQ(top(), "win-message.window-renderer") << "a press that is blocked shows why";
    ASSERT_OK(sendEvent(*find("win-message"), "close-window", {}));
    user().advance(0.05);
    user().click(in("b"));
    EXPECT_TRUE(isOpen("win-dialog"));
}

TEST_F(Popups, AreDraggedByTheirTitlesAndComeBackOnTheScreen)
{
    openMain();
    user().click(in("c"));
    user().moveTo(*find("win-dialog.title"));
    user().press();
    user().moveBy(30, 40);
    user().moveBy(-10, 0);
    EXPECT_EQ(placeOf("win-dialog"), (PixelRect{460, 260, 120, 60}));
    user().moveBy(-700, 0);
    EXPECT_EQ(placeOf("win-dialog").x, -240);
    user().release();
    EXPECT_EQ(placeOf("win-dialog"), (PixelRect{0, 260, 120, 60}));
    EXPECT_EQ(attr("win-dialog.window-renderer", "window-x"), "0");
    user().moveBy(50, 0);
    EXPECT_EQ(placeOf("win-dialog").x, 0);
}

// --- files

class FileDialogs : public Popups
{
protected:
    FileDialogs() { releaseError(registerCreators(kRows)); }

    // The main window with a dialog in it, and the window that takes paths.
    void openDialog(const char* mode, Attrs attrs = {})
    {
        attrs.insert(
            attrs.end(),
            {{"mode", mode}, {"extension", "cbf"}, {"result-event", "note"}, {"result-target", "log"}});
        open({view("v", {}, {node("ui:file-dialog", "files", attrs)})}, {}, {},
             {windowTemplate("ui:win-file-path", {{"width", "120"}, {"height", "60"}}, {})});
        ASSERT_OK(send("open"));
        log().clear();
    }
    CError send(const char* event, const CAttrMap& parameters = {})
    {
        return sendEvent(*root_->findObject("ui.main-window.v.files"), event, parameters);
    }
    // What the window shows after this path was entered; "-" if it has closed.
    std::string enter(const std::string& path)
    {
        CAttrMap parameters;
        parameters["text"] = CAttrValue(CString::fromUtf8(path));
        EXPECT_OK(send("path-changed", parameters));
        EXPECT_OK(send("path-entered"));
        return isOpen("win-file-path") ? attr("win-file-path", "path-message") : "-";
    }

    test::TemporaryFolder folder_;

private:
    static constexpr CCreatorRow kRows[] = {test::creatorRow<CFileDialog>("ui:file-dialog"),
                                            {nullptr, nullptr, nullptr}};
};

TEST_F(FileDialogs, SayWhatIsWrongWithAPathAndGiveOneThatIsRight)
{
    const std::string folder = folder_.root().generic_string();
    writeWhole(folder_.path("old.cbf"), "x");
    openDialog("open", {{"path", folder}, {"title", "Load"}});
    EXPECT_EQ(attr("win-file-path", "title"), "Load");
    EXPECT_EQ(attr("win-file-path", "path-text"), folder + "/");
    EXPECT_EQ(enter("  "), "Enter the path of a file.");
    EXPECT_EQ(enter(folder), "'" + folder + "' is a folder.");
    EXPECT_EQ(enter("new.cbf"), "There is no file '" + folder + "/new.cbf'.");
    EXPECT_EQ(enter(folder + "/no/old.cbf"), "There is no file '" + folder + "/no/old.cbf'.");
    EXPECT_EQ(log(), Lines{});
    EXPECT_EQ(enter(" old.cbf\n"), "-");
    EXPECT_EQ(log(), (Lines{"extension=cbf", "filename=" + folder + "/old.cbf", "path=" + folder}));
}

TEST_F(FileDialogs, AskBeforeAFileIsReplaced)
{
    const std::string folder = folder_.root().generic_string();
    writeWhole(folder_.path("old.cbf"), "x");
    std::string home;
    ASSERT_EQ(platform::homeFolder(home), 0);
    openDialog("save", {{"filename", "old"}});
    EXPECT_EQ(attr("win-file-path", "path-text"), home + (home.ends_with('/') ? "old" : "/old"));
    EXPECT_EQ(enter(folder + "/no/new"), "There is no folder '" + folder + "/no'.");
    const std::string question = "The file '" + folder + "/old.cbf' exists. Once more to replace it.";
    EXPECT_EQ(enter(folder + "/old"), question);
    EXPECT_EQ(enter(folder + "/old.cbf"), "-");
    EXPECT_EQ(log().at(1), "filename=" + folder + "/old.cbf");

    // The next one starts where this one ended; a new file needs no question. To close is to give up.
    log().clear();
    ASSERT_OK(send("open"));
    EXPECT_EQ(attr("win-file-path", "path-text"), folder + "/old");
    EXPECT_EQ(enter("new"), "-");
    EXPECT_EQ(log().at(1), "filename=" + folder + "/new.cbf");
    log().clear();
    ASSERT_OK(send("open"));
    ASSERT_OK(sendEvent(*find("win-file-path"), "close-window", {}));
    EXPECT_EQ(log(), Lines{});
}

TEST_F(FileDialogs, TakeFoldersAndNoOtherMode)
{
    const std::string folder = folder_.root().generic_string();
    openDialog("folder");
    EXPECT_EQ(enter(folder + "/no"), "There is no folder '" + folder + "/no'.");
    EXPECT_EQ(enter(folder + "/"), "-");
    EXPECT_EQ(log(), (Lines{"extension=", "filename=", "path=" + folder}));
    set("ui.main-window.v.files", "mode", "print");
    EXPECT_FAILS(send("open"), "Invalid file dialog mode.");
}

} // namespace
} // namespace qel
