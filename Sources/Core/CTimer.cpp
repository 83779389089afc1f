// A timer of a tree.
#include "CTimer.h"

#include "CNotifyServer.h"

#include <cmath>

namespace qel {

namespace {

constexpr double kMinIntervalMs = 10.0;
constexpr double kMaxIntervalMs = 2147483647.0;

} // namespace

void CTimer::buildClassInfo(CClassInfo& info)
{
    CObject::buildClassInfo(info);
    info.bind<&CTimer::intervalSec_, &CTimer::attrInterval>("interval", 0.0);
}

CError CTimer::init()
{
    QEL_TRY(CObject::init(), getFullName());
    CEventLoop* loop = getNotifyServer() ? getNotifyServer()->getEventLoop() : nullptr;
    if (const int code = loop ? source_.create(*loop) : kNoEventLoop; code != 0) {
        QEL_FAIL(getFullName(), "@qelstr_CTimer_init_CreateWindow Timer window creation error %1.", code);
    }
    return {};
}

CError CTimer::applyAttrs()
{
    QEL_TRY(CObject::applyAttrs(), getFullName());
    QEL_TRY(initTimer(), getFullName());
    isStarted_ = true;
    return {};
}

CError CTimer::attrInterval()
{
    return isStarted_ ? initTimer() : CError();
}

CError CTimer::initTimer()
{
    // fmax() takes the other operand for a NaN.
    const double wantedMs = std::floor(intervalSec_ * 1000.0 + 0.5);
    const double ms = std::fmin(std::fmax(wantedMs, kMinIntervalMs), kMaxIntervalMs);
    if (const int code = source_.start(static_cast<std::uint32_t>(ms), [this] { onTick(); }); code != 0) {
        QEL_FAIL(getFullName(), "@qelstr_CTimer_initTimer_createTimer Timer creation error %1.", code);
    }
    return {};
}

void CTimer::onTick()
{
    // A listener may release this timer, so nothing of it is touched afterwards; nobody waits for the error.
    if (CError error = notify("tick", {}, false)) {
        traceError(error);
    }
}

void CTimer::release()
{
    source_.stop();
    isStarted_ = false;
    CObject::release();
}

} // namespace qel
