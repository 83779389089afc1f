#include "CBufferPool.h"

#include <gtest/gtest.h>

#include <algorithm>
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

TEST(CBufferPool, TakesNoMemoryUntilItIsAskedAndKeepsItAfterwards)
{
    const auto pool = makePool();
    EXPECT_EQ(pool->bytesHeld(), 0U);
    const CBufferRef ref = pool->allocate(4096);
    EXPECT_GE(pool->capacity(ref), 4096U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pool->address(ref)) % CBufferPool::kAlignment, 0U);
    const std::size_t held = pool->bytesHeld();
    pool->release(ref);
    EXPECT_EQ(pool->slotsInUse(), 0U);
    EXPECT_EQ(pool->bytesHeld(), held);
    EXPECT_EQ(pool->allocate(4000), ref);
    EXPECT_EQ(pool->bytesHeld(), held);
}

TEST(CBufferPool, FreesASlotWithItsLastReference)
{
    const auto pool = makePool();
    const CBufferRef ref = pool->allocate(8);
    pool->addRef(ref.advancedBy(0));
    pool->addRef(ref);
    EXPECT_EQ(pool->refCount(ref), 3);
    pool->release(ref);
    pool->release(ref);
    EXPECT_EQ(pool->slotsInUse(), 1U);
    pool->release(ref);
    EXPECT_EQ(pool->slotsInUse(), 0U);
}

TEST(CBufferPool, ResolvesOffsetsInBothDirections)
{
    const auto pool = makePool();
    const CBufferRef ref = pool->allocate(8 * 65536);
    std::byte* base = pool->address(ref);
    EXPECT_EQ(pool->address(ref.advancedBy(1)), base + 8);
    EXPECT_EQ(pool->address(ref.advancedBy(65535)), base + 8 * 65535);
    EXPECT_EQ(pool->address(ref.advancedBy(40000).advancedBy(-39999)), base + 8);
    EXPECT_EQ(ref.advancedBy(-3).byteOffset(), -24);
    EXPECT_EQ(ref.advancedBy(512).slot(), ref.slot());
    EXPECT_TRUE(CBufferRef{}.advancedBy(5).isNone());
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

TEST(CBufferPool, AnOffsetSurvivesTheGrowthOfItsSlot)
{
    const auto pool = makePool();
    std::vector<CBufferRef> refs;
    for (std::size_t i = 0; i < CBufferPool::kSlots; ++i) {
        refs.push_back(pool->allocate(64));
    }
    const CBufferRef third = refs[5].advancedBy(3);
    const std::size_t held = pool->bytesHeld();
    pool->release(refs[5]);
    const CBufferRef grown = pool->allocate(1 << 16);
    ASSERT_EQ(grown, refs[5]);
    EXPECT_EQ(pool->bytesHeld(), held - 64 + (1 << 16));
    EXPECT_EQ(pool->address(third), pool->address(grown) + 24);
    std::fill_n(pool->address(grown), 1 << 16, std::byte{1});
    // A smaller request may take a larger slot, and leaves its memory alone.
    pool->release(grown);
    EXPECT_EQ(pool->allocate(64), grown);
    EXPECT_EQ(pool->capacity(grown), 1U << 16);
}

TEST(CBufferPool, IgnoresWhatIsNotInUse)
{
    const auto pool = makePool();
    const CBufferRef ref = pool->allocate(8);
    pool->release(ref);
    pool->release(ref);
    pool->addRef(ref);
    pool->release(CBufferRef{});
    pool->addRef(CBufferRef{3000});
    EXPECT_TRUE(pool->allocate(std::size_t{1} << 40).isNone());
    EXPECT_EQ(pool->refusals(), 5U);
    EXPECT_EQ(pool->address(CBufferRef{}), nullptr);
    EXPECT_EQ(pool->slotsInUse(), 0U);
    const CBufferRef first = pool->allocate(8);
    const CBufferRef second = pool->allocate(8);
    EXPECT_NE(first, second);
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
