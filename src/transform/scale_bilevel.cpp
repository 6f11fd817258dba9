// Scaling of bilevel images to bilevel images: by runs of ink, never by pixels.

#include "model/kinds.h"
#include "tilepress/CImg1.h"
#include "transform/ink_rows.h"
#include "transform/runs.h"

#include <algorithm>
#include <cstring>

using namespace tilepress;

namespace {

/// An image for a scaled copy, or null.
CImg1* emptyResult(const CImg1& source, ImgULong width, ImgULong height) {
    // Kept: the alignment's value is passed as the colour of 0 bits, and rows are padded to bytes.
    CImg1* const result = CImg1::create(width, height, alignmentOf(source), 0xFF000000, ImgAlignNone);
    if (result) result->setBackgroundColor(0);
    return result;
}

bool usable(const CImg1& image, const ImgRect& src) {
    if (hasPixels(image) && inside(image, src)) return true;
    imgRaise(ImgErrBadArgument);
    return false;
}

bool canReduce(const ImgRect& src, ImgULong width, ImgULong height) {
    return width != 0 && height != 0 && width <= src.getWidth() && height <= src.getHeight();
}

/// Every bit of the first half of a word twice.
std::uint64_t doubled(std::uint64_t word) {
    std::uint64_t v = word >> 32;
    v = (v | v << 16) & 0x0000FFFF0000FFFF;
    v = (v | v << 8) & 0x00FF00FF00FF00FF;
    v = (v | v << 4) & 0x0F0F0F0F0F0F0F0F;
    v = (v | v << 2) & 0x3333333333333333;
    v = (v | v << 1) & 0x5555555555555555;
    return v | v << 1;
}

/// Widens a row of `srcWidth` pixels: column x covers starts[x] to starts[x + 1] of the clear row `dst`.
void enlargeRow(std::uint64_t* dst, ImgULong dstWidth, const std::uint64_t* ink, ImgULong srcWidth,
                const ImgULong* starts) {
    if (dstWidth % 2 == 0 && dstWidth / 2 == srcWidth) {
        for (std::size_t k = 0; k < packedWords(dstWidth); ++k) dst[k] = doubled(ink[k / 2] << 32 * (k % 2));
        return;
    }
    forEachRun(ink, packedWords(srcWidth),
               [=](std::size_t from, std::size_t to) { fillSpan(dst, starts[from], starts[to]); });
}

/// The cells of a rectangle that hold ink; null when memory runs out.
CImg1* inkReduced(const CImg1& source, ImgULong width, ImgULong height, const ImgRect& src, bool whiteIsInk) {
    CImg1* const result = emptyResult(source, width, height);
    InkRows rows;
    Heap<ImgULong> cells;
    Heap<std::uint64_t> words(std::uint64_t{packedWords(width)});
    if (!result || !words || !rows.prepare(source, src, whiteIsInk) || !ownerTable(cells, src.getWidth(), width)) {
        delete result;
        return nullptr;
    }
    const std::size_t bytes = result->getBytesPerLine(), srcWords = packedWords(src.getWidth());
    forEachMark(src.getHeight(), height, [&](ImgULong first, ImgULong count, ImgULong band) {
        forEachRun(rows.fold(first, count), srcWords, [&](std::size_t from, std::size_t to) {
            fillSpan(words.get(), cells[from], std::size_t{cells[to - 1]} + 1);
        });
        orWords(result->peekData() + band * bytes, words.get(), bytes);
        std::fill_n(words.get(), packedWords(width), 0);
    });
    return result;
}

}  // namespace

CImg1* CImg1::Enlarge(ImgULong width, ImgULong height, const ImgRect& src) {
    const bool whiteIsInk = calculateBackground() == 1;
    const ImgULong srcWidth = src.getWidth(), srcHeight = src.getHeight();
    if (width < srcWidth || height < srcHeight || !usable(*this, src)) return nullptr;
    CImg1* const result = emptyResult(*this, width, height);
    InkRows rows;
    Heap<ImgULong> starts;
    Heap<std::uint64_t> words(std::uint64_t{packedWords(width)});
    if (!result || !words || !rows.prepare(*this, src, whiteIsInk) || !markTable(starts, width, srcWidth)) {
        delete result;
        return nullptr;
    }
    const std::size_t bytes = result->getBytesPerLine();
    forEachMark(height, srcHeight, [&](ImgULong first, ImgULong copies, ImgULong y) {
        enlargeRow(words.get(), width, rows.fold(y, 1), srcWidth, starts.get());
        unsigned char* const row = result->peekData() + first * bytes;
        orWords(row, words.get(), bytes);
        std::fill_n(words.get(), packedWords(width), 0);
        for (ImgULong copy = 1; copy < copies; ++copy) std::memcpy(row + copy * bytes, row, bytes);
    });
    return result;
}

CImg1* CImg1::Reduce_bkg(ImgULong width, ImgULong height, const ImgRect& src) {
    const bool whiteIsInk = calculateBackground() == 1;
    if (!canReduce(src, width, height) || !usable(*this, src)) return nullptr;
    return inkReduced(*this, width, height, src, whiteIsInk);
}

CImg1* CImg1::QuickReduce_bkg(ImgULong width, ImgULong height, ImgRect& src, ImgULong background) {
    if (!canReduce(src, width, height) || !usable(*this, src)) return nullptr;
    // Kept: with a background of 1 bits are only cleared, in a result that is clear already.
    if (background != 0) return emptyResult(*this, width, height);
    return inkReduced(*this, width, height, src, false);
}

/// Every cell's top left pixel as it is; no dispatcher asks for it.
CImg1* CImg1::Reduce(ImgULong width, ImgULong height, const ImgRect& src) {
    if (!canReduce(src, width, height) || !usable(*this, src)) return nullptr;
    CImg1* const result = CImg1::create(width, height, alignment, 0xFF000000, ImgAlignNone);
    Heap<ImgULong> starts;
    if (!result || !markTable(starts, src.getWidth(), width)) {
        delete result;
        return nullptr;
    }
    const std::size_t bytes = result->getBytesPerLine();
    forEachMark(src.getHeight(), height, [&](ImgULong first, ImgULong, ImgULong band) {
        const unsigned char* const row = pixels + (std::size_t{src.getTop()} + first) * bytesPerLine;
        unsigned char* const out = result->peekData() + band * bytes;
        for (ImgULong k = 0; k < width; ++k) {
            const std::size_t x = std::size_t{src.getLeft()} + starts[k];
            out[k / 8] = static_cast<unsigned char>(out[k / 8] | (row[x / 8] >> (7 - x % 8) & 1) << (7 - k % 8));
        }
    });
    return result;
}
