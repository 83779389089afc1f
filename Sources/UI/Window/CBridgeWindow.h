// What the main window lies in, in a host's window.
#pragma once

#include "CError.h"
#include "CSystemDisplay.h"

#include <memory>

namespace qel {

// A plain child of the host's window that does nothing but hold ours, so that the host moves, hides or gives
// a new parent to a window that we never touch, and ours keeps its place at (0, 0) in it. Owned by the main
// window, and gone before the display.
class CBridgeWindow : private platform::CSystemWindowListener
{
public:
    // In a window of the host.
    CError create(platform::CSystemDisplay& display, platform::NativeWindow parent, int width, int height);
    void setSize(int width, int height);

    // 0 before create(), and once the host's window has gone with it.
    platform::NativeWindow getHandle() const { return window_ ? window_->handle() : 0; }

private:
    std::unique_ptr<platform::CSystemWindow> window_;
};

} // namespace qel
