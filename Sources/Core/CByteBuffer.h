// A block of bytes of a fixed size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qel {

// Owns `size` bytes, up to 32 of them inside the object. The bytes of a fresh allocation are not initialised.
// Copies are deep. Running out of memory ends the process, so whoever takes a size from outside data checks
// it first.
class CByteBuffer
{
public:
    static constexpr std::size_t kInlineBytes = 32;

    CByteBuffer() noexcept : data_(inline_) {}
    explicit CByteBuffer(std::span<const std::uint8_t> bytes) : CByteBuffer() { assign(bytes); }
    CByteBuffer(const CByteBuffer& other) : CByteBuffer() { assign(other.bytes()); }
    CByteBuffer(CByteBuffer&& other) noexcept : CByteBuffer() { take(other); }
    CByteBuffer& operator=(const CByteBuffer& other);
    CByteBuffer& operator=(CByteBuffer&& other) noexcept;
    ~CByteBuffer() { release(); }

    // Drops the contents and makes room for `size` bytes.
    void allocate(std::size_t size);
    void assign(std::span<const std::uint8_t> bytes);
    // Drops the contents and frees the memory.
    void release();

    std::uint8_t* data() { return data_; }
    const std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }
    bool isEmpty() const { return size_ == 0; }
    std::span<const std::uint8_t> bytes() const { return {data_, size_}; }

    friend bool operator==(const CByteBuffer& a, const CByteBuffer& b);

private:
    void take(CByteBuffer& other) noexcept;

    std::uint8_t* data_;
    std::size_t size_ = 0;
    std::uint8_t inline_[kInlineBytes];
};

} // namespace qel
