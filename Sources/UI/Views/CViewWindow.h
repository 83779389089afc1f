// What views need of their window.
#pragma once

#include "CAttrValue.h"
#include "CError.h"

namespace qel {

class CView;

// Implemented by what shows a tree of views: a window of the system, or one without a screen. Set at the
// views' context and taken out of it before the window goes; while there is none, views live without it.
// Window's thread.
class CViewWindow
{
public:
    virtual ~CViewWindow() = default;

    // Opens or closes the pop-up of `opener`; the parameters say which and where.
    virtual CError togglePopup(CView& opener, const CAttrMap& parameters) = 0;
    // The pop-up that `view` belongs to has a result for whoever opened it.
    virtual CError passPopupResult(CView& view, const CAttrMap& parameters) = 0;
    // The window is to close. It may release its views at once: events and commands outlive that.
    virtual CError closeWindow() = 0;
    // The layout may have given the root view another size; the window takes it.
    virtual CError adoptRootSize() = 0;
    // The views under the pointer are left ("mouse-exit"), as if the pointer were outside the window.
    virtual CError exitPointer() = 0;
    // The view is going away: pointer, focus, capture and pop-ups must forget it. It does not answer calls
    // about its place any more.
    virtual void forgetView(CView& view) = 0;
    // The hint of this view has changed, in case it is the one that is shown.
    virtual CError onHintChanged(CView& view) = 0;
};

} // namespace qel
