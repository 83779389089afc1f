// The timers of a window.
#include "CWindowTimers.h"

namespace qel {

namespace {

constexpr double kNeverSec = 1e9;

} // namespace

CError CWindowTimers::start(const char* name, double fps, const char* handler)
{
    if (owner_.findChild(name)) {
        return {};
    }
    CAttrMap attributes;
    attributes["interval"] = CAttrValue(fps > 0.0 ? 1.0 / fps : kNeverSec);
    CObject* timer = nullptr;
    QEL_TRY(owner_.createChild(timer, "core:timer", name, false, nullptr, &attributes), owner_.getFullName());
    owner_.listenObject(timer->getFullName(), "tick", handler);
    return {};
}

void CWindowTimers::stop(const char* name)
{
    CObject::releaseObject(owner_.findChild(name));
}

void CWindowTimers::stopAll()
{
    for (const char* const name : {kRender, kGradient, kCursor, kDeactivate, kAutoClick}) {
        stop(name);
    }
}

} // namespace qel
