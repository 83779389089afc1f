// The pop-ups of a window.
#pragma once

#include "CAttrValue.h"
#include "CError.h"
#include "SystemEvents.h"

namespace qel {

class CView;
class CWindow;

// Part of each window. Knows the pop-ups that views of it have opened and, in a pop-up, who opened it.
class CPopups
{
public:
    explicit CPopups(CWindow& window) : window_(window) {}

    // --- of views in this window
    // Opens or closes the pop-up of `opener`.
    CError toggle(CView& opener, const CAttrMap& parameters);
    // This window is a pop-up, and `view` in it has a result for whoever opened it.
    CError passResult(CView& view, const CAttrMap& parameters);
    void forgetView(CView& view);
    bool hasOpen() const { return false; }

    // --- called by the window
    // Where this window is to open, if it lies on the screen by itself.
    CError findPlace(int width, int height, platform::PixelRect& out) const;
    // A button goes down in this window, and the view under the pointer has not heard of it yet.
    CError onPress(const platform::PointerEvent& event);
    // "deactivate-timer" has ticked: it runs while a pop-up of this window is open.
    CError onDeactivateTick();
    // This window, a pop-up, is to close: tells its opener and releases the window's whole tree.
    CError closeOwn();
    // This window is going, and its pop-ups with it.
    void release();

private:
    CWindow& window_;
};

} // namespace qel
