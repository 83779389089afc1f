// Markup and lines.
#include "TextFixture.h"

#include "CTextWrapper.h"

namespace qel::test {

namespace {

// The runs of a text, each as its style, a colon and its characters.
std::string runsOf(const char* text)
{
    const CString source = CString::fromUtf8(text);
    CTextMarkup markup(source, u'|');
    CTextRun run;
    std::string result;
    while (markup.next(run)) {
        result += result.empty() ? "" : ",";
        result += run.style.isBold ? "b" : "";
        result += run.style.isItalic ? "i" : "";
        result += run.style.isSuperscript ? "s" : "";
        result += run.style.color ? std::to_string(run.style.color) : "";
        switch (run.kind) {
        case CTextRun::Kind::kText:
            result += ":" + source.substring(run.begin, run.end - run.begin).toUtf8();
            break;
        case CTextRun::Kind::kImage:
            result += "=" + source.substring(run.begin, run.end - run.begin).toUtf8();
            break;
        case CTextRun::Kind::kLineBreak:
            result += "/";
            break;
        case CTextRun::Kind::kParagraph:
            result += "#";
            break;
        }
    }
    return result;
}

class TextWrapperTest : public TextFixture
{
protected:
    void SetUp() override
    {
        loadTexts({});
        ASSERT_OK(wrapper_.setFontObject(font(), 1.0));
    }
    // The lines of a text in a width, as their characters; an image is "@".
    std::vector<std::string> wrapped(const char* text, std::optional<double> width)
    {
        const CString source(text);
        wrapper_.parse(source, u'|');
        wrapper_.wrap(width);
        std::vector<std::string> lines;
        for (const CTextLine& line : wrapper_.getLines()) {
            lines.emplace_back();
            for (std::size_t i = line.begin; i < line.end; ++i) {
                const CTextGlyph& glyph = wrapper_.getGlyphs()[i];
                lines.back() += glyph.image ? '@' : static_cast<char>(source[glyph.source]);
            }
        }
        return lines;
    }
    using Lines = std::vector<std::string>;

    CTextWrapper wrapper_;
};

} // namespace

TEST(TextMarkupTest, SplitsATextIntoRunsOfOneStyle)
{
    EXPECT_EQ(runsOf("[B]A[/B]"), "b:A");
    EXPECT_EQ(runsOf("a[B]b[I]c[/B]d[/I]e"), ":a,b:b,bi:c,i:d,:e");
    EXPECT_EQ(runsOf("[C1]a[C2]b[/C2]c[SUP]2[/SUP]"), "1:a,2:b,:c,s:2");
    EXPECT_EQ(runsOf("a[BR]b"), ":a,/,:b");
    EXPECT_EQ(runsOf("A[IMG=is.button#ArrowRight:Action]B"), ":A,=[IMG=is.button#ArrowRight:Action],:B");
    // Paragraphs keep the style; separators next to each other leave an empty one.
    EXPECT_EQ(runsOf("[B]a\nb|[/B]c||"), "b:a,b#,b:b,b#,:c,#,#");
    // What is no tag is text, as one run.
    EXPECT_EQ(runsOf("a[b]c[IMG=]d[/]e[]f[B"), ":a[b]c[IMG=]d[/]e[]f[B");
    EXPECT_EQ(runsOf("x[[B]y]"), ":x[,b:y]");
    EXPECT_EQ(runsOf(""), "");
}

TEST_F(TextWrapperTest, BreaksLinesAtBlanksAndHyphens)
{
    EXPECT_EQ(wrapped("one two three", std::nullopt), Lines({"one two three"}));
    EXPECT_EQ(wrapped("one two three", 46), Lines({"one two", "three"}));
    EXPECT_EQ(wrapped("one two three", 40), Lines({"one two", "three"}));
    EXPECT_EQ(wrapped("one two three", 39), Lines({"one", "two", "three"}));
    EXPECT_EQ(wrapped("low-cut", 30), Lines({"low-", "cut"}));
    // The sign of a number stays with it, several blanks are one break, and leading ones are kept.
    EXPECT_EQ(wrapped("at -300", 30), Lines({"at", "-300"}));
    EXPECT_EQ(wrapped("a   b", 12), Lines({"a", "b"}));
    EXPECT_EQ(wrapped("  ab", 20), Lines({"  ab"}));
    // A word that is longer than the line is cut behind the last glyph that fits, each line taking one.
    EXPECT_EQ(wrapped("abcdef", 15), Lines({"ab", "cd", "ef"}));
    EXPECT_EQ(wrapped("ab", 1), Lines({"a", "b"}));
    // Line breaks and paragraphs hold at any width.
    EXPECT_EQ(wrapped("a[BR][BR]b|c\n", std::nullopt), Lines({"a", "", "b", "c", ""}));
}

TEST_F(TextWrapperTest, MeasuresLines)
{
    wrapped("ab [B]cd[/B]", std::nullopt);
    EXPECT_EQ(wrapper_.getWidth(), 2 * 6 + 4 + 2 * 7);
    EXPECT_EQ(wrapper_.getHeight(), kLine);
    EXPECT_EQ(wrapper_.getLines()[0].baseline, 11);

    // The natural width stays that of the widest line without wrapping.
    wrapper_.setParagraphSpacing(5);
    wrapped("one two|a", 20);
    EXPECT_EQ(wrapper_.getNaturalWidth(), 40);
    EXPECT_EQ(wrapper_.getWidth(), 18);
    EXPECT_EQ(wrapper_.getHeight(), 3 * kLine + 5);
    EXPECT_EQ(wrapper_.getParagraphs()[1].top, 2 * kLine + 5);
    EXPECT_EQ(wrapper_.findParagraph(2 * kLine - 0.5), 0U);
    EXPECT_EQ(wrapper_.findParagraph(2 * kLine + 1), std::nullopt);
    EXPECT_EQ(wrapper_.findParagraph(2 * kLine + 5), 1U);

    // Lines of a paragraph may stand closer, in the middle of the least height.
    wrapper_.setLineSpacing(-3);
    wrapper_.setParagraphHeight(40);
    wrapped("one two|a", 20);
    EXPECT_EQ(wrapper_.getParagraphs()[1].top, 40 + 5);
    EXPECT_EQ(wrapper_.getLines()[0].top, (40 - 2 * kLine + 3) / 2);
    EXPECT_EQ(wrapper_.getLines()[1].top, wrapper_.getLines()[0].top + kLine - 3);
}

TEST_F(TextWrapperTest, ShowsWhatTheFontLacksByItsLikeOrABox)
{
    const auto widthOf = [&](const char* text) {
        wrapper_.parse(CString::fromUtf8(text));
        wrapper_.wrap(std::nullopt);
        return wrapper_.getWidth();
    };
    const int box = 8; // as wide as a capital is high
    EXPECT_EQ(widthOf("aλΩé"), 3 * 6 + box);
    EXPECT_EQ(wrapper_.getGlyphs().size(), 4U);
    EXPECT_EQ(widthOf("Łódź – “x”"), widthOf("Lodz - \"x\"") + box - 6)
        << "this font has no o with an accent";
    EXPECT_EQ(widthOf("a\xE2\x80\x8B\xCC\x81"), 6) << "a joiner and an accent of its own";
}

TEST_F(TextWrapperTest, EndsLinesThatAreTooLongInDots)
{
    const auto shortened = [&](const char* text, double width) {
        std::string line = wrapped(text, std::nullopt)[0];
        wrapper_.shorten(width);
        line.resize(wrapper_.getLines()[0].end);
        return line + (wrapper_.getLines()[0].isShortened ? "..." : "");
    };
    EXPECT_EQ(shortened("abcdef", 36), "abcdef");
    EXPECT_EQ(shortened("abcdef", 35), "ab...");
    EXPECT_EQ(wrapper_.getWidth(), 5 * 6);
    EXPECT_EQ(wrapper_.getNaturalWidth(), 6 * 6);
    EXPECT_EQ(shortened("a bcdef", 29), "a...") << "no blank before the dots";
    EXPECT_EQ(shortened("abcdef", 5), "...");
    wrapped("abcdeg", std::nullopt);
    EXPECT_FALSE(wrapper_.getChange()) << "the dots have gone, too";
}

TEST_F(TextWrapperTest, TakesImagesIntoLines)
{
    CImageLayer layer;
    layer.width = 9;
    layer.height = 21;
    const CImage image{1, {&layer, 1}};
    std::string asked;
    wrapper_.setImageFinder([&](const CTextImageName& name) {
        asked += name.set.toUtf8() + "#" + name.range.toUtf8() + " ";
        return name.set == "no" ? nullptr : &image;
    });
    EXPECT_EQ(wrapped("a[IMG=is#up:Action]b [IMG=is]|[IMG=no]", 30), Lines({"a@b", "@", "[IMG=", "no]"}));
    EXPECT_EQ(asked, "is#up is# no# ");
    EXPECT_EQ(wrapper_.getLines()[0].height, 21);
    EXPECT_EQ(wrapper_.getLines()[0].baseline, 11 + 4);
    EXPECT_EQ(wrapper_.getLines()[0].width, 6 + 9 + 6);
    EXPECT_EQ(wrapper_.getGlyphs()[1].color, CTextColorSource::kOwnColors);
    ASSERT_EQ(wrapper_.getImageColors().size(), 1U);
    EXPECT_EQ(wrapper_.getImageColors()[0], "Action");
}

TEST_F(TextWrapperTest, JustifiesAllLinesButTheLastOfAParagraph)
{
    wrapper_.setJustified(true);
    wrapped("a b c d|e f[BR]g", 25);
    const std::vector<CTextLine>& lines = wrapper_.getLines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].width, 25.0);
    EXPECT_EQ(wrapper_.getGlyphs()[2].pen, 6 + 4 + 9); // "b": 9 of 25 are spare
    for (const std::size_t line : {1U, 2U, 3U}) {
        EXPECT_LT(lines[line].width, 25.0);
    }
}

TEST_F(TextWrapperTest, TellsWhichPartOfALineHasChanged)
{
    const auto change = [&](const char* before, const char* after) {
        wrapped(before, std::nullopt);
        wrapped(after, std::nullopt);
        const std::optional<CTextWrapper::Span> span = wrapper_.getChange();
        return span ? std::pair(span->begin, span->end) : std::pair(-1.0, -1.0);
    };
    EXPECT_EQ(change("-12.3 dB", "-12.4 dB"), std::pair(24.0, 30.0));
    EXPECT_EQ(change("ab", "abc"), std::pair(12.0, 18.0));
    EXPECT_EQ(change("abc", "ab"), std::pair(12.0, 18.0));
    EXPECT_EQ(change("1 b", "12 b"), std::pair(6.0, 22.0));
    EXPECT_EQ(change("a[B]b[/B]", "ab"), std::pair(6.0, 13.0));
    EXPECT_EQ(change("", ""), std::pair(0.0, 0.0));
    EXPECT_EQ(change("a|b", "a"), std::pair(-1.0, -1.0));
}

} // namespace qel::test
