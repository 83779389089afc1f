// How the graph names sample memory.
#pragma once

#include <cstdint>

namespace qel {

// A slot of the buffer pool and a byte offset into its memory, in 32 bits: the low 12 the slot, the upper 20
// the signed offset. A plain value: copying one does not count as a use, CKernelContext::addRef does. It
// holds no address, so it stays right when its slot's memory moves. The offset reaches 512 KiB (65535
// samples) either way; advancing past that is the caller's fault and wraps.
struct CBufferRef
{
    static constexpr std::uint32_t kNoneBits = 0xFFFFFFFF;
    static constexpr int kSlotBits = 12;
    // One sample is 8 bytes, hence 3 bits above the slot.
    static constexpr int kSampleShift = kSlotBits + 3;

    std::uint32_t bits = kNoneBits;

    constexpr bool isNone() const { return bits == kNoneBits; }
    constexpr std::uint32_t slot() const { return bits & ((1U << kSlotBits) - 1); }
    constexpr std::int32_t byteOffset() const { return static_cast<std::int32_t>(bits) >> kSlotBits; }
    // The same buffer that many samples further on (or back, when negative). "None" stays none.
    constexpr CBufferRef advancedBy(std::int32_t samples) const
    {
        return isNone() ? *this : CBufferRef{bits + (static_cast<std::uint32_t>(samples) << kSampleShift)};
    }

    friend constexpr bool operator==(CBufferRef, CBufferRef) = default;
};

} // namespace qel
