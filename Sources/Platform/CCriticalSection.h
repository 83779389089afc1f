// A recursive lock that spins before it waits.
#pragma once

#include <cstddef>
#include <mutex>

namespace qel {

// Mutual exclusion for short work on shared data. The thread that holds it may lock it again and unlocks as
// often as it locked. A contended lock() first spins 4000 times, since most holders leave within
// microseconds, and then sleeps in the system; on a single processor it sleeps at once. The audio thread may
// only try. Not copyable; must be unlocked when destroyed. The system's own lock lives in the object, so
// making one allocates nothing.
class CCriticalSection
{
public:
    static constexpr unsigned kSpinCount = 4000;

    CCriticalSection();
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;
    ~CCriticalSection();

    void lock();
    bool tryLock();
    bool try_lock() { return tryLock(); } // the name std::unique_lock and std::scoped_lock ask for
    void unlock();

private:
    static constexpr std::size_t kSystemLockSize = 40; // checked where the system's type is known

    alignas(void*) std::byte storage_[kSystemLockSize];
};

using CLock = std::lock_guard<CCriticalSection>;

} // namespace qel
