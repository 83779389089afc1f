// The running thread, as the thread library names it.
#include "ThreadId.h"

#include <pthread.h>

namespace qel::platform {

std::uint64_t currentThreadId()
{
    return static_cast<std::uint64_t>(pthread_self());
}

} // namespace qel::platform
