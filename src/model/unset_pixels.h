#pragma once

// Palette and RGB images for the library's own results, of which every pixel is written at once: clearing them first
// would take about as long as copying them.

#include "model/row_table.h"
#include "model/temporary.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <cstdint>
#include <type_traits>

namespace tilepress {

/// A friend of the images: no caller outside can get one with unset pixels.
struct FreshPixels {
    /// Gives an image with a header its block, in which padding is clear and pixels are where `clear` says so.
    template <class Image>
    static bool make(Image& image, bool clear) {
        const std::uint64_t bytes = std::uint64_t{image.getBytesPerLine()} * image.getHeight();
        if (image.rows || bytes > UINT32_MAX) return false;
        image.totalBytes = static_cast<ImgULong>(bytes);
        // Kept: rows are a width apart, also where a palette image's padding makes the block longer than that.
        image.rows = makeRows<std::remove_pointer_t<decltype(image.peekData())>>(bytes, image.getWidth(),
                                                                                 image.getHeight(), clear);
        return image.rows != nullptr;
    }

    static CImg8* create(ImgULong width, ImgULong height, ColorMap* map, ImgAlignmentEnum alignment) {
        return finished(CImg8::create(), [&](CImg8& image) {
            return image.initHeader(width, height, width, height, alignment) && make(image, false) &&
                   image.initColorMap(map);
        });
    }
    static CImg32* create(ImgULong width, ImgULong height, RGBOrder order) {
        return finished(CImg32::create(), [&](CImg32& image) {
            return image.initHeader(width, height, width, height, order) && make(image, false);
        });
    }
};

/// Converts into an image of which nobody has seen the pixels, which may be unset. Blank after a refused conversion.
void convertInto(CImg32& fresh, const IImg& source);

}  // namespace tilepress
