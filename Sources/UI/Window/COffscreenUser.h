// A user without a screen.
#pragma once

#include "CWindow.h"

#include <string>

namespace qel {

// Time and hands for the windows of one tree that has no window system: for tests, and for tools that look at
// an interface. What it does takes the same way as what a window system tells. Made for the main window
// before that is opened; time stands still but for advance().
//
//     COffscreenUser user(window);
//     EXPECT_OK(window.open());
//     user.click(button);
//     user.advance(0.5);          // states have faded, the picture is up to date
//     user.getPixel(window, 10, 10);
class COffscreenUser
{
public:
    explicit COffscreenUser(CWindow& mainWindow);
    COffscreenUser(const COffscreenUser&) = delete;
    COffscreenUser& operator=(const COffscreenUser&) = delete;

    // --- time
    double getTimeSec() const { return *timeSec_; }
    // Posted events, timers and frames of this time, in steps of kStepSec.
    void advance(double sec);
    static constexpr double kStepSec = 0.005;

    // --- the pointer: it is in the topmost window at its point or, while a button is held, in the one where
    // that went down
    void moveTo(CWindow& window, double x, double y);
    // To the middle of what shows of a view.
    void moveTo(CView& view);
    void moveBy(double x, double y);
    // Out of all windows.
    void leave();
    void press(platform::MouseButton button = platform::MouseButton::kLeft, bool isDouble = false);
    void release(platform::MouseButton button = platform::MouseButton::kLeft);
    void click(CView& view, platform::MouseButton button = platform::MouseButton::kLeft);
    void doubleClick(CView& view);
    void wheel(double notches);
    void setModifiers(const platform::Modifiers& modifiers) { modifiers_ = modifiers; }

    // --- keys, to the window whose view has the key focus; nobody else hears of them
    void key(std::uint32_t key);
    void type(const std::u32string& text);

    // --- what is shown
    // 0xRRGGBB
    static std::uint32_t getPixel(CWindow& window, int x, int y);
    static std::uint32_t getPixel(CView& view);
    // Reaches beyond the window at right and bottom.
    static const CLinearBitmap& getPicture(CWindow& window) { return window.getSurface().getPicture(); }

private:
    template <class Event>
    Event makeEvent() const;
    // The window that the pointer is in, or null; the one before hears that the pointer has left it.
    CWindow* enterWindow();
    bool isButtonDown() const { return pointer_.isLeftDown || pointer_.isRightDown; }
    void hold(platform::MouseButton button, bool isDown);
    CWindow* focusedWindow() const;
    void sendKey(const platform::KeyEvent& event);

    CObject& root_;
    std::shared_ptr<CWindowSystem> system_;
    std::shared_ptr<double> timeSec_; // the clocks outlive this object
    platform::PointerState pointer_{-1, -1, false, false, false};
    platform::Modifiers modifiers_;
    CWindow* window_ = nullptr;
};

} // namespace qel
