// Which view hears of the pointer.
#pragma once

#include "CGlobalSettings.h"
#include "CView.h"
#include "SystemEvents.h"

#include <array>

namespace qel {

// Turns what the pointer does in one window into events of views. While a button is held, the view that it
// went down on hears of all moves, wherever they lead, and only that view and those above it are entered and
// left: a knob that is dragged lights nothing else up. Handlers may release any view or the whole window,
// whoever calls holds the window's memory. Each operation returns the first error of a handler.
class CPointerRouter
{
public:
    // Null: nobody hears of anything.
    void setRoot(CView* root) { root_ = root; }
    // They tell whether the pointer is a finger.
    void setSettings(const CGlobalSettings& settings) { settings_ = &settings; }

    CError move(const platform::PointerEvent& event);
    CError press(const platform::ButtonEvent& event);
    CError release(const platform::ButtonEvent& event);
    CError wheel(const platform::WheelEvent& event);
    // The pointer is outside of the window, or acts as if it were.
    CError leave();
    // What is held is let go without a release, as after the loss of the pointer to the system.
    CError cancelPresses();
    // The layout may have moved another view under the pointer.
    CError refresh();
    // Presses are forgotten, and nobody is told.
    void resetButtons() { pressed_ = {}; }

    void forgetView(const CView& view);

    // The view that hears of a press there.
    CView* viewAt(const CPoint& point) const;
    // The view under the pointer, the deepest one; null outside.
    CView* getTop() const { return chain_.empty() ? nullptr : chain_.back(); }
    bool isButtonHeld() const { return pressed_[0] || pressed_[1]; }
    // Where the pointer was seen last, window pixels.
    const CPoint& getPoint() const { return point_; }

private:
    enum Button : std::size_t
    {
        kLeft,
        kRight,
        kButtons
    };
    // From the outermost view to the deepest.
    using Chain = std::vector<CView*>;

    CView* captured() const { return pressed_[kLeft] ? pressed_[kLeft] : pressed_[kRight]; }
    static Chain chainTo(CView* view);
    static bool isWithin(const CView* view, const CView* ancestor);
    // Leaves what is no longer under the pointer and enters what is.
    CError enter(CView* view);

    CView* root_ = nullptr;
    const CGlobalSettings* settings_ = nullptr;
    Chain chain_;
    std::array<CView*, kButtons> pressed_{}; // the view that each button went down on
    CPoint point_{};
    bool isInside_ = false;
};

} // namespace qel
