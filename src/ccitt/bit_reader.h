#pragma once

// Reading coded bits. There are two orders of coded bytes: plain, as the image
// class keeps its tiles, and word order, in which the two bytes of every 16-bit
// pair are exchanged, as the plain functions take them.

#include "foundation/bits.h"

#include <cstddef>
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

/// Bytes of coded data as a word, the next bit highest; `unit` is 8 for plain order, 16 for word order.
template <class Word, unsigned unit>
inline Word codedWord(const unsigned char* p) {
    Word v = loadWord<Word>(p);
    if constexpr (unit == 16) {
        constexpr Word low = static_cast<Word>(0x00FF00FF00FF00FF);
        v = (v & low) << 8 | (v >> 8 & low);
    }
    return v;
}

/// Accumulator whose highest bit is the next one, refilled a word at a time without a branch: at least `kRefilled` bits
/// are there after a refill. Bits of the accumulator past the counted ones are those that the next refill brings again.
template <class Word, unsigned unit>
struct CodedBits {
    static constexpr unsigned kWordBits = kBitsOf<Word>, kRefilled = kWordBits - unit;
    const unsigned char* p;
    Word acc = 0;
    unsigned count = 0;

    /// From `bit` >= 0 on.
    CodedBits(const unsigned char* data, std::int64_t bit)
        : p(data + static_cast<std::size_t>(static_cast<std::uint64_t>(bit) / unit * (unit / 8))) {
        refill();
        drop(static_cast<unsigned>(bit) % unit);
    }
    void refill() {
        acc |= codedWord<Word, unit>(p) >> count;
        p += (count ^ (kWordBits - 1)) / unit * (unit / 8);  // the words that are not there
        count |= kRefilled;
    }
    std::size_t top(unsigned n) const { return static_cast<std::size_t>(acc >> (kWordBits - n)); }
    void drop(unsigned n) {
        acc <<= n;
        count -= n;
    }
    std::int64_t position(const unsigned char* data) const { return 8 * std::int64_t{p - data} - count; }
};

using PlainBits = CodedBits<MachineWord, 8>;
using WordBits = CodedBits<MachineWord, 16>;

}  // namespace tilepress::g4
