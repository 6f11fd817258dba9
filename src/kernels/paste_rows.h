#pragma once

// Packed rows laid over packed rows at any bit, for image classes and handles alike.

#include "kernels/vectors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

// A rule joins what is there with what is laid over it, on single bytes and on bytes side by
// side. `kept` has the bits of each byte that a copy leaves as they are.

struct PasteSet {
    template <class Bits>
    static Bits join(Bits there, Bits over, Bits kept) {
        return (there & kept) | over;
    }
};

struct PasteAnd {
    template <class Bits>
    static Bits join(Bits there, Bits over, Bits) {
        return there & over;
    }
};

struct PasteOr {
    template <class Bits>
    static Bits join(Bits there, Bits over, Bits) {
        return there | over;
    }
};

template <class Rule>
inline void pasteAligned(unsigned char* dst, const unsigned char* src, std::size_t count) {
    const Words2 none = bothWords(0);
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16)
        storeLanes(dst + i, Rule::join(loadLanes<Words2>(dst + i), loadLanes<Words2>(src + i), none));
    for (; i < count; ++i) dst[i] = static_cast<unsigned char>(Rule::join(unsigned{dst[i]}, unsigned{src[i]}, 0u));
}

/// A copy must bear that the rows are one and the same.
template <>
inline void pasteAligned<PasteSet>(unsigned char* dst, const unsigned char* src, std::size_t count) {
    std::memmove(dst, src, count);
}

/// Source byte i, moved right by `shift` bits (1 to 7), falls into destination bytes i and i + 1: the first
/// part is joined by the rule, the second part overwrites. So from byte 1 on nothing of the old row is left.
template <class Rule>
inline void pasteShifted(unsigned char* dst, const unsigned char* src, std::size_t count, unsigned shift) {
    // Kept: a copy protects the low 8 - shift bits of a byte, not its first `shift` pixels, and the last
    // source byte's second part is dropped; callers rely on these exact bytes.
    const unsigned kept = 0xFFu << shift & 0xFFu, back = 8 - shift;
    const auto paste = [&](std::size_t i, unsigned there) {
        dst[i] = static_cast<unsigned char>(Rule::join(there, unsigned{src[i]} >> shift, kept));
    };
    if (count == 0) return;
    paste(0, dst[0]);

    const Words2 keptLanes = bothWords(everyByte(kept));
    const Words2 carried = bothWords(everyByte(0xFFu << back)), moved = bothWords(everyByte(0xFFu >> shift));
    const auto pasteLanes = [&](std::size_t i) {
        const Words2 there = loadLanes<Words2>(src + i - 1) << back & carried;
        storeLanes(dst + i, Rule::join(there, loadLanes<Words2>(src + i) >> shift & moved, keptLanes));
    };
    std::size_t i = 1;
    for (; i + 16 <= count; i += 16) pasteLanes(i);
    for (; i < count; ++i) paste(i, unsigned{src[i - 1]} << back & 0xFFu);
}

/// Packed rows in one block; nothing is written past its `bytes`.
struct PackedBlock {
    unsigned char* data;
    std::size_t bytes, stride;
};

/// Lays `rows` rows of `srcStride` bytes over the block, the first pixel at (column, row). The whole
/// source rows count, with their pad bits.
template <class Rule>
inline void pasteRows(const PackedBlock& to, std::size_t column, std::size_t row, const unsigned char* src,
                      std::size_t srcStride, std::size_t rows) {
    const unsigned shift = column % 8;
    std::uint64_t at = std::uint64_t{row} * to.stride + column / 8;
    for (; rows > 0 && at < to.bytes; --rows, at += to.stride, src += srcStride) {
        unsigned char* dst = to.data + at;
        // Kept: rows padded further than the block's spill into its next row.
        const std::size_t count = std::min(srcStride, to.bytes - static_cast<std::size_t>(at));
        if (shift == 0) pasteAligned<Rule>(dst, src, count);
        else pasteShifted<Rule>(dst, src, count, shift);
    }
}

}  // namespace tilepress
