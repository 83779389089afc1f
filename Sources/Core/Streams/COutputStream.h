// Abstract writer of bytes, and the wire primitives that every file format here is made of.
#pragma once

#include "CByteBuffer.h"
#include "CCheckedObject.h"
#include "CError.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace qel {

// A target of bytes, written from front to back; the twin of CInputStream, whose encodings it writes. Owned
// by whoever opened it, used by one thread. A writer that has to be closed says so itself; its destructor
// closes it too, but drops a failure, so whoever cares about the data calls close(). After a failed call the
// position is undefined, so callers drop the stream.
class COutputStream : public CCheckedObject
{
public:
    COutputStream() = default;
    COutputStream(const COutputStream&) = delete;
    COutputStream& operator=(const COutputStream&) = delete;

    // Writes all `count` bytes or fails.
    virtual CError write(const void* buffer, std::size_t count) = 0;

    CError writeU32(std::uint32_t value) { return writeNumber(value); }
    CError writeI32(std::int32_t value) { return writeNumber(std::bit_cast<std::uint32_t>(value)); }
    CError writeU8(std::uint8_t value) { return writeNumber(value); }
    CError writeBool(bool value) { return writeU8(value ? 1 : 0); }
    CError writeF32(float value) { return writeNumber(std::bit_cast<std::uint32_t>(value)); }
    CError writeF64(double value) { return writeNumber(std::bit_cast<std::uint64_t>(value)); }
    // A NUL ends the text and surrogates are dropped (CString::toUtf8()).
    CError writeString(const CString& string);

    // Writes a compressed chunk as CInputStream::readCompressedData() takes it. Fails on 4 GiB and more.
    CError writeCompressedData(const CByteBuffer& buffer, std::uint32_t id);

private:
    template <class Bits>
    CError writeNumber(Bits bits)
    {
        std::array<std::uint8_t, sizeof(Bits)> bytes;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = static_cast<std::uint8_t>(bits >> (8 * i));
        }
        QEL_TRY(write(bytes.data(), bytes.size()), {});
        return {};
    }
};

} // namespace qel
