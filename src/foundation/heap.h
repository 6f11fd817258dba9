#pragma once

// Blocks from the C heap that are freed on an early return.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace tilepress {

/// `count` zeroed elements from calloc, or null; also null when the size does not fit.
template <class T>
T* allocate(std::uint64_t count) {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    return static_cast<T*>(std::calloc(count ? static_cast<std::size_t>(count) : 1, sizeof(T)));
}

/// The same from malloc, for who writes every element.
template <class T>
T* allocateUnset(std::uint64_t count) {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    return static_cast<T*>(std::malloc(count ? static_cast<std::size_t>(count) * sizeof(T) : 1));
}

/// Owns a block; release() where ownership leaves us.
template <class T>
class Heap {
public:
    Heap() = default;
    explicit Heap(T* block) : block_(block) {}
    explicit Heap(std::uint64_t count) : block_(allocate<T>(count)) {}
    Heap(const Heap&) = delete;
    Heap& operator=(const Heap&) = delete;
    ~Heap() { std::free(block_); }

    explicit operator bool() const { return block_ != nullptr; }
    T* get() const { return block_; }
    /// `count` zeroed elements instead of what it holds; false when memory runs out.
    bool reserve(std::uint64_t count) {
        std::free(block_);
        block_ = allocate<T>(count);
        return block_ != nullptr;
    }
    T& operator[](std::size_t i) const { return block_[i]; }
    T* operator->() const { return block_; }
    T* release() {
        T* block = block_;
        block_ = nullptr;
        return block;
    }
    /// For functions that hand a block out through a pointer.
    T** out() { return &block_; }

private:
    T* block_ = nullptr;
};

}  // namespace tilepress
