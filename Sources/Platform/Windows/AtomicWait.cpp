// One place for all to sleep in: those that are woken for another's number go back to sleep, which is rare.
#include "AtomicWait.h"

#include "WindowsApi.h"

namespace qel::platform {

namespace {

// Of kinds that need no end, so that threads may still use them while the library goes.
SRWLOCK lock = SRWLOCK_INIT;
CONDITION_VARIABLE woken = CONDITION_VARIABLE_INIT;
std::atomic<std::uint32_t> sleepers{0};

} // namespace

void waitWhile(const std::atomic<std::uint32_t>& number, std::uint32_t value)
{
    ++sleepers; // before the look at the number, so that whoever changes it afterwards sees a sleeper
    AcquireSRWLockExclusive(&lock);
    while (number == value) {
        SleepConditionVariableSRW(&woken, &lock, INFINITE, 0);
    }
    ReleaseSRWLockExclusive(&lock);
    --sleepers;
}

void wakeAll(std::atomic<std::uint32_t>&)
{
    if (sleepers == 0) {
        return;
    }
    // Whoever has seen the old number is asleep once the lock can be had.
    AcquireSRWLockExclusive(&lock);
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&woken);
}

} // namespace qel::platform
