// The failure window in plain X11: text, details, and a button to close it.
#pragma once

#include "CXcbConnection.h"
#include "CXkbKeyboard.h"
#include "XcbText.h"

#include <string>

namespace qel::platform {

// One window on a connection of its own, shown by run() until the user closes it or the server goes away.
class CXcbFailureWindow
{
public:
    CXcbFailureWindow(std::string text, std::string details);

    // False without a server to show it.
    bool open(const std::string& title);
    void run();

private:
    void createWindow();
    void setHints(const std::string& title);
    void handle(const xcb_generic_event_t& event);
    void draw();
    int drawLines(const std::string& text, int left, int top, int width, int bottom);
    void drawLine(const XcbLine& line, int left, int baseline);
    void drawFrame(int left, int top, int width, int height);
    int buttonLeft() const;
    int buttonTop() const;
    bool isOnButton(int x, int y) const;

    const std::string text_;
    const std::string details_;
    CXcbConnection connection_;
    CXcbFont font_;
    CXkbKeyboard keyboard_;
    xcb_window_t window_ = 0;
    xcb_gcontext_t gc_ = 0;
    int width_;
    int height_;
    bool isOpen_ = false; // cleared by the button and the keys
};

} // namespace qel::platform
