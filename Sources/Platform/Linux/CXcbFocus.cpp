// Taking the focus and giving it back.
#include "CXcbFocus.h"

namespace qel::platform {

void CXcbFocus::attach(xcb_window_t window, std::uint32_t eventMask)
{
    window_ = window;
    eventMask_ = eventMask;
}

void CXcbFocus::detach()
{
    window_ = 0;
    isTaken_ = false;
    isFocused_ = false;
    previous_.reset();
}

void CXcbFocus::take(xcb_timestamp_t time)
{
    if (isTaken_ || !window_) {
        accept(time); // the host may have been quicker the first time
        return;
    }
    isTaken_ = true;
    selectKeys(true);
    previous_ = std::make_shared<Previous>();
    // The answer is of the time before the request that follows. When the text is closed again before it
    // comes, it gives the focus back itself.
    connection_.whenAnswered(
        xcb_get_input_focus(connection_.out()),
        [previous = previous_, window = window_, connection = &connection_](const void* answer) {
            const auto* reply = static_cast<const xcb_get_input_focus_reply_t*>(answer);
            if (!reply || reply->focus == window) {
                return;
            }
            previous->isKnown = true;
            previous->window = reply->focus;
            previous->revertTo = reply->revert_to;
            if (previous->isWanted) {
                xcb_set_input_focus(connection->out(), reply->revert_to, reply->focus, previous->time);
            }
        });
    takeSequence_ = set(window_, XCB_INPUT_FOCUS_PARENT, time);
}

void CXcbFocus::giveBack(xcb_timestamp_t time)
{
    if (!isTaken_) {
        return;
    }
    isTaken_ = false;
    selectKeys(false);
    if (previous_->isKnown) {
        set(previous_->window, previous_->revertTo, time);
    } else {
        previous_->isWanted = true;
        previous_->time = time;
    }
    previous_.reset();
}

void CXcbFocus::accept(xcb_timestamp_t time)
{
    if (isTaken_ && !isFocused_) {
        set(window_, XCB_INPUT_FOCUS_PARENT, time);
    }
}

bool CXcbFocus::handle(const xcb_focus_in_event_t& event, bool isIn, std::uint32_t sequence)
{
    // Grabs of the window manager's keys come and go without a change of focus, and the pointer's part of a
    // focus is not ours.
    const bool isOfGrab = event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB;
    if (isOfGrab || event.detail == XCB_NOTIFY_DETAIL_POINTER || event.detail == XCB_NOTIFY_DETAIL_INFERIOR ||
        isIn == isFocused_) {
        return false;
    }
    isFocused_ = isIn;
    const bool isNews = static_cast<std::int32_t>(sequence - takeSequence_) >= 0;
    if (!isIn && isTaken_ && isNews) { // whoever has it now is to keep it
        isTaken_ = false;
        selectKeys(false);
        previous_.reset();
    }
    return true;
}

void CXcbFocus::selectKeys(bool isWanted)
{
    const std::uint32_t keys = isWanted ? XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE : 0u;
    const std::uint32_t mask = eventMask_ | keys;
    xcb_change_window_attributes(connection_.out(), window_, XCB_CW_EVENT_MASK, &mask);
}

std::uint32_t CXcbFocus::set(xcb_window_t window, std::uint8_t revertTo, xcb_timestamp_t time)
{
    return xcb_set_input_focus(connection_.out(), revertTo, window, time).sequence;
}

} // namespace qel::platform
