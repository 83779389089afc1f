// The faces of a font as texts use them.
#include "CTextFont.h"

#include "CRect.h"

#include <algorithm>
#include <string_view>

namespace qel {

namespace {

// Font files do not tell how high capitals are.
constexpr char32_t kCapital = U'H';

// Superscript reaches this part of a capital beyond the capitals.
constexpr double kSuperscriptReach = 0.25;

std::int32_t capitalHeight(const CFont& font)
{
    const CImageLayer* const glyph = font.getGlyph(kCapital);
    return glyph ? -glyph->originY : 0;
}

// Latin letters from U+0100 to U+017F without their marks.
constexpr std::u16string_view kBaseLetters = u"AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIiIiJjKkkLlLlL"
                                             u"lLlLlNnNnNnnNnOoOoOoOoRrRrRrSsSsSsSsTtTtTt"
                                             u"UuUuUuUuUuUuWwYyYZzZzZzs";
constexpr char16_t kFirstMarked = 0x100;
static_assert(kBaseLetters.size() == 0x80);

// What reads alike; the character itself if nothing does.
char16_t likeOf(char16_t character)
{
    if (character >= kFirstMarked && character < kFirstMarked + kBaseLetters.size()) {
        return kBaseLetters[character - kFirstMarked];
    }
    if (character >= 0x2000 && character <= 0x200A) {
        return u' '; // spaces of all widths
    }
    if (character >= 0x2010 && character <= 0x2015) {
        return u'-';
    }
    switch (character) {
    case 0x2018: // quotation marks
    case 0x2019:
    case 0x201A:
        return u'\'';
    case 0x201C:
    case 0x201D:
    case 0x201E:
        return u'"';
    case 0x2022: // a bullet
        return 0xB7;
    case 0x202F:
        return u' ';
    case 0x2212: // a minus
        return u'-';
    default:
        return character;
    }
}

} // namespace

CError CTextFont::load(CFontObject* object, double interfaceScale)
{
    *this = {};
    for (std::size_t i = 0; object && i < faces_.size(); ++i) {
        QEL_TRY(object->getFont(static_cast<CFontStyle>(i), interfaceScale, faces_[i]), {});
    }
    if (!faces_[0]) {
        QEL_FAIL(object ? object->getFullName() : CString(),
                 "@qelstr_CTextWrapper_setFontObject_Empty Font object is empty.");
    }
    const auto scaled = [&](std::uint32_t pixels) { return roundToPixel(pixels * interfaceScale); };
    const CFont& regular = face(CFontStyle::kRegular);
    const std::int32_t above = scaled(regular.getAscentGap());
    const std::int32_t proper = scaled(regular.getLineHeight());
    const std::int32_t capital = capitalHeight(regular);
    lineHeight_ = above + proper + scaled(regular.getDescentGap());
    baseline_ = above + (proper + capital + 1) / 2;
    capitalHeight_ = capital;
    superscriptRise_ =
        roundToPixel(capital * (1.0 + kSuperscriptReach)) - capitalHeight(face(CFontStyle::kSuperscript));
    return {};
}

const CImageLayer* CTextFont::findGlyph(CFontStyle style, char16_t character) const
{
    const CImageLayer* const glyph = face(style).getGlyph(character);
    const char16_t like = glyph ? character : likeOf(character);
    return like == character ? glyph : face(style).getGlyph(like);
}

bool isUnseen(char16_t character)
{
    struct Range
    {
        char16_t first;
        char16_t last;
    };
    constexpr Range kUnseen[] = {{0x0, 0x1F},      {0x7F, 0x9F},     {0xAD, 0xAD},     {0x300, 0x36F},
                                 {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFE00, 0xFE0F},
                                 {0xFEFF, 0xFEFF}, {0xDC00, 0xDFFF}}; // the last are second halves
    return std::ranges::any_of(
        kUnseen, [=](const Range& range) { return character >= range.first && character <= range.last; });
}

} // namespace qel
