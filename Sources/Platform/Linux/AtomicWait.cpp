// The library's own waiting, which is the system's here.
#include "AtomicWait.h"

namespace qel::platform {

void waitWhile(const std::atomic<std::uint32_t>& number, std::uint32_t value)
{
    number.wait(value);
}

void wakeAll(std::atomic<std::uint32_t>& number)
{
    number.notify_all();
}

} // namespace qel::platform
