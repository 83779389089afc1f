// Reader over a block of memory.
#pragma once

#include "Streams/CPosInputStream.h"

#include <span>

namespace qel {

// Reads a block that the caller owns and keeps unchanged as long as the reader lives. The size is a signed
// 32-bit number, as everywhere in the formats; of a larger block only the first 2 GiB - 1 are seen. Any
// number of readers may share one block.
class CMemoryReader : public CPosInputStream
{
public:
    CMemoryReader(const void* data, std::int32_t size);
    explicit CMemoryReader(std::span<const std::uint8_t> bytes);

    // Nothing to give back: the reader stays usable.
    CError close() override { return {}; }
    CError consume(std::size_t count) override;
    CError read(void* buffer, std::size_t count) override;
    CError readStreamed(void* buffer, std::size_t& inOutCount) override;
    CError getPosition(std::int64_t& out) override;
    CError setPosition(std::int64_t position) override;
    CError getSize(std::int64_t& out) override;

private:
    std::size_t rest() const { return static_cast<std::size_t>(size_ - position_); }

    const std::uint8_t* data_;
    std::int32_t size_;
    std::int32_t position_ = 0;
};

} // namespace qel
