#pragma once

// What differs between the kinds of uncompressed image, so that code above is
// written once, and the tests every worker makes first.

#include "model/row_storage.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <cstdint>

namespace tilepress {

// Whether the header's extents lie in the pixel block. They need not: a caller may
// have taken the block or changed a size since the header was set up.

inline bool hasPixels(const CImg1& image) {
    return image.peekData() && image.getWidth() <= std::uint64_t{8} * image.getBytesPerLine() &&
           std::uint64_t{image.getHeight()} * image.getBytesPerLine() <= image.getTotalBytes();
}
inline bool hasPixels(const CImg8& image) {
    return image.peekData() && image.getWidth() <= image.getBytesPerLine() &&
           image.getHeight() <= image.getTotalBytes() / image.getBytesPerLine();
}
inline bool hasPixels(const CImg32& image) {
    return image.peekData() && std::uint64_t{4} * image.getWidth() <= image.getBytesPerLine() &&
           std::uint64_t{image.getHeight()} * image.getBytesPerLine() <= image.getTotalBytes();
}

/// Whether the rectangle is ordered and lies in the image. ImgRect::contains does not do: unordered
/// rectangles pass it.
inline bool inside(const CImg& image, const ImgRect& r) {
    return r.getLeft() <= r.getRight() && r.getTop() <= r.getBottom() && r.getRight() < image.getWidth() &&
           r.getBottom() < image.getHeight();
}

/// Whether a part of that size can be reduced to another, which may be the same.
inline bool isReduction(const ImgRect& part, ImgULong width, ImgULong height) {
    return width != 0 && height != 0 && width <= part.getWidth() && height <= part.getHeight();
}

// The getter is not const, though it changes nothing.
inline ImgAlignmentEnum alignmentOf(const CImg1& image) { return const_cast<CImg1&>(image).getAlignment(); }
inline ImgAlignmentEnum alignmentOf(const CImg8& image) { return const_cast<CImg8&>(image).getAlignment(); }

// An image of the same kind for a result: the source's colours and alignment, colour map and alignment, or channel
// order. Bits are clear, other pixels unset: they are for who writes all of them. Null on failure.

inline CImg1* createLike(const CImg1& source, ImgULong width, ImgULong height) {
    return CImg1::create(width, height, source.getBackgroundInterpretation(), source.getForegroundInterpretation(),
                         alignmentOf(source));
}
inline CImg8* createLike(const CImg8& source, ImgULong width, ImgULong height) {
    return RowStorage::createUnset(width, height, source.getColorMap(), alignmentOf(source));
}
inline CImg32* createLike(const CImg32& source, ImgULong width, ImgULong height) {
    return RowStorage::createUnset(width, height, source.getRGBOrder());
}

}  // namespace tilepress
