// A font file.
#pragma once

#include "CImageSet.h"

namespace qel {

// Glyphs by code point, and the measures of a line.
class CFont : public CDataSet
{
public:
    explicit CFont(double interfaceScale = 1.0) : glyphs_(interfaceScale) {}

    CError load(CInputStream& stream) override;
    CError save(COutputStream& stream) const override;

    // The glyph's layer, or null for a character that the font lacks: it is not drawn and takes no room.
    const CImageLayer* getGlyph(char32_t character) const
    {
        const CImage* const image = glyphs_.getImage(character);
        return image && !image->layers.empty() ? &image->layers[0] : nullptr;
    }
    // Pixels at an interface scale of 1, whatever scale the glyphs were loaded for.
    std::uint32_t getLineHeight() const { return lineHeight_; }
    std::uint32_t getAscentGap() const { return ascentGap_; }
    std::uint32_t getDescentGap() const { return descentGap_; }
    const CImageSet& getGlyphs() const { return glyphs_; }
    std::size_t getByteCount() const { return glyphs_.getByteCount(); }

private:
    CError loadAll(CInputStream& stream);
    void clearMeasures();

    CImageSet glyphs_;
    std::uint32_t lineHeight_ = 0;
    std::uint32_t ascentGap_ = 0;
    std::uint32_t descentGap_ = 0;
};

} // namespace qel
