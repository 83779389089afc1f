// Little-endian bytes, written to and read from memory.
#pragma once

#include "TreeCompiler/ToolError.h"

#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qel::tools {

class CByteWriter
{
public:
    std::size_t size() const { return bytes_.size(); }
    std::vector<std::uint8_t> take() { return std::move(bytes_); }

    void put(std::span<const std::uint8_t> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    void putU8(std::uint8_t value) { bytes_.push_back(value); }
    void putU16(std::uint16_t value) { putLittleEndian(value, 2); }
    void putU32(std::uint32_t value) { putLittleEndian(value, 4); }
    void putI32(std::int32_t value) { putU32(static_cast<std::uint32_t>(value)); }
    void putF64(double value) { putLittleEndian(std::bit_cast<std::uint64_t>(value), 8); }
    // Its length in bytes, then the bytes.
    void putString(std::string_view text)
    {
        putU32(static_cast<std::uint32_t>(text.size()));
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }
    // Replaces four bytes that were written before.
    void setU32(std::size_t position, std::uint32_t value)
    {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes_[position + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }

private:
    void putLittleEndian(std::uint64_t value, int count)
    {
        for (int i = 0; i < count; ++i) {
            bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    }

    std::vector<std::uint8_t> bytes_;
};

// Every read is checked against the end; faults throw CToolError with the offset.
class CByteReader
{
public:
    explicit CByteReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::size_t position() const { return position_; }
    std::size_t remaining() const { return bytes_.size() - position_; }

    std::span<const std::uint8_t> get(std::size_t count)
    {
        if (count > remaining()) {
            fail("the data end early: " + std::to_string(count) + " bytes expected, " +
                 std::to_string(remaining()) + " left");
        }
        position_ += count;
        return bytes_.subspan(position_ - count, count);
    }
    std::uint8_t getU8() { return get(1)[0]; }
    std::uint16_t getU16() { return static_cast<std::uint16_t>(getLittleEndian(2)); }
    std::uint32_t getU32() { return static_cast<std::uint32_t>(getLittleEndian(4)); }
    std::int32_t getI32() { return static_cast<std::int32_t>(getU32()); }
    double getF64() { return std::bit_cast<double>(getLittleEndian(8)); }
    std::string getString()
    {
        const auto text = get(getU32());
        return {text.begin(), text.end()};
    }
    // A count of items that take at least `leastBytes` each: more than the data can hold is refused before
    // anything is allocated for them.
    std::size_t getCount(std::size_t leastBytes)
    {
        const std::size_t count = getU32();
        if (count > remaining() / leastBytes) {
            fail("a count of " + std::to_string(count) + " is more than the data can hold");
        }
        return count;
    }
    void seek(std::size_t position)
    {
        if (position > bytes_.size()) {
            fail("offset " + std::to_string(position) + " lies behind the end");
        }
        position_ = position;
    }

    [[noreturn]] void fail(const std::string& what) const
    {
        throw CToolError("offset " + std::to_string(position_) + ": " + what);
    }

private:
    std::uint64_t getLittleEndian(std::size_t count)
    {
        std::uint64_t value = 0;
        const auto bytes = get(count);
        for (std::size_t i = 0; i < count; ++i) {
            value |= static_cast<std::uint64_t>(bytes[i]) << (8 * i);
        }
        return value;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
};

} // namespace qel::tools
