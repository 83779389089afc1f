// One clip rectangle of a view.
#pragma once

#include "CRect.h"

namespace qel {

// Edge of a sector, in pixels, and the shift that divides by it.
inline constexpr std::int32_t kSectorShift = 7;
inline constexpr std::int32_t kSectorPx = 1 << kSectorShift;

// What a view draws with this clip stays within the rectangle and within the visible part of the view.
class CViewClip
{
public:
    // `rect` in window coordinates; `visible` is the visible part of the view.
    void set(const CRect& rect, const CRect& visible)
    {
        rect_ = rect;
        pixels_ = roundToPixels(rect).intersectedWith(roundToPixels(visible));
    }
    const CRect& getRect() const { return rect_; }
    // In whole pixels of the window; empty if nothing is visible.
    const CPixelRect& getPixels() const { return pixels_; }
    // The part in one sector, in that sector's own pixels.
    CPixelRect inSector(std::int32_t column, std::int32_t row) const
    {
        return pixels_.movedBy(-column * kSectorPx, -row * kSectorPx)
            .intersectedWith({0, 0, kSectorPx, kSectorPx});
    }

private:
    CRect rect_;
    CPixelRect pixels_;
};

} // namespace qel
