// What the events of a window mean to its listener.
#include "CXcbWindow.h"

#include <utility>

namespace qel::platform {

namespace {

constexpr xcb_button_t kWheelUp = 4;
constexpr xcb_button_t kWheelDown = 5;

template <typename Event>
const Event& as(const xcb_generic_event_t& event)
{
    return reinterpret_cast<const Event&>(event);
}

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

xcb_window_t CXcbWindow::windowOf(const xcb_generic_event_t& event)
{
    switch (event.response_type & 0x7F) {
    case XCB_EXPOSE:
        return as<xcb_expose_event_t>(event).window;
    case XCB_CONFIGURE_NOTIFY:
        return as<xcb_configure_notify_event_t>(event).event;
    case XCB_DESTROY_NOTIFY:
        return as<xcb_destroy_notify_event_t>(event).event;
    case XCB_REPARENT_NOTIFY:
        return as<xcb_reparent_notify_event_t>(event).event;
    case XCB_UNMAP_NOTIFY:
    case XCB_MAP_NOTIFY:
        return as<xcb_unmap_notify_event_t>(event).event;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
    case XCB_MOTION_NOTIFY:
    case XCB_ENTER_NOTIFY:
    case XCB_LEAVE_NOTIFY:
        return as<xcb_button_press_event_t>(event).event;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        return as<xcb_focus_in_event_t>(event).event;
    case XCB_CLIENT_MESSAGE:
        return as<xcb_client_message_event_t>(event).window;
    default:
        return 0;
    }
}

void CXcbWindow::handle(const xcb_generic_event_t& event)
{
    const int type = event.response_type & 0x7F;
    switch (type) {
    case XCB_EXPOSE: {
        const auto& expose = as<xcb_expose_event_t>(event);
        invalidate({expose.x, expose.y, expose.width, expose.height});
        break;
    }
    case XCB_CONFIGURE_NOTIFY:
        handleConfigure(as<xcb_configure_notify_event_t>(event), event.full_sequence);
        break;
    case XCB_DESTROY_NOTIFY:
        lose();
        break;
    case XCB_REPARENT_NOTIFY:
        askScreenPosition();
        break;
    case XCB_UNMAP_NOTIFY:
        cancelButtons();
        break;
    case XCB_MAP_NOTIFY: // a dialog can have the focus only from now on
        focus_.accept(session_->lastEventTime());
        break;
    case XCB_BUTTON_PRESS:
    case XCB_BUTTON_RELEASE:
        handleButton(as<xcb_button_press_event_t>(event), type == XCB_BUTTON_PRESS);
        break;
    case XCB_MOTION_NOTIFY:
        handleMotion(as<xcb_motion_notify_event_t>(event));
        break;
    case XCB_ENTER_NOTIFY:
        handleEnter(as<xcb_enter_notify_event_t>(event));
        break;
    case XCB_LEAVE_NOTIFY:
        handleLeave();
        break;
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        handleKey(as<xcb_key_press_event_t>(event), type == XCB_KEY_PRESS);
        break;
    case XCB_FOCUS_IN:
    case XCB_FOCUS_OUT:
        if (focus_.handle(as<xcb_focus_in_event_t>(event), type == XCB_FOCUS_IN, event.full_sequence)) {
            listener_.onFocus(focus_.isFocused());
        }
        break;
    case XCB_CLIENT_MESSAGE:
        handleMessage(as<xcb_client_message_event_t>(event));
        break;
    default:
        break;
    }
}

// The server tells a place in the parent, which for a window with a frame is not the screen; window managers
// tell the place on the screen. Sizes from before our last request are out of date.
void CXcbWindow::handleConfigure(const xcb_configure_notify_event_t& event, std::uint32_t sequence)
{
    const bool isOutdated = static_cast<std::int32_t>(sequence - placeSequence_) < 0;
    if (isOutdated) {
        return;
    }
    const std::weak_ptr<bool> life = life_;
    if (event.width != width_ || event.height != height_) {
        width_ = event.width;
        height_ = event.height;
        listener_.onResize(width_, height_);
        if (isGone(life) || !isUsable()) {
            return;
        }
    }
    const bool isByManager = (event.response_type & 0x80) != 0;
    if (isTopLevel() && (isByManager || kind_ == WindowKind::kPopup)) {
        noteScreenPosition(event.x, event.y);
    } else {
        askScreenPosition();
    }
}

void CXcbWindow::askScreenPosition()
{
    if (!isUsable()) {
        return;
    }
    CXcbConnection& connection = session_->connection();
    const auto cookie = xcb_translate_coordinates(connection.out(), id_, connection.root(), 0, 0);
    connection.whenAnswered(cookie, [this, life = std::weak_ptr(life_)](const void* reply) {
        if (reply && !isGone(life)) {
            const auto& place = *static_cast<const xcb_translate_coordinates_reply_t*>(reply);
            noteScreenPosition(place.dst_x, place.dst_y);
        }
    });
}

void CXcbWindow::noteScreenPosition(int screenX, int screenY)
{
    if (screenX != screenX_ || screenY != screenY_) {
        screenX_ = screenX;
        screenY_ = screenY;
        listener_.onMove(screenX, screenY);
    }
}

void CXcbWindow::handleButton(const xcb_button_press_event_t& event, bool isPress)
{
    screenX_ = event.root_x - event.event_x;
    screenY_ = event.root_y - event.event_y;
    if (event.detail == kWheelUp || event.detail == kWheelDown) {
        if (isPress) {
            WheelEvent wheel;
            fillPointer(event, buttonsIn(event.state), wheel);
            wheel.delta = event.detail == kWheelUp ? 1.0 : -1.0;
            listener_.onWheel(wheel);
        }
        return;
    }
    const unsigned bit = buttonBit(event.detail);
    if (!bit || (!isPress && !(heldButtons_ & bit))) {
        return;
    }
    ButtonEvent button;
    button.button = buttonOf(event.detail);
    button.isDoubleClick = isPress && session_->isDoubleClick(event);
    // The state is that from before the event.
    const unsigned buttons = isPress ? buttonsIn(event.state) | bit : buttonsIn(event.state) & ~bit;
    fillPointer(event, buttons, button);
    if (isPress) {
        heldButtons_ |= bit;
        isPointerInside_ = true;
        listener_.onButtonPress(button);
        return;
    }
    heldButtons_ &= ~bit;
    const std::weak_ptr<bool> life = life_;
    listener_.onButtonRelease(button);
    if (!isGone(life) && id_ && !heldButtons_ && !isPointerInside_) { // it left while the button was held
        listener_.onPointerLeave();
    }
}

void CXcbWindow::handleMotion(const xcb_motion_notify_event_t& event)
{
    screenX_ = event.root_x - event.event_x;
    screenY_ = event.root_y - event.event_y;
    if (dropLostButtons(event.state)) {
        isPointerInside_ = isPointerInside_ || !heldButtons_;
        PointerEvent pointer;
        fillPointer(event, buttonsIn(event.state), pointer);
        listener_.onPointerMove(pointer);
    }
}

void CXcbWindow::handleEnter(const xcb_enter_notify_event_t& event)
{
    session_->screen().refresh();
    isPointerInside_ = true;
    if (dropLostButtons(event.state)) {
        PointerEvent pointer;
        fillPointer(event, buttonsIn(event.state), pointer);
        listener_.onPointerMove(pointer);
    }
}

// A held button keeps the pointer ours; the leaving is told after its release.
void CXcbWindow::handleLeave()
{
    const bool wasInside = std::exchange(isPointerInside_, false);
    if (wasInside && !heldButtons_) {
        listener_.onPointerLeave();
    }
}

// A release that went to another client, which grabbed the pointer meanwhile, never comes. False when the
// window is gone after the listener was told.
bool CXcbWindow::dropLostButtons(std::uint16_t state)
{
    if (!(heldButtons_ & ~buttonsIn(state))) {
        return true;
    }
    const std::weak_ptr<bool> life = life_;
    heldButtons_ = 0;
    listener_.onCaptureLost();
    return !isGone(life) && id_ != 0;
}

void CXcbWindow::cancelButtons()
{
    isPointerInside_ = false;
    if (std::exchange(heldButtons_, 0)) {
        listener_.onCaptureLost();
    }
}

void CXcbWindow::handleKey(const xcb_key_press_event_t& event, bool isPress)
{
    if (!focus_.isTaken()) { // sent before the server learnt that we want no more
        return;
    }
    if (!isPress) {
        listener_.onKeyRelease(session_->keyboard().release(event));
        return;
    }
    const std::weak_ptr<bool> life = life_;
    for (const KeyEvent& key : session_->keyboard().press(event)) {
        listener_.onKeyPress(key);
        if (isGone(life)) {
            return;
        }
    }
}

void CXcbWindow::handleMessage(const xcb_client_message_event_t& event)
{
    const XcbAtoms& atoms = session_->connection().atoms();
    if (event.type != atoms.wmProtocols || event.format != 32) {
        return;
    }
    if (event.data.data32[0] == atoms.wmTakeFocus) {
        focus_.accept(event.data.data32[1]);
    } else if (event.data.data32[0] == atoms.wmDeleteWindow) {
        listener_.onCloseRequest();
    }
}

void CXcbWindow::reportActivation(bool isActive)
{
    listener_.onActivation(isActive);
}

void CXcbWindow::reportHostShown(bool isShown)
{
    listener_.onHostShown(isShown);
}

void CXcbWindow::lose()
{
    if (!id_) {
        return;
    }
    if (session_->isUsable()) {
        xcb_free_gc(out(), gc_);
    }
    id_ = 0;
    isShown_ = false;
    heldButtons_ = 0;
    damage_.clear();
    focus_.detach();
    listener_.onDestroyed();
}

} // namespace qel::platform
