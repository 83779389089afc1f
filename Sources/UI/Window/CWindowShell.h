// What the window system has of a window.
#pragma once

#include "CBridgeWindow.h"
#include "CWindowSurface.h"
#include "CWindowSystem.h"

#include <memory>

namespace qel {

// The system's window, the bridge that a main window lies in, the surface, and the place of it all. Without a
// display there are only surface and place, and everything acts as if the window were there. Part of a
// CWindow.
class CWindowShell
{
public:
    // Makes the windows. `description` lacks the parent. A child's place is that in its bridge with a
    // display, else that on the screen.
    CError open(CWindowSystem& system, platform::WindowDescription description,
                platform::CSystemWindowListener& listener, const CString& context);
    void close();
    // The system has ended its window: nothing more is shown.
    void detach() { surface_.detach(); }

    // Null without a display, and after close().
    platform::CSystemWindow* getWindow() const { return window_.get(); }
    CWindowSurface& getSurface() { return surface_; }

    platform::PixelRect getScreenPlace() const { return window_ ? window_->screenPlace() : place_; }
    void moveTo(int x, int y);
    void setSize(int width, int height);
    // The system has moved or sized it.
    void noteCorner(int x, int y);
    void noteSize(int width, int height);

    void show();
    void hide();
    void raise();
    void setTitle(const CString& title);
    void setCursor(platform::CursorShape cursor);

private:
    void applyPlace();

    CWindowSurface surface_;
    std::unique_ptr<CBridgeWindow> bridge_;
    std::unique_ptr<platform::CSystemWindow> window_;
    platform::CursorShape cursor_ = platform::CursorShape::kArrow;
    platform::PixelRect place_; // in the parent for a child, else on the screen
};

} // namespace qel
