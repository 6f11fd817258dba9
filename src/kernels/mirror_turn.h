#pragma once

// Where each pixel of a mirrored or turned picture comes from, and the one sweep
// for each storage of pixels.

#include "kernels/bit_rows.h"
#include "kernels/pixel_rows.h"
#include "kernels/transpose.h"

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

/// Degrees within which an angle counts as a right one.
inline constexpr double kSnapTolerance = 0.001;

/// The places of a picture turned by 90, 180 or 270 degrees; null for any other angle.
inline const Places* rightAngle(double degrees) {
    return degrees == 90 ? &kRotate90 : degrees == 180 ? &kRotate180 : degrees == 270 ? &kRotateMinus90 : nullptr;
}

inline void reversePixels(unsigned char* dst, const unsigned char* src, std::size_t count) {
    const unsigned char* end = src + count;
    for (; end - src >= 16; end -= 16, dst += 16) storeLanes(dst, reverseBytes(loadLanes<Words2>(end - 16)));
    while (end > src) *dst++ = *--end;
}

template <class Pixel>
inline void reversePixels(Pixel* dst, const Pixel* src, std::size_t count) {
    const Pixel* end = src + count;
    if constexpr (sizeof(Pixel) == 4)
        for (; end - src >= 4; end -= 4, dst += 4) {
            const Words4 v = loadLanes<Words4>(end - 4);
            storeLanes(dst, __builtin_shufflevector(v, v, 3, 2, 1, 0));
        }
    while (end > src) *dst++ = *--end;
}

/// The whole picture `from` into another, of its size or of its size turned.
template <class Pixel>
inline void place(Places places, const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    const auto rows = [](const PixelArea<Pixel>& area, bool backwards) {
        return backwards ? TableRows<Pixel>{area.table + (area.height - 1), -1} : TableRows<Pixel>{area.table, 1};
    };
    const TableRows<Pixel> src = rows(from, places.fromBottom);
    if (places.turned) return transposePixels(rows(to, places.fromRight), src, from.width, from.height);
    if (!places.fromRight) {
        for (std::size_t y = 0; y < from.height; ++y) std::memcpy(to[y], src[y], from.width * sizeof(Pixel));
        return;
    }
    // Rows are read from their ends; so is the picture, which the processor then fetches ahead.
    for (std::size_t k = 0; k < from.height; ++k) {
        const std::size_t y = places.fromBottom ? k : from.height - 1 - k;
        reversePixels(to[y], src[y], from.width);
    }
}

/// Into clear rows, whose pad bits stay 0.
inline void place(Places places, const BitArea& to, const BitArea& from) {
    const PackedRows src = places.fromBottom ? upwards(from.rows, from.height) : from.rows;
    if (places.turned)
        return transposeBits(places.fromRight ? upwards(to.rows, to.height) : to.rows, src, from.width, from.height);
    const std::size_t bytes = packedBytes(from.width);
    for (std::size_t y = 0; y < from.height; ++y) {
        if (places.fromRight) {
            reverseBits(to.rows[y], src[y], from.width);
        } else {
            std::memcpy(to.rows[y], src[y], bytes);
            clearFrom(to.rows[y], bytes, from.width);
        }
    }
}

}  // namespace tilepress
