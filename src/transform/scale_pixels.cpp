// Scaling of palette and RGB images: the pixel type is the only difference.

#include "foundation/heap.h"
#include "model/kinds.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"
#include "transform/runs.h"

#include <algorithm>
#include <cstring>

using namespace tilepress;

namespace {

bool canReduce(const ImgRect& src, ImgULong width, ImgULong height) {
    return width != 0 && height != 0 && width <= src.getWidth() && height <= src.getHeight();
}

/// Whether the worker may touch the rectangle's pixels; raises the code when not.
template <class Image>
bool usable(const Image& image, const ImgRect& src) {
    if (hasPixels(image) && inside(image, src)) return true;
    imgRaise(ImgErrBadArgument);
    return false;
}

/// Repeats each source pixel over its run: pixel k covers starts[k] to starts[k + 1].
template <class Pixel>
void enlargeRow(Pixel* dst, const Pixel* src, std::size_t count, const ImgULong* starts) {
    for (std::size_t k = 0; k < count; ++k) {
        const Pixel pixel = src[k];
        for (ImgULong x = starts[k]; x < starts[k + 1]; ++x) dst[x] = pixel;
    }
}

/// The first pixel that is not background of the `rows` rows of a cell, else its first one.
template <class Pixel>
Pixel pickForeground(const Pixel* const* rows, std::size_t left, std::size_t width, std::size_t height,
                     Pixel background) {
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = left; x < left + width; ++x)
            if (rows[y][x] != background) return rows[y][x];
    return rows[0][left];
}

template <class Image>
Image* enlarged(const Image& source, ImgULong width, ImgULong height, const ImgRect& src) {
    const ImgULong srcWidth = src.getWidth(), srcHeight = src.getHeight();
    if (width < srcWidth || height < srcHeight || !usable(source, src)) return nullptr;
    Image* const result = createLike(source, width, height);
    Heap<ImgULong> columns;
    if (!result || !markTable(columns, width, srcWidth)) {
        delete result;
        return nullptr;
    }
    const auto rows = result->peekDataArray();
    forEachMark(height, srcHeight, [&](ImgULong first, ImgULong copies, ImgULong y) {
        enlargeRow(rows[first], source.peekDataArray()[src.getTop() + y] + src.getLeft(), srcWidth, columns.get());
        for (ImgULong copy = 1; copy < copies; ++copy)
            std::memcpy(rows[first + copy], rows[first], width * sizeof *rows[first]);
    });
    return result;
}

/// pick(rows, left, width, height) chooses the pixel of each cell of a reduction into `result`.
template <class Image, class Pick>
Image* reduced(Image* result, const Image& source, ImgULong width, ImgULong height, const ImgRect& src, Pick pick) {
    Heap<ImgULong> columns;
    if (!result || !markTable(columns, src.getWidth(), width)) {
        delete result;
        return nullptr;
    }
    forEachMark(src.getHeight(), height, [&](ImgULong first, ImgULong rows, ImgULong band) {
        const auto row = source.peekDataArray() + src.getTop() + first;
        const auto out = result->peekDataArray()[band];
        for (ImgULong k = 0; k < width; ++k)
            out[k] = pick(row, std::size_t{src.getLeft()} + columns[k], columns[k + 1] - columns[k], rows);
    });
    return result;
}

template <class Image>
Image* picked(const Image& source, ImgULong width, ImgULong height, const ImgRect& src) {
    if (!canReduce(src, width, height) || !usable(source, src)) return nullptr;
    return reduced(createLike(source, width, height), source, width, height, src,
                   [](const auto* rows, std::size_t left, ImgULong, ImgULong) { return rows[0][left]; });
}

/// As picked, but ink wins: a cell whose first pixel is background gives its first pixel that is not.
template <class Image, class Pixel>
Image* inked(Image* result, const Image& source, ImgULong width, ImgULong height, const ImgRect& src,
             Pixel background) {
    return reduced(result, source, width, height, src,
                   [background](const auto* rows, std::size_t left, ImgULong cellWidth, ImgULong cellHeight) {
                       return pickForeground<Pixel>(rows, left, cellWidth, cellHeight, background);
                   });
}

}  // namespace

CImg8* CImg8::Enlarge(ImgULong width, ImgULong height, const ImgRect& src) {
    return enlarged(*this, width, height, src);
}
CImg32* CImg32::Enlarge(ImgULong width, ImgULong height, const ImgRect& src) {
    return enlarged(*this, width, height, src);
}

CImg8* CImg8::Reduce(ImgULong width, ImgULong height, const ImgRect& src) { return picked(*this, width, height, src); }
CImg32* CImg32::Reduce(ImgULong width, ImgULong height, const ImgRect& src) {
    return picked(*this, width, height, src);
}

CImg8* CImg8::Reduce_bkg(ImgULong width, ImgULong height, const ImgRect& src) {
    const auto background = static_cast<unsigned char>(calculateBackground());
    if (!canReduce(src, width, height) || !usable(*this, src)) return nullptr;
    return inked(createLike(*this, width, height), *this, width, height, src, background);
}

CImg32* CImg32::Reduce_bkg(ImgULong width, ImgULong height, const ImgRect& src) {
    const ImgULong background = calculateBackground();
    if (!canReduce(src, width, height) || !usable(*this, src)) return nullptr;
    // Kept: the result has the rectangle's size and is filled only as far as asked.
    return inked(createLike(*this, src.getWidth(), src.getHeight()), *this, width, height, src, background);
}
