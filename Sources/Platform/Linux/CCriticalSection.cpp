// A recursive mutex of the thread library, with a spin before it.
#include "CCriticalSection.h"

#include <pthread.h>
#include <unistd.h>

#include <new>

namespace qel {

namespace {

pthread_mutex_t* mutexIn(std::byte* storage)
{
    return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

// While this thread spins on a single processor the holder cannot run.
unsigned spinCount()
{
    static const unsigned count = sysconf(_SC_NPROCESSORS_ONLN) > 1 ? CCriticalSection::kSpinCount : 0;
    return count;
}

} // namespace

CCriticalSection::CCriticalSection()
{
    static_assert(sizeof(pthread_mutex_t) <= kSystemLockSize && alignof(pthread_mutex_t) <= alignof(void*));
    auto* mutex = new (storage_) pthread_mutex_t;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

CCriticalSection::~CCriticalSection()
{
    pthread_mutex_destroy(mutexIn(storage_));
}

void CCriticalSection::lock()
{
    if (tryLock()) {
        return;
    }
    for (unsigned spin = spinCount(); spin > 0; --spin) {
        __builtin_ia32_pause();
        if (tryLock()) {
            return;
        }
    }
    pthread_mutex_lock(mutexIn(storage_));
}

bool CCriticalSection::tryLock()
{
    return pthread_mutex_trylock(mutexIn(storage_)) == 0;
}

void CCriticalSection::unlock()
{
    pthread_mutex_unlock(mutexIn(storage_));
}

} // namespace qel
