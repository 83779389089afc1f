// One square of a window.
#pragma once

#include "CLinearBitmapDC.h"
#include "CSectorView.h"

#include <vector>

namespace qel {

// kSectorPx x kSectorPx pixels of a window, the same without dynamic views, and the views that touch it.
// Owned by its CSectorMap.
struct CSector
{
    CLinearBitmapDC image;     // what the screen shows
    CLinearBitmap staticImage; // a copy with only the static views below the first dynamic one
    bool isStaticValid = false;
    bool isDirtyListed = false;      // in the map's list of dirty sectors
    bool isPaintedListed = false;    // in its list of those to present
    CRect dirty;                     // window coordinates; empty if nothing is to be repainted
    std::vector<CSectorView*> views; // by z-index, then in the order in which they came to the map
};

} // namespace qel
