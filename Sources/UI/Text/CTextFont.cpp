// The faces of a font as texts use them.
#include "CTextFont.h"

#include "CRect.h"

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
    superscriptRise_ =
        roundToPixel(capital * (1.0 + kSuperscriptReach)) - capitalHeight(face(CFontStyle::kSuperscript));
    return {};
}

} // namespace qel
