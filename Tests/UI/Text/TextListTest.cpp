// Lists: their items, and how a user chooses.
#include "TextFixture.h"

#include "SystemEvents.h"

namespace qel::test {

namespace {

namespace keys = platform::key;

class TextListTest : public TextFixture
{
protected:
    using Log = std::vector<std::string>;

    // A list of lines of 13 pixels at the top left, with `values` as its source, and a log of its events.
    void loadList(Attrs attrs, const char* values = "a;b;c;d", const std::vector<TreeNode>& children = {})
    {
        attrs.insert(attrs.begin(), {{"placement", "overlay"},
                                     {"width", "50"},
                                     {"text-source", "values"},
                                     {"is-paragraph-selectable", "true"},
                                     {"is-paragraph-hoverable", "true"},
                                     {"paragraph-hover-color", "Alarm|0"},
                                     {"paragraph-select-color", "Alarm|1"}});
        std::vector<TreeNode> all = children;
        for (const char* event : {"selected-paragraph-changed", "paragraph-dbl-clicked"}) {
            all.push_back(command(
                event,
                {{"run-event", "note"}, {"run-event-target", "log"}, {"run-event-forward-params", "true"}}));
        }
        loadTexts({back(), text("t", attrs, all)},
                  {node("ui:value-list-manual", "values", {{"values", values}}), node("test:list", "tree")});
    }
    static TreeNode back()
    {
        return view("back",
                    {{"placement", "overlay"}, {"width", "200"}, {"height", "100"}, {"color", "Panel"}});
    }
    CTextView& list() { return dynamic_cast<CTextView&>(at("w.t")); }
    // The colour behind the text in a row of the list.
    std::uint32_t strip(std::int32_t row)
    {
        frame(0.5);
        return pixelAt(45, row * kLine + 6);
    }
    static constexpr std::uint32_t kHovered = 0x0A0000;
    static constexpr std::uint32_t kSelected = 0x140000;
};

} // namespace

TEST_F(TextListTest, ShowsTheItemsOfItsSource)
{
    loadList({{"title", "own"}});
    EXPECT_EQ(size("w.t"), "50x52");
    EXPECT_EQ(list().getItemCount(), 4);
    set("values", "values", "one;two");
    frame(0.1);
    EXPECT_EQ(size("w.t"), "50x26");
    EXPECT_EQ(list().getParagraphText(1), "two");

    // Only the selected item, with nothing to choose.
    set("w.t", "text-source-single-value", "true");
    set("w.t", "selected-paragraph", "1");
    set("w.t", "width", "compact");
    frame(0.2);
    EXPECT_EQ(size("w.t"), "18x13");
    set("w.t", "text-source-single-value", "false");

    // A title that is set later takes the place of the items until these change.
    set("w.t", "title", "other");
    EXPECT_EQ(list().getItemCount(), 1);
    set("values", "values", "one;two;three");
    EXPECT_EQ(list().getItemCount(), 3);
    set("w.t", "is-text-source-forced", "true");
    set("w.t", "title", "none");
    EXPECT_EQ(list().getItemCount(), 3);
}

TEST_F(TextListTest, SelectsWhatIsClicked)
{
    loadList({});
    move(10, 2 * kLine + 5);
    EXPECT_EQ(strip(2), kHovered);
    click(10, 2 * kLine + 5);
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "2");
    EXPECT_EQ(log(), Log({"index=2", "list-id=", "text=c", "value=2"}));
    EXPECT_EQ(textWindow_.calls, Log({"result"}));
    EXPECT_EQ(textWindow_.text("text"), "c");
    EXPECT_EQ(strip(2), kSelected);

    // The second press of a double click tells of that and selects nothing.
    log().clear();
    click(10, kLine + 5, true);
    EXPECT_EQ(log().front(), "index=1");
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "2");

    ASSERT_OK(list().onMouseExit({}));
    EXPECT_EQ(strip(1), kPanel);

    // A press that moves on chooses what it is let go over; beside the list, nothing.
    ASSERT_OK(list().onMousePress(pointer(10, 5)));
    ASSERT_OK(list().onMouseRelease(pointer(10, kLine + 5)));
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "1");
    ASSERT_OK(list().onMousePress(pointer(10, 5)));
    ASSERT_OK(list().onMouseRelease(pointer(60, 5)));
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "1");

    // The right button only where it is asked for.
    ASSERT_OK(list().onMousePressR(pointer(10, 5)));
    ASSERT_OK(list().onMouseReleaseR(pointer(10, 5)));
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "1");
    set("w.t", "is-right-click-selects", "true");
    ASSERT_OK(list().onMouseReleaseR(pointer(10, 5)));
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "0");
}

TEST_F(TextListTest, SendsItsResultWhereItIsAskedTo)
{
    loadList({{"result-target", "first"},
              {"result-target-index-attr", "chosen"},
              {"result-target-redirect-attr", "redirect"},
              {"selected-paragraph", "3"},
              {"is-selected-paragraph-click-cancels", "true"}});
    set("w", "is-popup-window", "true");
    CObject* first = nullptr;
    CObject* second = nullptr;
    ASSERT_OK(root_->createChild(first, "core:object", "first"));
    ASSERT_OK(root_->createChild(second, "test:log", "second"));
    click(10, 5);
    EXPECT_EQ(attr("first", "chosen"), "0");
    EXPECT_EQ(textWindow_.calls, Log({"close"})) << "the target is no view, which would do it";
    ASSERT_OK(first->setAttribute("redirect", "second", true));
    click(10, kLine + 5);
    EXPECT_EQ(attr("second", "chosen"), "1");

    log().clear();
    click(10, kLine + 5);
    EXPECT_EQ(log(), Log()) << "the selected item closes the list without a result";
    EXPECT_EQ(textWindow_.calls, Log({"close", "close", "close"}));
}

TEST_F(TextListTest, OpensSubLists)
{
    loadList({{"text-source", "tree"}, {"width", "compact"}});
    EXPECT_EQ(size("w.t"), "30x39") << "without the picture of an arrow";
    click(10, 2 * kLine + 5);
    EXPECT_EQ(log(), Log()) << "the item is disabled";

    move(10, kLine + 5);
    ASSERT_OK(list().receiveEvent("auto-click", {}));
    EXPECT_EQ(textWindow_.calls, Log({"toggle"}));
    EXPECT_EQ(textWindow_.text("tag"), "ui:window-app-popup-list");
    EXPECT_EQ(textWindow_.text("popup-item-list"), "tree");
    EXPECT_EQ(textWindow_.text("popup-dynamic-list-parent-id"), "more");
    EXPECT_EQ(textWindow_.text("popup-dynamic-list-parent-item"), "1");
    EXPECT_EQ(textWindow_.text("popup-original-opener"), "w.t");
    EXPECT_EQ(textWindow_.text("shift-y"), "13.0000");
    // The pointer rests on: nothing more happens. The result goes on as this list's own.
    ASSERT_OK(list().receiveEvent("auto-click", {}));
    EXPECT_EQ(textWindow_.calls, Log({"toggle"}));
    ASSERT_OK(list().receiveEvent("popup-result", {{"index", CAttrValue(0)}, {"source", CAttrValue("w")}}));
    EXPECT_EQ(textWindow_.calls, Log({"toggle", "result"}));
    EXPECT_EQ(textWindow_.text("source"), "-");

    // The list that opens.
    set("w.t", "dynamic-list-parent-id", "more");
    frame(0.1);
    EXPECT_EQ(list().getItemCount(), 2);
    click(10, kLine + 5);
    EXPECT_EQ(textWindow_.text("list-id"), "more");
    EXPECT_EQ(textWindow_.text("value"), "5");
}

TEST_F(TextListTest, ScrollsWhatDoesNotFit)
{
    loadList({{"is-scrollable", "true"},
              {"max-item-count", "2"},
              {"is-focusable", "true"},
              {"scroller-width", "8"},
              {"width", "compact"},
              {"selected-paragraph", "2"}});
    EXPECT_EQ(size("w.t"), "14x26") << "with room for the bar";
    EXPECT_EQ(attr("w.t", "ratio-y"), "0.5000");
    EXPECT_EQ(attr("w.t", "offset-y"), "0.2500") << "the selected item is seen from the beginning";
    set("w.t", "width", "50");
    set("w.t", "selected-paragraph", "0");
    frame(0.1);
    click(10, 5);
    EXPECT_EQ(textWindow_.focus, &list());
    for (int i = 0; i < 3; ++i) {
        key(keys::kDown, false);
    }
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "3");
    EXPECT_EQ(attr("w.t", "offset-y"), "0.5000");
    click(10, 5);
    EXPECT_EQ(attr("w.t", "selected-paragraph"), "2");
    key(keys::kHome, false);
    EXPECT_EQ(attr("w.t", "offset-y"), "0.0000");
    key(keys::kEnter, false);
    EXPECT_EQ(log().back(), "value=0");
    key(keys::kEscape, false);
    EXPECT_EQ(textWindow_.focus, nullptr);

    // A shorter list cannot stay scrolled.
    set("w.t", "offset-y", "0.5");
    set("values", "values", "a");
    frame(0.1);
    EXPECT_EQ(attr("w.t", "offset-y"), "0.0000");
    EXPECT_EQ(attr("w.t", "ratio-y"), "1.0000");
    set("w.t", "width", "compact");
    frame(0.2);
    EXPECT_EQ(size("w.t"), "6x13") << "where all is seen there is no bar";
}

TEST_F(TextListTest, IsChosenFromByKeysInAPopup)
{
    loadList({{"text-source", "tree"}, {"is-focusable", "true"}});
    set("w", "is-popup-window", "true");
    ASSERT_OK(textWindow_.setKeyFocus(&list(), false));
    key(keys::kDown, false);
    EXPECT_EQ(strip(0), kHovered);
    key(keys::kUp, false);
    key(keys::kEnter, false);
    EXPECT_EQ(textWindow_.text("text"), "One");
    key(keys::kEnd, false);
    EXPECT_EQ(strip(1), kPanel) << "a disabled item takes no strip";
    key(keys::kDown, false);
    key(keys::kRight, false);
    EXPECT_EQ(textWindow_.text("popup-dynamic-list-parent-id"), "more");
    key(keys::kEscape, false);
    EXPECT_EQ(textWindow_.calls.back(), "close");
}

} // namespace qel::test
