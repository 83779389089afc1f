// The root of a window.
#pragma once

#include "CDragInfo.h"
#include "CFramedView.h"

#include <memory>

namespace qel {

class CWindow;

// Tag `ui:window-drag`. Always a root view, wherever in the tree it stands. Draws a frame from its image set,
// and fills the rest with nothing: the views in it cover it.
//
// A press on a view with "is-window-draggable" drags the window, unless it lies in a host's; a text on a
// title bar lets the press through if it is click-through. Such a view tells its root by the events
// "window-drag-press", "-move" and "-release". "constrain-window" brings the window back into the work area;
// it happens by itself at the end of a drag.
class CWinDrag : public CFramedView
{
public:
    static void buildClassInfo(CClassInfo& info);

    virtual CError eventDragPress(const CAttrMap& parameters);
    virtual CError eventDragMove(const CAttrMap& parameters);
    virtual CError eventDragRelease(const CAttrMap& parameters);
    virtual CError eventConstrainWindow(const CAttrMap& parameters);

    void draw(CDrawContext& context) override { drawFrame(context); }

protected:
    bool isAlwaysRoot() const override { return true; }

private:
    // Null if it lies in a host's window.
    CWindow* movableWindow() const;

    std::unique_ptr<CDragInfo> drag_;
};

} // namespace qel
