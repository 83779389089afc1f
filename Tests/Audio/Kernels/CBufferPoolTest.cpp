#include "CBufferPool.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>
#include <vector>

namespace qel {
namespace {

std::unique_ptr<CBufferPool> makePool()
{
    return std::make_unique<CBufferPool>();
}

TEST(CBufferPool, RefusesThe2049thBufferWithTheNoneReference)
{
    const auto pool = makePool();
    std::vector<CBufferRef> refs;
    for (std::size_t i = 0; i < CBufferPool::kSlots; ++i) {
        refs.push_back(pool->allocate(64));
        ASSERT_FALSE(refs.back().isNone());
    }
    EXPECT_TRUE(pool->allocate(64).isNone());
    EXPECT_EQ(pool->refusals(), 1U);
    pool->release(refs[77]);
    EXPECT_EQ(pool->allocate(64), refs[77]);
}

// Blocks at several oversampling factors ask for buffers of several sizes; the order in which they come back
// is not the same in each block.
TEST(CBufferPool, ServesASecondRoundOfTheSameRequestsFromWhatTheFirstLeft)
{
    const auto pool = makePool();
    std::mt19937 random(11);
    const auto round = [&] {
        std::mt19937 requests(1);
        std::array<std::vector<CBufferRef>, 8> liveBySize;
        for (int i = 0; i < 500; ++i) {
            const std::size_t size = requests() % liveBySize.size();
            std::vector<CBufferRef>& live = liveBySize[size];
            if (live.size() > requests() % 6) {
                std::swap(live[random() % live.size()], live.back());
                pool->release(live.back());
                live.pop_back();
            } else {
                live.push_back(pool->allocate(std::size_t{100} << size));
            }
        }
        for (const auto& live : liveBySize) {
            std::for_each(live.begin(), live.end(), [&](CBufferRef ref) { pool->release(ref); });
        }
    };
    round();
    const std::size_t held = pool->bytesHeld();
    for (int i = 0; i < 20; ++i) {
        round();
        EXPECT_EQ(pool->bytesHeld(), held) << "round " << i;
    }
    EXPECT_EQ(pool->slotsInUse(), 0U);
}

} // namespace
} // namespace qel
