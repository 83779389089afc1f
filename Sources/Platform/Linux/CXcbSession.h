// What the windows of one display share.
#pragma once

#include "CXcbClipboard.h"
#include "CXcbConnection.h"
#include "CXcbCursors.h"
#include "CXcbScreen.h"
#include "CXcbSurface.h"
#include "CXkbKeyboard.h"
#include "SystemEvents.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qel::platform {

class CXcbWindow;

// The content of a display, kept by a shared pointer that its windows and every running processEvents() hold
// too: a listener may then destroy the display. Owns no window, but knows those that live, the topmost last
// within its kind.
class CXcbSession : public std::enable_shared_from_this<CXcbSession>
{
public:
    CXcbSession(std::string applicationName, std::function<void()> onLost);
    CXcbSession(const CXcbSession&) = delete;
    CXcbSession& operator=(const CXcbSession&) = delete;
    ~CXcbSession();

    [[nodiscard]] int open();
    void close(); // windows stay behind as objects that do nothing
    bool isUsable() const { return connection_->isAlive(); }

    void processEvents();
    void flush();
    bool isFrameUnderWay() const { return isFrameUnderWay_; }
    bool queryPointer(PointerState& out);
    bool isActive() const;

    // --- for windows
    void add(CXcbWindow& window);
    void remove(CXcbWindow& window);
    void moveToTop(CXcbWindow& window);
    CXcbWindow* find(xcb_window_t id) const;
    CXcbWindow* windowAt(int screenX, int screenY) const;
    // Keeps an eye on a top-level window of the host: its moves and whether the user works in it.
    void watchHost(xcb_window_t topLevel);
    // Is this press the second of a double click?
    bool isDoubleClick(const xcb_button_press_event_t& press);

    CXcbConnection& connection() { return *connection_; }
    CXcbSurfaces& surfaces() { return surfaces_; }
    CXcbCursors& cursors() { return cursors_; }
    CXcbScreen& screen() { return screen_; }
    CXkbKeyboard& keyboard() { return keyboard_; }
    CXcbClipboard& clipboard() { return clipboard_; }
    const std::string& applicationName() const { return applicationName_; }
    xcb_timestamp_t lastEventTime() const { return lastEventTime_; } // 0: no event with a time yet

private:
    struct HostWindow
    {
        xcb_window_t id;
        bool isActive;
    };
    struct Click
    {
        xcb_window_t window = 0;
        xcb_button_t button = 0;
        xcb_timestamp_t time = 0;
        int x = 0;
        int y = 0;
    };

    void readEvents();
    void dispatch(const xcb_generic_event_t& event);
    void dispatchHeldMotion();
    void noteTime(const xcb_generic_event_t& event);
    bool dispatchHost(const xcb_generic_event_t& event, xcb_window_t window);
    void reportLoss();
    // Calls `visit` for each window that is still there when its turn comes.
    void forEachWindow(const std::function<void(CXcbWindow&)>& visit);

    const std::string applicationName_;
    std::function<void()> onLost_;
    const std::shared_ptr<CXcbConnection> connection_;
    CXcbSurfaces surfaces_;
    CXcbCursors cursors_;
    CXcbScreen screen_;
    CXkbKeyboard keyboard_;
    CXcbClipboard clipboard_;
    std::vector<CXcbWindow*> windows_;
    std::vector<HostWindow> hosts_;
    XcbPtr<xcb_generic_event_t> heldMotion_; // the last of a row, of which only the last counts
    xcb_timestamp_t lastEventTime_ = 0;
    Click lastClick_;
    bool isFrameUnderWay_ = false;
    bool isPointerAsked_ = false;
    bool hasPointer_ = false;
    double pointerAskedSec_ = 0.0;
    PointerState pointer_;
};

} // namespace qel::platform
