// The pool of sample and state buffers of one plug-in instance.
#pragma once

#include "CAudioMemory.h"
#include "CBufferRef.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace qel {

// Up to 2048 reference-counted buffers, named by CBufferRef. A slot gets memory of the graph's own when it is
// first needed, 64-byte aligned, and keeps it until the pool dies; the table of slots grows as they are used.
//
// Capacities are the classes of that memory, and free slots are kept by capacity. A request takes a free slot
// of its own capacity, otherwise one that has no memory yet. So a second round of the same requests finds
// what the first one left, whatever the order of releases. Only when all slots have memory does a request
// take a larger slot or make a smaller one grow; growing drops the old contents, which nobody refers to.
//
// Audio thread only (construction and destruction where no audio runs). A fresh buffer's contents are not
// defined. Refusals: no free slot, no memory or more than 2 GiB give the none reference; an addRef or
// release of what is not in use does nothing. Both are counted and neither touches memory it should not.
class CBufferPool
{
public:
    static constexpr std::size_t kSlots = 2048;
    static constexpr std::size_t kAlignment = CAudioMemory::kAlignment;

    explicit CBufferPool(CAudioMemory& memory);
    ~CBufferPool();
    CBufferPool(const CBufferPool&) = delete;
    CBufferPool& operator=(const CBufferPool&) = delete;

    // A buffer of at least `bytes`, with a count of 1.
    CBufferRef allocate(std::size_t bytes)
    {
        const std::size_t sizeClass = CAudioMemory::classOf(bytes);
        if (sizeClass >= kClasses || freeByClass_[sizeClass] == kEnd) {
            return allocateElsewhere(bytes, sizeClass);
        }
        return use(pop(freeByClass_[sizeClass]), bytes);
    }
    void addRef(CBufferRef ref)
    {
        if (!isInUse(ref)) {
            ++refusals_;
            return;
        }
        ++slots_[ref.slot()].refCount;
    }
    // At a count of 1 the slot becomes free.
    void release(CBufferRef ref)
    {
        if (!isInUse(ref)) {
            ++refusals_;
            return;
        }
        if (--slots_[ref.slot()].refCount == 0) {
            --slotsInUse_;
            putFree(static_cast<std::int16_t>(ref.slot()));
        }
    }

    // Where the reference points, offset included; null for none. Valid until the slot is allocated anew.
    std::byte* address(CBufferRef ref) const
    {
        std::byte* memory = ref.slot() < slots_.size() ? slots_[ref.slot()].memory : nullptr;
        return memory ? memory + ref.byteOffset() : nullptr;
    }

    // Tells the uses of a slot apart: another number from one allocation to the next, until it comes round.
    std::uint16_t generation(CBufferRef ref) const { return slots_[ref.slot()].generation; }
    // What was asked for; the memory may be larger.
    std::size_t bytes(CBufferRef ref) const { return slots_[ref.slot()].bytes; }
    bool isInUse(CBufferRef ref) const
    {
        return ref.slot() < slots_.size() && slots_[ref.slot()].refCount > 0;
    }

    // --- for tests and tools
    std::int32_t refCount(CBufferRef ref) const;
    std::size_t capacity(CBufferRef ref) const;
    std::size_t slotsInUse() const { return slotsInUse_; }
    std::size_t bytesHeld() const { return bytesHeld_; }
    std::size_t refusals() const { return refusals_; }

private:
    static constexpr std::size_t kClasses = CAudioMemory::kClasses;
    static constexpr std::int16_t kEnd = -1;

    struct Slot
    {
        std::byte* memory = nullptr;
        std::uint32_t capacity = 0;
        std::uint32_t bytes = 0;
        std::int32_t refCount = 0; // 0 while free
        std::int16_t nextFree = kEnd;
        std::uint16_t generation = 0;
    };

    std::int16_t pop(std::int16_t& head)
    {
        return std::exchange(head, slots_[static_cast<std::size_t>(head)].nextFree);
    }
    void putFree(std::int16_t index)
    {
        Slot& slot = slots_[static_cast<std::size_t>(index)];
        std::int16_t& head =
            slot.capacity == 0 ? freeWithoutMemory_ : freeByClass_[CAudioMemory::classOf(slot.capacity)];
        slot.nextFree = std::exchange(head, index);
    }
    CBufferRef use(std::int16_t index, std::size_t bytes)
    {
        Slot& slot = slots_[static_cast<std::size_t>(index)];
        slot.bytes = static_cast<std::uint32_t>(bytes);
        slot.refCount = 1;
        ++slot.generation;
        ++slotsInUse_;
        return {static_cast<std::uint32_t>(index)};
    }
    // A slot without memory or of another capacity, made large enough.
    CBufferRef allocateElsewhere(std::size_t bytes, std::size_t sizeClass);
    std::int16_t takeFreeElsewhere(std::size_t sizeClass);
    void addSlots(std::size_t count);
    bool grow(Slot& slot, std::size_t sizeClass);

    CAudioMemory& memory_;
    CAudioVector<Slot> slots_;
    std::array<std::int16_t, kClasses> freeByClass_;
    std::int16_t freeWithoutMemory_ = kEnd;
    std::size_t slotsInUse_ = 0;
    std::size_t bytesHeld_ = 0;
    std::size_t refusals_ = 0;
};

} // namespace qel
