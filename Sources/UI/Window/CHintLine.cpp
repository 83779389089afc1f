// The hint of the view under the pointer.
#include "CHintLine.h"

namespace qel {

CError CHintLine::show(CView& root, CView* view)
{
    const CWindowSharedData& data = root.getWindowSharedData();
    const CString hint = view && data.isShowHints() ? view->getHint() : CString();
    if (hint == shown_) {
        return {};
    }
    CObject* status = root.findObject("$window-status-path");
    if (!status && !data.getWindowStatusPath().isEmpty()) {
        status = root.findObject(data.getWindowStatusPath());
    }
    shown_ = hint;
    return status ? status->setAttribute("title", hint, true) : CError();
}

} // namespace qel
