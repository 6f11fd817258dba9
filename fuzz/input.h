#pragma once

// A fuzz input as numbers and bytes; zeros when there are no more.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

/// Ends the run where a promise is broken.
#define PROMISE(condition)                                                         \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (false)

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    std::uint32_t u8() { return number(1); }
    std::uint32_t u16() { return number(2); }
    std::uint32_t u32() { return number(4); }
    /// 0 to n - 1.
    std::uint32_t below(std::uint32_t n) { return n <= 256 ? u8() % n : u16() % n; }
    /// 1 to n.
    std::uint32_t upTo(std::uint32_t n) { return 1 + below(n); }
    /// `count` bytes, or as many as are left.
    std::vector<unsigned char> bytes(std::size_t count) {
        count = count < left_ ? count : left_;
        std::vector<unsigned char> out(next_, next_ + count);
        next_ += count;
        left_ -= count;
        return out;
    }
    std::vector<unsigned char> rest() { return bytes(left_); }
    std::size_t left() const { return left_; }

private:
    std::uint32_t number(std::size_t size) {
        std::uint32_t value = 0;
        for (; size > 0 && left_ > 0; --size, --left_) value = value << 8 | *next_++;
        return value;
    }

    const std::uint8_t* next_;
    std::size_t left_;
};

/// Arrays of exactly that size, so that sanitizers see a step outside.
template <class T>
std::unique_ptr<T[]> exactly(std::size_t count) {
    return std::make_unique<T[]>(count ? count : 1);
}
inline std::unique_ptr<unsigned char[]> exactly(const std::vector<unsigned char>& bytes) {
    auto copy = exactly<unsigned char>(bytes.size());
    std::memcpy(copy.get(), bytes.data(), bytes.size());
    return copy;
}
