#pragma once

// Writing coded bits, in the two orders of bit_reader.h.

#include "ccitt/encode_tables.h"
#include "foundation/bits.h"

#include <cstdint>

namespace tilepress::g4 {

/// Accumulator whose highest bit is the first one that is not yet stored.
struct CodeAccumulator {
    MachineWord acc = 0;
    unsigned count = 0;  // bits in it

    void put(CodeWord code) {
        acc |= (MachineWord{code.bits} << (kBitsOf<MachineWord> - 16)) >> count;
        count += code.length;
    }
};

/// A plain byte stream. Each flush stores a word, so as many bytes must follow the
/// last one that is coded; after it there is room for kFree bits.
struct PlainWriter : CodeAccumulator {
    static constexpr unsigned kFree = kBitsOf<MachineWord> - 8;
    unsigned char* p;

    explicit PlainWriter(unsigned char* to) : p(to) {}
    void flush() {
        storeWord(p, acc);
        p += count >> 3;
        acc <<= count & ~7u;
        count &= 7;
    }
};

/// Sixteen-bit words, first bit highest. Stores no word that holds no coded bit.
struct WordWriter : CodeAccumulator {
    static constexpr unsigned kFree = kBitsOf<MachineWord> - 16;
    std::uint16_t* p;

    explicit WordWriter(std::uint16_t* to) : p(to) {}
    void flush() {
        for (; count >= 16; count -= 16, acc <<= 16) *p++ = first();
    }
    /// After a flush: stores the last word, its low bits 0.
    void finish() {
        if (count != 0) *p = first();
    }
    std::int64_t bitsSince(const std::uint16_t* start) const { return 16 * std::int64_t{p - start} + count; }

private:
    std::uint16_t first() const { return static_cast<std::uint16_t>(acc >> (kBitsOf<MachineWord> - 16)); }
};

}  // namespace tilepress::g4
