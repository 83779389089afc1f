// The bridge between a tree of views and a window.
#pragma once

#include "CAutoClick.h"
#include "CDrawLoad.h"
#include "CHintLine.h"
#include "CKeyFocus.h"
#include "CObject.h"
#include "CPointerRouter.h"
#include "CPopups.h"
#include "CSystemWindowListener.h"
#include "CViewWindow.h"
#include "CWindowShell.h"
#include "CWindowSystem.h"
#include "CWindowTimers.h"

#include <memory>

namespace qel {

// Tag `ui:window-renderer`, the first child of a window's root view. Owns the timers and the surface, runs
// the frames, and turns what the system or a test tells into events of views.
//
// Building the tree makes no window: whoever had the tree made calls open() once it is complete, on the
// renderer at ".window-renderer" of the root view. The main window ("ui.main-window.window-renderer") opens
// the display and lies in the host's window, whose handle the root of the tree has as attribute
// "ParentWindow"; without that attribute everything works in memory. All other windows of the tree find what
// the first one made (CWindowSystem) by way of "ui.window-shared-data" and lie on the screen by themselves.
// A window ends with its root view, whoever releases that.
//
// Attributes are read from the renderer or, where it has none of that name, from its root view:
//
//     fps, gradient-fps, cursor-fps, deactivate-fps, auto-click-fps
//                               ticks of the timers, a second; 40, 20, 3, 30, 30
//     auto-click-timeout        seconds that the pointer rests before "auto-click"; negative (default): off
//     is-main-window, is-plugin-vst, is-popup-window, is-helper-window, is-taskbar
//     is-export-draw-load       writes "draw-load" and "static-view-update" here
//     window-x, window-y        place on the screen; written when the window moves
//     window-alignment, constrain-y
//                               where it opens
//     is-drop-down-behavior-disabled
//                               a dialog, which stays open when the user works elsewhere; otherwise a list
//     unique-name               opening a second window of this name raises the first one instead
//     opener                    path of the view that opened it
//     title                     of the system's window, "Untitled"
//
// Events that it takes itself: "key-focus" ("key-focus-view": a path or nothing, "is-tab"), "close-window",
// "mouse-button-reset", "reset-auto-click".
//
// The tree's thread. The operations of CSystemWindowListener are public: a test calls them as the system
// would.
class CWindow : public CObject, public CViewWindow, public platform::CSystemWindowListener
{
public:
    CWindow();
    ~CWindow() override;

    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    virtual CError attrTitle();
    virtual CError attrAutoClickTimeout();
    virtual CError attrIsExportDrawLoad();
    virtual CError eventKeyFocus(const CAttrMap& parameters);
    virtual CError eventCloseWindow(const CAttrMap& parameters);
    virtual CError eventMouseButtonReset(const CAttrMap& parameters);
    virtual CError eventResetAutoClick(const CAttrMap& parameters);

    // --- life

    // Lays the tree out, makes the window and shows its first frame. On an error there is no window; the tree
    // stays, for the caller to release. A window whose "unique-name" is open already raises that one and
    // stays closed, without an error.
    CError open();
    // From a successful open() until the root view is released.
    bool isOpen() const { return isOpen_; }
    void raise();
    // Hides or shows what is open, as it is.
    void setShown(bool isShown);

    // --- what it is made of

    CView* getRootView() const { return rootView_; } // null once it is released
    CWindowSystem& getSystem() const { return *system_; }
    // For whoever outlives the window.
    const std::shared_ptr<CWindowSystem>& getSharedSystem() const { return system_; }
    CPopups& getPopups() { return popups_; }
    CPointerRouter& getPointer() { return pointer_; }
    CWindowSurface& getSurface() { return shell_.getSurface(); }
    // Null without a window system.
    platform::CSystemWindow* getSystemWindow() const { return shell_.getWindow(); }

    bool isMainWindow() const { return isMainWindow_; }
    // It closes when the user presses elsewhere.
    bool isDropDown() const { return isPopupWindow_ && !isDropDownDisabled_; }
    const CString& getUniqueName() const { return uniqueName_; }

    // --- place, pixels of the screen

    platform::PixelRect getScreenPlace() const { return shell_.getScreenPlace(); }
    // Of a window that lies on the screen by itself; others stay.
    void moveTo(int screenX, int screenY);

    // --- frames

    // One tick of "render-timer": ticks what moves, lays out, paints and hands over what has changed. The
    // window may be gone afterwards.
    void renderFrame();
    // The wheel, from a host that keeps its events to itself: where the pointer was seen last. True if the
    // window is open.
    bool wheelBy(double notches);
    // Runs while pop-ups of this window are open.
    void setDeactivateTimer(bool isRunning);

    // --- CViewWindow
    CError togglePopup(CView& opener, const CAttrMap& parameters) override;
    CError passPopupResult(CView& view, const CAttrMap& parameters) override;
    CError closePopup(CView& view) override;
    CError closeWindow() override;
    CError adoptRootSize() override;
    CError exitPointer() override;
    void forgetView(CView& view) override;
    CError onHintChanged(CView& view) override;
    CError setKeyFocus(CView* view, bool isTab) override;
    CView* getKeyFocus() const override { return focus_.get(); }
    platform::CSystemClipboard* getClipboard() override { return &system_->getClipboard(); }

    // --- what the system tells, or whoever stands for it
    void onPaint(const platform::PixelRect& update) override;
    void onResize(int width, int height) override;
    void onMove(int screenX, int screenY) override;
    void onPointerMove(const platform::PointerEvent& event) override;
    void onPointerLeave() override;
    void onButtonPress(const platform::ButtonEvent& event) override;
    void onButtonRelease(const platform::ButtonEvent& event) override;
    void onCaptureLost() override;
    void onWheel(const platform::WheelEvent& event) override;
    void onKeyPress(const platform::KeyEvent& event) override;
    void onKeyRelease(const platform::KeyEvent& event) override;
    void onFocus(bool isFocused) override;
    void onActivation(bool isActive) override;
    void onHostShown(bool isShown) override;
    void onCloseRequest() override;
    void onDestroyed() override;

private:
    struct Size
    {
        int width = 0;
        int height = 0;
        bool operator==(const Size&) const = default;
    };

    CError findParts();
    CError readRootAttributes();
    CError connect();
    CError openShell(const Size& size);
    // The size that the root view wants, in whole pixels.
    CError solveRootSize(Size& out);
    CError applySize(const Size& size);
    // By the rules of opening, for the size that it has now.
    CError placeAgain();
    // That of the view under the pointer.
    void showCursor();
    void exportDrawLoad(double nowSec);
    void end();

    // A press beside the view with the focus ends what is typed there; what is pressed may ask for the focus.
    CError dropFocusBeside(const CPoint& point);

    CError onRenderTick(const CAttrMap& parameters);
    CError onGradientTick(const CAttrMap& parameters);
    CError onCursorTick(const CAttrMap& parameters);
    CError onDeactivateTick(const CAttrMap& parameters);
    CError onAutoClickTick(const CAttrMap& parameters);

    // Runs what handlers of an event do: with the clock of the frames brought up to now, the window held, its
    // hint brought up to date, and the error traced. Does nothing while the window is not open.
    template <class Action>
    void handle(Action&& action);

    CView* rootView_ = nullptr;
    CWindowSharedData* sharedData_ = nullptr;
    const CGlobalSettings* settings_ = nullptr;
    std::shared_ptr<CViewContext> context_;
    std::shared_ptr<CWindowSystem> system_;
    CWindowShell shell_;
    CWindowTimers timers_{*this};
    CPointerRouter pointer_;
    CKeyFocus focus_;
    CHintLine hintLine_;
    CAutoClick autoClick_;
    CDrawLoad drawLoad_;
    CPopups popups_{*this};

    bool isOpen_ = false;
    Size size_;
    Size pendingSize_; // asked for from outside, for the next frame

    // Bound attributes.
    double fps_ = 0.0;
    double gradientFps_ = 0.0;
    double cursorFps_ = 0.0;
    double deactivateFps_ = 0.0;
    double autoClickTimeoutSec_ = -1.0;
    double autoClickFps_ = 0.0;
    bool isMainWindow_ = false;
    bool isPluginVst_ = false;
    bool isPopupWindow_ = false;
    bool isHelperWindow_ = false;
    bool isTaskbar_ = false;
    bool isDropDownDisabled_ = false;
    bool isExportDrawLoad_ = false;
    CString uniqueName_;
    CString title_;
};

} // namespace qel
