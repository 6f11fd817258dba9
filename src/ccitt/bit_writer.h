#pragma once

// Writing coded bits, in the two orders of bit_reader.h.

#include "ccitt/encode_tables.h"
#include "foundation/bits.h"

#include <cstdint>

namespace tilepress::g4 {

/// A plain byte stream. Each flush stores eight bytes, so as many must follow the
/// last one that is coded; after it there is room for kFree bits.
struct PlainWriter {
    static constexpr unsigned kFree = 56;
    unsigned char* p;
    std::uint64_t acc = 0;  // the first bit not yet passed by p is the highest
    unsigned count = 0;     // bits in it

    void put(CodeWord code) {
        acc |= (std::uint64_t{code.bits} << 48) >> count;
        count += code.length;
    }
    void flush() {
        storeWord(p, acc);
        p += count >> 3;
        acc <<= count & ~7u;
        count &= 7;
    }
};

/// Sixteen-bit words, first bit highest. Stores no word that holds no coded bit.
struct WordWriter {
    static constexpr unsigned kFree = 48;
    std::uint16_t* p;
    std::uint64_t acc = 0;
    unsigned count = 0;

    void put(CodeWord code) {
        acc |= (std::uint64_t{code.bits} << 48) >> count;
        count += code.length;
    }
    void flush() {
        for (; count >= 16; count -= 16, acc <<= 16) *p++ = static_cast<std::uint16_t>(acc >> 48);
    }
    /// After a flush: stores the last word, its low bits 0.
    void finish() {
        if (count != 0) *p = static_cast<std::uint16_t>(acc >> 48);
    }
    std::int64_t bitsSince(const std::uint16_t* start) const { return 16 * std::int64_t{p - start} + count; }
};

}  // namespace tilepress::g4
