// The way from one editor to the window system.
#pragma once

#include "CSystemClipboard.h"
#include "CSystemFileDialog.h"
#include "CSystemSurface.h"
#include "CSystemWindow.h"
#include "CSystemWindowListener.h"
#include "SystemEvents.h"

#include <functional>
#include <memory>
#include <string>

namespace qel::platform {

// One for each open editor, shared by its main window, pop-ups and dialogs; on Linux a connection of its own
// to the X server, on Windows little more than a list of windows. Used by one thread at a time. Any listener
// call may destroy it, and processEvents() may be entered again from within one.
//
// Once the server is lost, the handler of that is called once and every call does nothing; the process lives
// on and errors of ours never reach the host. Nothing here waits for the server but what opens:
// openSystemDisplay(), createWindow(), setParent() and the first takeFocus(), which reads the keyboard's
// layout.
class CSystemDisplay
{
public:
    virtual ~CSystemDisplay() = default;

    virtual bool isConnected() const = 0;

    // --- from the editor's idle, in this order, with the timers in between
    // Reads all that is waiting and calls the listeners. On Windows, where messages come by the thread's own
    // loop, it looks only for what sends no message to a child: moves and activation of the host's window.
    virtual void processEvents() = 0;
    // Calls onPaint() of windows that have something to paint, unless the last frame is still under way, and
    // sends everything.
    virtual void flush() = 0;
    // The system has not yet read all that was presented. With a server that does not keep up, frames are
    // left out rather than piled up; their rectangles are kept for the next flush().
    virtual bool isFrameUnderWay() const = 0;

    // --- windows
    // Does the system know a window by this handle? Waits for the answer.
    virtual bool isWindow(NativeWindow window) const = 0;
    // Returns 0 or the system's error number (Linux: errno; EINVAL for a parent that is no window). A child
    // is shown, the others are not. `listener` must live as long as the window.
    [[nodiscard]] virtual int createWindow(const WindowDescription& description,
                                           CSystemWindowListener& listener,
                                           std::unique_ptr<CSystemWindow>& out) = 0;
    // Pixels, each side at least 1. Returns 0 or the system's error number and the step that failed.
    [[nodiscard]] virtual int createSurface(int width, int height, std::unique_ptr<CSystemSurface>& out,
                                            SurfaceStep& outFailed) = 0;

    // --- screen and pointer; coordinates of the screen
    // Free of panels and task bars, on the monitor that holds most of `around`.
    virtual PixelRect workArea(const PixelRect& around) const = 0;
    // The window of this display at the point, the topmost first; null for none. Windows of others that cover
    // it count on Windows only.
    virtual CSystemWindow* windowAt(int screenX, int screenY) const = 0;
    // Made for a timer: on Linux it asks the server, and the answer, some milliseconds old, comes from a
    // later call. False while there is no answer.
    virtual bool queryPointer(PointerState& out) = 0;
    virtual void movePointer(int screenX, int screenY) = 0;
    // Does the user work in the host's window, or in one of this display?
    virtual bool isActive() const = 0;

    virtual CSystemClipboard& clipboard() = 0;
    virtual CSystemFileDialog& fileDialog() = 0;

protected:
    CSystemDisplay() = default;
    CSystemDisplay(const CSystemDisplay&) = delete;
    CSystemDisplay& operator=(const CSystemDisplay&) = delete;
};

// Returns 0 or the system's error number: on Linux ELIBACC without the libraries of X (libxcb, libxkbcommon),
// so that the plug-in itself loads on a machine without them, and ECONNREFUSED without a server to talk to.
// `applicationName` is what window managers see. `onLost` may be empty.
[[nodiscard]] int openSystemDisplay(const std::string& applicationName, std::function<void()> onLost,
                                    std::unique_ptr<CSystemDisplay>& out);

} // namespace qel::platform
