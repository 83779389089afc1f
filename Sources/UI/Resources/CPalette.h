// A palette file.
#pragma once

#include "CDataSet.h"

#include <array>

namespace qel {

// One colour: the shades that an image's values 0 to 255 stand for. Entry 255 is the colour itself, for
// glyphs and filled shapes.
struct CPaletteColor
{
    double opacity = 1.0; // 0 to 1
    std::array<std::uint8_t, 256> red{};
    std::array<std::uint8_t, 256> green{};
    std::array<std::uint8_t, 256> blue{};
};
static_assert(sizeof(CPaletteColor) == 776);

// Colours by name, and the numbers of frames of those that are animated. A pointer to a colour is good as
// long as the palette.
class CPalette : public CDataSet
{
public:
    CPalette();

    CError load(CInputStream& stream) override;
    CError save(COutputStream& stream) const override;

    // The colour of this name, or "Default" if there is none. Never null.
    const CPaletteColor* findColor(const CString& name) const;
    // The same for a colour that may be animated: where there is none of this name but a frame table, the
    // frame at `position`, 0 to 1. A name in neither is traced.
    const CPaletteColor* findColor(const CString& name, double position) const;
    // Number of frames of an animated colour, 0 for any other name.
    std::uint32_t getFrames(const CString& name) const;

    const CPaletteColor& getFallback() const { return fallback_; }

private:
    CError loadAll(CInputStream& stream);
    CError loadColor(CInputStream& stream);
    void clear();

    CStringMap<CPaletteColor> colors_;
    CPaletteColor fallback_;
    CStringMap<std::uint32_t> frames_;
};

} // namespace qel
