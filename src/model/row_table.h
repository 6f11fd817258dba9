#pragma once

// Pixels of palette and RGB images: one block, reached through a table of rows.

#include "foundation/heap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace tilepress {

/// A block of `totalBytes` bytes and its rows, `width` pixels apart; null when memory runs out. What is behind the
/// rows' pixels is clear, the pixels only when asked for.
template <class Pixel>
Pixel** makeRows(std::uint64_t totalBytes, std::size_t width, std::size_t height, bool clear) {
    const std::size_t count = static_cast<std::size_t>(totalBytes / sizeof(Pixel));
    Heap<Pixel> block(clear ? allocate<Pixel>(count) : allocateUnset<Pixel>(count));
    Heap<Pixel*> rows(std::uint64_t{height});
    if (!block || !rows) return nullptr;
    if (!clear) std::fill(block.get() + width * height, block.get() + count, Pixel{});
    Pixel* row = block.release();
    for (std::size_t i = 0; i < height; ++i, row += width) rows[i] = row;
    return rows.release();
}

template <class Pixel>
void freeRows(Pixel** rows) {
    if (rows) std::free(rows[0]);
    std::free(rows);
}

/// Takes the block out of the table and frees the table.
template <class Pixel>
Pixel* releaseBlock(Pixel**& rows) {
    Pixel* const block = rows ? rows[0] : nullptr;
    std::free(rows);
    rows = nullptr;
    return block;
}

}  // namespace tilepress
