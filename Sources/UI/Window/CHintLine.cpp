// The hint of the view under the pointer.
#include "CHintLine.h"

namespace qel {

namespace {

constexpr const char* kOwnPath = "$window-status-path";

} // namespace

CError CHintLine::show(CObject& renderer, CView& root, const CView* view)
{
    const CWindowSharedData& data = root.getWindowSharedData();
    const CString hint = view && data.isShowHints() ? view->getHint() : CString();
    if (hint == shown_) {
        return {};
    }
    CObject* status = renderer.findObject(kOwnPath);
    status = status ? status : root.findObject(kOwnPath);
    if (!status && !data.getWindowStatusPath().isEmpty()) {
        status = root.findObject(data.getWindowStatusPath());
    }
    shown_ = hint;
    return status ? status->setAttribute("title", hint, true) : CError();
}

} // namespace qel
