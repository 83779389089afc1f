// Reads the encoded nodes of a compiled tree.
#pragma once

#include "CError.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace qel {

// A position in a block of memory that holds encoded nodes. Every read is checked against the end, and gives
// an error rather than leave the block. The block must outlive the cursor and the views it hands out. It also
// counts how deep nodes are nested, since decoding recurses: data may not exhaust the stack.
class CNodeCursor
{
public:
    static constexpr int kMaxDepth = 128; // a host's thread may have a small stack

    explicit CNodeCursor(std::span<const std::uint8_t> data) : data_(data) {}

    CError readU32(std::uint32_t& out)
    {
        if (data_.size() - position_ < 4) {
            return failTruncated();
        }
        const std::uint8_t* const bytes = data_.data() + position_;
        out = bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
        position_ += 4;
        return {};
    }
    // A u32 byte count and that many bytes, without a terminator.
    CError readBytes(std::string_view& out);
    CError skipString();

    CError enterNode();
    void leaveNode() { --depth_; }

    std::size_t position() const { return position_; }
    bool isAtEnd() const { return position_ == data_.size(); }

private:
    CError failTruncated() const;

    std::span<const std::uint8_t> data_;
    std::size_t position_ = 0;
    int depth_ = 0;
};

} // namespace qel
