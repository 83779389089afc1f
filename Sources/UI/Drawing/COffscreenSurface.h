// A surface without a window system.
#pragma once

#include "CLinearBitmap.h"
#include "CSectorSurface.h"

namespace qel {

// Keeps all sectors in one picture, for pictures of windows and for tests.
class COffscreenSurface : public CSectorSurface
{
public:
    CError resize(std::int32_t columns, std::int32_t rows) override;
    Sector getSector(std::int32_t column, std::int32_t row) override;
    void invalidate(const CPixelRect& rect) override;

    // The picture of all sectors: as large as the grid, so at right and bottom it reaches beyond the window.
    const CLinearBitmap& getPicture() const { return picture_; }
    // The number of invalidate() calls since the last takeInvalidated(), and the pixels they covered.
    struct Invalidated
    {
        std::int32_t count = 0;
        std::int64_t pixels = 0;
    };
    Invalidated takeInvalidated();

private:
    CLinearBitmap picture_;
    Invalidated invalidated_;
};

} // namespace qel
