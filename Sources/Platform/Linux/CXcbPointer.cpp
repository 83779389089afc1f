// The pointer over one window.
#include "CXcbPointer.h"

#include <utility>

namespace qel::platform {

namespace {

constexpr xcb_button_t kWheelUp = 4;
constexpr xcb_button_t kWheelDown = 5;

unsigned buttonBit(xcb_button_t button)
{
    return button >= XCB_BUTTON_INDEX_1 && button <= XCB_BUTTON_INDEX_3 ? 1u << button : 0u;
}

// Buttons down by the bits of an event's state.
unsigned buttonsIn(std::uint16_t state)
{
    return (state & XCB_KEY_BUT_MASK_BUTTON_1 ? 1u << XCB_BUTTON_INDEX_1 : 0u) |
           (state & XCB_KEY_BUT_MASK_BUTTON_2 ? 1u << XCB_BUTTON_INDEX_2 : 0u) |
           (state & XCB_KEY_BUT_MASK_BUTTON_3 ? 1u << XCB_BUTTON_INDEX_3 : 0u);
}

MouseButton buttonOf(xcb_button_t button)
{
    return button == XCB_BUTTON_INDEX_1   ? MouseButton::kLeft
           : button == XCB_BUTTON_INDEX_3 ? MouseButton::kRight
                                          : MouseButton::kMiddle;
}

// The events of the pointer begin alike.
template <typename Event>
void fillPointer(const Event& from, unsigned buttons, PointerEvent& to)
{
    to.x = from.event_x;
    to.y = from.event_y;
    to.screenX = from.root_x;
    to.screenY = from.root_y;
    to.isLeftDown = (buttons & buttonBit(XCB_BUTTON_INDEX_1)) != 0;
    to.isMiddleDown = (buttons & buttonBit(XCB_BUTTON_INDEX_2)) != 0;
    to.isRightDown = (buttons & buttonBit(XCB_BUTTON_INDEX_3)) != 0;
    to.modifiers.isShift = (from.state & XCB_MOD_MASK_SHIFT) != 0;
    to.modifiers.isCtrl = (from.state & XCB_MOD_MASK_CONTROL) != 0;
    to.modifiers.isAlt = (from.state & XCB_MOD_MASK_1) != 0;
}

} // namespace

void CXcbPointer::handleButton(const xcb_button_press_event_t& event, bool isPress)
{
    if (event.detail == kWheelUp || event.detail == kWheelDown) {
        if (isPress) {
            handleWheel(event);
        }
        return;
    }
    const unsigned bit = buttonBit(event.detail);
    if (!bit || (!isPress && !(heldButtons_ & bit))) {
        return;
    }
    ButtonEvent button;
    button.button = buttonOf(event.detail);
    button.isDoubleClick = isPress && session_.isDoubleClick(event);
    // The state is that from before the event.
    const unsigned buttons = isPress ? buttonsIn(event.state) | bit : buttonsIn(event.state) & ~bit;
    fillPointer(event, buttons, button);
    if (isPress) {
        heldButtons_ |= bit;
        isInside_ = true;
        listener_.onButtonPress(button);
        return;
    }
    heldButtons_ &= ~bit;
    const std::weak_ptr<bool> life = life_;
    listener_.onButtonRelease(button);
    if (!life.expired() && !heldButtons_ && !isInside_) { // it left while the button was held
        listener_.onPointerLeave();
    }
}

void CXcbPointer::handleWheel(const xcb_button_press_event_t& event)
{
    WheelEvent wheel;
    fillPointer(event, buttonsIn(event.state), wheel);
    wheel.delta = event.detail == kWheelUp ? 1.0 : -1.0;
    listener_.onWheel(wheel);
}

void CXcbPointer::handleMotion(const xcb_motion_notify_event_t& event)
{
    if (dropLostButtons(event.state)) {
        isInside_ = isInside_ || !heldButtons_;
        PointerEvent pointer;
        fillPointer(event, buttonsIn(event.state), pointer);
        listener_.onPointerMove(pointer);
    }
}

void CXcbPointer::handleEnter(const xcb_enter_notify_event_t& event)
{
    session_.screen().refresh();
    isInside_ = true;
    if (dropLostButtons(event.state)) {
        PointerEvent pointer;
        fillPointer(event, buttonsIn(event.state), pointer);
        listener_.onPointerMove(pointer);
    }
}

// A held button keeps the pointer ours; the leaving is told after its release.
void CXcbPointer::handleLeave()
{
    const bool wasInside = std::exchange(isInside_, false);
    if (wasInside && !heldButtons_) {
        listener_.onPointerLeave();
    }
}

// A release that went to another client, which grabbed the pointer meanwhile, never comes. False when the
// window is gone after the listener was told.
bool CXcbPointer::dropLostButtons(std::uint16_t state)
{
    if (!(heldButtons_ & ~buttonsIn(state))) {
        return true;
    }
    const std::weak_ptr<bool> life = life_;
    heldButtons_ = 0;
    listener_.onCaptureLost();
    return !life.expired();
}

void CXcbPointer::cancel()
{
    isInside_ = false;
    if (std::exchange(heldButtons_, 0)) {
        listener_.onCaptureLost();
    }
}

void CXcbPointer::end()
{
    life_.reset();
    heldButtons_ = 0;
}

} // namespace qel::platform
