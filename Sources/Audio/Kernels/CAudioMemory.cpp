// The memory that a graph takes while it runs.
#include "CAudioMemory.h"

#include <bit>
#include <new>

namespace qel {

namespace {

constexpr std::align_val_t kAlign{CAudioMemory::kAlignment};
constexpr std::size_t kSmallestPage = 4096; // of the systems there are

} // namespace

CAudioMemory::~CAudioMemory()
{
    for (Block* block : {blocks_, provided_.load()}) {
        while (block) {
            Block* const following = block->next;
            ::operator delete(block, kAlign);
            block = following;
        }
    }
}

// --- blocks

CAudioMemory::Block* CAudioMemory::makeBlock(std::size_t bytes)
{
    void* const memory = ::operator new(sizeof(Block) + bytes, kAlign, std::nothrow);
    return memory ? new (memory) Block{nullptr, sizeof(Block) + bytes} : nullptr;
}

void CAudioMemory::provide(std::size_t bytes)
{
    Block* const block = makeBlock(bytes);
    if (!block) {
        return;
    }
    // A page that nobody has touched costs the first who does.
    volatile std::byte* const memory = reinterpret_cast<std::byte*>(block + 1);
    for (std::size_t i = 0; i < bytes; i += kSmallestPage) {
        memory[i] = std::byte{0};
    }
    memory[bytes - 1] = std::byte{0};
    block->next = provided_.load(std::memory_order_relaxed);
    while (!provided_.compare_exchange_weak(block->next, block, std::memory_order_release,
                                            std::memory_order_relaxed)) {
    }
}

// --- audio thread

void* CAudioMemory::take(std::size_t bytes)
{
    const std::size_t sizeClass = classOf(bytes);
    if (sizeClass >= kClasses) {
        return nullptr;
    }
    const std::size_t size = sizeOf(sizeClass);
    bytesTaken_ += size;
    if (Free* const found = free_[sizeClass]) {
        free_[sizeClass] = found->next;
        return found;
    }
    Block* block = provided_.exchange(nullptr, std::memory_order_acquire);
    while (block) {
        open(*std::exchange(block, block->next));
    }
    if (static_cast<std::size_t>(end_ - next_) >= size) {
        return std::exchange(next_, next_ + size);
    }
    if (void* const memory = cutFree(sizeClass)) {
        return memory;
    }
    ++shortfalls_;
    Block* const more = makeBlock(size);
    if (!more) {
        bytesTaken_ -= size;
        return nullptr;
    }
    open(*more);
    return std::exchange(next_, next_ + size);
}

void CAudioMemory::open(Block& block)
{
    keepRest();
    block.next = std::exchange(blocks_, &block);
    next_ = reinterpret_cast<std::byte*>(&block + 1);
    end_ = reinterpret_cast<std::byte*>(&block) + block.bytes;
}

// What is left of the open block goes among the free pieces, in as few as there can be.
void CAudioMemory::keepRest()
{
    for (std::size_t sizeClass = kClasses; sizeClass-- > 0;) {
        const std::size_t size = sizeOf(sizeClass);
        while (static_cast<std::size_t>(end_ - next_) >= size) {
            keep(std::exchange(next_, next_ + size), sizeClass);
        }
    }
}

void* CAudioMemory::cutFree(std::size_t sizeClass)
{
    for (std::size_t larger = sizeClass + 1; larger < kClasses; ++larger) {
        if (Free* const found = free_[larger]) {
            free_[larger] = found->next;
            keepRest();
            next_ = reinterpret_cast<std::byte*>(found);
            end_ = next_ + sizeOf(larger);
            return std::exchange(next_, next_ + sizeOf(sizeClass));
        }
    }
    return nullptr;
}

void CAudioMemory::keep(void* memory, std::size_t sizeClass)
{
    free_[sizeClass] = new (memory) Free{free_[sizeClass]};
}

void CAudioMemory::giveBack(void* memory, std::size_t bytes)
{
    if (memory) {
        const std::size_t sizeClass = classOf(bytes);
        bytesTaken_ -= sizeOf(sizeClass);
        keep(memory, sizeClass);
    }
}

} // namespace qel
