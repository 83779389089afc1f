#include "StreamTestSupport.h"

#include "Streams/CInputZipStream.h"
#include "Streams/COutputZipStream.h"

#include <zlib.h>

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

std::string readChunk(const Bytes& chunk, CByteBuffer& out, std::uint32_t id = kId)
{
    CMemoryReader reader(chunk);
    return message(reader.readCompressedData(out, id));
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

TEST(CompressedChunk, HeadIsIdThenSizeThenAdlerOfTheSizeBytes)
{
    const Bytes chunk = chunkOf(Bytes(87166));
    const Bytes head = {'c', 'x', 'm', 'l', 0x7E, 0x54, 0x01, 0x00, 0xD4, 0x00, 0xFA, 0x02};
    EXPECT_EQ(Bytes(chunk.begin(), chunk.begin() + kHeadBytes), head);
}

TEST(CompressedChunk, AChecksumInABlockOfItsOwnIsStillChecked)
{
    const Bytes data = noise(400);
    Bytes chunk = chunkOf(data);
    const std::size_t body = chunk.size() - kHeadBytes - 4;
    CByteBuffer out;
    {
        CTrickleReader reader(chunk, body);
        EXPECT_TRUE(succeeded(reader.readCompressedData(out, kId)));
    }
    chunk.back() ^= 1;
    CTrickleReader reader(chunk, body);
    EXPECT_EQ(message(reader.readCompressedData(out, kId)), "zlib inflate error -3 (incorrect data check).");
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

TEST(CompressedChunk, ALyingSizeNeitherHangsNorTakesMemory)
{
    Bytes chunk = chunkClaiming(0xFFFFFFFF, noise(64));
    const std::size_t believable = 1032 * (chunk.size() - kHeadBytes);
    CByteBuffer out;
    EXPECT_EQ(readChunk(chunk, out), "Premature end of file.");
    EXPECT_LE(out.size(), believable);
    // Input that never becomes output must not be waited for.
    chunk.insert(chunk.end(), 100, 0);
    EXPECT_EQ(readChunk(chunk, out), "Premature end of file.");

    CTrickleReader reader(chunk, 10);
    EXPECT_EQ(message(reader.readCompressedData(out, kId)), "Premature end of file.");
    EXPECT_LE(out.size(), 65536u);
}

TEST(CompressedChunk, MoreThanTheFirstHelpingStillArrivesWhole)
{
    Bytes data(20u << 20, 3);
    std::ranges::copy(noise(1000), data.end() - 1000);
    const Bytes chunk = chunkOf(data);
    CByteBuffer out;
    EXPECT_EQ(readChunk(chunk, out), "");
    EXPECT_TRUE(holds(out, data));
    // A large file of garbage behind a lying size.
    Bytes garbage = chunkClaiming(0xFFFFFFFF, noise(64));
    garbage.insert(garbage.end(), 10u << 20, 0x55);
    EXPECT_EQ(readChunk(garbage, out), "Premature end of file.");
    EXPECT_LE(out.size(), std::size_t{16} << 20);
}

TEST(CompressedChunk, ATargetThatFailsIsReportedWhereverItHappens)
{
    const CByteBuffer data(noise(100000));
    CMemoryWriteBuffer whole;
    ASSERT_TRUE(succeeded(whole.writeCompressedData(data, kId)));
    for (const std::size_t room :
         {std::size_t{0}, std::size_t{5}, std::size_t{11}, std::size_t{40000}, whole.size() - 1}) {
        CFullTarget target(room);
        EXPECT_EQ(message(target.writeCompressedData(data, kId)), "Disk full.") << room;
    }
    CFullTarget target(whole.size());
    EXPECT_TRUE(succeeded(target.writeCompressedData(data, kId)));
}

TEST(CInputZipStream, StreamedReadingStopsAtTheEndOfTheZlibStream)
{
    const Bytes data = noise(1000);
    CMemoryWriteBuffer packed;
    COutputZipStream out;
    // Opened twice: the second opening ends the first stream.
    CMemoryWriteBuffer other;
    ASSERT_TRUE(succeeded(out.open(other, 1)));
    ASSERT_TRUE(succeeded(out.open(packed, 9)));
    EXPECT_GT(other.size(), 0u);
    for (const std::uint8_t byte : data) {
        ASSERT_TRUE(succeeded(out.write(&byte, 1)));
    }
    ASSERT_TRUE(succeeded(out.close()));
    ASSERT_TRUE(succeeded(out.close()));
    EXPECT_EQ(message(out.write(&data, 1)), "Output stream not specified.");

    const Bytes bytes = contentsOf(packed);
    CMemoryReader reader(bytes);
    CInputZipStream in;
    ASSERT_TRUE(succeeded(in.open(reader)));
    Bytes result(2000);
    std::size_t count = 600;
    ASSERT_TRUE(succeeded(in.readStreamed(result.data(), count)));
    EXPECT_EQ(count, 600u);
    count = 1400;
    ASSERT_TRUE(succeeded(in.readStreamed(result.data() + 600, count)));
    EXPECT_EQ(count, 400u);
    result.resize(1000);
    EXPECT_EQ(result, data);
    count = 1;
    ASSERT_TRUE(succeeded(in.readStreamed(result.data(), count)));
    EXPECT_EQ(count, 0u);
}

} // namespace qel
