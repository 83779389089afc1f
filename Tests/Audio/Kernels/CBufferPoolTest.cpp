#include "CBufferPool.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace qel {
namespace {

class BufferPool : public testing::Test
{
protected:
    CAudioMemory memory_;
    CBufferPool pool_{memory_};
};

TEST_F(BufferPool, RefusesThe2049thBufferWithTheNoneReference)
{
    std::vector<CBufferRef> refs;
    for (std::size_t i = 0; i < CBufferPool::kSlots; ++i) {
        refs.push_back(pool_.allocate(64));
        ASSERT_FALSE(refs.back().isNone());
    }
    EXPECT_TRUE(pool_.allocate(64).isNone());
    EXPECT_EQ(pool_.refusals(), 1U);
    pool_.release(refs[77]);
    EXPECT_EQ(pool_.allocate(64), refs[77]);
}

TEST_F(BufferPool, LivesOfTheMemoryThatWasProvided)
{
    const std::size_t before = memory_.shortfalls();
    memory_.provide(100000);
    memory_.provide(100000);
    std::vector<CBufferRef> refs;
    for (int i = 0; i < 20; ++i) {
        refs.push_back(pool_.allocate(100 + static_cast<std::size_t>(i) * 400));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pool_.address(refs.back())) % CAudioMemory::kAlignment,
                  0U);
    }
    EXPECT_EQ(memory_.shortfalls(), before) << "small ones from what large ones left";
    void* const more = memory_.take(100000);
    EXPECT_EQ(memory_.shortfalls(), before + 1);
    memory_.giveBack(more, 100000);
    EXPECT_EQ(memory_.take(99000), more);
    memory_.giveBack(more, 99000);
}

// Blocks at several oversampling factors ask for buffers of several sizes; the order in which they come back
// is not the same in each block.
TEST_F(BufferPool, ServesASecondRoundOfTheSameRequestsFromWhatTheFirstLeft)
{
    std::mt19937 random(11);
    const auto round = [&] {
        std::mt19937 requests(1);
        std::array<std::vector<CBufferRef>, 8> liveBySize;
        for (int i = 0; i < 500; ++i) {
            const std::size_t size = requests() % liveBySize.size();
            std::vector<CBufferRef>& live = liveBySize[size];
            if (live.size() > requests() % 6) {
                std::swap(live[random() % live.size()], live.back());
                pool_.release(live.back());
                live.pop_back();
            } else {
                live.push_back(pool_.allocate(std::size_t{100} << size));
            }
        }
        for (const auto& live : liveBySize) {
            std::for_each(live.begin(), live.end(), [&](CBufferRef ref) { pool_.release(ref); });
        }
    };
    round();
    const std::size_t held = pool_.bytesHeld();
    for (int i = 0; i < 20; ++i) {
        round();
        EXPECT_EQ(pool_.bytesHeld(), held) << "round " << i;
    }
    EXPECT_EQ(pool_.slotsInUse(), 0U);
}

} // namespace
} // namespace qel
