// Threads have no message loop here: calls and timers run from CEventLoop::drain() alone.
#include "CSystemLoop.h"

namespace qel {

int createSystemWake(std::function<void()> /*onWake*/, std::unique_ptr<CSystemWake>& out)
{
    out.reset();
    return 0;
}

int createSystemTimer(std::function<void()> /*onTick*/, std::unique_ptr<CSystemTimer>& out)
{
    out.reset();
    return 0;
}

} // namespace qel
