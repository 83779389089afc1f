// The guard that proves the audio thread's manners must itself see what it is to see.
#define QEL_DEFINE_ALLOCATION_GUARD
#include "AllocationGuard.h"

#include "CCriticalSection.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace qel::test {

namespace {

// Keeps the optimiser from leaving an allocation out.
void* volatile sink = nullptr;

struct alignas(64) Wide
{
    char bytes[64] = {};
};

} // namespace

class AllocationGuardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!AllocationGuard::kCounts) {
            GTEST_SKIP() << "nothing is counted in this build";
        }
    }
};

TEST_F(AllocationGuardTest, CountsEveryWayToTheHeap)
{
    AllocationGuard guard;
    sink = std::malloc(10);
    sink = std::realloc(sink, 5000);
    std::free(sink);
    sink = std::calloc(3, 3);
    std::free(sink);
    sink = std::aligned_alloc(64, 64);
    std::free(sink);
    auto* number = new int(3);
    sink = number;
    delete number;
    auto* wide = new Wide();
    sink = wide;
    delete wide;
    std::free(nullptr);
    const AllocationGuard::Counts counts = guard.stop();
    EXPECT_EQ(counts.allocations, 6u);
    EXPECT_EQ(counts.frees, 5u);
    EXPECT_EQ(counts.locks, 0u);
}

TEST_F(AllocationGuardTest, CountsLocksWaitsAndTries)
{
    std::mutex mutex;
    std::condition_variable condition;
    CCriticalSection section;
    AllocationGuard guard;
    {
        const std::lock_guard<std::mutex> lock(mutex);
    }
    {
        std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    }
    {
        const CLock lock(section);
    }
    const AllocationGuard::Counts counts = guard.stop();
    EXPECT_EQ(counts.locks, 1u);
    EXPECT_EQ(counts.tryLocks, 2u);
    EXPECT_EQ(counts.allocations + counts.frees, 0u);

    // Its end is announced by another thread, so that the plain wait() returns too.
    bool done = false;
    std::unique_lock<std::mutex> lock(mutex);
    std::thread other([&] {
        const std::lock_guard<std::mutex> otherLock(mutex);
        done = true;
        condition.notify_all();
    });
    AllocationGuard waiting;
    condition.wait(lock, [&] { return done; });
    EXPECT_GE(waiting.stop().locks, 1u);
    lock.unlock();
    other.join();
}

TEST_F(AllocationGuardTest, LooksAtItsOwnThreadOnlyAndOnlyWhileItLives)
{
    std::vector<int> before(10);
    AllocationGuard::Counts counts;
    std::thread worker([&counts] {
        AllocationGuard guard;
        counts = guard.stop();
        sink = std::malloc(1);
        std::free(sink);
    });
    worker.join();
    EXPECT_EQ(counts.total(), 0u);
    AllocationGuard guard;
    EXPECT_EQ(guard.stop().total(), 0u);
}

} // namespace qel::test
