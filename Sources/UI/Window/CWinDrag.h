// The root of a window.
#pragma once

#include "CFramedView.h"

namespace qel {

// Tag `ui:window-drag`. Always a root view, wherever in the tree it stands. Draws a frame from its image set,
// and fills the rest with nothing: the views in it cover it.
class CWinDrag : public CFramedView
{
public:
    static void buildClassInfo(CClassInfo& info) { CFramedView::buildClassInfo(info); }

    void draw(CDrawContext& context) override { drawFrame(context); }

protected:
    bool isAlwaysRoot() const override { return true; }
};

} // namespace qel
