// Abstract reader of bytes, and the wire primitives that every file format here is made of.
#include "Streams/CInputStream.h"

#include "Streams/CInputZipStream.h"
#include "Streams/CPosInputStream.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace qel {

namespace {

// Deflate's best case: 258 bytes out of two bits.
constexpr std::uint64_t kMaxExpansion = 1032;
// First helping of a chunk whose claim cannot be checked against the length of its stream.
constexpr std::uint64_t kFirstStepBytes = 65536;
// First helping at most: more than any honest file here, and little enough to get on a machine that is short
// of memory when a large file is garbage.
constexpr std::uint64_t kMaxFirstStepBytes = 16u << 20;

// How much of a claimed size may be allocated before a byte of it was seen.
std::uint64_t believableSize(CInputStream& stream, std::uint64_t claimed)
{
    std::uint64_t bound = kFirstStepBytes;
    if (auto* positioned = dynamic_cast<CPosInputStream*>(&stream)) {
        std::int64_t position = 0;
        std::int64_t size = 0;
        CError error = positioned->getPosition(position);
        if (!error) {
            error = positioned->getSize(size);
        }
        if (!error && size > position) {
            const std::uint64_t possible = static_cast<std::uint64_t>(size - position) * kMaxExpansion;
            bound = std::clamp(possible, kFirstStepBytes, kMaxFirstStepBytes);
        }
    }
    return std::min(claimed, bound);
}

void grow(CByteBuffer& buffer, std::size_t size)
{
    CByteBuffer larger;
    larger.allocate(size);
    std::memcpy(larger.data(), buffer.data(), buffer.size());
    buffer = std::move(larger);
}

} // namespace

CError CInputStream::readString(CString& out)
{
    out.clear();
    std::int32_t length = 0;
    QEL_TRY(readI32(length), {});
    if (length > kMaxStringBytes) {
        QEL_FAIL(
            {},
            "@qelstr_CInputStream_readString_StringDataTooLong String length %1 too long in readString().",
            length);
    }
    if (length < 0) {
        return {};
    }
    CByteBuffer bytes;
    bytes.allocate(static_cast<std::size_t>(length));
    QEL_TRY(read(bytes.data(), bytes.size()), {});
    out = CString::fromUtf8({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    return {};
}

CError CInputStream::readChunkHead(std::uint32_t id, std::uint32_t& outSize)
{
    std::uint32_t readId = 0;
    QEL_TRY(readU32(readId), {});
    if (readId != id) {
        QEL_FAIL({},
                 "@qelstr_CInputStream_readCompressedData_InvalidData Invalid ID encountered when reading "
                 "compressed "
                 "data (expected %1, read %2).",
                 id, readId);
    }
    std::uint8_t sizeBytes[4];
    QEL_TRY(read(sizeBytes, sizeof sizeBytes), {});
    std::uint32_t check = 0;
    QEL_TRY(readU32(check), {});
    const auto computed =
        static_cast<std::uint32_t>(adler32(adler32(0, nullptr, 0), sizeBytes, sizeof sizeBytes));
    if (check != computed) {
        QEL_FAIL(
            {},
            "@qelstr_CInputStream_readCompressedData_HeadCRC Invalid CRC encountered when reading compressed "
            "data (expected %1, read %2).",
            check, computed);
    }
    outSize = 0;
    for (std::size_t i = 0; i < sizeof sizeBytes; ++i) {
        outSize |= std::uint32_t{sizeBytes[i]} << (8 * i);
    }
    return {};
}

CError CInputStream::readCompressedData(CByteBuffer& outBuffer, std::uint32_t id)
{
    std::uint32_t size = 0;
    QEL_TRY(readChunkHead(id, size), {});
    outBuffer.allocate(static_cast<std::size_t>(believableSize(*this, size)));

    CInputZipStream zip;
    QEL_TRY(zip.open(*this), {});
    std::size_t filled = 0;
    while (true) {
        QEL_TRY(zip.read(outBuffer.data() + filled, outBuffer.size() - filled), {});
        filled = outBuffer.size();
        if (filled == size) {
            break;
        }
        grow(outBuffer, std::min<std::size_t>(size, 2 * filled));
    }
    if (size > 0) {
        QEL_TRY(zip.checkEnd(), {});
    }
    QEL_TRY(zip.close(), {});
    return {};
}

} // namespace qel
