#pragma once

// Pixels of palette and RGB images: one block, reached through a table of rows.

#include "foundation/heap.h"
#include "model/temporary.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace tilepress {

/// A block of `totalBytes` bytes and its rows, `width` pixels apart; null when memory runs out. What is behind the
/// rows' pixels is clear, the pixels only when asked for.
template <class Pixel>
Pixel** makeRows(std::uint64_t totalBytes, std::size_t width, std::size_t height, bool clear) {
    const std::size_t count = static_cast<std::size_t>(totalBytes / sizeof(Pixel));
    Heap<Pixel> block(clear ? allocate<Pixel>(count) : allocateUnset<Pixel>(count));
    Heap<Pixel*> rows(std::uint64_t{height});
    if (!block || !rows) return nullptr;
    if (!clear) std::fill(block.get() + width * height, block.get() + count, Pixel{});
    Pixel* row = block.release();
    for (std::size_t i = 0; i < height; ++i, row += width) rows[i] = row;
    return rows.release();
}

template <class Pixel>
void freeRows(Pixel** rows) {
    if (rows) std::free(rows[0]);
    std::free(rows);
}

/// Takes the block out of the table and frees the table.
template <class Pixel>
Pixel* releaseBlock(Pixel**& rows) {
    Pixel* const block = rows ? rows[0] : nullptr;
    std::free(rows);
    rows = nullptr;
    return block;
}

/// What both kinds do with their blocks, as a friend of them. No caller outside can get an image with unset pixels:
/// they are for results of which every pixel is written at once, where clearing would take about as long as copying.
struct RowStorage {
    /// False where an image with a header has a block already, or one would be too large.
    template <class Image>
    static bool setTotalBytes(Image& image) {
        const std::uint64_t bytes = std::uint64_t{image.getBytesPerLine()} * image.getHeight();
        if (image.rows || bytes > UINT32_MAX) return false;
        image.totalBytes = static_cast<ImgULong>(bytes);
        return true;
    }
    /// Gives an image with a header its block, in which padding is clear and pixels are where `clear` says so.
    template <class Image>
    static bool make(Image& image, bool clear) {
        return setTotalBytes(image) && attach(image, clear);
    }
    /// The same with the pixels of a caller's block.
    template <class Image, class Pixel>
    static bool copy(Image& image, const Pixel* data, ImgULong length) {
        // Kept: fewer than four bytes are refused.
        if (!data || length < 4 || !setTotalBytes(image) || !image.verifyHeader(length) || !attach(image, false))
            return false;
        std::memcpy(image.rows[0], data, image.totalBytes);
        return true;
    }
    template <class Image, class Pixel>
    static ImgErr transfer(Image& image, Pixel** data, ImgULong length) {
        if (!image.verifyHeader(length) || !data) return imgRaise(ImgErrCreate);
        // The old block goes last: it may be the one handed in.
        Pixel** const old = image.rows;
        image.rows = nullptr;
        const bool copied = copy(image, *data, length);
        freeRows(old);
        if (!copied) return imgRaise(ImgErrCreate);
        // Kept: the caller's block is copied and its pointer lost, unlike the bilevel kind.
        *data = nullptr;
        return imgRaise(ImgErrNone);
    }
    template <class Image, class Pixel>
    static ImgErr duplicate(Image& image, const Pixel* data, ImgULong length) {
        if (!image.verifyHeader(length) || !data || (!image.rows && !make(image, true))) return imgRaise(ImgErrCreate);
        std::memmove(image.rows[0], data, image.totalBytes);
        return imgRaise(ImgErrNone);
    }

    static CImg8* createUnset(ImgULong width, ImgULong height, ColorMap* map, ImgAlignmentEnum alignment) {
        return finished(CImg8::create(), [&](CImg8& image) {
            return image.initHeader(width, height, width, height, alignment) && make(image, false) &&
                   image.initColorMap(map);
        });
    }
    static CImg32* createUnset(ImgULong width, ImgULong height, RGBOrder order) {
        return finished(CImg32::create(), [&](CImg32& image) {
            return image.initHeader(width, height, width, height, order) && make(image, false);
        });
    }

private:
    template <class Image>
    static bool attach(Image& image, bool clear) {
        // Kept: rows are a width apart, also where a palette image's padding makes the block longer than that.
        image.rows = makeRows<std::remove_pointer_t<decltype(image.peekData())>>(image.totalBytes, image.getWidth(),
                                                                                 image.getHeight(), clear);
        return image.rows != nullptr;
    }
};

/// Converts into an image of which nobody has seen the pixels, which may be unset. Blank after a refused conversion.
void convertInto(CImg32& fresh, const IImg& source);

}  // namespace tilepress
