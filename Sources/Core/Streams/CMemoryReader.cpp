// Reader over a block of memory.
#include "Streams/CMemoryReader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace qel {

CMemoryReader::CMemoryReader(const void* data, std::int32_t size)
    : data_(static_cast<const std::uint8_t*>(data)), size_(data ? std::max(size, 0) : 0)
{}

CMemoryReader::CMemoryReader(std::span<const std::uint8_t> bytes)
    : CMemoryReader(bytes.data(), static_cast<std::int32_t>(std::min<std::size_t>(
                                      bytes.size(), std::numeric_limits<std::int32_t>::max())))
{}

CError CMemoryReader::consume(std::size_t count)
{
    if (count > rest()) {
        QEL_FAIL({},
                 "@qelstr_CMemoryReader_consume_EOF Premature end of memory resource while consuming (pos "
                 "%1, count "
                 "%2, size %3).",
                 position_, count, size_);
    }
    position_ += static_cast<std::int32_t>(count);
    return {};
}

CError CMemoryReader::read(void* buffer, std::size_t count)
{
    if (count > rest()) {
        QEL_FAIL({},
                 "@qelstr_CMemoryReader_read_EOF Premature end of memory resource while reading (pos %1, "
                 "count %2, "
                 "size %3).",
                 position_, count, size_);
    }
    QEL_TRY(readStreamed(buffer, count), {});
    return {};
}

CError CMemoryReader::readStreamed(void* buffer, std::size_t& inOutCount)
{
    inOutCount = std::min(inOutCount, rest());
    if (inOutCount > 0) {
        std::memcpy(buffer, data_ + position_, inOutCount);
        position_ += static_cast<std::int32_t>(inOutCount);
    }
    return {};
}

CError CMemoryReader::getPosition(std::int64_t& out)
{
    out = position_;
    return {};
}

CError CMemoryReader::setPosition(std::int64_t position)
{
    if (position < 0 || position > size_) {
        QEL_FAIL(
            {},
            "@qelstr_CMemoryReader_setPosition_seek Positioning beyond memory resource end (newpos %1, size "
            "%2).",
            position, size_);
    }
    position_ = static_cast<std::int32_t>(position);
    return {};
}

CError CMemoryReader::getSize(std::int64_t& out)
{
    out = size_;
    return {};
}

} // namespace qel
