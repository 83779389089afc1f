// Lines and arcs, drawn with a soft round stamp.
#include "CDrawContext.h"

#include "Math/Elementary.h"

#include <array>
#include <limits>

namespace qel {

namespace {

// Stamps a quarter of a pixel apart: between them the edge of the thinnest brush falls short by less than a
// hundredth of a pixel.
constexpr double kStampsPerPixel = 4.0;
// What an arc's chords may fall short of the circle, in pixels.
constexpr double kChordErrorPx = 0.02;
constexpr std::size_t kMaxChords = 256;

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

void CDrawContext::drawArc(CPoint center, double radius, double fromAngle, double toAngle,
                           const CBrush& brush, std::size_t clip, const CPaletteColor& color, double opacity)
{
    if (!(radius >= 0.0 && std::fabs(toAngle - fromAngle) <= kPixelLimit)) {
        return;
    }
    // A chord over the angle w falls short of the circle by radius * w^2 / 8.
    const double chordAngle = std::sqrt(8.0 * kChordErrorPx / std::max(radius, 1.0));
    const double wanted = std::ceil(std::fabs(toAngle - fromAngle) / chordAngle);
    const double chords = std::clamp(wanted, 1.0, static_cast<double>(kMaxChords));
    std::array<CPoint, kMaxChords + 1> points;
    const auto count = static_cast<std::size_t>(chords) + 1;
    for (std::size_t i = 0; i < count; ++i) {
        const double angle = fromAngle + (toAngle - fromAngle) * (static_cast<double>(i) / chords);
        points[i] = {center.x + radius * math::cos(angle), center.y + radius * math::sin(angle)};
    }
    drawPolyline({points.data(), count}, brush, clip, color, opacity);
}

} // namespace qel
