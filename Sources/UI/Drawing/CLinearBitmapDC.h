// A bitmap that the window system can copy from.
#pragma once

#include "CLinearBitmap.h"
#include "CSectorSurface.h"

namespace qel {

// A bitmap whose pixels belong to a window's surface. Its size is fixed by what it was attached to.
class CLinearBitmapDC : public CLinearBitmap
{
public:
    // From now on this is one sector's memory, which must live until the next attach.
    void attachSector(const CSectorSurface::Sector& sector);

    // Fails for any other size than the present one.
    CError resize(std::int32_t width, std::int32_t height) override;
};

} // namespace qel
