// The faces of a font as texts use them.
#pragma once

#include "CFontObject.h"

namespace qel {

// Holds all styles of a font at one interface scale, and the measures of a line in window pixels. A line
// consists of the gap above, the line proper and the gap below, each of them whole pixels; capitals of the
// regular style stand in the middle of the line proper.
class CTextFont
{
public:
    // Fails with "Font object is empty." if there is no object, or none of a regular style.
    CError load(CFontObject* object, double interfaceScale);
    bool isLoaded() const { return faces_[0] != nullptr; }

    // Of the character or, where the font lacks it, of one that reads alike; null if there is none.
    const CImageLayer* findGlyph(CFontStyle style, char16_t character) const;
    std::int32_t getLineHeight() const { return lineHeight_; }
    // Below the top of a line.
    std::int32_t getBaseline() const { return baseline_; }
    std::int32_t getCapitalHeight() const { return capitalHeight_; }
    // Of the box in place of a character that there is no glyph for.
    double getMissingAdvance() const { return capitalHeight_; }
    // How far a character of this style stands above the baseline.
    std::int32_t getRise(CFontStyle style) const
    {
        return style == CFontStyle::kSuperscript ? superscriptRise_ : 0;
    }

private:
    const CFont& face(CFontStyle style) const { return *faces_[static_cast<std::size_t>(style)]; }

    std::array<std::shared_ptr<const CFont>, CFontObject::kStyleCount> faces_;
    std::int32_t lineHeight_ = 0;
    std::int32_t baseline_ = 0;
    std::int32_t capitalHeight_ = 0;
    std::int32_t superscriptRise_ = 0;
};

// True for characters that have nothing to see: controls, joiners, marks upon others.
bool isUnseen(char16_t character);

} // namespace qel
