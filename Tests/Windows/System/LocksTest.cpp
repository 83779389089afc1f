// What the system's own locks are told.
#include "CCriticalSection.h"

#include <gtest/gtest.h>

#include <thread>

#include <windows.h>

namespace qel {
namespace {

TEST(WindowsLocks, SpinBeforeTheySleepWhereThereAreProcessorsToWaitFor)
{
    const CCriticalSection section;
    constexpr ULONG_PTR kCount = 0xFFFFFF; // flags lie above it
    EXPECT_EQ(reinterpret_cast<const CRITICAL_SECTION&>(section).SpinCount & kCount,
              std::thread::hardware_concurrency() > 1 ? 4000U : 0U);
}

} // namespace
} // namespace qel
