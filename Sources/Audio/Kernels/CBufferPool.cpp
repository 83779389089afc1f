// The pool of sample and state buffers of one plug-in instance.
#include "CBufferPool.h"

#include <new>

namespace qel {

namespace {

constexpr std::align_val_t kAlign{CBufferPool::kAlignment};

} // namespace

CBufferPool::CBufferPool()
{
    freeByClass_.fill(kEnd);
    for (std::size_t i = kSlots; i-- > 0;) {
        putFree(static_cast<std::int16_t>(i));
    }
}

CBufferPool::~CBufferPool()
{
    for (Slot& slot : slots_) {
        ::operator delete(slot.memory, kAlign);
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
    return ref.slot() < kSlots ? slots_[ref.slot()].capacity : 0;
}

std::int16_t CBufferPool::takeFreeElsewhere(std::size_t sizeClass)
{
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
    ::operator delete(slot.memory, kAlign);
    const std::size_t capacity = kAlignment << sizeClass;
    slot.memory = static_cast<std::byte*>(::operator new(capacity, kAlign, std::nothrow));
    slot.capacity = slot.memory ? static_cast<std::uint32_t>(capacity) : 0;
    bytesHeld_ += slot.capacity;
    return slot.memory != nullptr;
}

} // namespace qel
