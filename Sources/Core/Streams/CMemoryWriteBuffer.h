// A growing block of memory to write into.
#pragma once

#include "Streams/CPosOutputStream.h"

#include <memory>

namespace qel {

// Collects bytes in a chain of blocks, so that growing never moves what was written. A new block takes the
// next block size, or just the need when that is at least as much; the next block size then doubles. The size
// is the highest byte written plus 1; a write behind the end fills the gap with zeros. Writing cannot fail.
//
// The block touched last is remembered, so front-to-back use costs no walk along the chain.
class CMemoryWriteBuffer : public CPosOutputStream
{
public:
    CMemoryWriteBuffer() = default;
    ~CMemoryWriteBuffer() override;

    CError write(const void* buffer, std::size_t count) override;
    CError getPosition(std::int64_t& out) override;
    CError setPosition(std::int64_t position) override;
    CError getSize(std::int64_t& out) override;

    // Hands the contents over, block by block.
    CError writeTo(COutputStream& target) const;
    // Makes one contiguous copy.
    void copyTo(CByteBuffer& target) const;
    // Adler-32 of the contents.
    std::uint32_t getAdler() const;

    std::size_t size() const { return size_; }
    std::size_t nextBlockSize() const { return nextBlockSize_; }

private:
    struct Block
    {
        std::size_t start = 0;
        CByteBuffer bytes;
        std::unique_ptr<Block> next;

        std::size_t end() const { return start + bytes.size(); }
    };

    // The block that holds `position`, which may be the end of the chain; a block for `need` bytes is then
    // added.
    Block& blockAt(std::size_t position, std::size_t need);
    Block& addBlock(std::size_t need);
    // Puts bytes at the position, or zeros if there are none, and moves it.
    void put(const std::uint8_t* bytes, std::size_t count);

    std::unique_ptr<Block> first_;
    Block* last_ = nullptr;
    Block* touched_ = nullptr;
    std::size_t position_ = 0;
    std::size_t size_ = 0;
    std::size_t nextBlockSize_ = 128;
};

} // namespace qel
