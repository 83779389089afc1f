// The windows of the host around ours.
#pragma once

#include "CXcbConnection.h"
#include "SystemEvents.h"

namespace qel::platform {

// Walks up from a window to the one that the window manager knows, or is going to know: that with WM_STATE,
// else the outermost below the root. 0 when `window` is none. Waits for the answers.
xcb_window_t findXcbTopLevel(const CXcbConnection& connection, xcb_window_t window);

// Does the server know such a window? Waits for the answer.
bool isXcbWindow(const CXcbConnection& connection, NativeWindow window);

} // namespace qel::platform
