#pragma once

// Rows of pixels of a byte or a word: repeated or picked by cells, of which cell k
// has the pixels from starts[k] to starts[k + 1] of the wider row.

#include "kernels/vectors.h"
#include "tilepress/api.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// A rectangle of pixels: `height` rows of `width` pixels from column `left` on, reached through a table.
template <class Pixel>
struct PixelArea {
    Pixel* const* table;
    std::size_t left;
    std::uint32_t width, height;

    Pixel* operator[](std::size_t row) const { return table[row] + left; }
    /// A rectangle that lies in it.
    PixelArea part(std::uint32_t x, std::uint32_t y, std::uint32_t w, std::uint32_t h) const {
        return {table + y, left + x, w, h};
    }
};

/// Copies `count` pixels a row, which may be more than the areas are wide, of those before `end`. Rows in order: where
/// they overlap, the next one overwrites what follows a row's own pixels.
template <class Pixel>
inline void copyRows(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from, std::size_t count, const Pixel* end) {
    for (std::size_t y = 0; y < to.height; ++y)
        std::memcpy(to[y], from[y], std::min(count, static_cast<std::size_t>(end - from[y])) * sizeof(Pixel));
}

/// One pixel as often as eight or sixteen bytes hold it.
inline std::uint64_t repeated(unsigned char pixel) { return everyByte(pixel); }
inline Words4 repeated(ImgULong pixel) {
    const auto v = static_cast<std::uint32_t>(pixel);
    return Words4{v, v, v, v};
}

/// Whether sixteen bytes hold a whole number of pixels.
template <class Pixel>
inline constexpr bool kFillsLanes = 16 % sizeof(Pixel) == 0;

/// Repeats pixel k over cell k.
template <class Pixel>
requires(!kFillsLanes<Pixel>) inline void repeatPixels(Pixel* dst, const Pixel* src, const ImgULong* starts,
                                                       std::size_t cells) {
    for (std::size_t k = 0; k < cells; ++k) std::fill(dst + starts[k], dst + starts[k + 1], src[k]);
}
template <class Pixel>
requires kFillsLanes<Pixel>
inline void repeatPixels(Pixel* dst, const Pixel* src, const ImgULong* starts, std::size_t cells) {
    constexpr std::size_t block = sizeof(repeated(Pixel{})) / sizeof(Pixel);
    // Whole blocks, while there is room for what they write past their cell: the next cells overwrite it.
    std::size_t roomy = cells;
    while (roomy > 0 && starts[roomy] + std::uint64_t{block} > starts[cells]) --roomy;
    std::size_t x = 0;
    for (std::size_t k = 0; k < roomy; ++k) {
        const auto pixels = repeated(src[k]);
        const std::size_t next = starts[k + 1];
        storeLanes(dst + x, pixels);
        while ((x += block) < next) storeLanes(dst + x, pixels);
        x = next;
    }
    for (std::size_t k = roomy; k < cells; ++k) std::fill(dst + starts[k], dst + starts[k + 1], src[k]);
}

inline void doubleSixteenBytes(unsigned char* dst, const unsigned char* src) {
    const auto v = loadLanes<Bytes16>(src);
    storeLanes(dst, __builtin_shufflevector(v, v, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7));
    storeLanes(dst + 16, __builtin_shufflevector(v, v, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13, 14, 14, 15, 15));
}
inline void doubleSixteenBytes(ImgULong* dst, const ImgULong* src) {
    const auto v = loadLanes<Words4>(src);
    storeLanes(dst, __builtin_shufflevector(v, v, 0, 0, 1, 1));
    storeLanes(dst + 4, __builtin_shufflevector(v, v, 2, 2, 3, 3));
}

/// Every pixel twice.
template <class Pixel>
inline void doublePixels(Pixel* dst, const Pixel* src, std::size_t count) {
    std::size_t k = 0;
    if constexpr (kFillsLanes<Pixel>) {
        constexpr std::size_t block = 16 / sizeof(Pixel);
        for (; k + block <= count; k += block) doubleSixteenBytes(dst + 2 * k, src + k);
    }
    for (; k < count; ++k) dst[2 * k] = dst[2 * k + 1] = src[k];
}

/// Takes the first pixel of each cell.
template <class Pixel>
inline void pickPixels(Pixel* dst, const Pixel* src, const ImgULong* starts, std::size_t cells) {
    for (std::size_t k = 0; k < cells; ++k) dst[k] = src[starts[k]];
}

/// Where dst has still the background, takes the first pixel of the cell that is another, if there is one.
template <class Pixel>
inline void pickOthers(Pixel* dst, const Pixel* src, const ImgULong* starts, std::size_t cells, ImgULong background) {
    for (std::size_t k = 0; k < cells; ++k) {
        if (dst[k] != background) continue;
        const Pixel* const end = src + starts[k + 1];
        const Pixel* const other = std::find_if(src + starts[k], end, [=](Pixel p) { return p != background; });
        if (other != end) dst[k] = *other;
    }
}

}  // namespace tilepress
