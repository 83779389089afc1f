// Labels: their size, place and colours.
#include "TextFixture.h"

#include "AllocationGuard.h"
#include "LiteralText.h"

namespace qel::test {

namespace {

class TextViewTest : public TextFixture
{};

} // namespace

TEST_F(TextViewTest, IsAsLargeAsItsText)
{
    loadTexts({text("t", {{"placement", "overlay"}, {"title", "ab cd"}, {"inner-border", "1"}}),
               text("empty", {{"placement", "overlay"}}),
               text("fixed", {{"placement", "overlay"}, {"title", "abc"}, {"compact-width", "50"}})});
    EXPECT_EQ(size("w.t"), "30x15");
    EXPECT_EQ(size("w.empty"), "0x0"); // a line high, but nothing to see
    EXPECT_EQ(size("w.fixed"), "50x13");
    set("w.t", "title", "a");
    set("w.fixed", "compact-width", "");
    frame(0.1);
    EXPECT_EQ(size("w.t"), "8x15");
    EXPECT_EQ(size("w.fixed"), "18x13");
}

TEST_F(TextViewTest, WrapsAtTheWidthThatItGets)
{
    loadTexts({view("column", {{"placement", "overlay"}, {"width", "50"}},
                    {text("t", {{"placement", "top"},
                                {"width", "100%"},
                                {"is-text-wrapped", "true"},
                                {"paragraph-spacing", "3"},
                                {"separator-char", "|"},
                                {"title", "one two three|four"}}),
                     text("limited", {{"placement", "top"},
                                      {"width", "100%"},
                                      {"is-text-wrapped", "true"},
                                      {"max-text-height", "30"},
                                      {"title", "one two three four five"}})})});
    EXPECT_EQ(size("w.column.t"), "50x42");
    EXPECT_EQ(size("w.column.limited"), "50x30");
    EXPECT_EQ(size("w.column"), "50x72");
    set("w.column", "width", "100");
    frame(0.1);
    EXPECT_EQ(size("w.column.t"), "100x29");
    // A compact label that wraps shows its text in one line as long as there is room.
    set("w.column.t", "width", "compact");
    set("w.column.t", "title", "abc");
    frame(0.2);
    EXPECT_EQ(size("w.column.t"), "18x13");
    set("w.column.t", "title", "abc def");
    frame(0.3);
    EXPECT_EQ(size("w.column.t"), "40x13");
}

TEST_F(TextViewTest, PlacesItsLinesInTheView)
{
    const auto label = [](const char* name, const char* alignment, const char* alignmentV) {
        return text(name, {{"placement", "overlay"},
                           {"width", "101"},
                           {"height", "40"},
                           {"inner-border", "L10"},
                           {"text-alignment", alignment},
                           {"text-alignment-v", alignmentV},
                           {"title", "ab"}});
    };
    const auto shown = [&](const char* path) {
        for (const char* other : {"w.left", "w.center", "w.right"}) {
            set(other, "is-visible", CString(other) == CString(path) ? "true" : "false");
        }
        frame(0.1);
    };
    loadTexts(
        {view("back", {{"placement", "overlay"}, {"width", "200"}, {"height", "100"}, {"color", "Panel"}}),
         label("left", "left", "top"), label("center", "center", "center"),
         label("right", "right", "bottom")});
    shown("w.left");
    EXPECT_EQ(columnsOf(kRed, 3), "10-20"); // the top of the glyphs: 3 below the line's
    EXPECT_EQ(columnsOf(kRed, 2), "-1--1");
    shown("w.center");
    EXPECT_EQ(columnsOf(kRed, 14 + 3), "50-60"); // (91 - 12) / 2, rounded up
    EXPECT_EQ(columnsOf(kRed, 14 + 2), "-1--1");
    shown("w.right");
    EXPECT_EQ(columnsOf(kRed, 27 + 10), "89-99");
    EXPECT_EQ(columnsOf(kRed, 27 + 11), "-1--1");
}

TEST_F(TextViewTest, TakesItsColorsFromStateAndMarkup)
{
    loadTexts(
        {view("back", {{"placement", "overlay"}, {"width", "200"}, {"height", "100"}, {"color", "Panel"}}),
         text("t",
              {{"placement", "overlay"},
               {"text-color1", "Alarm|0"},
               {"title", "a[C1]b[/C1][IMG=icon#Arrow:Alarm|1][IMG=icon#Arrow]"}},
              {state("lit", {{"color-state", "Hover"}})})});
    EXPECT_EQ(size("w.t"), "28x20");
    const auto colors = [&] {
        return std::vector<std::uint32_t>{pixelAt(1, 10), pixelAt(7, 10), pixelAt(13, 10), pixelAt(21, 10)};
    };
    using Colors = std::vector<std::uint32_t>;
    EXPECT_EQ(colors(), Colors({kRed, 0x0A0000, 0x140000, kRed}));
    ASSERT_OK(at("w.t").setState("lit"));
    frame(0.1);
    EXPECT_EQ(colors()[0], 0x00C800U);
    set("w.t", "is-disabled", "true");
    frame(0.2);
    EXPECT_EQ(colors(), Colors({0x3C3C3C, 0x3C3C3C, 0x3C3C3C, 0x3C3C3C}));
}

TEST_F(TextViewTest, ChangesItsTitleCheaply)
{
    loadTexts(
        {view("back", {{"placement", "overlay"}, {"width", "200"}, {"height", "100"}, {"color", "Panel"}}),
         text("t", {{"placement", "overlay"}, {"is-dynamic", "true"}, {"title", "-12.3 dB"}})});
    auto& label = dynamic_cast<CTextView&>(at("w.t"));
    ASSERT_OK(label.setTitle("-12.4 dB"));
    EXPECT_FALSE(at("w").getLayoutContext().hasWork()); // the same size
    EXPECT_TRUE(map().isDirty());
    const CRect& dirty = map().getSector(0).dirty;
    EXPECT_GT(dirty.x, 18.0);
    EXPECT_LT(dirty.right(), 40.0);
    frame(0.1);
    EXPECT_FALSE(map().isDirty());

    // The same text marks nothing; a name is shown as it is.
    ASSERT_OK(label.setTitle("-12.4 dB"));
    EXPECT_FALSE(map().isDirty());
    ASSERT_OK(label.setTitle(literalText("[B]{name}[/B]")));
    frame(0.2);
    EXPECT_EQ(size("w.t"), "78x13");
    EXPECT_EQ(plainText(label.getTitle()), "[B]{name}[/B]");

    ASSERT_OK(label.setTitle("[B]a[/B]"));
    frame(0.3);
    CSectorMap& sectors = map();
    sectors.markAll();
    AllocationGuard guard;
    sectors.paintDirty();
    EXPECT_EQ(guard.stop().total(), 0U);
}

TEST_F(TextViewTest, MovesALongLineWhileThePointerIsOnIt)
{
    const auto scrolling = [](const char* name, const std::vector<TreeNode>& arrows) {
        return node("ui:textview-auto-scroll", name,
                    {{"font-name", "font"},
                     {"text-color", "Knob"},
                     {"placement", "overlay"},
                     {"width", "48"},
                     {"auto-scroll-speed", "90"},
                     {"title", "abcdefghij"}},
                    arrows);
    };
    const Attrs atSide = {{"placement", "left"}, {"width", "4"}, {"height", "full"}};
    loadTexts(
        {scrolling("t", {view("auto-scroll-arrow-left", atSide), view("auto-scroll-arrow-right", atSide)})});
    const auto arrows = [this] {
        return attr("w.t.auto-scroll-arrow-left", "is-visible") + " " +
               attr("w.t.auto-scroll-arrow-right", "is-visible");
    };
    const auto ticks = [this](int count) {
        for (int i = 0; i < count; ++i) {
            EXPECT_OK(at("w.t").receiveEvent("auto-scroll-tick", {}));
        }
        return attr("w.t", "offset-x");
    };
    EXPECT_EQ(arrows(), "false true");
    EXPECT_EQ(ticks(1), "-") << "the pointer is elsewhere";
    ASSERT_OK(at("w.t").onMouseEnter({}));
    ASSERT_OK(at("w.t").onMouseMove(pointer(40, 5)));
    EXPECT_EQ(ticks(2), "0.1000"); // 6 of 60 pixels
    EXPECT_EQ(arrows(), "true true");
    EXPECT_EQ(ticks(5), "0.2000");
    EXPECT_EQ(arrows(), "true false");
    ASSERT_OK(at("w.t").onMouseMove(pointer(10, 5)));
    EXPECT_EQ(ticks(1), "0.1500");
    ASSERT_OK(at("w.t").onMouseExit({}));
    EXPECT_EQ(attr("w.t", "offset-x"), "0.0000");
    set("w.t", "title", "abc");
    EXPECT_EQ(arrows(), "false false");

    EXPECT_FAILS(root_.load(node("", "", {}, {view("v", {{"is-root-view", "true"}}, {scrolling("t", {})})})),
                 "Unable to find auto-scroll arrows");
}

} // namespace qel::test
