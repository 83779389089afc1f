// What a view draws with, into one sector.
#include "CDrawContext.h"

#include "Trace.h"

#include <cmath>
#include <limits>

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

// Stamps a quarter of a pixel apart: between them the edge of the thinnest brush falls short by less than a
// hundredth of a pixel.
constexpr double kStampsPerPixel = 4.0;

// The coverage of one stroke in the part of a sector that shows.
class StrokeMask
{
public:
    // `origin` is the sector's corner, `box` the part to fill, in the sector's pixels.
    StrokeMask(std::span<std::uint8_t> coverage, const CPixelRect& box, const CBrush& brush, double originX,
               double originY)
        : coverage_(coverage), box_(box), brush_(brush), originX_(originX), originY_(originY),
          size_(static_cast<std::int32_t>(brush.size))
    {
        for (std::int32_t y = box.y; y < box.bottom(); ++y) {
            std::fill_n(at(box.x, y), box.width, std::uint8_t{0});
        }
    }

    // Stamps from `a` to `b`, window coordinates, both ends included. The places of the stamps depend on the
    // ends alone, so that the line runs on in the next sector.
    void addLine(CPoint a, CPoint b)
    {
        const double deltaX = b.x - a.x;
        const double deltaY = b.y - a.y;
        const double steps =
            std::max(1.0, std::ceil(std::sqrt(deltaX * deltaX + deltaY * deltaY) * kStampsPerPixel));
        double first = 0.0;
        double last = steps;
        cut(a.x - originX_, deltaX / steps, box_.x - size_, box_.right() + size_, first, last);
        cut(a.y - originY_, deltaY / steps, box_.y - size_, box_.bottom() + size_, first, last);
        for (double i = first; i <= last; i += 1.0) {
            addStamp(a.x + deltaX * (i / steps), a.y + deltaY * (i / steps));
        }
    }

    std::uint8_t* at(std::int32_t x, std::int32_t y) { return coverage_.data() + y * kSectorPx + x; }

private:
    // Narrows the steps to those at which start + step * i can lie in [low, high].
    static void cut(double start, double step, double low, double high, double& first, double& last)
    {
        if (step == 0.0) {
            if (start < low || start > high) {
                last = first - 1.0;
            }
            return;
        }
        const double a = (low - start) / step;
        const double b = (high - start) / step;
        first = std::max(first, std::floor(std::min(a, b)));
        last = std::min(last, std::ceil(std::max(a, b)));
    }

    // The greatest coverage counts, so that stamps over stamps leave the edge soft.
    void addStamp(double x, double y)
    {
        const std::uint32_t positions = brush_.positionsPerPixel();
        const auto place = [&](double pen) {
            return static_cast<std::int64_t>(std::floor((pen - brush_.radius) * positions + 0.5));
        };
        const std::int64_t placeX = place(x);
        const std::int64_t placeY = place(y);
        if (placeX == lastX_ && placeY == lastY_) {
            return;
        }
        lastX_ = placeX;
        lastY_ = placeY;
        const auto pixel = [&](std::int64_t value, double origin) {
            return static_cast<std::int32_t>((value >> brush_.oversampling) -
                                             static_cast<std::int64_t>(origin));
        };
        const CPixelRect stamp{pixel(placeX, originX_), pixel(placeY, originY_), size_, size_};
        const CPixelRect visible = stamp.intersectedWith(box_);
        const std::uint8_t* const shape = brush_.stamp(static_cast<std::uint32_t>(placeX & (positions - 1)),
                                                       static_cast<std::uint32_t>(placeY & (positions - 1)));
        for (std::int32_t row = visible.y; row < visible.bottom(); ++row) {
            const std::uint8_t* const source = shape + (row - stamp.y) * size_ + (visible.x - stamp.x);
            std::uint8_t* const target = at(visible.x, row);
            for (std::int32_t i = 0; i < visible.width; ++i) {
                target[i] = std::max(target[i], source[i]);
            }
        }
    }

    std::span<std::uint8_t> coverage_;
    CPixelRect box_;
    const CBrush& brush_;
    double originX_;
    double originY_;
    std::int32_t size_;
    std::int64_t lastX_ = std::numeric_limits<std::int64_t>::min();
    std::int64_t lastY_ = std::numeric_limits<std::int64_t>::min();
};

bool isUsable(CPoint point)
{
    return std::fabs(point.x) <= kPixelLimit && std::fabs(point.y) <= kPixelLimit;
}

// The part of a sector that a stroke through the points can touch.
CRect boundsOf(std::span<const CPoint> points, double margin)
{
    CRect bounds;
    for (const CPoint& point : points) {
        if (isUsable(point)) {
            bounds = bounds.unitedWith({point.x - margin, point.y - margin, 2.0 * margin, 2.0 * margin});
        }
    }
    return bounds;
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

void CDrawContext::drawPolyline(std::span<const CPoint> points, const CBrush& brush, std::size_t clip,
                                const CPaletteColor& color, double opacity)
{
    const CPixelRect visible = visiblePart(clipOf(clip, "drawPolyline"));
    const CRect bounds = boundsOf(points, brush.size);
    if (visible.isEmpty() || bounds.isEmpty()) {
        return;
    }
    const CPixelRect box = pixelRect(bounds).intersectedWith(visible);
    if (box.isEmpty()) {
        return;
    }
    StrokeMask mask(coverage_, box, brush, column_ * kSectorPx, row_ * kSectorPx);
    const CRect& area = view_.getArea();
    const auto inWindow = [&area](CPoint point) { return CPoint{area.x + point.x, area.y + point.y}; };
    for (std::size_t i = 0; i < points.size(); ++i) {
        const bool isJoined = i > 0 && isUsable(points[i - 1]);
        if (isUsable(points[i])) {
            mask.addLine(inWindow(points[isJoined ? i - 1 : i]), inWindow(points[i]));
        }
    }
    target_.paintCoverage(mask.at(box.x, box.y), kSectorPx, box, color, opacity);
}

} // namespace qel
