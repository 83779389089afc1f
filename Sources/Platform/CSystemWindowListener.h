// What a window of the system reports to its owner.
#pragma once

#include "SystemEvents.h"

namespace qel::platform {

// Called on the thread of the display: on Linux from CSystemDisplay::processEvents() and flush() only, on
// Windows from the thread's message loop and from calls that send messages at once (resize, focus,
// activation). A call may do anything, destroying its window or the display included; no call comes after
// that. Coordinates are pixels of the window, from the top left corner of what it draws.
class CSystemWindowListener
{
public:
    virtual ~CSystemWindowListener() = default;

    // The rectangle must reach the screen again: CSystemWindow::present() for all of it. Present is allowed
    // here only.
    virtual void onPaint(const PixelRect& /*update*/) {}
    // The size is another one than the owner last gave: the host's or the window manager's doing.
    virtual void onResize(int /*width*/, int /*height*/) {}
    // The window lies elsewhere on the screen, moved by the user, the host or, with the child, its window.
    virtual void onMove(int /*screenX*/, int /*screenY*/) {}

    virtual void onPointerMove(const PointerEvent& /*event*/) {}
    // The pointer has left; never while a button is held that went down in the window.
    virtual void onPointerLeave() {}
    virtual void onButtonPress(const ButtonEvent& /*event*/) {}
    virtual void onButtonRelease(const ButtonEvent& /*event*/) {}
    // The system took the pointer away while a button was held: no release will come.
    virtual void onCaptureLost() {}
    virtual void onWheel(const WheelEvent& /*event*/) {}

    // Keys come while the window has the focus after CSystemWindow::takeFocus(), never otherwise.
    virtual void onKeyPress(const KeyEvent& /*event*/) {}
    virtual void onKeyRelease(const KeyEvent& /*event*/) {}
    // False: somebody else has taken the keyboard; there is nothing to give back any more.
    virtual void onFocus(bool /*isFocused*/) {}

    // The host's window around a child has become, or no longer is, the one the user works in. It is left for
    // a dialog whose text is edited, too: CSystemDisplay::isActive() tells of all windows together.
    virtual void onActivation(bool /*isActive*/) {}
    // The host has hidden its window around a child, with the child in it, or shows it again. Windows above
    // it stay where they are.
    virtual void onHostShown(bool /*isShown*/) {}
    virtual void onCloseRequest() {}
    // The window is gone, by another's hand (its parent was destroyed, the server died). Its object stays and
    // does nothing from now on.
    virtual void onDestroyed() {}
};

} // namespace qel::platform
