// A growing block of memory to write into.
#include "Streams/CMemoryWriteBuffer.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>

namespace qel {

CMemoryWriteBuffer::~CMemoryWriteBuffer()
{
    // One by one: a chain of owners would recurse once per block.
    while (first_) {
        first_ = std::move(first_->next);
    }
}

CMemoryWriteBuffer::Block& CMemoryWriteBuffer::addBlock(std::size_t need)
{
    auto block = std::make_unique<Block>();
    block->start = last_ ? last_->end() : 0;
    if (need >= nextBlockSize_) {
        block->bytes.allocate(need);
        nextBlockSize_ *= 2;
    } else {
        block->bytes.allocate(nextBlockSize_);
    }
    Block& added = *block;
    (last_ ? last_->next : first_) = std::move(block);
    last_ = &added;
    return added;
}

CMemoryWriteBuffer::Block& CMemoryWriteBuffer::blockAt(std::size_t position, std::size_t need)
{
    if (!last_ || position == last_->end()) {
        return addBlock(need);
    }
    Block* block = touched_ && touched_->start <= position ? touched_ : first_.get();
    while (position >= block->end()) {
        block = block->next.get();
    }
    return *block;
}

void CMemoryWriteBuffer::put(const std::uint8_t* bytes, std::size_t count)
{
    while (count > 0) {
        Block& block = blockAt(position_, count);
        touched_ = &block;
        const std::size_t part = std::min(count, block.end() - position_);
        std::uint8_t* place = block.bytes.data() + (position_ - block.start);
        if (bytes) {
            std::memcpy(place, bytes, part);
            bytes += part;
        } else {
            std::memset(place, 0, part);
        }
        position_ += part;
        count -= part;
        size_ = std::max(size_, position_);
    }
}

CError CMemoryWriteBuffer::write(const void* buffer, std::size_t count)
{
    if (count > 0 && position_ > size_) {
        const std::size_t gap = position_ - size_;
        position_ = size_;
        put(nullptr, gap);
    }
    put(static_cast<const std::uint8_t*>(buffer), count);
    return {};
}

CError CMemoryWriteBuffer::getPosition(std::int64_t& out)
{
    out = static_cast<std::int64_t>(position_);
    return {};
}

CError CMemoryWriteBuffer::setPosition(std::int64_t position)
{
    if (position < 0) {
        QEL_FAIL(
            {},
            "@qelstr_CMemoryWriteBuffer_setPosition_seek Positioning before memory buffer start (newpos %1).",
            position);
    }
    position_ = static_cast<std::size_t>(position);
    return {};
}

CError CMemoryWriteBuffer::getSize(std::int64_t& out)
{
    out = static_cast<std::int64_t>(size_);
    return {};
}

CError CMemoryWriteBuffer::writeTo(COutputStream& target) const
{
    for (const Block* block = first_.get(); block && block->start < size_; block = block->next.get()) {
        QEL_TRY(target.write(block->bytes.data(), std::min(block->end(), size_) - block->start), {});
    }
    return {};
}

void CMemoryWriteBuffer::copyTo(CByteBuffer& target) const
{
    target.allocate(size_);
    for (const Block* block = first_.get(); block && block->start < size_; block = block->next.get()) {
        std::memcpy(target.data() + block->start, block->bytes.data(),
                    std::min(block->end(), size_) - block->start);
    }
}

std::uint32_t CMemoryWriteBuffer::getAdler() const
{
    uLong check = adler32(0, nullptr, 0);
    for (const Block* block = first_.get(); block && block->start < size_; block = block->next.get()) {
        check = adler32_z(check, block->bytes.data(), std::min(block->end(), size_) - block->start);
    }
    return static_cast<std::uint32_t>(check);
}

} // namespace qel
