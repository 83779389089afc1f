// The memory that a graph takes while it runs.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace qel {

// A heap of the audio thread's own: control threads provide memory before it is needed, and what the audio
// thread takes and gives back stays here. So the first use of a module, a channel or a rate costs no call of
// the system's heap, whose locks other threads hold.
//
// Sizes are rounded up to classes, and what was given back is found again by its class; only when all is used
// up a larger piece is cut. Everything is aligned to 64 bytes. What has not been provided comes from the
// system's heap all the same, and is counted in shortfalls().
//
// Lives as long as the kernel context it belongs to; whatever was taken from it ends before.
class CAudioMemory
{
public:
    static constexpr std::size_t kAlignment = 64;

    // Classes of sizes: multiples of 64 bytes to 2 KiB, then four in each octave, to 2 GiB.
    static constexpr std::size_t kClasses = 112;
    // That of a size; kClasses and more for what is too large.
    static std::size_t classOf(std::size_t bytes)
    {
        const std::size_t last = (bytes - (bytes != 0)) / kAlignment;
        if (last < kSmallClasses) {
            return last;
        }
        const auto octave = static_cast<std::size_t>(std::bit_width(last / kSmallClasses)) - 1;
        return kSmallClasses + 4 * octave + (last >> (octave + 3)) - 4;
    }
    static std::size_t sizeOf(std::size_t sizeClass)
    {
        if (sizeClass < kSmallClasses) {
            return (sizeClass + 1) * kAlignment;
        }
        const std::size_t large = sizeClass - kSmallClasses;
        return ((5 + large % 4) << (large / 4 + 3)) * kAlignment;
    }

    CAudioMemory() = default;
    ~CAudioMemory();
    CAudioMemory(const CAudioMemory&) = delete;
    CAudioMemory& operator=(const CAudioMemory&) = delete;

    // --- control threads
    // Adds this much, with every page of it touched.
    void provide(std::size_t bytes);

    // --- audio thread, or while it stands still
    // Null if the system has no more.
    void* take(std::size_t bytes);
    // `bytes` as they were taken. Null is allowed.
    void giveBack(void* memory, std::size_t bytes);

    // --- for tests and tools
    // Taken now, by classes.
    std::size_t bytesTaken() const { return bytesTaken_; }
    std::size_t shortfalls() const { return shortfalls_; }

private:
    static constexpr std::size_t kSmallClasses = 32;

    // At the head of each piece that came from the system.
    struct alignas(kAlignment) Block
    {
        Block* next;
        std::size_t bytes; // with this head
    };
    struct Free
    {
        Free* next;
    };

    static Block* makeBlock(std::size_t bytes);
    void* cutFree(std::size_t sizeClass);
    void open(Block& block);
    void keepRest();
    void keep(void* memory, std::size_t sizeClass);

    std::atomic<Block*> provided_{nullptr};

    // The audio thread's own.
    Block* blocks_ = nullptr;
    std::byte* next_ = nullptr; // of the block that was opened last
    std::byte* end_ = nullptr;
    std::array<Free*, kClasses> free_{};
    std::size_t bytesTaken_ = 0;
    std::size_t shortfalls_ = 0;
};

// For containers of the graph. Without a memory it is the system's heap.
template <class T>
class CAudioAllocator
{
public:
    using value_type = T;
    using propagate_on_container_move_assignment = std::true_type;

    CAudioAllocator() = default;
    explicit CAudioAllocator(CAudioMemory& memory) : memory_(&memory) {}
    template <class Other>
    CAudioAllocator(const CAudioAllocator<Other>& other) : memory_(other.memory())
    {}

    T* allocate(std::size_t count)
    {
        const std::size_t bytes = count * sizeof(T);
        return static_cast<T*>(memory_ ? memory_->take(bytes) : ::operator new(bytes));
    }
    void deallocate(T* items, std::size_t count)
    {
        memory_ ? memory_->giveBack(items, count * sizeof(T)) : ::operator delete(items);
    }
    CAudioMemory* memory() const { return memory_; }
    bool operator==(const CAudioAllocator&) const = default;

private:
    static_assert(alignof(T) <= CAudioMemory::kAlignment);

    CAudioMemory* memory_ = nullptr;
};

template <class T>
using CAudioVector = std::vector<T, CAudioAllocator<T>>;

// An object that was made there.
template <class T>
class CAudioDelete
{
public:
    CAudioDelete() = default;
    explicit CAudioDelete(CAudioMemory& memory) : memory_(&memory) {}
    void operator()(T* object) const
    {
        std::destroy_at(object);
        memory_->giveBack(object, sizeof(T));
    }

private:
    CAudioMemory* memory_ = nullptr;
};

template <class T>
using CAudioPtr = std::unique_ptr<T, CAudioDelete<T>>;

// Null if there is no memory.
template <class T, class... Args>
CAudioPtr<T> makeAudio(CAudioMemory& memory, Args&&... args)
{
    void* const place = memory.take(sizeof(T));
    return CAudioPtr<T>(place ? new (place) T(std::forward<Args>(args)...) : nullptr,
                        CAudioDelete<T>(memory));
}

} // namespace qel
