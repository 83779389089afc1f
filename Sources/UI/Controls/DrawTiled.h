// Images in colours that are no slots of their view.
#pragma once

#include "CDrawContext.h"

namespace qel {

// All layers of an image, each in the colour that `colorOf` has for its slot. It is repeated to the edges of
// the clip, `clipRect` in window coordinates; `area` is the view's. Null draws nothing.
template <class ColorOf>
void drawTiled(CDrawContext& context, const CImage* image, const CPoint& point, const CRect& area,
               const CRect& clipRect, std::size_t clip, const ColorOf& colorOf, bool isTilingX,
               bool isTilingY)
{
    if (!image || image->getWidth() < 1 || image->getHeight() < 1 || clipRect.isEmpty()) {
        return;
    }
    const double endX = isTilingX ? clipRect.right() - area.x : point.x + 1.0;
    const double endY = isTilingY ? clipRect.bottom() - area.y : point.y + 1.0;
    for (const CImageLayer& layer : image->layers) {
        const CPaletteColor& color = *colorOf(layer.colorSlot);
        for (double y = point.y; y < endY; y += image->getHeight()) {
            for (double x = point.x; x < endX; x += image->getWidth()) {
                context.drawGlyph(layer, {x, y}, clip, color, 1.0);
            }
        }
    }
}

} // namespace qel
