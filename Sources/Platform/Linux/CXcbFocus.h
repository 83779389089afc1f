// Who has the keyboard.
#pragma once

#include "CXcbConnection.h"

#include <memory>

namespace qel::platform {

// The keyboard focus of one window: taken for as long as a text is edited. Keys are selected for that time
// only, since the server sends keys of a focused host window to whatever of its children the pointer is over.
class CXcbFocus
{
public:
    explicit CXcbFocus(CXcbConnection& connection) : connection_(connection) {}

    // `eventMask` is what the window selects besides keys.
    void attach(xcb_window_t window, std::uint32_t eventMask);
    void detach(); // the window is gone

    void take(xcb_timestamp_t time);
    void giveBack(xcb_timestamp_t time);
    // A window manager offers the focus to the window.
    void accept(xcb_timestamp_t time);
    // From the server, in answer to the request of that number or later. True when it changes isFocused().
    bool handle(const xcb_focus_in_event_t& event, bool isIn, std::uint32_t sequence);

    bool isTaken() const { return isTaken_; }
    bool isFocused() const { return isFocused_; }

private:
    struct Previous
    {
        bool isKnown = false;
        bool isWanted = false; // given back before the server told whose it was
        xcb_timestamp_t time = 0;
        xcb_window_t window = 0;
        std::uint8_t revertTo = 0;
    };

    void selectKeys(bool isWanted);
    std::uint32_t set(xcb_window_t window, std::uint8_t revertTo, xcb_timestamp_t time);

    CXcbConnection& connection_;
    xcb_window_t window_ = 0;
    std::uint32_t eventMask_ = 0;
    bool isTaken_ = false;
    bool isFocused_ = false;
    std::uint32_t takeSequence_ = 0;
    std::shared_ptr<Previous> previous_; // shared with the answer under way
};

} // namespace qel::platform
