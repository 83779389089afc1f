// The guard that proves the audio thread's manners must itself see what it is to see.
#include "AllocationGuard.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>

namespace qel::test {
namespace {

// Keeps the optimiser from leaving an allocation out.
void* volatile sink = nullptr;

TEST(AllocationGuard, CountsEveryWayToTheHeapAndLocks)
{
    if (!AllocationGuard::kCounts) {
        GTEST_SKIP() << "nothing is counted in this build";
    }
    std::mutex mutex;
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
    {
        const std::lock_guard<std::mutex> lock(mutex);
    }
    const AllocationGuard::Counts counts = guard.stop();
    EXPECT_EQ(counts.allocations, 5u);
    EXPECT_EQ(counts.frees, 4u);
    EXPECT_EQ(counts.locks, 1u);
}

} // namespace
} // namespace qel::test
