// A bitmap that the window system can copy from.
#include "CLinearBitmapDC.h"

#include "CViewClip.h"

namespace qel {

void CLinearBitmapDC::attachSector(const CSectorSurface::Sector& sector)
{
    attach(sector.pixels, kSectorPx, kSectorPx, sector.pitch);
}

CError CLinearBitmapDC::resize(std::int32_t width, std::int32_t height)
{
    if (width != getWidth() || height != getHeight()) {
        QEL_FAIL({}, "@qelstr_CLinearBitmapDC_resize_Fixed A sector's bitmap cannot become %1 x %2 pixels.",
                 width, height);
    }
    return {};
}

} // namespace qel
