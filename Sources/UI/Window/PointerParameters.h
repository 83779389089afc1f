// What events of pointer and keys tell views.
#pragma once

#include "CAttrValue.h"
#include "SystemEvents.h"

namespace qel {

// "is-button-l", "is-button-r", "is-alt", "is-ctrl", "is-shift", "actual-x" and "actual-y" (screen), and
// "button": "l" or "r", the one that the event is about or, in a move, that is held; else empty. Besides
// these, "x" and "y": window pixels.
CAttrMap moveParameters(const platform::PointerEvent& event);
// The same and "is-double-click".
CAttrMap buttonParameters(const platform::ButtonEvent& event);
// "delta": notches, positive away from the user; buttons and modifiers.
CAttrMap wheelParameters(const platform::WheelEvent& event);
// As told at CViewWindow::setKeyFocus().
CAttrMap keyParameters(const platform::KeyEvent& event);

} // namespace qel
