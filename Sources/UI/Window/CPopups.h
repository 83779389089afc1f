// The pop-ups of a window.
#pragma once

#include "CPopupSettings.h"
#include "CUserWatch.h"

#include <vector>

namespace qel {

class CView;
class CWindow;

// Part of each window. Knows the pop-ups that views of it have opened and, in a pop-up, who opened it, so
// that all windows of an interface form a tree with the main window at its root: what closes a window closes
// those below it. A pop-up is a drop-down (a list, a menu), which a press elsewhere closes, or, with
// "is-drop-down-behavior-disabled", a dialog, which stays until it is closed.
//
// Parameters of "popup-toggle", from the event, from the object that its "run-event-params" names at the
// opener, or from the opener's own attributes "popup-...":
//
//     tag                             template of the pop-up
//     window-alignment                where it opens, see CWindowPlacement
//     shift-x, shift-y                pixels at a scale of 1, added to that
//     constrain-y                     it is not moved up beyond this, pixels of the screen
//     window-x, window-y              of the alignment "opener":
//                                     with "is-manual-coords" that place, pixels of the screen;
//                                     otherwise the corner of the opener
//     is-same-width, width-modif      as wide as the opener, and so many pixels at a scale of 1 wider
//     is-popup-toggle-always-create   opens again what is open already
//     popup-...                       attributes of the pop-up's root view, without the prefix
//
// The opener has the state "popup" as long as its pop-up is open, gets "popup-changed" when it opens and
// closes, and "popup-closed" when it closes.
//
// Handlers may release any view or window; whoever calls holds this window's memory. The tree's thread.
class CPopups
{
public:
    explicit CPopups(CWindow& window) : window_(window) {}

    // --- of views in this window
    // Opens the pop-up of `opener`, or closes it. A press that has closed it does not open it again. When
    // it cannot be opened, nothing has changed.
    CError toggle(CView& opener, const CAttrMap& parameters);
    // "popup-result" at `view`. Without "source" the view is in a pop-up and has the result: it goes to
    // whoever opened that. With one, the view is the target already and sends it on to its
    // "popup-result-target", if it has any. Drop-downs that the result has come through close.
    CError passResult(CView& view, const CAttrMap& parameters);
    // "popup-close" at `view`: closes what it has opened or, if there is nothing, the pop-up that it is in.
    CError close(CView& view);
    void forgetView(CView& view);
    // The root view of what `opener` has open, or null.
    CView* findOpen(const CView& opener);

    // --- called by the window
    // Where this window is to open, if it lies on the screen by itself.
    CError findPlace(int width, int height, platform::PixelRect& out) const;
    // A button goes down in this window, and the view under the pointer has not heard of it yet. Closes all
    // drop-downs but this one and those it was opened from.
    CError onPress(const platform::PointerEvent& event);
    // "deactivate-timer" has ticked: it runs while a pop-up of this window is open. Closes the drop-downs
    // once the user is elsewhere.
    CError onDeactivateTick();
    // This window, a pop-up, is to close: tells its opener and releases the window's whole tree.
    CError closeOwn();
    // The window in which all of this began is hidden, or shown again: dialogs below this window are hidden
    // and shown with it, lists close.
    CError setShown(bool isShown);
    // All pop-ups of this window close.
    void closeAll();
    // This window is going, and its pop-ups with it.
    void release();

private:
    struct Child
    {
        CView* opener = nullptr; // null once it is released
        CWindow* window = nullptr;
    };
    using Windows = std::vector<CWindow*>;

    CError createTree(CView& opener, const CPopupSettings& settings, CWindow*& out);
    CError openChild(CView& opener, const CPopupSettings& settings);
    CWindowPlacement makePlacement(const CView& opener, const CPopupSettings& settings) const;
    Child* childOf(const CView& opener);
    Child* childOf(const CWindow& window);
    // Takes the record of a pop-up out; null if there is none.
    bool takeChild(const CWindow& window, Child& out);
    CError closeChild(CWindow& window);
    CError tellClosed(CView* opener);
    CError sendResult(CView& view, CAttrMap parameters);
    CError forwardResult(CView& view, const CAttrMap& parameters);
    // A result has come from this window: its drop-down and those that it was opened from close.
    CError closeAfterResult();
    // All drop-downs below this window but those in the list, of which the first is the one pressed in.
    CError closeDropDowns(const Windows& kept);
    void raiseDialogs();
    bool isDropDown() const;
    void watch();
    CPopups& top();

    CWindow& window_;
    CWindow* parent_ = nullptr; // of a pop-up: where it was opened
    CWindowPlacement placement_;
    std::vector<Child> children_;
    // Openers whose pop-up the last press in this window closed.
    std::vector<const CView*> closedByPress_;
    std::vector<const CView*> passing_; // views whose result is under way
    CUserWatch userWatch_;              // while a drop-down is open
};

} // namespace qel
