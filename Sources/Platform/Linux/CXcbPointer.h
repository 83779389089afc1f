// The pointer over one window.
#pragma once

#include "CSystemWindowListener.h"
#include "CXcbSession.h"

#include <memory>

namespace qel::platform {

// What X's events of the pointer mean to the listener of a window, which owns this object. A listener may
// destroy the window: after each call of it nothing of this object is touched.
class CXcbPointer
{
public:
    CXcbPointer(CXcbSession& session, CSystemWindowListener& listener)
        : session_(session), listener_(listener)
    {}

    void handleButton(const xcb_button_press_event_t& event, bool isPress);
    void handleMotion(const xcb_motion_notify_event_t& event);
    void handleEnter(const xcb_enter_notify_event_t& event);
    void handleLeave();
    // The window hides: no event tells that the pointer leaves.
    void leaveSilently() { isInside_ = false; }
    // The window is hidden: releases do not come any more.
    void cancel();
    // The window is gone, and the listener is told nothing more.
    void end();

private:
    void handleWheel(const xcb_button_press_event_t& event);
    bool dropLostButtons(std::uint16_t state);

    CXcbSession& session_;
    CSystemWindowListener& listener_;
    std::shared_ptr<bool> life_ = std::make_shared<bool>(true); // ends with the object or with the window
    unsigned heldButtons_ = 0;                                  // one bit each, by X's numbers
    bool isInside_ = false;
};

} // namespace qel::platform
