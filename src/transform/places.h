#pragma once

// Where each pixel of a mirrored or turned picture comes from, and the one sweep
// for each storage of pixels.

#include "transform/bit_rows.h"
#include "transform/blocks.h"

#include <cstddef>
#include <cstring>

namespace tilepress {

/// Mirrors and right angles: destination (column i, row j) takes source column i and row j, or with
/// `turned` column j and row i, counted from the right or from the bottom where the flags say so.
struct Places {
    bool turned, fromRight, fromBottom;
};

inline constexpr Places kMirrorX{false, false, true};
inline constexpr Places kMirrorY{false, true, false};
inline constexpr Places kRotate90{true, true, false};
inline constexpr Places kRotateMinus90{true, false, true};
inline constexpr Places kRotate180{false, true, true};

inline void reversePixels(unsigned char* dst, const unsigned char* src, std::size_t count) {
    const unsigned char* end = src + count;
    for (; end - src >= 16; end -= 16, dst += 16) storeLanes(dst, swapBytes(loadLanes<Words2>(end - 16)));
    while (end > src) *dst++ = *--end;
}

template <class Pixel>
inline void reversePixels(Pixel* dst, const Pixel* src, std::size_t count) {
    const Pixel* end = src + count;
    for (; end - src >= 4; end -= 4, dst += 4) {
        const Words4 v = loadLanes<Words4>(end - 4);
        storeLanes(dst, __builtin_shufflevector(v, v, 3, 2, 1, 0));
    }
    while (end > src) *dst++ = *--end;
}

/// Pixels of a byte or a word; `width` and `height` are the source's.
template <class Pixel>
inline void placePixels(Places places, Pixel* const* dst, Pixel* const* src, std::size_t width, std::size_t height) {
    const auto rows = [](Pixel* const* table, std::size_t count, bool backwards) {
        return backwards ? TableRows<Pixel>{table + (count - 1), -1} : TableRows<Pixel>{table, 1};
    };
    const TableRows<Pixel> from = rows(src, height, places.fromBottom);
    if (places.turned) return transposePixels(rows(dst, width, places.fromRight), from, width, height);
    for (std::size_t y = 0; y < height; ++y) {
        if (places.fromRight) reversePixels(dst[y], from[y], width);
        else std::memcpy(dst[y], from[y], width * sizeof(Pixel));
    }
}

/// Packed pixels into clear rows, whose pad bits stay 0.
inline void placeBits(Places places, const PackedRows& dst, const PackedRows& src, std::size_t width,
                      std::size_t height) {
    const PackedRows from = places.fromBottom ? upwards(src, height) : src;
    if (places.turned) return transposeBits(places.fromRight ? upwards(dst, width) : dst, from, width, height);
    const std::size_t bytes = packedBytes(width);
    for (std::size_t y = 0; y < height; ++y) {
        if (places.fromRight) {
            reverseBits(dst[y], from[y], width);
        } else {
            std::memcpy(dst[y], from[y], bytes);
            clearFrom(dst[y], bytes, width);
        }
    }
}

}  // namespace tilepress
