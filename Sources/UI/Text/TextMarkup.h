// Markup in texts.
#pragma once

#include "CFontObject.h"

namespace qel {

// What a character looks like.
struct CTextStyle
{
    bool isBold = false;
    bool isItalic = false;
    bool isSuperscript = false;
    std::uint8_t color = 0; // 0, or the number of "C1" and "C2"

    // A font has one style for superscript, whatever else a text is.
    CFontStyle getFontStyle() const;

    friend bool operator==(const CTextStyle&, const CTextStyle&) = default;
};

// A piece of a text, as positions in it.
struct CTextRun
{
    enum class Kind : std::uint8_t
    {
        kText,      // characters of one style
        kImage,     // the tag of an image, brackets included
        kLineBreak, // within a paragraph
        kParagraph  // the end of a paragraph
    };

    Kind kind = Kind::kText;
    CTextStyle style;
    std::size_t begin = 0;
    std::size_t end = 0;
};

// Walks over a text run by run, without taking memory. Tags stand in square brackets: "B" and "/B", "I" and
// "/I", "C1" and "/C1", "C2" and "/C2", "SUP" and "/SUP", "BR", and "IMG=" with an image. What is none of
// these is text, brackets and all. A line feed, or the separator if there is one, ends a paragraph; the style
// goes on into the next one. The text outlives this.
class CTextMarkup
{
public:
    // A separator of 0 is none.
    explicit CTextMarkup(const CString& text, char16_t separator = 0);

    // False at the end of the text.
    bool next(CTextRun& run);

private:
    bool isParagraphEnd(char16_t character) const;
    // The position behind the tag at `begin`, or `begin` if there is none. Takes up the style that it sets.
    std::size_t readTag(std::size_t begin, CTextRun& run);

    const CString& text_;
    const char16_t separator_;
    std::size_t position_ = 0;
    CTextStyle style_;
};

// The image of a tag "[IMG=set#range:colour]"; range and colour may be missing.
struct CTextImageName
{
    CString set;
    CString range;
    CString color;

    static CTextImageName parse(const CString& tag);
};

} // namespace qel
