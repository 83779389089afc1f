#include "StreamTestSupport.h"

#include "Streams/CResourceMap.h"
#include "Streams/CResourceReader.h"

#include <zlib.h>

namespace qel {

TEST(CMemoryReader, StopsExactlyAtTheEnd)
{
    const Bytes bytes = {1, 2, 3, 4, 5};
    CMemoryReader reader(bytes);
    std::uint8_t buffer[8] = {};
    std::int64_t position = 0;
    ASSERT_TRUE(succeeded(reader.setPosition(5)));
    std::size_t count = 8;
    EXPECT_TRUE(succeeded(reader.readStreamed(buffer, count)));
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(message(reader.read(buffer, 1)),
              "Premature end of memory resource while reading (pos 5, count 1, size 5).");
    EXPECT_EQ(message(reader.consume(1)),
              "Premature end of memory resource while consuming (pos 5, count 1, size 5).");
    EXPECT_EQ(message(reader.setPosition(6)), "Positioning beyond memory resource end (newpos 6, size 5).");
    EXPECT_EQ(message(reader.setPosition(-1)), "Positioning beyond memory resource end (newpos -1, size 5).");

    ASSERT_TRUE(succeeded(reader.setPosition(1)));
    ASSERT_TRUE(succeeded(reader.consume(2)));
    count = 8;
    EXPECT_TRUE(succeeded(reader.readStreamed(buffer, count)));
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(buffer[0], 4);
    EXPECT_TRUE(succeeded(reader.getPosition(position)));
    EXPECT_EQ(position, 5);
    EXPECT_FALSE(succeeded(reader.read(buffer, static_cast<std::size_t>(-1))))
        << "a sum must not wrap around";
    EXPECT_FALSE(succeeded(CMemoryReader(bytes.data(), -3).read(buffer, 1)));
}

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

TEST(CResourceReader, ReadsWhatTheDirectoryHolds)
{
    static const std::uint8_t kFirst[] = {3, 0, 0, 0, 'o', 'n', 'e'};
    static const std::uint8_t kSecond[] = {2, 0, 0, 0, 'x', 'y'};
    static const std::uint8_t kEmpty[] = {0, 0, 0, 0};
    const CResourceRow table[] = {{kFirst, "../../../Gfx/test.is"},
                                  {kEmpty, "empty"},
                                  {kSecond, "../../../Gfx/test.is"},
                                  {nullptr, nullptr}};
    registerResourceDirectory(table);

    CResourceReader reader;
    ASSERT_TRUE(succeeded(reader.open("../../../Gfx/test.is")));
    std::int64_t size = 0;
    ASSERT_TRUE(succeeded(reader.getSize(size)));
    EXPECT_EQ(size, 2) << "a later duplicate replaces the earlier value";
    char text[2];
    ASSERT_TRUE(succeeded(reader.read(text, 2)));
    EXPECT_EQ(std::string(text, 2), "xy");
    ASSERT_TRUE(succeeded(reader.setPosition(1)));
    ASSERT_TRUE(succeeded(reader.consume(1)));
    EXPECT_FALSE(succeeded(reader.consume(1)));

    ASSERT_TRUE(succeeded(reader.open("empty")));
    ASSERT_TRUE(succeeded(reader.getSize(size)));
    EXPECT_EQ(size, 0);
    EXPECT_FALSE(succeeded(reader.open("test.is"))) << "the whole name counts";
    EXPECT_FALSE(succeeded(reader.read(text, 1)));
}

} // namespace qel
