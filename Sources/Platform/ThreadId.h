// Which thread is running.
#pragma once

#include <cstdint>

namespace qel::platform {

// A number no other live thread of the process has; it may return once the thread has ended. Cheap, no system
// call.
std::uint64_t currentThreadId();

} // namespace qel::platform
