#include "StreamRig.h"

#include <zlib.h>

namespace qel {

// The same writes at random places into the chain and into a plain array.
TEST(CMemoryWriteBuffer, ActsAsOneGrowingArray)
{
    std::mt19937 generator(20240611);
    CMemoryWriteBuffer buffer;
    Bytes model;
    for (int round = 0; round < 2000; ++round) {
        const std::size_t position = generator() % (model.size() + 40);
        const Bytes piece = noise(generator() % 300, static_cast<unsigned>(round));
        ASSERT_TRUE(succeeded(buffer.setPosition(static_cast<std::int64_t>(position))));
        ASSERT_TRUE(succeeded(buffer.write(piece.data(), piece.size())));
        if (!piece.empty()) {
            model.resize(std::max(model.size(), position + piece.size()));
            std::ranges::copy(piece, model.begin() + static_cast<long>(position));
        }
        std::int64_t size = 0;
        ASSERT_TRUE(succeeded(buffer.getSize(size)));
        ASSERT_EQ(size, static_cast<std::int64_t>(model.size()));
    }
    EXPECT_EQ(contentsOf(buffer), model);
    EXPECT_EQ(buffer.getAdler(), adler32(1, model.data(), static_cast<uInt>(model.size())));
    CMemoryWriteBuffer copy;
    ASSERT_TRUE(succeeded(buffer.writeTo(copy)));
    EXPECT_EQ(contentsOf(copy), model);
    CFullTarget full(model.size() - 1);
    EXPECT_EQ(message(buffer.writeTo(full)), "Disk full.");
    EXPECT_FALSE(succeeded(buffer.setPosition(-1)));
}

TEST(CMemoryWriteBuffer, AMillionSmallWritesAreReleasedWithoutDeepRecursion)
{
    CMemoryWriteBuffer buffer;
    const Bytes piece(100);
    for (int i = 0; i < 1000000; ++i) {
        ASSERT_TRUE(succeeded(buffer.write(piece.data(), piece.size())));
    }
    EXPECT_EQ(buffer.size(), 100000000u);
    EXPECT_EQ(CMemoryWriteBuffer().getAdler(), 1u);
}

} // namespace qel
