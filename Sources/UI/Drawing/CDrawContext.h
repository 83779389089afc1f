// What a view draws with, into one sector.
#pragma once

#include "CBrushSet.h"
#include "CImage.h"
#include "CLinearBitmap.h"
#include "CSectorView.h"

#include <span>

namespace qel {

struct CPoint
{
    double x = 0.0;
    double y = 0.0;
};

// Handed to CSectorView::drawInto(). Points and rectangles are in window pixels relative to the corner of the
// view, and are rounded once they are window coordinates, so that no seam shows between sectors. Everything
// is cut to the clip of that index and to the part of the sector that is being repainted. Clip 0 is a mistake
// of the caller: it is traced, and nothing is drawn. Opacities are 0 to 1. Nothing here allocates.
class CDrawContext
{
public:
    // `coverage` is scratch memory for brushes, a byte for each pixel of a sector.
    CDrawContext(CSectorView& view, CLinearBitmap& target, std::span<std::uint8_t> coverage,
                 std::int32_t column, std::int32_t row, const CPixelRect& region);

    // All layers of an image, each in the colour of its slot. With `tileX` or `tileY` the image is repeated
    // by its logical size to the edges of the clip. A null image draws nothing.
    void drawImage(const CImage* image, CPoint point, std::size_t clip, double opacity, bool tileX = false,
                   bool tileY = false);
    // One layer, if the image has it.
    void drawImageLayer(const CImage* image, std::size_t layer, CPoint point, std::size_t clip,
                        double opacity);
    // One layer in a colour of the caller's choice: glyphs, with the point at the pen.
    void drawGlyph(const CImageLayer& glyph, CPoint point, std::size_t clip, const CPaletteColor& color,
                   double opacity);
    // Entry 255 of the slot's colour, or of `color`.
    void drawFilledRect(std::uint32_t slot, const CRect& rect, std::size_t clip, double opacity);
    void drawFilledRect(const CPaletteColor& color, const CRect& rect, std::size_t clip, double opacity);
    void drawInvertedRect(const CRect& rect, std::size_t clip);

    // A line through all points with round ends and joints, as wide as the brush. It is painted once, so a
    // line that is not opaque stays even where it crosses itself. Points with NaN break the line;
    // points far outside cost nothing.
    void drawPolyline(std::span<const CPoint> points, const CBrush& brush, std::size_t clip,
                      const CPaletteColor& color, double opacity);

    // False if nothing in the rectangle can show: then a view may skip costly work, as for text lines
    // outside.
    bool isRectVisible(const CRect& rect, std::size_t clip) const;

private:
    const CViewClip& clipOf(std::size_t index, const char* caller) const;
    // The part of a clip that is being repainted, in the sector's own pixels.
    CPixelRect visiblePart(const CViewClip& clip) const
    {
        return clip.inSector(column_, row_).intersectedWith(region_);
    }
    CPixelRect visiblePart(std::size_t index) const { return visiblePart(view_.getClip(index)); }
    // Whole pixels of this sector.
    std::int32_t pixelX(double x) const;
    std::int32_t pixelY(double y) const;
    CPixelRect pixelRect(const CRect& rect) const;

    CSectorView& view_;
    CLinearBitmap& target_;
    std::span<std::uint8_t> coverage_;
    std::int32_t column_;
    std::int32_t row_;
    CPixelRect region_;
};

// Where an image of `width` x `height` lies in a clip of the view, relative to the view. Alignments: -1 left
// or top, 0 centre, 1 right or bottom. Clip 0 is traced as a mistake and taken as it stands.
CRect alignInClip(const CSectorView& view, std::size_t clip, std::int32_t width, std::int32_t height,
                  std::int32_t alignmentH, std::int32_t alignmentV);

} // namespace qel
