// Rectangles cut out into images of their own.

#include "foundation/refuse.h"
#include "kernels/bit_rows.h"
#include "model/image_kinds.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <algorithm>
#include <cstring>

namespace tilepress {
namespace {

bool isNoLarger(const CImg& image, const ImgRect& rect) {
    return rect.getWidth() != 0 && rect.getHeight() != 0 && rect.getWidth() <= image.getWidth() &&
           rect.getHeight() <= image.getHeight();
}

bool isWholeSize(const CImg& image, const ImgRect& rect) {
    return rect.getWidth() == image.getWidth() && rect.getHeight() == image.getHeight();
}

// Kept: strict on all sides, so that rectangles which touch the far edge with their first row or column, or the
// first edge with their last one, are refused, and with them every rectangle of a one-row or one-column image.
bool overlapsStrictly(const CImg& image, const ImgRect& rect) {
    return rect.getTop() < image.getBottom() && rect.getLeft() < image.getRight() &&
           image.getTop() < rect.getBottom() && image.getLeft() < rect.getRight();
}

/// Kept: whole bytes, so that pad bits carry the pixels that follow the rectangle; past the block they are 0.
void cutBits(CImg1& result, const CImg1& source, const ImgRect& rect) {
    const std::size_t stride = source.getBytesPerLine(), count = result.getBytesPerLine();
    for (std::size_t y = 0; y < result.getHeight(); ++y) {
        const std::size_t start = (rect.getTop() + y) * stride;
        copyBits(result.peekData() + y * count, count, source.peekData() + start, source.getTotalBytes() - start,
                 rect.getLeft());
    }
}

/// Rows in order: where a palette image's row table steps by less than its row length, each row's padding is
/// overwritten by the next row.
template <class Pixel, class Image>
void cutPixels(Image& result, const Image& source, const ImgRect& rect) {
    const Pixel* end = source.peekData() + source.getTotalBytes() / sizeof(Pixel);
    const std::size_t count = result.getBytesPerLine() / sizeof(Pixel);
    for (std::size_t y = 0; y < result.getHeight(); ++y) {
        const Pixel* src = source.peekDataArray()[rect.getTop() + y] + rect.getLeft();
        const std::size_t there = std::min(count, static_cast<std::size_t>(end - src));
        std::memcpy(result.peekDataArray()[y], src, there * sizeof(Pixel));
    }
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

IImg* CImg1::getSubImage(const ImgRect& part) {
    if (!isNoLarger(*this, part) || !overlapsStrictly(*this, part)) return refuse(ImgErrBadArgument);
    const bool whole = isWholeSize(*this, part);  // Kept: wherever such a rectangle lies
    if (!hasPixels(*this) || (!whole && !inside(*this, part))) return refuse(ImgErrBadArgument);
    CImg1* result = createLike(*this, part.getWidth(), part.getHeight());
    if (!result) return refuse(ImgErrCreate);
    if (whole) std::memcpy(result->pixels, pixels, std::min(totalBytes, result->totalBytes));
    else cutBits(*result, *this, part);
    imgRaise(ImgErrNone);
    return result;
}

IImg* CImg8::getSubImage(const ImgRect& part) {
    if (!hasPixels(*this) || !isNoLarger(*this, part) || !inside(*this, part)) return refuse(ImgErrBadArgument);
    CImg8* result = createLike(*this, part.getWidth(), part.getHeight());
    if (result) cutPixels<unsigned char>(*result, *this, part);
    return result;
}

IImg* CImg32::getSubImage(const ImgRect& part) {
    if (!hasPixels(*this) || !isNoLarger(*this, part) || !inside(*this, part)) return refuse(ImgErrBadArgument);
    CImg32* result = createLike(*this, part.getWidth(), part.getHeight());
    if (result) cutPixels<ImgULong>(*result, *this, part);
    return result;
}
