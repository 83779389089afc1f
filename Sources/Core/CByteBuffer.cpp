// A block of bytes of a fixed size.
#include "CByteBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace qel {

CByteBuffer& CByteBuffer::operator=(const CByteBuffer& other)
{
    if (this != &other) {
        assign(other.bytes());
    }
    return *this;
}

CByteBuffer& CByteBuffer::operator=(CByteBuffer&& other) noexcept
{
    if (this != &other) {
        release();
        take(other);
    }
    return *this;
}

void CByteBuffer::allocate(std::size_t size)
{
    release();
    if (size > kInlineBytes) {
        data_ = static_cast<std::uint8_t*>(std::malloc(size));
        if (!data_) {
            std::abort();
        }
    }
    size_ = size;
}

void CByteBuffer::assign(std::span<const std::uint8_t> bytes)
{
    allocate(bytes.size());
    std::copy(bytes.begin(), bytes.end(), data_);
}

void CByteBuffer::release()
{
    if (data_ != inline_) {
        std::free(data_);
    }
    data_ = inline_;
    size_ = 0;
}

void CByteBuffer::take(CByteBuffer& other) noexcept
{
    size_ = other.size_;
    if (other.data_ == other.inline_) {
        std::memcpy(inline_, other.inline_, sizeof inline_);
    } else {
        data_ = other.data_;
        other.data_ = other.inline_;
    }
    other.size_ = 0;
}

bool operator==(const CByteBuffer& a, const CByteBuffer& b)
{
    return std::ranges::equal(a.bytes(), b.bytes());
}

} // namespace qel
