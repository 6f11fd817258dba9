#pragma once

// Reading coded bits. There are two orders of coded bytes: plain, as the image
// class keeps its tiles, and word order, in which the two bytes of every 16-bit
// pair are exchanged, as the plain functions take them.

#include "foundation/bits.h"

#include <cstdint>

namespace tilepress::g4 {

/// Coded data and how much of it exists; bits past its end read as 0.
struct CodedData {
    const unsigned char* bytes;
    std::int64_t length;  // in bytes; negative: unknown, reads are not bounded
    bool wordOrder;

    unsigned byteAt(std::int64_t p) const {
        const std::int64_t offset = wordOrder ? p ^ 1 : p;
        return p < 0 || (length >= 0 && offset >= length) ? 0 : bytes[offset];
    }
    /// The next `count` <= 24 bits.
    std::uint32_t peek(std::int64_t bit, unsigned count) const {
        const std::int64_t p = bit >> 3;
        std::uint32_t v = 0;
        for (int i = 0; i < 4; ++i) v = v << 8 | byteAt(p + i);
        return v << (bit & 7) >> (32 - count);
    }
};

/// Accumulator whose highest bit is the next one, refilled eight bytes at a time
/// without a branch: at least `kRefilled` bits are there after a refill. Bits of
/// the accumulator past the counted ones are those that the next refill brings again.
struct PlainBits {
    static constexpr int kRefilled = 56;
    const unsigned char* p;
    std::uint64_t acc = 0;
    unsigned count = 0;

    PlainBits(const unsigned char* data, std::int64_t bit) : p(data + (bit >> 3)) {
        refill();
        drop(static_cast<unsigned>(bit & 7));
    }
    void refill() {
        acc |= loadWord(p) >> count;
        p += (63 - count) >> 3;
        count |= 56;
    }
    std::size_t top(unsigned n) const { return static_cast<std::size_t>(acc >> (64 - n)); }
    void drop(unsigned n) {
        acc <<= n;
        count -= n;
    }
    std::int64_t position(const unsigned char* data) const { return 8 * std::int64_t{p - data} - count; }
};

/// The same for word order.
struct WordBits {
    static constexpr int kRefilled = 48;
    const unsigned char* p;
    std::uint64_t acc = 0;
    unsigned count = 0;

    WordBits(const unsigned char* data, std::int64_t bit) : p(data + (bit >> 4) * 2) {
        refill();
        drop(static_cast<unsigned>(bit & 15));
    }
    void refill() {
        const std::uint64_t v = loadWord(p), low = 0x00FF00FF00FF00FF;
        acc |= ((v & low) << 8 | (v >> 8 & low)) >> count;
        const unsigned words = (63 - count) >> 4;
        p += 2 * words;
        count += 16 * words;
    }
    std::size_t top(unsigned n) const { return static_cast<std::size_t>(acc >> (64 - n)); }
    void drop(unsigned n) {
        acc <<= n;
        count -= n;
    }
    std::int64_t position(const unsigned char* data) const { return 8 * std::int64_t{p - data} - count; }
};

}  // namespace tilepress::g4
