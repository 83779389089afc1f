// What the windows of one interface share.
#pragma once

#include "CError.h"
#include "CMemoryClipboard.h"
#include "CSystemDisplay.h"

#include <functional>
#include <memory>
#include <vector>

namespace qel {

class CWindow;

// The way to the window system, the clock, and the list of windows. Made by the first window of a tree, kept
// in the tree's CWindowSharedData, and found there by all others: the main window opens the display, pop-ups
// and dialogs use it too. Without a display everything works in memory, on a screen of kScreen. The tree's
// thread.
class CWindowSystem
{
public:
    using Clock = std::function<double()>;

    // The screen without a display, and where a main window's host would have put it there.
    static constexpr platform::PixelRect kScreen{0, 0, 1920, 1080};
    static constexpr platform::PixelRect kMainPlace{400, 200, 0, 0};

    CWindowSystem();
    CWindowSystem(const CWindowSystem&) = delete;
    CWindowSystem& operator=(const CWindowSystem&) = delete;

    // --- the window system

    // Opens the display for a main window in the host's `parent`. Without this call there is none.
    CError connect(platform::NativeWindow parent, const CString& applicationName);
    bool isConnected() const { return display_ && display_->isConnected(); }
    // Null without a window system. Stays when the server is lost; its calls do nothing then.
    platform::CSystemDisplay* getDisplay() const { return display_.get(); }
    // The window that the host gave, 0 without a window system.
    platform::NativeWindow getHostWindow() const { return host_; }
    // From the editor's idle: what the system has to tell, and, behind the timers, what goes to the screen.
    void processEvents();
    void flush();

    // --- the screen, or what stands for it
    platform::PixelRect getWorkArea(const platform::PixelRect& around) const;
    // False while it is not known where the pointer is.
    bool queryPointer(platform::PointerState& out) const;
    // Where the pointer is without a display.
    void setPointer(const platform::PointerState& pointer) { pointer_ = pointer; }
    platform::CSystemClipboard& getClipboard();
    // The open window at a point of the screen, the topmost first, or null.
    CWindow* findWindowAt(int screenX, int screenY) const;

    // --- time
    // Seconds; never goes back.
    double getTimeSec() const { return clock_(); }
    void setClock(Clock clock) { clock_ = std::move(clock); }

    // --- windows that are open, the topmost last
    const std::vector<CWindow*>& getWindows() const { return windows_; }
    void addWindow(CWindow& window) { windows_.push_back(&window); }
    void raiseWindow(CWindow& window);
    void removeWindow(CWindow& window) { std::erase(windows_, &window); }
    // The window with this "unique-name", or null.
    CWindow* findUnique(const CString& name) const;

private:
    std::shared_ptr<platform::CSystemDisplay> display_;
    platform::NativeWindow host_ = 0;
    CMemoryClipboard memoryClipboard_;
    platform::PointerState pointer_;
    Clock clock_;
    std::vector<CWindow*> windows_;
};

} // namespace qel
