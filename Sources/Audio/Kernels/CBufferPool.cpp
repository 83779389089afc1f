// The pool of sample and state buffers of one plug-in instance.
#include "Kernels/CBufferPool.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

namespace qel {

namespace {

constexpr std::align_val_t kAlign{CBufferPool::kAlignment};

std::size_t classOf(std::size_t bytes)
{
    const std::size_t units = (std::max<std::size_t>(bytes, 1) - 1) / CBufferPool::kAlignment;
    return static_cast<std::size_t>(std::bit_width(units));
}

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

CBufferRef CBufferPool::allocate(std::size_t bytes)
{
    const std::size_t sizeClass = classOf(bytes);
    const std::int16_t index = sizeClass < kClasses ? takeFree(sizeClass) : kEnd;
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
    slot.refCount = 1;
    ++slotsInUse_;
    return {static_cast<std::uint32_t>(index)};
}

void CBufferPool::addRef(CBufferRef ref)
{
    if (!isInUse(ref)) {
        ++refusals_;
        return;
    }
    ++slots_[ref.slot()].refCount;
}

void CBufferPool::release(CBufferRef ref)
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

std::int32_t CBufferPool::refCount(CBufferRef ref) const
{
    return isInUse(ref) ? slots_[ref.slot()].refCount : 0;
}

std::size_t CBufferPool::capacity(CBufferRef ref) const
{
    return ref.slot() < kSlots ? slots_[ref.slot()].capacity : 0;
}

std::int16_t CBufferPool::takeFree(std::size_t sizeClass)
{
    const auto pop = [this](std::int16_t& head) {
        return std::exchange(head, slots_[static_cast<std::size_t>(head)].nextFree);
    };
    if (freeByClass_[sizeClass] != kEnd) {
        return pop(freeByClass_[sizeClass]);
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

void CBufferPool::putFree(std::int16_t index)
{
    Slot& slot = slots_[static_cast<std::size_t>(index)];
    std::int16_t& head = slot.capacity == 0 ? freeWithoutMemory_ : freeByClass_[classOf(slot.capacity)];
    slot.nextFree = std::exchange(head, index);
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
