#pragma once

// Kernels on packed rows: moved, reversed and turned by words.

#include "foundation/bits.h"
#include "kernels/vectors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// Packed rows from the first on; with a negative stride, from the last row of a block upwards.
struct PackedRows {
    unsigned char* first;
    std::ptrdiff_t stride;

    unsigned char* operator[](std::size_t row) const { return first + static_cast<std::ptrdiff_t>(row) * stride; }
};

/// A rectangle of packed rows: `height` rows of `width` pixels from column `left` on.
struct BitArea {
    PackedRows rows;
    std::uint32_t left, width, height;

    /// A rectangle that lies in it.
    BitArea part(std::uint32_t x, std::uint32_t y, std::uint32_t w, std::uint32_t h) const {
        return {{rows[y], rows.stride}, left + x, w, h};
    }
};

/// The same rows in reverse order.
inline PackedRows upwards(const PackedRows& rows, std::size_t count) { return {rows[count - 1], -rows.stride}; }

/// Clears the bits from `bit` on of a row of `bytes` bytes.
inline void clearFrom(unsigned char* row, std::size_t bytes, std::uint64_t bit) {
    if (bit >= std::uint64_t{bytes} * 8) return;
    const std::size_t byte = static_cast<std::size_t>(bit / 8);
    row[byte] = static_cast<unsigned char>(row[byte] & ~(0xFFu >> bit % 8));
    std::memset(row + byte + 1, 0, bytes - byte - 1);
}

/// dst[i] takes the 8 bits from bit `shift` (0 to 7) of src[i] on; reads src[0] to src[count].
inline void funnelLeft(unsigned char* dst, const unsigned char* src, std::size_t count, unsigned shift) {
    const unsigned back = 8 - shift;
    const Words2 front = bothWords(everyByte(0xFFu << shift)), rest = bothWords(everyByte(0xFFu >> back));
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16)
        storeLanes(dst + i,
                   (loadLanes<Words2>(src + i) << shift & front) | (loadLanes<Words2>(src + i + 1) >> back & rest));
    for (; i < count; ++i) dst[i] = static_cast<unsigned char>(src[i] << shift | src[i + 1] >> back);
}

/// Fills `count` bytes with the bits from bit `at` on of a row of `srcBytes` bytes; what lies outside it,
/// on either side, is 0.
inline void copyBits(unsigned char* dst, std::size_t count, const unsigned char* src, std::size_t srcBytes,
                     std::int64_t at) {
    const std::int64_t first = at >> 3, end = static_cast<std::int64_t>(srcBytes);
    const unsigned shift = static_cast<unsigned>(at & 7);
    const auto clip = [&](std::int64_t n) {
        return static_cast<std::size_t>(std::clamp<std::int64_t>(n, 0, static_cast<std::int64_t>(count)));
    };
    // Destination bytes [from, to) have both their source bytes, one more on each side may have one.
    const std::size_t from = clip(-first), to = std::max(from, clip(end - 1 - first));
    std::memset(dst, 0, from);
    if (from > 0 && first + static_cast<std::int64_t>(from) == 0 && end > 0)
        dst[from - 1] = static_cast<unsigned char>(src[0] >> (8 - shift));
    if (from < to) {
        const unsigned char* p = src + (first + static_cast<std::int64_t>(from));
        if (shift == 0) std::memcpy(dst + from, p, to - from);
        else funnelLeft(dst + from, p, to - from, shift);
    }
    if (to == count) return;
    std::memset(dst + to, 0, count - to);
    if (first + static_cast<std::int64_t>(to) == end - 1) dst[to] = static_cast<unsigned char>(src[end - 1] << shift);
}

/// Fills the rows of `to` whole: what pads them takes the pixels that follow those of `from`, and 0 from the end of its
/// block on, `bytes` behind the beginning of its first row.
inline void copyRows(const BitArea& to, const BitArea& from, std::uint64_t bytes) {
    for (std::size_t y = 0; y < to.height; ++y) {
        const std::uint64_t start = std::uint64_t{y} * static_cast<std::size_t>(from.rows.stride);
        copyBits(to.rows[y], static_cast<std::size_t>(to.rows.stride), from.rows[y],
                 static_cast<std::size_t>(bytes - start), from.left);
    }
}

/// Turns every bit of `count` bytes over.
inline void complement(unsigned char* bytes, std::size_t count) {
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) storeLanes(bytes + i, ~loadLanes<Words2>(bytes + i));
    for (; i < count; ++i) bytes[i] = static_cast<unsigned char>(~bytes[i]);
}

/// Exchanges the bits within each byte, first for last, of a word or of two.
template <class Bits>
inline Bits reverseInBytes(Bits v) {
    v = (v >> 1 & everyByte(0x55)) | (v & everyByte(0x55)) << 1;
    v = (v >> 2 & everyByte(0x33)) | (v & everyByte(0x33)) << 2;
    return (v >> 4 & everyByte(0x0F)) | (v & everyByte(0x0F)) << 4;
}

/// Exchanges the bits within each of `count` bytes.
inline void reverseBitsInBytes(unsigned char* bytes, std::size_t count) {
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) storeWord(bytes + i, reverseInBytes(loadWord(bytes + i)));
    if (i < count) storePartialWord(bytes + i, reverseInBytes(loadPartialWord(bytes + i, count - i)), count - i);
}

/// Bit i of dst takes bit width - 1 - i of src, for whole bytes; bits from `width` on become 0.
inline void reverseBits(unsigned char* dst, const unsigned char* src, std::size_t width) {
    const unsigned pad = static_cast<unsigned>(-width & 7), back = 8 - pad;
    const Words2 front = bothWords(everyByte(0xFFu >> pad)), rest = bothWords(everyByte(0xFFu << back));
    std::size_t end = packedBytes(width);  // of the source bytes still to come
    // Sixteen source bytes, moved right by the pad bits and reversed.
    for (; end >= 17; end -= 16, dst += 16) {
        const Words2 moved =
            (loadLanes<Words2>(src + end - 16) >> pad & front) | (loadLanes<Words2>(src + end - 17) << back & rest);
        storeLanes(dst, reverseBytes(reverseInBytes(moved)));
    }
    for (; end > 0; --end) {
        const unsigned before = end > 1 ? src[end - 2] : 0u;
        const std::uint64_t moved = (before << 8 | src[end - 1]) >> pad & 0xFFu;
        *dst++ = static_cast<unsigned char>(reverseInBytes(moved));
    }
}

}  // namespace tilepress
