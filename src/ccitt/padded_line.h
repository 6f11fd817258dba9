#pragma once

// Working lines of the row decoder: changing-element lists with room on both
// sides, so that the decoder's searches and copies need no bounds tests.

#include "foundation/heap.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace tilepress {

/// Elements before element 0 and after the width + 6 that a row needs.
inline constexpr int kLineFront = 16, kLineBack = 96;
/// Copies of width + 1 that follow a list's last change on a line.
inline constexpr int kLineRepeats = 12;
/// Index of the mark that a list does not increase all the way, which only damaged data give.
inline constexpr int kLineIrregular = -kLineFront;

/// Elements of a line for rows of `width` pixels.
constexpr std::uint64_t lineElements(std::uint32_t width) { return std::uint64_t{width} + 6 + kLineFront + kLineBack; }

/// Such a line, or null.
inline std::int32_t* allocateLine(std::uint32_t width) {
    std::int32_t* block = allocateUnset<std::int32_t>(lineElements(width));
    if (!block) return nullptr;
    block[0] = 0;
    std::fill_n(block + 1, kLineFront - 1, INT32_MIN);
    return block + kLineFront;
}

inline void freeLine(std::int32_t* line) {
    if (line) std::free(line - kLineFront);
}

}  // namespace tilepress
