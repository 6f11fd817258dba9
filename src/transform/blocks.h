#pragma once

// Square blocks turned about their diagonal in registers, and the sweep over a
// whole picture in steps that the caches hold.

#include "foundation/lanes.h"
#include "transform/bit_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace tilepress {

/// One of four rounds that together turn 16 x 16 bytes: rows i and i + 8 interleave into rows 2i and 2i + 1.
inline void interleaveBytes(Bytes16* to, const Bytes16* from) {
    for (int i = 0; i < 8; ++i) {
        to[2 * i] = __builtin_shufflevector(from[i], from[i + 8], 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        to[2 * i + 1] =
            __builtin_shufflevector(from[i], from[i + 8], 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    }
}

/// Byte c of row r changes places with byte r of row c.
inline void transposeBytes(Bytes16 (&rows)[16]) {
    Bytes16 other[16];
    interleaveBytes(other, rows);
    interleaveBytes(rows, other);
    interleaveBytes(other, rows);
    interleaveBytes(rows, other);
}

/// The block of one pixel type: `side` rows of `side` pixels, 16 bytes a row.
template <std::size_t PixelBytes>
struct Block;

template <>
struct Block<1> {
    static constexpr std::size_t side = 16;
    Bytes16 rows[16];
    void transpose() { transposeBytes(rows); }
};

template <>
struct Block<4> {
    static constexpr std::size_t side = 4;
    Words4 rows[4];
    void transpose() {
        const Words4 a = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
        const Words4 b = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
        const Words4 c = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
        const Words4 d = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
        rows[0] = __builtin_shufflevector(a, b, 0, 1, 4, 5);
        rows[1] = __builtin_shufflevector(a, b, 2, 3, 6, 7);
        rows[2] = __builtin_shufflevector(c, d, 0, 1, 4, 5);
        rows[3] = __builtin_shufflevector(c, d, 2, 3, 6, 7);
    }
};

/// Rows reached through a table, from its first entry on or, with step -1, backwards.
template <class Pixel>
struct TableRows {
    Pixel* const* first;
    std::ptrdiff_t step;

    Pixel* operator[](std::size_t row) const { return first[static_cast<std::ptrdiff_t>(row) * step]; }
};

/// to[x][y] = from[y][x] for every pixel of `width` by `height` source pixels.
template <class Pixel>
inline void transposePixels(const TableRows<Pixel>& to, const TableRows<Pixel>& from, std::size_t width,
                            std::size_t height) {
    using Square = Block<sizeof(Pixel)>;
    constexpr std::size_t side = Square::side;
    constexpr std::size_t tile = 64 / sizeof(Pixel);  // a cache line
    const std::size_t wholeColumns = width / side * side, wholeRows = height / side * side;

    const auto turnBlock = [&](std::size_t x, std::size_t y) {
        Square square;
        for (std::size_t i = 0; i < side; ++i) std::memcpy(&square.rows[i], from[y + i] + x, 16);
        square.transpose();
        for (std::size_t i = 0; i < side; ++i) std::memcpy(to[x + i] + y, &square.rows[i], 16);
    };
    for (std::size_t left = 0; left < wholeColumns; left += tile)
        for (std::size_t top = 0; top < wholeRows; top += tile)
            for (std::size_t x = left; x < std::min(left + tile, wholeColumns); x += side)
                for (std::size_t y = top; y < std::min(top + tile, wholeRows); y += side) turnBlock(x, y);

    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = y < wholeRows ? wholeColumns : 0; x < width; ++x) to[x][y] = from[y][x];
}

/// Bit n is the highest bit of byte n.
inline unsigned highBits(Bytes16 v) {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(v)));
#else
    unsigned bits = 0;
    for (unsigned n = 0; n < 16; ++n) bits |= static_cast<unsigned>(v[n] >> 7) << n;
    return bits;
#endif
}

/// 128 columns by 16 rows, missing ones 0. Row n stands at n ^ 7: packed bytes begin with their highest bit.
struct BitBlock {
    Bytes16 rows[16];
    std::size_t bytes, height;

    /// False when all bits are 0.
    bool load(const PackedRows& from, std::size_t firstByte, std::size_t top) {
        Words2 any = bothWords(0);
        for (std::size_t n = 0; n < 16; ++n) {
            Words2 row = bothWords(0);
            if (n < height) {
                if (bytes == 16) std::memcpy(&row, from[top + n] + firstByte, 16);
                else std::memcpy(&row, from[top + n] + firstByte, bytes);
            }
            any |= row;
            std::memcpy(&rows[n ^ 7], &row, 16);
        }
        return !isZero(any);
    }
};

/// Writes 8 columns of 16 rows, one byte each in `column`, as 16 bits of each of `count` rows.
inline void storeColumns(const PackedRows& to, Bytes16 column, std::size_t x, std::size_t count, std::size_t byte,
                         std::size_t height) {
    Words2 bits = reinterpret_cast<Words2>(column);
    if (isZero(bits)) return;
    for (std::size_t n = 0; n < count; ++n, bits <<= 1) {
        const unsigned row = highBits(reinterpret_cast<Bytes16>(bits));
        unsigned char* dst = to[x + n] + byte;
        dst[0] = static_cast<unsigned char>(row);
        if (height > 8) dst[1] = static_cast<unsigned char>(row >> 8);
    }
}

/// Bit y of to[x] = bit x of from[y] for every pixel of `width` by `height` source pixels; `to` is clear.
inline void transposeBits(const PackedRows& to, const PackedRows& from, std::size_t width, std::size_t height) {
    const std::size_t rowBytes = packedBytes(width);
    for (std::size_t left = 0; left < rowBytes; left += 16)
        for (std::size_t top = 0; top < height; top += 16) {
            BitBlock block;
            block.bytes = std::min<std::size_t>(16, rowBytes - left);
            block.height = std::min<std::size_t>(16, height - top);
            if (!block.load(from, left, top)) continue;
            transposeBytes(block.rows);
            for (std::size_t n = 0; n < block.bytes; ++n) {
                const std::size_t x = (left + n) * 8;
                storeColumns(to, block.rows[n], x, std::min<std::size_t>(8, width - x), top / 8, block.height);
            }
        }
}

}  // namespace tilepress
