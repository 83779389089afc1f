// Abstract reader of bytes, and the wire primitives that every file format here is made of.
#pragma once

#include "CByteBuffer.h"
#include "CCheckedObject.h"
#include "CError.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qel {

// A source of bytes, read from front to back. Owned by whoever opened it, used by one thread; the destructor
// of every derived class closes a stream that is still open and drops a failure of that.
//
// Numbers are little endian on every machine and are put together byte by byte; a string is a u32 byte count
// and that much UTF-8. All of them are outside data: nothing read here makes room for more than the stream
// can hold. After a failed call the position is undefined, so callers drop the stream.
class CInputStream : public CCheckedObject
{
public:
    // Longest string that readString() takes, in bytes.
    static constexpr std::int32_t kMaxStringBytes = 61440;

    CInputStream() = default;
    CInputStream(const CInputStream&) = delete;
    CInputStream& operator=(const CInputStream&) = delete;

    virtual CError close() = 0;
    // Skips forward.
    virtual CError consume(std::size_t count) = 0;
    // Delivers exactly `count` bytes or fails.
    virtual CError read(void* buffer, std::size_t count) = 0;
    // Delivers what is there, up to `inOutCount`, and stores how much that was. The end is no error.
    virtual CError readStreamed(void* buffer, std::size_t& inOutCount) = 0;

    CError readU32(std::uint32_t& out) { return readNumber<std::uint32_t>(out); }
    CError readI32(std::int32_t& out) { return readNumber<std::uint32_t>(out); }
    CError readU8(std::uint8_t& out) { return readNumber<std::uint8_t>(out); }
    CError readF32(float& out) { return readNumber<std::uint32_t>(out); }
    CError readF64(double& out) { return readNumber<std::uint64_t>(out); }
    // Any byte but 0 is true.
    CError readBool(bool& out)
    {
        std::uint8_t byte = 0;
        QEL_TRY(readU8(byte), {});
        out = byte != 0;
        return {};
    }
    // Leaves `out` empty on failure, and for a negative length, which is no failure.
    CError readString(CString& out);

    // Reads a compressed chunk: ID, size, check of the size, zlib stream. A chunk is the last thing in its
    // stream, since the decompressor reads ahead. The size is believed only as far as the compressed data
    // bear it out, and the zlib stream must end there with a checksum that matches: else one altered byte
    // could pass, making the data longer. What stands behind the zlib stream is not looked at.
    CError readCompressedData(CByteBuffer& outBuffer, std::uint32_t id);

private:
    template <class Bits, class T>
    CError readNumber(T& out)
    {
        static_assert(sizeof(Bits) == sizeof(T));
        std::array<std::uint8_t, sizeof(Bits)> bytes;
        QEL_TRY(read(bytes.data(), bytes.size()), {});
        Bits bits = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bits = static_cast<Bits>(bits | (Bits{bytes[i]} << (8 * i)));
        }
        out = std::bit_cast<T>(bits);
        return {};
    }
    CError readChunkHead(std::uint32_t id, std::uint32_t& outSize);
};

} // namespace qel
