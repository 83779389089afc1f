// What views need of their window.
#pragma once

#include "CAttrValue.h"
#include "CError.h"

namespace qel {

class CView;

namespace platform {
class CSystemClipboard;
}

// Implemented by what shows a tree of views: a window of the system, or one without a screen. Set at the
// views' context and taken out of it before the window goes; while there is none, views live without it.
// Window's thread.
class CViewWindow
{
public:
    virtual ~CViewWindow() = default;

    // Opens or closes the pop-up of `opener`; the parameters say which and where.
    virtual CError togglePopup(CView& opener, const CAttrMap& parameters) = 0;
    // Without "source", `view` is in a pop-up and has a result for whoever opened that; with it, the result
    // has reached `view`, which may have a "popup-result-target" to send it on to.
    virtual CError passPopupResult(CView& view, const CAttrMap& parameters) = 0;
    // Closes the pop-up that `view` has opened or, if there is none, the one that it is in.
    virtual CError closePopup(CView& view) = 0;
    // The window is to close. It may release its views at once: events and commands outlive that.
    virtual CError closeWindow() = 0;
    // The layout may have given the root view another size; the window takes it.
    virtual CError adoptRootSize() = 0;
    // The views under the pointer are left ("mouse-exit"), as if the pointer were outside the window.
    virtual CError exitPointer() = 0;
    // The view is going away: pointer, focus, capture and pop-ups must forget it. It does not answer calls
    // about its place any more.
    virtual void forgetView(CView& view) = 0;
    // The hint of this view has changed, in case it is the one that is shown.
    virtual CError onHintChanged(CView& view) = 0;

    // Keys go to this view from now on, as events "key-press" and "key-release" with the parameters
    //     keycode                      the character, or the number of the key (platform::key)
    //     is-character                 true if "keycode" is a Unicode character
    //     is-alt, is-ctrl, is-shift
    // and the window takes the keyboard from the host; null: nobody, and the host has it back. The view
    // before gets "blur", the new one "focus", both with "is-tab", which is true when a Tab moved the focus.
    // The view that has the focus already gets nothing. "focus-lost" tells a view that somebody else has
    // taken the keyboard.
    virtual CError setKeyFocus(CView* view, bool isTab) = 0;
    virtual CView* getKeyFocus() const = 0;
    // Null: none.
    virtual platform::CSystemClipboard* getClipboard() = 0;
};

} // namespace qel
