#pragma once

// Error diffusion (Floyd and Steinberg) of grey tones into packed bits.

#include "foundation/bits.h"
#include "foundation/heap.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tilepress {

/// Tone of a colour whose components run from 0 to 255: its luminance on a curve that stretches contrast.
unsigned char toneOf(unsigned red, unsigned green, unsigned blue);

/// Turns a row into packed bits, 1 where it is dark, and spreads each pixel's error over its neighbours.
/// The rows have a spare element at each end.
void diffuseRow(unsigned char* bits, const int* row, int* below, std::size_t width);

/// ORs `count` bytes into a block of `size` bytes from bit `at` on; what falls behind the block is dropped.
void orBytesAt(unsigned char* block, std::uint64_t size, std::uint64_t at, const unsigned char* bytes,
               std::size_t count);

/// Dithers `height` rows of `width` tones into a clear block, a row every `rowBits` bits. loadTones(line, row) fills
/// a line with a row's tones. False when memory runs out.
template <class LoadTones>
bool dither(unsigned char* block, std::uint64_t size, std::uint64_t rowBits, std::size_t width, std::size_t height,
            LoadTones loadTones) {
    Heap<int> lines(2 * (std::uint64_t{width} + 2));
    Heap<unsigned char> bits(std::uint64_t{packedBytes(width)});
    if (!lines || !bits) return false;
    int *row = lines.get() + 1, *below = row + width + 2;
    loadTones(row, 0);
    for (std::size_t y = 0; y < height; ++y, std::swap(row, below)) {
        if (y + 1 < height) loadTones(below, y + 1);
        diffuseRow(bits.get(), row, below, width);
        orBytesAt(block, size, y * rowBits, bits.get(), packedBytes(width));
    }
    return true;
}

}  // namespace tilepress
