// A panel, a bar, a pit: anything with a border.
#include "CFrame.h"

namespace qel {

void CFrame::buildClassInfo(CClassInfo& info)
{
    using Self = CFrame;
    CFramedView::buildClassInfo(info);
    info.bind<&Self::hasBorders_, &Self::attrLook>("has-borders", true);
    info.bind<&Self::isFixedFrame_, &Self::attrLook>("is-fixed-frame", false);
}

CError CFrame::attrLook()
{
    markLook();
    return {};
}

void CFrame::draw(CDrawContext& context)
{
    if (isFixedFrame_) {
        drawImage(context, 0, true, {}, 1, 1.0, false, false);
    } else if (hasBorders_) {
        drawFrame(context);
    } else {
        drawFilledRect(context, 0, {0.0, 0.0, getArea().width, getArea().height}, 1, 1.0);
    }
}

} // namespace qel
