// Counts what a stretch of code does that the audio thread must not do.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(__GLIBC__)
#define QEL_ALLOCATION_GUARD_COUNTS 0
#else
#define QEL_ALLOCATION_GUARD_COUNTS 1
#endif

namespace qel::test {

struct AllocationCounts
{
    std::uint32_t allocations = 0;
    std::uint32_t frees = 0;
    std::uint32_t locks = 0;
    std::uint32_t tryLocks = 0;
    std::uint32_t maps = 0;

    std::uint32_t total() const { return allocations + frees + locks + tryLocks + maps; }
};

// While a guard lives, the calls its thread makes to the heap (malloc and its kin, free, new, delete), to
// mmap and munmap, and to pthread locks (lock, timed lock, condition waits, and apart from these try-lock)
// are counted. A CCriticalSection tries before it waits, so in a test without contention its lock() shows as
// a try. Other threads are not concerned. Guards do not nest. Read the counts after stop(), since a test's
// own checks allocate too.
//
// The functions are replaced in the test program itself: one of its source files includes this header with
// QEL_DEFINE_ALLOCATION_GUARD defined. Sanitizers replace the same functions, so under them, and away from
// glibc, nothing is counted and kCounts is false.
class AllocationGuard
{
public:
    static constexpr bool kCounts = QEL_ALLOCATION_GUARD_COUNTS;

    using Counts = AllocationCounts;

    AllocationGuard()
    {
        counts_ = {};
        armed_ = true;
    }
    AllocationGuard(const AllocationGuard&) = delete;
    AllocationGuard& operator=(const AllocationGuard&) = delete;
    ~AllocationGuard() { armed_ = false; }

    // Ends the counting and gives the result.
    Counts stop()
    {
        armed_ = false;
        return counts_;
    }

    // --- for the replaced functions
    static void note(std::uint32_t Counts::*count)
    {
        if (armed_) {
            ++(counts_.*count);
        }
    }

private:
    static inline thread_local bool armed_ = false;
    static inline thread_local Counts counts_;
};

} // namespace qel::test

#if defined(QEL_DEFINE_ALLOCATION_GUARD) && QEL_ALLOCATION_GUARD_COUNTS

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/types.h>

// Exported, so that the shared libraries of the program come here too.
#define QEL_REPLACES __attribute__((visibility("default")))

inline void noteCall(std::uint32_t qel::test::AllocationCounts::*count)
{
    qel::test::AllocationGuard::note(count);
}

// glibc's own names for the functions that are replaced here. operator new and delete come down to these.
extern "C" {
void* __libc_malloc(std::size_t) noexcept;
void* __libc_calloc(std::size_t, std::size_t) noexcept;
void* __libc_realloc(void*, std::size_t) noexcept;
void* __libc_memalign(std::size_t, std::size_t) noexcept;
void __libc_free(void*) noexcept;

QEL_REPLACES void* malloc(std::size_t size) noexcept
{
    noteCall(&qel::test::AllocationCounts::allocations);
    return __libc_malloc(size);
}
QEL_REPLACES void* calloc(std::size_t count, std::size_t size) noexcept
{
    noteCall(&qel::test::AllocationCounts::allocations);
    return __libc_calloc(count, size);
}
QEL_REPLACES void* realloc(void* memory, std::size_t size) noexcept
{
    noteCall(&qel::test::AllocationCounts::allocations);
    return __libc_realloc(memory, size);
}
QEL_REPLACES void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    noteCall(&qel::test::AllocationCounts::allocations);
    return __libc_memalign(alignment, size);
}
QEL_REPLACES void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return memalign(alignment, size);
}
QEL_REPLACES int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept
{
    *memory = memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
QEL_REPLACES void free(void* memory) noexcept
{
    if (memory) {
        noteCall(&qel::test::AllocationCounts::frees);
    }
    __libc_free(memory);
}

QEL_REPLACES void* mmap(void* address, std::size_t length, int protection, int flags, int file,
                        off_t offset) noexcept
{
    using Function = void* (*)(void*, std::size_t, int, int, int, off_t);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "mmap"));
    noteCall(&qel::test::AllocationCounts::maps);
    return real(address, length, protection, flags, file, offset);
}
QEL_REPLACES int munmap(void* address, std::size_t length) noexcept
{
    using Function = int (*)(void*, std::size_t);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "munmap"));
    noteCall(&qel::test::AllocationCounts::maps);
    return real(address, length);
}

QEL_REPLACES int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    using Function = int (*)(pthread_mutex_t*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    noteCall(&qel::test::AllocationCounts::locks);
    return real(mutex);
}
QEL_REPLACES int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept
{
    using Function = int (*)(pthread_mutex_t*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_mutex_trylock"));
    noteCall(&qel::test::AllocationCounts::tryLocks);
    return real(mutex);
}
QEL_REPLACES int pthread_mutex_timedlock(pthread_mutex_t* mutex, const timespec* until) noexcept
{
    using Function = int (*)(pthread_mutex_t*, const timespec*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_mutex_timedlock"));
    noteCall(&qel::test::AllocationCounts::locks);
    return real(mutex, until);
}
// By version: the oldest form, which a plain look-up may find, has another layout of pthread_cond_t.
QEL_REPLACES int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex)
{
    using Function = int (*)(pthread_cond_t*, pthread_mutex_t*);
    static const auto real =
        reinterpret_cast<Function>(dlvsym(RTLD_NEXT, "pthread_cond_wait", "GLIBC_2.3.2"));
    noteCall(&qel::test::AllocationCounts::locks);
    return real(condition, mutex);
}
QEL_REPLACES int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                        const timespec* until)
{
    using Function = int (*)(pthread_cond_t*, pthread_mutex_t*, const timespec*);
    static const auto real =
        reinterpret_cast<Function>(dlvsym(RTLD_NEXT, "pthread_cond_timedwait", "GLIBC_2.3.2"));
    noteCall(&qel::test::AllocationCounts::locks);
    return real(condition, mutex, until);
}
}

#endif
