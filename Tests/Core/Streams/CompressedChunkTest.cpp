#include "StreamRig.h"

namespace qel {

namespace {

constexpr std::uint32_t kId = 0x6C6D7863; // "cxml"
constexpr std::size_t kHeadBytes = 12;

Bytes chunkOf(const Bytes& data)
{
    CMemoryWriteBuffer buffer;
    EXPECT_TRUE(succeeded(buffer.writeCompressedData(CByteBuffer(data), kId)));
    return contentsOf(buffer);
}

// A chunk with any claim: the head is valid, the size need not be.
Bytes chunkClaiming(std::uint32_t size, const Bytes& data)
{
    Bytes chunk = chunkOf(data);
    CMemoryWriteBuffer head;
    EXPECT_TRUE(succeeded(head.writeU32(size)));
    const std::uint32_t check = head.getAdler();
    EXPECT_TRUE(succeeded(head.writeU32(check)));
    std::ranges::copy(contentsOf(head), chunk.begin() + 4);
    return chunk;
}

std::string readChunk(const Bytes& chunk, CByteBuffer& out)
{
    CMemoryReader reader(chunk);
    return message(reader.readCompressedData(out, kId));
}

bool holds(const CByteBuffer& buffer, const Bytes& data)
{
    return std::ranges::equal(buffer.bytes(), data);
}

} // namespace

TEST(CompressedChunk, RoundTripsAtEverySizeThatMatters)
{
    // Around the inline room, the zlib block, and the first helping of a claim that cannot be checked.
    for (const std::size_t size : {0u, 1u, 32u, 33u, 32767u, 32768u, 32769u, 65536u, 65537u, 300000u}) {
        for (const Bytes& data : {noise(size), Bytes(size, 7)}) {
            const Bytes chunk = chunkOf(data);
            CByteBuffer known;
            EXPECT_EQ(readChunk(chunk, known), "") << size;
            EXPECT_TRUE(holds(known, data)) << size;
            CByteBuffer unknown;
            CTrickleReader trickle(chunk, 997);
            EXPECT_TRUE(succeeded(trickle.readCompressedData(unknown, kId))) << size;
            EXPECT_TRUE(holds(unknown, data)) << size;
        }
    }
}

TEST(CompressedChunk, BytesBehindTheStreamAreNotLookedAtButItsDataAreComplete)
{
    const Bytes data = noise(5000);
    Bytes chunk = chunkOf(data);
    chunk.insert(chunk.end(), 40000, 0xAA);
    CByteBuffer out;
    EXPECT_EQ(readChunk(chunk, out), "");
    EXPECT_TRUE(holds(out, data));

    EXPECT_EQ(readChunk(chunkClaiming(1000, data), out), "The data are longer than their head tells.");
}

} // namespace qel
