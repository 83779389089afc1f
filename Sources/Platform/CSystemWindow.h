// One window of the system.
#pragma once

#include "CSystemSurface.h"
#include "SystemEvents.h"

#include <string>

namespace qel::platform {

enum class WindowKind
{
    kChild,  // in a window of the host, shown at once
    kBridge, // plain child that draws nothing and only holds a kChild; shown at once
    kPopup,  // list over all other windows, without frame or focus; the window manager leaves it alone
    kDialog, // top-level window without frame, kept above the host's top-level window
};

enum class CursorShape
{
    kArrow,
    kText,
    kHand,
    kSizeHorizontal,
    kSizeVertical,
    kSizeDiagonal, // from the top left to the bottom right
    kHidden,
};

struct WindowDescription
{
    WindowKind kind = WindowKind::kChild;
    // kChild, kBridge: the window to lie in. kPopup, kDialog: the window it belongs to, ours or the host's;
    // what is kept above and told to the window manager is the top-level window that one lies in. 0: none,
    // for windows of a program without a host.
    NativeWindow parent = 0;
    PixelRect place;          // in the parent for kChild and kBridge, else on the screen
    std::string title;        // UTF-8
    bool isOnTaskbar = false; // kDialog
    bool isHelper = false;    // kPopup: a tool tip or the like rather than a list
};

// Made by CSystemDisplay::createWindow() and used on its thread. Owned by the caller, who destroys it in any
// order with the display. Nothing waits for the system's answer and nothing reports failure: on a window that
// is gone, or whose server is, every call does nothing. No call ever grabs the pointer, the keyboard or the
// server. What is asked of the system is sent at the next CSystemDisplay::flush() or processEvents().
class CSystemWindow
{
public:
    virtual ~CSystemWindow() = default;

    virtual NativeWindow handle() const = 0; // 0 once the window is gone
    virtual WindowKind kind() const = 0;

    virtual void show() = 0; // without taking the focus
    virtual void hide() = 0;
    virtual void raise() = 0;
    virtual void setTitle(const std::string& title) = 0; // UTF-8
    virtual void setCursor(CursorShape shape) = 0;

    // In the parent's pixels for children, in the screen's else. At least 1 x 1.
    virtual void setPlace(const PixelRect& place) = 0;
    // Puts a child into another window of the host; false, and no change, when that is no window.
    virtual bool setParent(NativeWindow parent) = 0;
    // Where the window lies on the screen, of the size it has now. Correct when called from a pointer event,
    // whatever was moved or reparented before; else as of the last news of the system.
    virtual PixelRect screenPlace() const = 0;

    // Asks for onPaint() at the next flush(), together with what was asked before.
    virtual void invalidate(const PixelRect& area) = 0;
    // From within onPaint(): copies `source` of the surface, one of this display, to (x, y) of the window.
    // What lies outside of either is cut off.
    virtual void present(const CSystemSurface& surface, const PixelRect& source, int x, int y) = 0;

    // Takes the keyboard for the editing of a text, with the time of the event that is being handled, and
    // remembers whose it was. While it is taken, keys come here and not to the host. Again, it asks again
    // where somebody else was quicker.
    virtual void takeFocus() = 0;
    // Gives the keyboard back to whoever had it, unless somebody else has taken it meanwhile.
    virtual void giveFocusBack() = 0;
    virtual bool hasFocus() const = 0;

protected:
    CSystemWindow() = default;
    CSystemWindow(const CSystemWindow&) = delete;
    CSystemWindow& operator=(const CSystemWindow&) = delete;
};

} // namespace qel::platform
