#pragma once

// What differs between the kinds of uncompressed image, so that code above is
// written once, and the tests every worker makes first.

#include "foundation/refuse.h"
#include "kernels/bit_rows.h"
#include "kernels/pixel_rows.h"
#include "kernels/recipes.h"
#include "model/row_storage.h"
#include "model/temporary.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

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

// What scaling workers test first.

/// Whether a part of that size can be reduced to another, which may be the same.
inline bool isReduction(const ImgRect& part, ImgULong width, ImgULong height) {
    return width != 0 && height != 0 && width <= part.getWidth() && height <= part.getHeight();
}

/// Whether `part` can be read; raises when not.
template <class Image>
bool hasPart(const Image& image, const ImgRect& part) {
    return (hasPixels(image) && inside(image, part)) || refuse(ImgErrBadArgument);
}

/// Whether `part` enlarges to that size. A size that is smaller raises nothing.
template <class Image>
bool canEnlarge(const Image& image, const ImgRect& part, ImgULong width, ImgULong height) {
    return hasPart(image, part) && width >= part.getWidth() && height >= part.getHeight();
}

/// Whether `part` reduces to that size. A size that is larger or 0 raises nothing.
template <class Image>
bool canReduce(const Image& image, const ImgRect& part, ImgULong width, ImgULong height) {
    return hasPart(image, part) && isReduction(part, width, height);
}

// The pixels as kernels see them: of the whole image, or of a rectangle that lies in it.

inline BitArea areaOf(const CImg1& image) {
    return {{image.peekData(), static_cast<std::ptrdiff_t>(image.getBytesPerLine())},
            0,
            image.getWidth(),
            image.getHeight()};
}
inline PixelArea<unsigned char> areaOf(const CImg8& image) {
    return {image.peekDataArray(), 0, image.getWidth(), image.getHeight()};
}
inline PixelArea<ImgULong> areaOf(const CImg32& image) {
    return {image.peekDataArray(), 0, image.getWidth(), image.getHeight()};
}
template <class Image>
auto areaOf(const Image& image, const ImgRect& part) {
    return areaOf(image).part(part.getLeft(), part.getTop(), part.getWidth(), part.getHeight());
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

/// A part at another size, from enlarge(width, height) and reduce(). What grows one way and shrinks the other is
/// enlarged first, and what comes of it is asked for the rest.
template <class Enlarge, class Reduce>
IImg* resized(const ImgRect& part, ImgULong width, ImgULong height, ImgScaleAttr& attr, Enlarge enlarge,
              Reduce reduce) {
    return resized(part.getWidth(), part.getHeight(), width, height, enlarge, reduce, [&](ImgULong w, ImgULong h) {
        const Temporary<std::remove_pointer_t<decltype(enlarge(w, h))>> grown(enlarge(w, h));
        return grown ? grown->scale(grown->getRect(), width, height, attr) : nullptr;
    });
}

}  // namespace tilepress
