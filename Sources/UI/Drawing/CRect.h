// Rectangles, and how coordinates become whole pixels.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace qel {

// Window coordinates, in pixels.
struct CRect
{
    // Sides below this count as none.
    static constexpr double kMinSide = 1e-5;

    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    // Also true for sides that are NaN.
    bool isEmpty() const { return !(width >= kMinSide && height >= kMinSide); }
    // The smallest rectangle that holds both; an empty one adds nothing.
    CRect unitedWith(const CRect& other) const
    {
        if (isEmpty() || other.isEmpty()) {
            return isEmpty() ? other : *this;
        }
        const double left = std::min(x, other.x);
        const double top = std::min(y, other.y);
        return {left, top, std::max(right(), other.right()) - left, std::max(bottom(), other.bottom()) - top};
    }
    // What both cover; all zeros if that is empty.
    CRect intersectedWith(const CRect& other) const
    {
        const double left = std::max(x, other.x);
        const double top = std::max(y, other.y);
        const CRect common{left, top, std::min(right(), other.right()) - left,
                           std::min(bottom(), other.bottom()) - top};
        return common.isEmpty() ? CRect() : common;
    }
    CRect movedBy(double deltaX, double deltaY) const { return {x + deltaX, y + deltaY, width, height}; }

    friend bool operator==(const CRect&, const CRect&) = default;
};

// Whole pixels, of a window or of one bitmap.
struct CPixelRect
{
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;

    std::int32_t right() const { return x + width; }
    std::int32_t bottom() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    std::int64_t area() const { return isEmpty() ? 0 : std::int64_t{width} * height; }
    // What both cover; all zeros if that is empty.
    CPixelRect intersectedWith(const CPixelRect& other) const
    {
        const std::int32_t left = std::max(x, other.x);
        const std::int32_t top = std::max(y, other.y);
        const CPixelRect common{left, top, std::min(right(), other.right()) - left,
                                std::min(bottom(), other.bottom()) - top};
        return common.isEmpty() ? CPixelRect() : common;
    }
    CPixelRect movedBy(std::int32_t deltaX, std::int32_t deltaY) const
    {
        return {x + deltaX, y + deltaY, width, height};
    }

    friend bool operator==(const CPixelRect&, const CPixelRect&) = default;
};

// The nearest whole pixel, halves to the right. What lies far outside any window is held at kPixelLimit, so
// that sums of a few pixel numbers cannot overflow; NaN is 0.
inline constexpr double kPixelLimit = 1e8;
inline std::int32_t roundToPixel(double coordinate)
{
    if (std::isnan(coordinate)) {
        return 0;
    }
    return static_cast<std::int32_t>(std::floor(std::clamp(coordinate, -kPixelLimit, kPixelLimit) + 0.5));
}

// Both edges rounded, so that neighbours stay neighbours.
inline CPixelRect roundToPixels(const CRect& rect)
{
    const std::int32_t left = roundToPixel(rect.x);
    const std::int32_t top = roundToPixel(rect.y);
    return {left, top, roundToPixel(rect.right()) - left, roundToPixel(rect.bottom()) - top};
}

} // namespace qel
