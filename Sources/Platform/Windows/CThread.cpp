// The running thread, as the system numbers it.
#include "CThread.h"

#include "WindowsApi.h"

namespace qel::platform {

std::uint64_t currentThreadId()
{
    return GetCurrentThreadId();
}

} // namespace qel::platform
