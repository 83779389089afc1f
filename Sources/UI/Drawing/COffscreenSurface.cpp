// A surface without a window system.
#include "COffscreenSurface.h"

#include "CViewClip.h"

#include <utility>

namespace qel {

CError COffscreenSurface::resize(std::int32_t columns, std::int32_t rows)
{
    QEL_TRY(picture_.resize(columns * kSectorPx, rows * kSectorPx), {});
    picture_.clear();
    return {};
}

CSectorSurface::Sector COffscreenSurface::getSector(std::int32_t column, std::int32_t row)
{
    return {reinterpret_cast<std::uint8_t*>(picture_.getRow(row * kSectorPx) + column * kSectorPx),
            picture_.getPitch()};
}

void COffscreenSurface::invalidate(const CPixelRect& rect)
{
    ++invalidated_.count;
    invalidated_.pixels += rect.area();
}

COffscreenSurface::Invalidated COffscreenSurface::takeInvalidated()
{
    return std::exchange(invalidated_, {});
}

} // namespace qel
