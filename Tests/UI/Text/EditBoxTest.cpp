// Texts that a user edits.
#include "TextFixture.h"

#include "CEditBox.h"
#include "CGlobalSettings.h"
#include "LiteralText.h"
#include "SystemEvents.h"

namespace qel::test {

namespace {

namespace keys = platform::key;

// Answers the clipboard when it is told to.
class SlowClipboard : public platform::CSystemClipboard
{
public:
    void setText(const std::string&) override {}
    void requestText(TextHandler handler) override { pending = std::move(handler); }
    TextHandler pending;
};

// Refuses to have "fixed" renamed.
class Refusing : public CObject
{
public:
    static void buildClassInfo(CClassInfo& info)
    {
        CObject::buildClassInfo(info);
        info.handleEvent<&Refusing::ask>("can-rename");
    }
    CError ask(const CAttrMap& parameters)
    {
        CObject* const source = findObject(parameters.at("source").toString());
        const bool isFixed = parameters.at("text").toString() == "fixed";
        return source->setAttribute("is-editbox-refused", CAttrValue(isFixed), true);
    }
};

class EditBoxTest : public TextFixture
{
protected:
    using Log = std::vector<std::string>;

    EditBoxTest()
    {
        static constexpr CCreatorRow kEditRows[] = {
            creatorRow<CGlobalSettings>("core:global-settings"),
            creatorRow<Refusing>("test:refusing"),
            creatorRow<CEditBox>("ui:editbox"),
            {nullptr, nullptr, nullptr},
        };
        releaseError(registerCreators(kEditRows));
    }

    // Labels of 100 x 13 pixels, one below the other: "t" and, behind it, others.
    void loadLabels(Attrs attrs, const std::vector<TreeNode>& others = {})
    {
        attrs.insert(attrs.begin(), {{"placement", "top"}, {"width", "100"}, {"title", "one two"}});
        std::vector<TreeNode> views = {
            TreeNode::templateOf("ui:editbox-popup",
                                 node("ui:view", "", {{"color", "Panel"}},
                                      {node("ui:editbox", "line",
                                            {{"font-name", "{font-name}"},
                                             {"placement", "full"},
                                             {"width", "full"},
                                             {"height", "full"},
                                             {"text-color", "Knob"},
                                             {"paragraph-select-color", "Alarm|1"},
                                             {"paragraph-select-text-color", "Alarm|2"}})})),
            text("t", attrs,
                 {command("paragraph-text-changed", {{"run-event", "note"},
                                                     {"run-event-target", "log"},
                                                     {"run-event-forward-params", "true"}})})};
        views.insert(views.end(), others.begin(), others.end());
        loadTexts(views, {node("test:refusing", "refusing"),
                          node("ui:value-list-manual", "values", {{"values", "a;b"}}),
                          node("core:global-settings", "settings")});
    }
    CTextView& label(const char* path = "w.t") { return dynamic_cast<CTextView&>(at(path)); }
    CEditBox& box(const char* path = "w.t.temp-editbox.line") { return dynamic_cast<CEditBox&>(at(path)); }
    std::string edited() { return box().getEdit().getText().toUtf8(); }
    void open(const char* path = "w.t")
    {
        ASSERT_OK(label(path).openEditBox());
        ASSERT_TRUE(label(path).isEditing());
    }
    void cancel()
    {
        if (label().isEditing()) {
            key(keys::kEscape, false);
        }
    }
};

} // namespace

TEST_F(EditBoxTest, OpensByTheClicksThatAreAskedFor)
{
    loadLabels({});
    const auto isOpen = [this](const char* attribute, bool isDoubleClick, double waitSec) {
        set("w.t", attribute, "true");
        click(20, 5, isDoubleClick);
        frame(CViewContext::getTimeSec() + waitSec);
        const bool result = label().isEditing();
        cancel();
        set("w.t", attribute, "false");
        return result;
    };
    EXPECT_FALSE(isOpen("is-select-all-on-focus", false, 1.0));
    EXPECT_TRUE(isOpen("is-editbox-on-click", false, 0.0));
    EXPECT_FALSE(isOpen("is-editbox-on-dblclick", false, 1.0));
    EXPECT_TRUE(isOpen("is-editbox-on-dblclick", true, 0.0));
    EXPECT_FALSE(isOpen("is-editbox-on-singleclick", false, 0.1));
    EXPECT_TRUE(isOpen("is-editbox-on-singleclick", false, 1.0));
    EXPECT_FALSE(isOpen("is-editbox-on-singleclick", true, 1.0));
    set("w.t", "is-read-only", "true");
    EXPECT_FALSE(isOpen("is-editbox-on-click", false, 0.0));
    set("w.t", "is-read-only", "false");
    set("w.t", "is-disabled", "true");
    EXPECT_FALSE(isOpen("is-editbox-on-click", false, 0.0));
}

TEST_F(EditBoxTest, CommitsOrCancels)
{
    loadLabels({{"editbox-empty-value", "nothing"}, {"is-intercepting", "true"}});
    open();
    EXPECT_EQ(size("w.t.temp-editbox"), "100x13");
    EXPECT_EQ(at("w").findViewAt({50, 5}), &box()) << "though the label would intercept";
    type(" three");
    EXPECT_EQ(attr("w.t", "title"), "one two");
    key(keys::kEnter, false);
    EXPECT_EQ(attr("w.t", "title"), "one two three");
    EXPECT_EQ(log(), Log({"index=-1", "is-cancelled=false", "text=one two three"}));
    EXPECT_EQ(textWindow_.focus, nullptr);
    EXPECT_FALSE(label().isEditing());
    frame(0.1);
    EXPECT_EQ(at("w").findViewAt({50, 5}), &label());

    log().clear();
    open();
    type("x");
    key(keys::kEscape, false);
    EXPECT_EQ(attr("w.t", "title"), "one two three");
    EXPECT_EQ(log(), Log({"index=-1", "is-cancelled=true", "text=one two three"}));

    // An empty text has a value of its own; to lose the focus commits.
    open();
    key('A', false, "is-ctrl");
    key(keys::kDelete, false);
    ASSERT_OK(textWindow_.setKeyFocus(nullptr, false));
    EXPECT_EQ(attr("w.t", "title"), "nothing");

    open();
    type("1");
    ASSERT_OK(box().receiveEvent("focus-lost", {}));
    EXPECT_EQ(attr("w.t", "title"), "nothing1");

    // What a user types is text, whatever it looks like.
    open();
    type("{full-name}");
    key(keys::kEnter, false);
    EXPECT_EQ(plainText(label().getTitle()), "nothing1{full-name}");

    // A box goes with its view, and with what is shown of it.
    open();
    CObject::releaseObject(&label());
    EXPECT_EQ(textWindow_.focus, nullptr);
}

TEST_F(EditBoxTest, TakesKeys)
{
    loadLabels({{"accept-chars", "abcdefghij "}, {"max-paragraph-length", "9"}, {"title", "ab cd"}});
    open();
    key(keys::kHome, false);
    key(keys::kRight, false);
    type("Xe");
    EXPECT_EQ(edited(), "aeb cd");
    key(keys::kRight, false, "is-ctrl");
    key(keys::kEnd, false, "is-shift");
    EXPECT_EQ(box().getEdit().getSelectedText(), "cd");
    key('X', false, "is-ctrl");
    EXPECT_EQ(edited(), "aeb ");
    key(keys::kHome, false);
    key('V', false, "is-ctrl");
    EXPECT_EQ(edited(), "cdaeb ");
    key(keys::kLeft, false, "is-shift");
    key('C', false, "is-ctrl");
    key(keys::kEnd, false);
    key(keys::kInsert, false, "is-shift");
    EXPECT_EQ(edited(), "cdaeb d");
    key(keys::kBackspace, false, "is-ctrl");
    EXPECT_EQ(edited(), "cdaeb ");
    // Shortcuts of the host and what lies outside of the rules change nothing.
    key('S', false, "is-ctrl");
    key('a', false, "is-alt");
    key(0x1F50A, true);
    EXPECT_EQ(edited(), "cdaeb ");

    set("w.t.temp-editbox.line", "is-accept-enter", "false");
    key(keys::kEnter, false);
    key(keys::kTab, false);
    EXPECT_TRUE(label().isEditing());
}

TEST_F(EditBoxTest, GetsTheClipboardLater)
{
    loadLabels({});
    SlowClipboard clipboard;
    textWindow_.slow = &clipboard;
    open();
    key('V', false, "is-ctrl");
    key(keys::kEscape, false);
    clipboard.pending("late"); // the box has gone
    open();
    key('V', false, "is-ctrl");
    clipboard.pending("\xC3\x9F\xCE\xA9");
    key(keys::kEnter, false);
    EXPECT_EQ(attr("w.t", "title"), "one two\xC3\x9F\xCE\xA9");

    // The menu of a label does the same without a box.
    ASSERT_OK(label().receiveEvent("paste", {}));
    clipboard.pending("pasted\n");
    EXPECT_EQ(attr("w.t", "title"), "pasted");
    textWindow_.slow = nullptr;
    ASSERT_OK(label().receiveEvent("copy", {}));
    open();
    key('V', false, "is-ctrl");
    EXPECT_EQ(edited(), "pastedpasted");
}

TEST_F(EditBoxTest, SelectsByThePointer)
{
    loadLabels({{"is-editbox-on-click", "true"}});
    click(12, 5);
    EXPECT_EQ(box().getEdit().getCaret(), 2U) << "where the click was";
    ASSERT_OK(box().onMousePress(pointer(7, 5)));
    ASSERT_OK(box().onMouseMove(pointer(150, 5)));
    EXPECT_EQ(box().getEdit().getSelectedText(), "ne two");
    ASSERT_OK(box().onMouseRelease(pointer(150, 5)));
    ASSERT_OK(box().onMouseMove(pointer(0, 5)));
    EXPECT_EQ(box().getEdit().getSelectedText(), "ne two");
    ASSERT_OK(box().onMousePress(pointer(30, 5, true)));
    ASSERT_OK(box().onMouseMove(pointer(32, 5)));
    EXPECT_EQ(box().getEdit().getSelectedText(), "two");
    frame(0.1);
    EXPECT_EQ(columnsOf(0x140000, 0), "22-39") << "the strip of the selection";
    EXPECT_EQ(columnsOf(0x1E0000, 6), "22-38");

    cancel();
    set("w.t", "is-select-all-on-focus", "true");
    click(12, 5);
    EXPECT_EQ(box().getEdit().getSelectedText(), "one two");
}

TEST_F(EditBoxTest, BlinksAndMovesAlongWithItsCaret)
{
    loadLabels({{"title", "abc"}});
    open();
    const auto caret = [this](int x) {
        frame(0.1);
        return pixelAt(x, 0) == kRed;
    };
    EXPECT_TRUE(caret(18));
    context().tickCursorTimer(); // it has just moved
    EXPECT_TRUE(caret(18));
    context().tickCursorTimer();
    EXPECT_FALSE(caret(18));
    key(keys::kLeft, false);
    EXPECT_TRUE(caret(12));

    // 20 characters of 6 pixels in 100, of which the caret takes one.
    key(keys::kEnd, false);
    type("defghijklmnopqrst");
    EXPECT_TRUE(caret(99));
    key(keys::kLeft, false);
    EXPECT_TRUE(caret(93));
    key(keys::kHome, false);
    EXPECT_TRUE(caret(0));

    cancel();
    set("w.t", "text-alignment", "right");
    open();
    EXPECT_TRUE(caret(99));
    key(keys::kHome, false);
    EXPECT_TRUE(caret(81)) << "the text stays where it was moved for the caret";
}

TEST_F(EditBoxTest, GoesAlongAGroupByTab)
{
    const auto other = [](const char* name, Attrs attrs) {
        attrs.insert(attrs.end(), {{"placement", "top"}, {"tab-group", "g"}, {"title", name}});
        return text(name, attrs);
    };
    loadLabels({{"tab-group", "g"}},
               {other("off", {{"is-disabled", "true"}}), other("hidden", {{"is-visible", "false"}}),
                other("next", {}), other("last", {})});
    open();
    type("!");
    key(keys::kTab, false);
    EXPECT_EQ(attr("w.t", "title"), "one two!");
    ASSERT_TRUE(label("w.next").isEditing());
    EXPECT_EQ(box("w.next.temp-editbox.line").getEdit().getSelectedText(), "next");
    key(keys::kTab, false);
    EXPECT_TRUE(label("w.last").isEditing());
    key(keys::kTab, false);
    EXPECT_TRUE(label().isEditing());
    key(keys::kTab, false, "is-shift");
    EXPECT_TRUE(label("w.last").isEditing());
}

TEST_F(EditBoxTest, AsksWhetherATextMayBeRenamed)
{
    loadLabels({{"editbox-can-rename-event", "can-rename"},
                {"editbox-can-rename-target", "refusing"},
                {"text-source", "values"},
                {"inner-border", "L6 R4 T1"},
                {"is-paragraph-selectable", "true"}});
    set("values", "values", "fixed;free");
    frame(0.1);
    ASSERT_OK(label().openEditBox(0));
    EXPECT_FALSE(label().isEditing());
    // The box lies over the item, and the list has its texts from elsewhere.
    ASSERT_OK(label().openEditBox(1));
    ASSERT_TRUE(label().isEditing());
    frame(0.2);
    EXPECT_EQ(at("w.t.temp-editbox").getArea(), (CRect{0, 14, 100, 13}));
    EXPECT_EQ(box().getArea(), (CRect{6, 14, 90, 13}));
    type("r");
    key(keys::kEnter, false);
    EXPECT_EQ(log(), Log({"index=1", "is-cancelled=false", "text=freer"}));
    EXPECT_EQ(label().getParagraphText(1), "free");
}

TEST_F(EditBoxTest, EndsWhenItIsForgotten)
{
    loadLabels({});
    const auto isOpenAfter = [this](double sec) {
        setTime(CViewContext::getTimeSec() + sec);
        releaseError(box().receiveEvent("editbox-tick", {}));
        return label().isEditing();
    };
    open();
    type("x");
    EXPECT_TRUE(isOpenAfter(20.0));
    type("y");
    EXPECT_TRUE(isOpenAfter(20.0));
    ASSERT_OK(label().onMouseEnter({}));
    EXPECT_TRUE(isOpenAfter(20.0)) << "the pointer is still there";
    ASSERT_OK(label().onMouseExit({}));
    EXPECT_FALSE(isOpenAfter(0.0));
    EXPECT_EQ(attr("w.t", "title"), "one twoxy");

    open();
    set("w.t", "is-disabled", "true");
    EXPECT_FALSE(isOpenAfter(0.0));
}

TEST_F(EditBoxTest, IsTypedIntoByAKeyboardOnTheScreen)
{
    loadLabels({{"is-virtual-keyboard-allowed", "true"}, {"virtual-keyboard-minus-char", "~"}});
    open();
    EXPECT_TRUE(textWindow_.calls.empty()) << "nobody has asked for keyboards";
    cancel();
    CObject* settings = nullptr;
    const CAttrMap shown = {{"show-virtual-keyboard", CAttrValue(true)}};
    ASSERT_OK(root_->findObject("ui")->createChild(settings, "core:global-settings", "global-settings", false,
                                                   nullptr, &shown));
    open();
    EXPECT_EQ(textWindow_.text("tag"), "ui:virtual-keyboard-digit");
    EXPECT_EQ(textWindow_.text("popup-owner-window"), "w.t.temp-editbox.line");
    EXPECT_EQ(textWindow_.text("popup-virtual-keyboard-minus-char"), "~");
    const auto press = [this](const char* title) {
        EXPECT_OK(box().receiveEvent("virtual-keyboard-press",
                                     {{"key", CAttrValue(title)}, {"caps-button", CAttrValue("settings")}}));
    };
    press("Q");
    press("CAPS");
    press("W");
    press("CAPS");
    press("1");
    press("Bkspace");
    press("-");
    EXPECT_EQ(edited(), "one twoqW-");
    press("Enter");
    EXPECT_EQ(attr("w.t", "title"), "one twoqW-");
    open();
    press("A");
    press("Cancel");
    EXPECT_EQ(attr("w.t", "title"), "one twoqW-");
}

} // namespace qel::test
