// The pop-ups of a window.
#include "CPopups.h"

#include "CWindow.h"

namespace qel {

CError CPopups::toggle(CView&, const CAttrMap&)
{
    return {};
}

CError CPopups::passResult(CView&, const CAttrMap&)
{
    return {};
}

void CPopups::forgetView(CView&) {}

CError CPopups::findPlace(int width, int height, platform::PixelRect& out) const
{
    out = {window_.getAttrInt("window-x"), window_.getAttrInt("window-y"), width, height};
    return {};
}

CError CPopups::onPress(const platform::PointerEvent&)
{
    return {};
}

CError CPopups::onDeactivateTick()
{
    return {};
}

CError CPopups::closeOwn()
{
    CObject::releaseObject(window_.getRootView());
    return {};
}

void CPopups::release() {}

} // namespace qel
