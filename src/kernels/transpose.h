#pragma once

// Square blocks turned about their diagonal in registers, and the sweep over a
// whole picture in steps that the caches hold.

#include "foundation/contract.h"
#include "kernels/bit_rows.h"
#include "kernels/pixel_rows.h"
#include "kernels/row_writer.h"
#include "kernels/vectors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#  include <emmintrin.h>
#endif

namespace tilepress {

/// Byte c of row r changes places with byte r of row c.
inline void transposeBytes(Bytes16 (&rows)[16]) {
    Bytes16 other[16];
    interleaveBytes<16>(other, rows);
    interleaveBytes<16>(rows, other);
    interleaveBytes<16>(other, rows);
    interleaveBytes<16>(rows, other);
}

/// Rows reached through a table, from its first entry on or, with step -1, backwards.
template <class Pixel>
struct TableRows {
    Pixel* const* first;
    std::ptrdiff_t step;

    Pixel* operator[](std::size_t row) const { return first[static_cast<std::ptrdiff_t>(row) * step]; }
};

/// to[r * stride + c] = from[y + c][x + r] for the 16 bytes that a register holds of each row.
inline void turnBlock(unsigned char* to, std::size_t stride, const TableRows<unsigned char>& from, std::size_t x,
                      std::size_t y) {
#ifdef __i386__
    // As many registers as there are: half of the rows at a time.
    for (std::size_t half = 0; half < 16; half += 8) {
        Bytes16 rows[8], other[8];
#  pragma GCC unroll 8
        for (std::size_t i = 0; i < 8; ++i) rows[i] = loadLanes<Bytes16>(from[y + half + i] + x);
        interleaveBytes<8>(other, rows);
        interleaveBytes<8>(rows, other);
        interleaveBytes<8>(other, rows);
#  pragma GCC unroll 8
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(to + 2 * i * stride + half, &other[i], 8);
            const auto second = reinterpret_cast<Words2>(other[i]);
            storeLanes(to + (2 * i + 1) * stride + half, second[1]);
        }
    }
#else
    Bytes16 rows[16];
#  pragma GCC unroll 16
    for (std::size_t i = 0; i < 16; ++i) rows[i] = loadLanes<Bytes16>(from[y + i] + x);
    transposeBytes(rows);
#  pragma GCC unroll 16
    for (std::size_t i = 0; i < 16; ++i) storeLanes(to + i * stride, rows[i]);
#endif
}

template <class Pixel>
inline void turnBlock(Pixel* to, std::size_t stride, const TableRows<Pixel>& from, std::size_t x, std::size_t y) {
    static_assert(sizeof(Pixel) == 4);
    const Words4 row0 = loadLanes<Words4>(from[y] + x), row1 = loadLanes<Words4>(from[y + 1] + x);
    const Words4 row2 = loadLanes<Words4>(from[y + 2] + x), row3 = loadLanes<Words4>(from[y + 3] + x);
    const Words4 left01 = __builtin_shufflevector(row0, row1, 0, 4, 1, 5);
    const Words4 left23 = __builtin_shufflevector(row2, row3, 0, 4, 1, 5);
    const Words4 right01 = __builtin_shufflevector(row0, row1, 2, 6, 3, 7);
    const Words4 right23 = __builtin_shufflevector(row2, row3, 2, 6, 3, 7);
    storeLanes(to, __builtin_shufflevector(left01, left23, 0, 1, 4, 5));
    storeLanes(to + stride, __builtin_shufflevector(left01, left23, 2, 3, 6, 7));
    storeLanes(to + 2 * stride, __builtin_shufflevector(right01, right23, 0, 1, 4, 5));
    storeLanes(to + 3 * stride, __builtin_shufflevector(right01, right23, 2, 3, 6, 7));
}

/// to[x][y] = from[y][x] for every pixel of `width` by `height` source pixels.
///
/// In tiles of few columns and many rows, which are turned in a buffer that the nearest cache holds and then leave it
/// as long stretches of destination rows; those need not begin where a register's bytes or a cache line do. While a
/// tile is turned, the lines of the next one are fetched.
template <class Pixel>
requires kFillsLanes<Pixel>
inline void transposePixels(const TableRows<Pixel>& to, const TableRows<Pixel>& from, std::size_t width,
                            std::size_t height) {
    constexpr std::size_t side = 16 / sizeof(Pixel), tileWidth = 2 * side, tileHeight = 1024;
    constexpr std::size_t stride = tileHeight + 4 * side;  // rows side by side in the cache, not in each other's place
    alignas(64) Pixel tile[tileWidth * stride];
    const RowWriter writer(std::uint64_t{width} * height * sizeof(Pixel));
    const std::size_t wholeColumns = width / side * side, wholeRows = height / side * side;
    for (std::size_t top = 0; top < wholeRows; top += tileHeight) {
        const std::size_t rows = std::min(tileHeight, wholeRows - top);
        for (std::size_t left = 0; left < wholeColumns; left += tileWidth) {
            const std::size_t columns = std::min(tileWidth, wholeColumns - left),
                              next = std::min(left + tileWidth, width - 1);
            for (std::size_t x = 0; x < columns; x += side)
                for (std::size_t y = 0; y < rows; y += side) {
                    const std::size_t ahead = top + y + x / 2;  // half of the rows for each of two blocks
                    for (std::size_t n = 0; n < side / 2; ++n) __builtin_prefetch(from[ahead + n] + next);
                    turnBlock(tile + x * stride + y, stride, from, left + x, top + y);
                }
            for (std::size_t x = 0; x < columns; ++x)
                writer.write(to[left + x] + top, tile + x * stride, rows * sizeof(Pixel));
        }
    }

    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = y < wholeRows ? wholeColumns : 0; x < width; ++x) to[x][y] = from[y][x];
}

/// The same for pixels that fill no register, in squares that the caches hold.
template <class Pixel>
requires(!kFillsLanes<Pixel>) inline void transposePixels(const TableRows<Pixel>& to, const TableRows<Pixel>& from,
                                                          std::size_t width, std::size_t height) {
    constexpr std::size_t side = 32;
    for (std::size_t top = 0; top < height; top += side)
        for (std::size_t left = 0; left < width; left += side)
            for (std::size_t x = left; x < std::min(left + side, width); ++x)
                for (std::size_t y = top; y < std::min(top + side, height); ++y) to[x][y] = from[y][x];
}

/// Bit n is the highest bit of byte n.
inline std::uint64_t highBits(Words2 v) {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(v)));
#else
    std::uint64_t bits = 0;
    for (unsigned n = 0; n < 16; ++n) bits |= (v[n / 8] >> (n % 8 * 8 + 7) & 1) << n;
    return bits;
#endif
}

/// Bits of 128 columns and 16 rows: of whole rows as they are, then of columns of 16 bytes.
struct BitBlock {
    Bytes16 rows[16];
    bool blank;

    /// Row n goes to n ^ 7, since packed bytes begin with their highest bit. Missing rows and bytes are 0.
    void load(const PackedRows& from, std::size_t firstByte, std::size_t bytes, std::size_t top, std::size_t height) {
        Words2 any = bothWords(0);
        if (bytes == 16 && height == 16) {
            const unsigned char* src = from[top] + firstByte;
#pragma GCC unroll 16
            for (unsigned n = 0; n < 16; ++n, src += from.stride) any |= put(n, loadLanes<Words2>(src));
        } else {
            for (unsigned n = 0; n < 16; ++n) {
                Words2 row = bothWords(0);
                if (n < height) std::memcpy(&row, from[top + n] + firstByte, bytes);
                any |= put(n, row);
            }
        }
        blank = isZero(any);
        if (!blank) transposeBytes(rows);
    }
    Words2 column(std::size_t byte) const { return reinterpret_cast<Words2>(rows[byte]); }

private:
    Words2 put(unsigned n, Words2 row) {
        rows[n ^ 7] = reinterpret_cast<Bytes16>(row);
        return row;
    }
};

/// Four blocks, one below the other: their columns are words of destination rows.
struct BitTower {
    BitBlock blocks[4];

    /// False when all bits are 0.
    bool load(const PackedRows& from, std::size_t firstByte, std::size_t bytes, std::size_t top, std::size_t height) {
        bool blank = true;
        for (std::size_t k = 0; k < 4; ++k) {
            blocks[k].load(from, firstByte, bytes, top + 16 * k,
                           std::clamp<std::size_t>(height, 16 * k, 16 * k + 16) - 16 * k);
            blank = blank && blocks[k].blank;
        }
        return !blank;
    }

    /// Eight columns, from the one at a byte's highest bit on, as `bytes` bytes of `count` rows each.
    void store(const PackedRows& to, std::size_t byte, std::size_t x, std::size_t count, std::size_t toByte,
               std::size_t bytes) const {
        Words2 a = blocks[0].column(byte), b = blocks[1].column(byte);
        Words2 c = blocks[2].column(byte), d = blocks[3].column(byte);
        if (isZero(a | b | c | d)) return;
        unsigned char* dst = to[x] + toByte;
        for (std::size_t n = 0; n < count; ++n, dst += to.stride) {
            const std::uint64_t bits = highBits(a) | highBits(b) << 16 | highBits(c) << 32 | highBits(d) << 48;
            if (bytes == 8) storeWord(dst, swapBytes(bits));
            else storePartialWord(dst, swapBytes(bits), bytes);
            a <<= 1, b <<= 1, c <<= 1, d <<= 1;
        }
    }
};

/// Bit y of to[x] = bit x of from[y] for every pixel of `width` by `height` source pixels; `to` is clear.
inline void transposeBits(const PackedRows& to, const PackedRows& from, std::size_t width, std::size_t height) {
    for (std::size_t x = 0; x < width; ++x) TILEPRESS_DEMAND(isClear(to[x], packedBytes(height)));
    const std::size_t rowBytes = packedBytes(width);
    for (std::size_t left = 0; left < rowBytes; left += 16)
        for (std::size_t top = 0; top < height; top += 64) {
            const std::size_t bytes = std::min<std::size_t>(16, rowBytes - left);
            const std::size_t rows = std::min<std::size_t>(64, height - top);
            BitTower tower;
            if (!tower.load(from, left, bytes, top, rows)) continue;
            for (std::size_t n = 0; n < bytes; ++n) {
                const std::size_t x = (left + n) * 8;
                tower.store(to, n, x, std::min<std::size_t>(8, width - x), top / 8, packedBytes(rows));
            }
        }
}

}  // namespace tilepress
