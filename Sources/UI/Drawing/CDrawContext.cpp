// What a view draws with, into one sector.
#include "CDrawContext.h"

#include "Trace.h"

namespace qel {

namespace {

// The largest k with k * size <= distance.
std::int32_t wholeSteps(std::int32_t distance, std::int32_t size)
{
    const std::int32_t steps = distance / size;
    return steps * size > distance ? steps - 1 : steps;
}

// Where the repetitions of an image begin along one axis.
struct Tiles
{
    std::int32_t first = 0;
    std::int32_t count = 0;
    std::int32_t step = 0;
};

// Repetitions of an image at `start` that have a part of their logical size within [clipStart, clipEnd).
// Those whose pixels, from `reachStart` to `reachEnd` of each, miss [visibleStart, visibleEnd) are left out.
Tiles tilesBetween(std::int32_t start, std::int32_t size, std::int32_t clipStart, std::int32_t clipEnd,
                   std::int32_t reachStart, std::int32_t reachEnd, std::int32_t visibleStart,
                   std::int32_t visibleEnd)
{
    const std::int32_t first =
        std::max(wholeSteps(clipStart - start, size), wholeSteps(visibleStart - reachEnd - start, size) + 1);
    const std::int32_t end = std::min(wholeSteps(clipEnd - 1 - start, size),
                                      wholeSteps(visibleEnd - 1 - reachStart - start, size)) +
                             1;
    return {start + first * size, std::max(0, end - first), size};
}

// The pixels of all layers, relative to the image's logical corner.
CPixelRect reachOf(const CImage& image)
{
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    for (const CImageLayer& layer : image.layers) {
        left = std::min(left, layer.originX);
        top = std::min(top, layer.originY);
        right = std::max(right, layer.originX + layer.rasterWidth);
        bottom = std::max(bottom, layer.originY + layer.rasterHeight);
    }
    return {left, top, right - left, bottom - top};
}

void traceClipZero(const char* caller)
{
    if (isTracing()) {
        trace(CString(caller) + " CLIP 0");
    }
}

} // namespace

CDrawContext::CDrawContext(CSectorView& view, CLinearBitmap& target, std::span<std::uint8_t> coverage,
                           std::int32_t column, std::int32_t row, const CPixelRect& region)
    : view_(view), target_(target), coverage_(coverage), column_(column), row_(row), region_(region)
{}

const CViewClip& CDrawContext::clipOf(std::size_t index, const char* caller) const
{
    if (index == 0) {
        traceClipZero(caller);
    }
    return view_.getClip(index);
}

std::int32_t CDrawContext::pixelX(double x) const
{
    return roundToPixel(view_.getArea().x + x) - column_ * kSectorPx;
}

std::int32_t CDrawContext::pixelY(double y) const
{
    return roundToPixel(view_.getArea().y + y) - row_ * kSectorPx;
}

CPixelRect CDrawContext::pixelRect(const CRect& rect) const
{
    return roundToPixels(rect.movedBy(view_.getArea().x, view_.getArea().y))
        .movedBy(-column_ * kSectorPx, -row_ * kSectorPx);
}

bool CDrawContext::isRectVisible(const CRect& rect, std::size_t clip) const
{
    return !pixelRect(rect).intersectedWith(visiblePart(clip)).isEmpty();
}

// --- images

void CDrawContext::drawImage(const CImage* image, CPoint point, std::size_t clip, double opacity, bool tileX,
                             bool tileY)
{
    const CViewClip& chosen = clipOf(clip, "drawImage");
    const CPixelRect visible = visiblePart(chosen);
    if (!image || visible.isEmpty()) {
        return;
    }
    const CPixelRect whole = chosen.getPixels().movedBy(-column_ * kSectorPx, -row_ * kSectorPx);
    const CPixelRect reach = reachOf(*image);
    Tiles columns{pixelX(point.x), 1, 0};
    Tiles rows{pixelY(point.y), 1, 0};
    if (tileX && image->getWidth() > 0) {
        columns = tilesBetween(columns.first, image->getWidth(), whole.x, whole.right(), reach.x,
                               reach.right(), visible.x, visible.right());
    }
    if (tileY && image->getHeight() > 0) {
        rows = tilesBetween(rows.first, image->getHeight(), whole.y, whole.bottom(), reach.y, reach.bottom(),
                            visible.y, visible.bottom());
    }
    for (const CImageLayer& layer : image->layers) {
        const CPaletteColor& color = *view_.getSlotColor(layer.colorSlot);
        for (std::int32_t row = 0; row < rows.count; ++row) {
            for (std::int32_t column = 0; column < columns.count; ++column) {
                target_.blit(layer, columns.first + column * columns.step, rows.first + row * rows.step,
                             visible, color, opacity);
            }
        }
    }
}

void CDrawContext::drawImageLayer(const CImage* image, std::size_t layer, CPoint point, std::size_t clip,
                                  double opacity)
{
    const CPixelRect visible = visiblePart(clipOf(clip, "drawImageLayer"));
    if (!image || layer >= image->layers.size() || visible.isEmpty()) {
        return;
    }
    const CImageLayer& chosen = image->layers[layer];
    target_.blit(chosen, pixelX(point.x), pixelY(point.y), visible, *view_.getSlotColor(chosen.colorSlot),
                 opacity);
}

void CDrawContext::drawGlyph(const CImageLayer& glyph, CPoint point, std::size_t clip,
                             const CPaletteColor& color, double opacity)
{
    const CPixelRect visible = visiblePart(clipOf(clip, "drawGlyph"));
    if (!visible.isEmpty()) {
        target_.blit(glyph, pixelX(point.x), pixelY(point.y), visible, color, opacity);
    }
}

// --- rectangles

void CDrawContext::drawFilledRect(std::uint32_t slot, const CRect& rect, std::size_t clip, double opacity)
{
    drawFilledRect(*view_.getSlotColor(slot), rect, clip, opacity);
}

void CDrawContext::drawFilledRect(const CPaletteColor& color, const CRect& rect, std::size_t clip,
                                  double opacity)
{
    target_.fillRect(pixelRect(rect), visiblePart(clipOf(clip, "drawFilledRect")), color, opacity);
}

void CDrawContext::drawInvertedRect(const CRect& rect, std::size_t clip)
{
    target_.invertRect(pixelRect(rect), visiblePart(clipOf(clip, "drawInvertedRect")));
}

// --- placing

CRect alignInClip(const CSectorView& view, std::size_t clip, std::int32_t width, std::int32_t height,
                  std::int32_t alignmentH, std::int32_t alignmentV)
{
    if (clip == 0) {
        traceClipZero("getAlignedImageCoords");
    }
    const CRect box = view.getClip(clip).getRect();
    const auto align = [](double start, double room, double size, std::int32_t alignment) {
        const double spare = room - size;
        return alignment < 0 ? start : alignment == 0 ? start + spare * 0.5 : start + spare;
    };
    return {align(box.x, box.width, width, alignmentH) - view.getArea().x,
            align(box.y, box.height, height, alignmentV) - view.getArea().y, static_cast<double>(width),
            static_cast<double>(height)};
}

} // namespace qel
