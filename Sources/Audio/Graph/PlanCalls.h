// What a CAudioPlanBuilder has written down of a step.
#pragma once

#include "CKernelContext.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace qel {

class CAudioWholeModule;

namespace plan {

using Index = std::uint16_t; // of a call, a buffer or a value
inline constexpr Index kNone = 0xFFFF;

inline constexpr std::size_t kMaxCalls = 512;
inline constexpr std::size_t kMaxBuffers = 1024;
inline constexpr std::size_t kMaxValues = 3072;

enum class EKind : std::uint8_t
{
    kInput,
    kState, // outlives the step
    kTemporary
};

// One use of a slot of the pool. A value is the number of a content.
struct Buffer
{
    CBufferRef ref;
    std::uint16_t generation;
    EKind kind;
    std::uint8_t signal;
    bool isHidden; // between the parts of a unit alone, so it needs no memory
    Index first;   // value at the start of the step
    Index value;   // behind the calls looked at so far
    Index held;    // the same without those that are left out
    Index lastUse; // the unit behind which nobody reads it
    Index memory;  // among the buffers between calls
};

struct Call
{
    const CKernelEntry* entry; // null: a whole module
    CAudioWholeModule* module;
    std::size_t channelCount; // of the module
    double scalar;
    std::uint32_t count;
    std::uint32_t ratio; // of the count to the step's
    std::uint8_t operandCount;
    bool isLeftOut; // another one stands in for it
    Index standIn;  // if it is left out
    Index nextInBucket;
    std::array<Index, kMaxKernelOperands> buffers;
    std::array<Index, kMaxKernelOperands> sources; // buffers that hold the same in the plan
    std::array<Index, kMaxKernelOperands> before;  // values; kNone where nothing was there
    std::array<Index, kMaxKernelOperands> after;   // of operands that are written

    bool writes(std::size_t operand) const { return entry && (entry->writeMask >> operand & 1) != 0; }
};

// Whether two states hold the same.
inline bool haveSameBits(const CBufferPool& pool, CBufferRef a, CBufferRef b)
{
    const std::size_t bytes = pool.bytes(a);
    return pool.bytes(b) == bytes && std::memcmp(pool.address(a), pool.address(b), bytes) == 0;
}

} // namespace plan

} // namespace qel
