// What all windows of one interface share.
#include "CWindowSharedData.h"

namespace qel {

void CWindowSharedData::buildClassInfo(CClassInfo& info)
{
    using Self = CWindowSharedData;
    CObject::buildClassInfo(info);
    info.bind<&Self::isShowHints_>("is-show-hints", true);
    info.bind<&Self::windowStatusPath_>("window-status-path", "");
}

void CWindowSharedData::setFrame(double timeSec, double width, double height)
{
    frameTimeSec_ = timeSec;
    windowWidth_ = width;
    windowHeight_ = height;
}

} // namespace qel
