// Where finished sectors lie, and how they reach the screen.
#pragma once

#include "CError.h"
#include "CRect.h"

namespace qel {

// What a window gives its sector map: memory that the window system can copy from. That may be one picture
// for the whole window (then a sector is a part of it, with the picture's pitch) or a piece for each sector.
// Owned by the window, which outlives the map.
//
// Call order: resize(), then getSector() for each sector and invalidate() after each frame. Nobody writes
// into the memory but the map while it paints; the window may copy from it at any other time.
class CSectorSurface
{
public:
    struct Sector
    {
        std::uint8_t* pixels = nullptr; // four bytes each: blue, green, red, unused
        std::int32_t pitch = 0;         // bytes from row to row
    };

    virtual ~CSectorSurface() = default;

    // Makes memory for a grid of sectors of kSectorPx x kSectorPx pixels, with all bytes 0. What was handed
    // out before ends. Either number may be 0. On error there is no memory, and the window cannot go on.
    virtual CError resize(std::int32_t columns, std::int32_t rows) = 0;
    // The memory of one sector of the grid.
    virtual Sector getSector(std::int32_t column, std::int32_t row) = 0;
    // This part of the window (it may reach beyond the window's edge) has new pixels. The window asks its
    // system to show them, at once or with its next paint message.
    virtual void invalidate(const CPixelRect& rect) = 0;
};

} // namespace qel
