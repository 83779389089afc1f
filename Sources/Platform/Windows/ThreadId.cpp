// The running thread, as the system numbers it.
#include "ThreadId.h"

#include "WindowsApi.h"

namespace qel::platform {

std::uint64_t currentThreadId()
{
    return GetCurrentThreadId();
}

} // namespace qel::platform
