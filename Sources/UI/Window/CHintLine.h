// The hint of the view under the pointer.
#pragma once

#include "CView.h"

namespace qel {

// Shows the hint as "title" of the view at the window's "$window-status-path" or, where neither the renderer
// nor its root view names one, at that of the shared data. Nothing is shown while "is-show-hints" of the
// shared data is false.
class CHintLine
{
public:
    // The view under the pointer; null for none. Does nothing if that hint is shown already.
    CError show(CObject& renderer, CView& root, const CView* view);

private:
    CString shown_;
};

} // namespace qel
