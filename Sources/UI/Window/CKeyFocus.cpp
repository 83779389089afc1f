// Which view hears of keys.
#include "CKeyFocus.h"

#include "PointerParameters.h"

#include <utility>

namespace qel {

CError CKeyFocus::set(CView* view, bool isTab)
{
    if (view && view->isReleased()) {
        view = nullptr;
    }
    CView* const old = std::exchange(view_, view);
    // Before the handlers: they may end the window.
    if (window_ && view) {
        window_->takeFocus();
    } else if (window_ && old) {
        window_->giveFocusBack();
    }
    if (view == old) {
        return {};
    }
    CAttrMap parameters;
    parameters["is-tab"] = CAttrValue(isTab);
    CError first = old ? old->receiveEvent("blur", parameters) : CError();
    // The handler of "blur" may have given the focus to another view.
    if (view && view == view_) {
        CError error = view->receiveEvent("focus", parameters);
        if (!first) {
            return error;
        }
        traceError(error);
    }
    return first;
}

CError CKeyFocus::lose()
{
    return view_ ? view_->receiveEvent("focus-lost", {}) : CError();
}

CError CKeyFocus::send(const char* event, const platform::KeyEvent& key)
{
    return view_ ? view_->receiveEvent(event, keyParameters(key)) : CError();
}

void CKeyFocus::forgetView(const CView& view)
{
    if (view_ == &view) {
        view_ = nullptr;
        if (window_) {
            window_->giveFocusBack();
        }
    }
}

} // namespace qel
