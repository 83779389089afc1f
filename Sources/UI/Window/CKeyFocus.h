// Which view hears of keys.
#pragma once

#include "CSystemWindow.h"
#include "CView.h"

namespace qel {

// At most one view of a window has the key focus. As long as one has it, the window holds the keyboard, which
// is the host's otherwise: a host's space bar must start its transport whatever was clicked here. Handlers
// may release any view; whoever calls holds the window's memory.
class CKeyFocus
{
public:
    // Null: no window of the system, or none any more.
    void setSystemWindow(platform::CSystemWindow* window) { window_ = window; }

    // "blur" to the old view, "focus" to the new one. For the view that has the focus already it only asks
    // for the keyboard again.
    CError set(CView* view, bool isTab);
    CView* get() const { return view_; }

    CError press(const platform::KeyEvent& event) { return send("key-press", event); }
    CError release(const platform::KeyEvent& event) { return send("key-release", event); }
    // Somebody else has taken the keyboard: "focus-lost".
    CError lose();

    void forgetView(const CView& view);

private:
    CError send(const char* event, const platform::KeyEvent& key);

    CView* view_ = nullptr;
    platform::CSystemWindow* window_ = nullptr;
};

} // namespace qel
