// Notices that the user is elsewhere.
#include "CUserWatch.h"

#include "CWindow.h"

#include <algorithm>
#include <utility>

namespace qel {

void CUserWatch::start(bool isButtonDown)
{
    wasButtonDown_ = isButtonDown;
    wasActive_ = false;
}

bool CUserWatch::hasLeft(const CWindowSystem& system)
{
    const platform::CSystemDisplay* const display = system.getDisplay();
    const bool isActive = !display || display->isActive();
    const bool isOtherActive = std::exchange(wasActive_, isActive) && !isActive;

    platform::PointerState pointer;
    if (!system.queryPointer(pointer)) {
        return isOtherActive;
    }
    const bool isDown = pointer.isLeftDown || pointer.isRightDown || pointer.isMiddleDown;
    const bool isPressed = !std::exchange(wasButtonDown_, isDown) && isDown;
    // Presses in windows of ours come by themselves, and what is dragged out of one may go anywhere.
    const bool isOurs = system.findWindowAt(pointer.screenX, pointer.screenY) ||
                        std::ranges::any_of(system.getWindows(),
                                            [](CWindow* each) { return each->getPointer().isButtonHeld(); });
    return isOtherActive || (isPressed && !isOurs);
}

} // namespace qel
