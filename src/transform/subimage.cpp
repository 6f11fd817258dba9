// Rectangles cut out into images of their own.

#include "foundation/refuse.h"
#include "model/image_kinds.h"

#include <algorithm>
#include <cstring>

namespace tilepress {
namespace {

bool isNoLarger(const CImg& image, const ImgRect& rect) {
    return rect.getWidth() != 0 && rect.getHeight() != 0 && rect.getWidth() <= image.getWidth() &&
           rect.getHeight() <= image.getHeight();
}

// Kept: strict on all sides, so that rectangles which touch the far edge with their first row or column, or the
// first edge with their last one, are refused, and with them every rectangle of a one-row or one-column image.
bool overlapsStrictly(const CImg& image, const ImgRect& rect) {
    return rect.getTop() < image.getBottom() && rect.getLeft() < image.getRight() &&
           image.getTop() < rect.getBottom() && image.getLeft() < rect.getRight();
}

/// Of a palette or RGB image.
template <class Image>
Image* cut(const Image& image, const ImgRect& part) {
    if (!hasPixels(image) || !inside(image, part)) return refuse(ImgErrBadArgument);
    Image* const result = createLike(image, part.getWidth(), part.getHeight());
    if (!result) return nullptr;
    const auto* const pixels = image.peekData();
    // Whole rows: the padding of a palette image's carries the pixels that follow.
    copyRows(areaOf(*result), areaOf(image, part), result->getBytesPerLine() / sizeof *pixels,
             pixels + image.getTotalBytes() / sizeof *pixels);
    return result;
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

IImg* CImg1::getSubImage(const ImgRect& part) {
    if (!isNoLarger(*this, part) || !overlapsStrictly(*this, part)) return refuse(ImgErrBadArgument);
    // Kept: wherever such a rectangle lies.
    const bool whole = part.getWidth() == getWidth() && part.getHeight() == getHeight();
    if (!hasPixels(*this) || (!whole && !inside(*this, part))) return refuse(ImgErrBadArgument);
    CImg1* result = createLike(*this, part.getWidth(), part.getHeight());
    if (!result) return refuse(ImgErrCreate);
    if (whole) {
        std::memcpy(result->pixels, pixels, std::min(totalBytes, result->totalBytes));
    } else {
        // Kept: pad bits carry the pixels that follow the rectangle.
        const std::uint64_t start = std::uint64_t{part.getTop()} * bytesPerLine;
        copyRows(areaOf(*result), areaOf(*this, part), totalBytes - start);
    }
    imgRaise(ImgErrNone);
    return result;
}

IImg* CImg8::getSubImage(const ImgRect& part) { return cut(*this, part); }
IImg* CImg32::getSubImage(const ImgRect& part) { return cut(*this, part); }
