// Breaks a text into lines and draws it.
#pragma once

#include "CDrawContext.h"
#include "CTextFont.h"
#include "TextMarkup.h"

#include <functional>

namespace qel {

// One character or image of a text.
struct CTextGlyph
{
    enum class Kind : std::uint8_t
    {
        kCharacter,
        kBlank,    // a line may break here
        kHyphen,   // a line may break behind it
        kLineBreak // a line breaks here
    };

    Kind kind = Kind::kCharacter;
    std::uint16_t color = 0;            // see CTextColorSource
    std::int32_t rise = 0;              // above the baseline, pixels
    const CImageLayer* layer = nullptr; // null: nothing to see
    const CImage* image = nullptr;      // in place of a character
    bool isMissing = false;             // a character that the font lacks
    double advance = 0.0;
    double pen = 0.0;       // from the start of its line, pixels
    std::size_t source = 0; // where in the text

    bool looksLike(const CTextGlyph& other) const
    {
        return layer == other.layer && image == other.image && isMissing == other.isMissing &&
               color == other.color && rise == other.rise;
    }
};

struct CTextLine
{
    std::size_t begin = 0; // glyphs; without the blanks at a break
    std::size_t end = 0;
    std::size_t paragraph = 0;
    double width = 0.0;
    std::int32_t top = 0;
    std::int32_t height = 0;
    std::int32_t baseline = 0; // below the top
    bool isShortened = false;  // dots follow the last glyph
};

struct CTextParagraph
{
    std::size_t beginGlyph = 0;
    std::size_t endGlyph = 0;
    std::size_t beginLine = 0;
    std::size_t endLine = 0;
    std::int32_t top = 0;
    std::int32_t height = 0;
};

// Gives texts their colours while they are drawn.
class CTextColorSource
{
public:
    static constexpr std::size_t kOwnColors = 3; // of the text, "C1", "C2"; then those of images

    virtual ~CTextColorSource() = default;
    virtual const CPaletteColor& getTextColor(std::size_t color) const = 0;
};

// Call order: setFontObject(), then a text, then wrap(), and wrap() again for another width. Measures are
// window pixels, tops are counted from the top of the text. Drawing and asking take no memory, and a text
// that is as long as one before it takes none either. There is always at least one paragraph, and each has at
// least one line. What the font lacks is shown by a like character or else by a box, so that it can be told
// from nothing.
class CTextWrapper
{
public:
    // Finds an image of a text; null if there is none, which shows the tag as text.
    using ImageFinder = std::function<const CImage*(const CTextImageName& name)>;

    // Fails with "Font object is empty." The text is to be set anew.
    CError setFontObject(CFontObject* font, double interfaceScale);
    const CTextFont& getFont() const { return font_; }
    void setImageFinder(ImageFinder finder) { imageFinder_ = std::move(finder); }
    // Pixels between paragraphs; holds from the next wrap() on, as do the next three.
    void setParagraphSpacing(std::int32_t spacing) { paragraphSpacing_ = spacing; }
    // Between the lines of a paragraph; negative to draw them closer.
    void setLineSpacing(std::int32_t spacing) { lineSpacing_ = spacing; }
    // The least of a paragraph, whose lines stand in the middle of it.
    void setParagraphHeight(std::int32_t height) { paragraphHeight_ = height; }
    // Widens the blanks of wrapped lines to the width.
    void setJustified(bool isJustified) { isJustified_ = isJustified; }

    // --- the text

    // With markup; `separator` ends paragraphs besides line feeds, if it is not 0.
    void parse(const CString& text, char16_t separator = 0);
    // Paragraph by paragraph, each with markup of its own and as one paragraph, whatever is in it.
    void parseParagraphs(const std::vector<CString>& paragraphs);
    // One paragraph that shows all characters as they are.
    void setPlain(const CString& text);
    // The names of the colours that images have, by number behind the own colours.
    const std::vector<CString>& getImageColors() const { return imageColors_; }

    // Without a width lines are as long as they are.
    void wrap(std::optional<double> width);
    // Lines that are longer end in dots. The natural width stays.
    void shorten(double width);

    // --- measures; whole pixels

    std::int32_t getWidth() const { return width_; }
    std::int32_t getHeight() const { return height_; }
    // As wide as unwrapped.
    std::int32_t getNaturalWidth() const { return naturalWidth_; }
    const std::vector<CTextGlyph>& getGlyphs() const { return glyphs_; }
    const std::vector<CTextLine>& getLines() const { return lines_; }
    const std::vector<CTextParagraph>& getParagraphs() const { return paragraphs_; }
    // The paragraph at a height, or none above, below and between them.
    std::optional<std::size_t> findParagraph(double y) const;
    // What has changed with the last text and wrap: part of the one line that there was and is. Nothing if
    // the lines differ otherwise.
    struct Span
    {
        double begin = 0.0;
        double end = 0.0;
    };
    std::optional<Span> getChange() const;

    // --- drawing

    // `point` is the left end of the line's top, relative to the view.
    void drawLine(CDrawContext& context, const CTextLine& line, const CPoint& point, std::size_t clip,
                  const CTextColorSource& colors) const;
    // A part of a line; the point is still that of the whole line.
    void drawGlyphs(CDrawContext& context, const CTextLine& line, std::size_t begin, std::size_t end,
                    const CPoint& point, std::size_t clip, const CTextColorSource& colors) const;

private:
    void beginText();
    void endText();
    bool isOneLine() const { return lines_.size() == 1 && !lines_[0].isShortened; }
    void beginParagraph() { paragraphs_.push_back({glyphs_.size(), 0, 0, 0, 0, 0}); }
    void addRuns(const CString& text, char16_t separator, bool isParagraph);
    void addCharacters(const CString& text, const CTextRun& run);
    void addImage(const CString& text, const CTextRun& run);
    std::uint16_t imageColor(const CTextImageName& name, const CTextStyle& style);

    void wrapParagraph(CTextParagraph& paragraph, std::optional<double> width);
    void addLine(std::size_t begin, std::size_t end);
    void justify(const CTextLine& line, double width);
    void drawMissing(CDrawContext& context, const CPoint& baseline, std::size_t clip,
                     const CPaletteColor& color) const;

    CTextFont font_;
    ImageFinder imageFinder_;
    std::int32_t paragraphSpacing_ = 0;
    std::int32_t lineSpacing_ = 0;
    std::int32_t paragraphHeight_ = 0;
    bool isJustified_ = false;

    std::vector<CTextGlyph> glyphs_;
    std::vector<CTextParagraph> paragraphs_;
    std::vector<CTextLine> lines_;
    std::vector<CString> imageColors_;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    std::int32_t naturalWidth_ = 0;

    // The glyphs of the text before, and whether they were all on one line.
    std::vector<CTextGlyph> glyphsBefore_;
    bool wasOneLine_ = false;
};

} // namespace qel
