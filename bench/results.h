#pragma once

// What operations leave, in comparable forms.

#include "peers.h"

#include "tilepress/CImg1.h"

#include <bit>

namespace bench {

using Result = std::unique_ptr<IImg>;

/// A bilevel image's pixels.
inline Bitmap bitmapOf(const CImg1& image) {
    Bitmap bitmap(image.getWidth(), image.getHeight());
    for (std::size_t y = 0; y < bitmap.height; ++y)
        std::memcpy(bitmap.row(y), image.peekData() + y * image.getBytesPerLine(), bitmap.rowBytes());
    bitmap.clearSpareBits();
    return bitmap;
}

/// Empty for null and for other kinds.
inline Bitmap bitmapOf(const Result& result) {
    if (!result || result->getType() != ImageTypeBilevel) return {};
    return bitmapOf(static_cast<const CImg1&>(*result));
}

inline bool alike(const Bitmap& a, const Bitmap& b) {
    return a.width == b.width && a.height == b.height && a.bits == b.bits;
}

inline double blackShare(const Bitmap& bitmap) {
    std::uint64_t black = 0;
    for (unsigned char byte : bitmap.bits) black += static_cast<unsigned>(std::popcount(byte));
    return static_cast<double>(black) / (double(bitmap.width) * bitmap.height);
}

}  // namespace bench
