// What a view area tells its view.
#pragma once

#include "CError.h"
#include "CRect.h"

namespace qel {

// The second base of a view that wants to know where it lies. Called on the window's thread, from
// CLayoutContext::solveLayout().
class CViewAreaUpdateHandler
{
public:
    virtual ~CViewAreaUpdateHandler() = default;

    // The rectangles have changed: `visible` is what of the view is within the clips of its ancestors,
    // widened by its spread; `whole` is the view itself, or the extent of what it scrolls. Both are empty
    // while the view is hidden. Called while the layout is being solved, so attributes may be set, but no
    // view may be made or released here.
    virtual void onAreaBounds(const CRect& visible, const CRect& whole) = 0;

    // The layout has settled after such a change. May set attributes, and make and release views but for the
    // root; the layout is solved once more afterwards.
    virtual CError onAreaSettled() { return {}; }
};

} // namespace qel
