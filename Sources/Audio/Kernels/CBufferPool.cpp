// The pool of sample and state buffers of one plug-in instance.
#include "CBufferPool.h"

#include <algorithm>

namespace qel {

namespace {

// What a stereo instance uses while one stream with everything on takes over from another.
constexpr std::size_t kFirstSlots = 384;

} // namespace

CBufferPool::CBufferPool(CAudioMemory& memory) : memory_(memory), slots_(CAudioAllocator<Slot>(memory))
{
    freeByClass_.fill(kEnd);
    addSlots(kFirstSlots);
}

void CBufferPool::addSlots(std::size_t count)
{
    const std::size_t first = slots_.size();
    slots_.resize(first + count);
    for (std::size_t i = slots_.size(); i-- > first;) {
        putFree(static_cast<std::int16_t>(i));
    }
}

CBufferPool::~CBufferPool()
{
    for (Slot& slot : slots_) {
        memory_.giveBack(slot.memory, slot.capacity);
    }
}

CBufferRef CBufferPool::allocateElsewhere(std::size_t bytes, std::size_t sizeClass)
{
    const std::int16_t index = sizeClass < kClasses ? takeFreeElsewhere(sizeClass) : kEnd;
    if (index == kEnd) {
        ++refusals_;
        return {};
    }
    Slot& slot = slots_[static_cast<std::size_t>(index)];
    if (slot.capacity < bytes && !grow(slot, sizeClass)) {
        putFree(index);
        ++refusals_;
        return {};
    }
    return use(index, bytes);
}

std::int32_t CBufferPool::refCount(CBufferRef ref) const
{
    return isInUse(ref) ? slots_[ref.slot()].refCount : 0;
}

std::size_t CBufferPool::capacity(CBufferRef ref) const
{
    return ref.slot() < slots_.size() ? slots_[ref.slot()].capacity : 0;
}

std::int16_t CBufferPool::takeFreeElsewhere(std::size_t sizeClass)
{
    if (freeWithoutMemory_ == kEnd && slots_.size() < kSlots) {
        addSlots(std::min(slots_.size(), kSlots - slots_.size()));
    }
    if (freeWithoutMemory_ != kEnd) {
        return pop(freeWithoutMemory_);
    }
    for (std::size_t larger = sizeClass + 1; larger < kClasses; ++larger) {
        if (freeByClass_[larger] != kEnd) {
            return pop(freeByClass_[larger]);
        }
    }
    for (std::size_t smaller = sizeClass; smaller-- > 0;) {
        if (freeByClass_[smaller] != kEnd) {
            return pop(freeByClass_[smaller]);
        }
    }
    return kEnd;
}

bool CBufferPool::grow(Slot& slot, std::size_t sizeClass)
{
    bytesHeld_ -= slot.capacity;
    memory_.giveBack(slot.memory, slot.capacity);
    const std::size_t capacity = CAudioMemory::sizeOf(sizeClass);
    slot.memory = static_cast<std::byte*>(memory_.take(capacity));
    slot.capacity = slot.memory ? static_cast<std::uint32_t>(capacity) : 0;
    bytesHeld_ += slot.capacity;
    return slot.memory != nullptr;
}

} // namespace qel
