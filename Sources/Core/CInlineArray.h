// A growing array whose first elements live inside the object.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>

namespace qel {

// Array of T with room for N elements before it touches the heap; beyond that it grows by doubling plus one.
// Elements are contiguous; growing or erasing moves them, so pointers into the array hold only until the next
// change. Element order is kept by every operation. T must be nothrow movable. At most 2^32 elements. Not
// safe for concurrent writers.
template <class T, std::size_t N>
class CInlineArray
{
    static_assert(N > 0);

public:
    CInlineArray() noexcept : data_(inlineData()) {}
    CInlineArray(std::initializer_list<T> items) : CInlineArray()
    {
        for (const T& item : items) {
            push(item);
        }
    }
    CInlineArray(const CInlineArray& other) : CInlineArray() { *this = other; }
    CInlineArray(CInlineArray&& other) noexcept : CInlineArray() { take(other); }
    CInlineArray& operator=(const CInlineArray& other)
    {
        if (this != &other) {
            clear();
            reserve(other.size_);
            for (const T& item : other) {
                push(item);
            }
        }
        return *this;
    }
    CInlineArray& operator=(CInlineArray&& other) noexcept
    {
        if (this != &other) {
            releaseMemory();
            take(other);
        }
        return *this;
    }
    ~CInlineArray()
    {
        clear();
        if (!isInline()) {
            freeHeap();
        }
    }

    std::size_t size() const { return size_; }
    std::size_t capacity() const { return capacity_; }
    bool isEmpty() const { return size_ == 0; }
    T& operator[](std::size_t index) { return data_[index]; }
    const T& operator[](std::size_t index) const { return data_[index]; }
    T* data() { return data_; }
    const T* data() const { return data_; }
    T* begin() { return data_; }
    T* end() { return data_ + size_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + size_; }
    T& last() { return data_[size_ - 1]; }

    // Adds at the end and returns the place. The item is taken by value, so it may be an element of this
    // array.
    T& push(T item)
    {
        if (size_ == capacity_) {
            regrow(2 * std::size_t{capacity_} + 1);
        }
        T* place = new (data_ + size_) T(std::move(item));
        ++size_;
        return *place;
    }
    // Puts an item in front of the element at `index`, which may be the end.
    void insert(std::size_t index, T item)
    {
        push(std::move(item));
        std::rotate(data_ + index, data_ + size_ - 1, data_ + size_);
    }
    // Removes one element; the rest move up.
    void erase(std::size_t index)
    {
        std::move(data_ + index + 1, data_ + size_, data_ + index);
        --size_;
        std::destroy_at(data_ + size_);
    }
    // Removes the first element equal to `item`; false if there is none.
    bool eraseFirst(const T& item)
    {
        for (std::size_t i = 0; i < size_; ++i) {
            if (data_[i] == item) {
                erase(i);
                return true;
            }
        }
        return false;
    }
    // The same from the end.
    bool eraseLast(const T& item)
    {
        for (std::size_t i = size_; i-- > 0;) {
            if (data_[i] == item) {
                erase(i);
                return true;
            }
        }
        return false;
    }
    // Shortens, or lengthens with copies of `fill`.
    void resize(std::size_t size, const T& fill = T())
    {
        while (size_ > size) {
            --size_;
            std::destroy_at(data_ + size_);
        }
        reserve(size);
        while (size_ < size) {
            new (data_ + size_) T(fill);
            ++size_;
        }
    }
    void reserve(std::size_t capacity)
    {
        if (capacity > capacity_) {
            regrow(capacity);
        }
    }
    void clear()
    {
        std::destroy(begin(), end());
        size_ = 0;
    }

private:
    T* inlineData() { return reinterpret_cast<T*>(inline_); }
    bool isInline() { return data_ == inlineData(); }
    // Out of line: growing is rare, and the callers stay small enough to be inlined.
    [[gnu::noinline]] void regrow(std::size_t capacity)
    {
        T* memory = std::allocator<T>().allocate(capacity);
        std::uninitialized_move(begin(), end(), memory);
        const std::uint32_t size = size_;
        releaseMemory();
        data_ = memory;
        size_ = size;
        capacity_ = static_cast<std::uint32_t>(capacity);
    }
    void releaseMemory()
    {
        clear();
        if (!isInline()) {
            freeHeap();
        }
        data_ = inlineData();
        capacity_ = N;
    }
    void freeHeap() { std::allocator<T>().deallocate(data_, capacity_); }
    // Takes what `other` holds; this array is empty and inline.
    void take(CInlineArray& other) noexcept
    {
        if (other.isInline()) {
            std::uninitialized_move(other.begin(), other.end(), data_);
            size_ = other.size_;
            other.clear();
            return;
        }
        data_ = std::exchange(other.data_, other.inlineData());
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, N);
    }

    T* data_;
    std::uint32_t size_ = 0;
    std::uint32_t capacity_ = N;
    alignas(T) std::byte inline_[N * sizeof(T)];
};

} // namespace qel
