#pragma once

// Areas of pixels enlarged and reduced.

#include "foundation/heap.h"
#include "kernels/mark_tables.h"
#include "kernels/pixel_rows.h"
#include "kernels/row_writer.h"
#include "kernels/widen_pixels.h"

#include <cstdint>

namespace tilepress {

/// Repeats the pixels of `from` over `to`. False when memory runs out.
template <class Pixel>
bool enlargePixels(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    PixelWidener<Pixel> widener(from.width, to.width);
    if (!widener.prepare()) return false;
    const std::size_t rowBytes = std::size_t{to.width} * sizeof(Pixel);
    const RowWriter writer(std::uint64_t{rowBytes} * to.height);
    forEachMark(to.height, from.height, [&](std::uint32_t first, std::uint32_t copies, std::uint32_t y) {
        // A second row, and any of bytes, is sooner widened again than copied from the one that has just been written.
        const bool copied = sizeof(Pixel) > 1 && copies > 2;
        widener.widen(to[first], from[y]);
        for (std::uint32_t row = first + 1; row < first + copies; ++row) {
            if (copied) writer.write(to[row], to[first], rowBytes);
            else widener.widen(to[row], from[y]);
        }
    });
    return true;
}

/// Fills `to` with the first pixels of the cells of `from`; with a background, with their first pixels that differ from
/// it, where there are any. False when memory runs out.
template <class Pixel, class... Background>
bool reducePixels(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from, Background... background) {
    Heap<ImgULong> starts;
    if (!markTable(starts, from.width, to.width)) return false;
    forEachMark(from.height, to.height, [&](std::uint32_t first, std::uint32_t count, std::uint32_t band) {
        pickPixels(to[band], from[first], starts.get(), to.width);
        for (std::uint32_t y = 0; sizeof...(background) != 0 && y < count; ++y)
            (pickOthers(to[band], from[first + y], starts.get(), to.width, background), ...);
    });
    return true;
}

}  // namespace tilepress
