// One interface: its tree, and what keeps it going.
#pragma once

#include "CAttrValue.h"
#include "CError.h"

#include <memory>
#include <utility>
#include <vector>

namespace qel {

class CObject;
class CUIEventBridge;
class CWindow;

// create(), load(), open(), idle() again and again, release(). Handlers in the tree may end it from within
// any of these; everything does nothing then. Needs the application. One thread, which is the tree's.
class CUserInterface
{
public:
    static constexpr const char* kMainWindowPath = "ui.main-window.window-renderer";

    CUserInterface() = default;
    CUserInterface(const CUserInterface&) = delete;
    CUserInterface& operator=(const CUserInterface&) = delete;
    ~CUserInterface() { release(); }

    // An empty tree with events of its own and these attributes, set in their order, at the interface scale
    // that is stored now. Ends what was there before.
    CError create(const std::vector<std::pair<CString, CString>>& attributes);
    // The file's tree. On error what there is stays, for release().
    CError load(const CString& fileName);
    // Opens the main window: in the host's window that the attribute "ParentWindow" names, or in memory.
    // Fails without a main window in the tree, without a window system, or with a parent that is no window.
    CError open();
    // What has happened since the last call: the system's events, posted events and timers, and what they
    // have changed on the screen. Never waits. May be called from within itself. Ends the tree when the
    // window system is lost.
    void idle();
    void release();

    // Null before create() and after release().
    CObject* getRoot() const { return root_; }
    // Null before open(), and in a tree without one.
    CWindow* getMainWindow() const { return mainWindow_; }

private:
    CObject* root_ = nullptr;
    CWindow* mainWindow_ = nullptr;
    CUIEventBridge* bridge_ = nullptr;
    std::shared_ptr<int> generation_; // another one, or none, once the tree is gone
};

// Writes a native handle, or an address, as attributes of a tree hold them.
CString pointerText(const void* pointer);

} // namespace qel
