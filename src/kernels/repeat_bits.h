#pragma once

// Packed pixels repeated over cells of a wider row.

#include "foundation/bits.h"
#include "kernels/bit_moves.h"
#include "kernels/vectors.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// Fills the cells of the set bits of `src`.
///
/// The row is one long number, its first pixel the highest bit, and `inner` are all pixels but the cells' first ones. A
/// set bit is brought to its cell's last pixel and added to the inner ones: that turns over exactly the pixels of its
/// cell.
inline void repeatBits(std::uint64_t* out, const std::uint64_t* src, std::size_t srcWidth, const BitMoves& lasts,
                       const std::uint64_t* inner) {
    std::uint64_t carry = 0;
    std::size_t bit = srcWidth;
    for (std::size_t pair = lasts.pairs(); pair-- > 0;) {
        const std::size_t w = 2 * pair;
        bit -= lasts.count(w + 1);
        const std::uint64_t second = bitsAt(src, bit) & firstBits(lasts.count(w + 1));
        bit -= lasts.count(w);
        const std::uint64_t first = bitsAt(src, bit) & firstBits(lasts.count(w));
        if ((first | second | carry) == 0) {
            out[w] = out[w + 1] = 0;
            continue;
        }
        const Words2 v = lasts.spread(pair, Words2{first, second});
        out[w + 1] = addWords(inner[w + 1], v[1], carry) ^ inner[w + 1];
        out[w] = addWords(inner[w], v[0], carry) ^ inner[w];
    }
}

/// Every bit of eight bytes twice.
inline Bytes16 doubledBits(std::uint64_t bytes) {
    const Bytes16 high = {0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0};
    const Bytes16 low = {0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0, 0, 0xF0};
    const auto v = reinterpret_cast<Bytes16>(Words2{bytes, 0});
    const Bytes16 twice = __builtin_shufflevector(v, v, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
    // A nibble at the front of each byte: the first of each pair of bytes has the first one.
    Words2 w =
        reinterpret_cast<Words2>(twice & high) | (reinterpret_cast<Words2>(twice) << 4 & reinterpret_cast<Words2>(low));
    w = (w | w >> 2) & bothWords(everyByte(0xCC));
    w = (w | w >> 1) & bothWords(everyByte(0xAA));
    return reinterpret_cast<Bytes16>(w | w >> 1);
}

/// Doubles every bit of `src` into `bytes` bytes.
inline void doubleBits(unsigned char* dst, std::size_t bytes, const unsigned char* src) {
    std::uint64_t v;
    for (; bytes >= 16; bytes -= 16, dst += 16, src += 8) {
        std::memcpy(&v, src, sizeof v);
        storeLanes(dst, doubledBits(v));
    }
    if (bytes == 0) return;
    v = 0;
    std::memcpy(&v, src, (bytes + 1) / 2);
    const Bytes16 last = doubledBits(v);
    std::memcpy(dst, &last, bytes);
}

}  // namespace tilepress
