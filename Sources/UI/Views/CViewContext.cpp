// What the views of one window share.
#include "CViewContext.h"

#include "CDrawLoad.h"

namespace qel {

void CViewContext::tickTimer()
{
    const auto self = shared_from_this();
    timer_.tick();
}

void CViewContext::tickGradientTimer()
{
    const auto self = shared_from_this();
    gradientTimer_.tick();
}

void CViewContext::tickCursorTimer()
{
    const auto self = shared_from_this();
    cursorTimer_.tick();
}

double CViewContext::getTimeSec()
{
    return drawing::getFrameTime();
}

} // namespace qel
