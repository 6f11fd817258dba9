#pragma once

// Areas of pixels enlarged and reduced.

#include "foundation/heap.h"
#include "transform/rows.h"
#include "transform/runs.h"

#include <cstdint>
#include <cstring>

namespace tilepress {

/// Repeats the pixels of `from` over `to`. False when memory runs out.
template <class Pixel>
bool enlargePixels(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    Heap<ImgULong> starts;
    if (!markTable(starts, to.width, from.width)) return false;
    const bool doubles = to.width % 2 == 0 && to.width / 2 == from.width;
    forEachMark(to.height, from.height, [&](std::uint32_t first, std::uint32_t copies, std::uint32_t y) {
        if (doubles) doublePixels(to[first], from[y], from.width);
        else repeatPixels(to[first], from[y], starts.get(), from.width);
        for (std::uint32_t copy = 1; copy < copies; ++copy)
            std::memcpy(to[first + copy], to[first], to.width * sizeof(Pixel));
    });
    return true;
}

/// Fills `to` with the first pixels of the cells of `from`. False when memory runs out.
template <class Pixel>
bool reducePixels(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    Heap<ImgULong> starts;
    if (!markTable(starts, from.width, to.width)) return false;
    forEachMark(from.height, to.height, [&](std::uint32_t first, std::uint32_t, std::uint32_t band) {
        pickPixels(to[band], from[first], starts.get(), to.width);
    });
    return true;
}

/// The same with the cells' first pixels that differ from the background, where there are any.
template <class Pixel>
bool reducePixels(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from, ImgULong background) {
    Heap<ImgULong> starts;
    if (!markTable(starts, from.width, to.width)) return false;
    forEachMark(from.height, to.height, [&](std::uint32_t first, std::uint32_t count, std::uint32_t band) {
        pickPixels(to[band], from[first], starts.get(), to.width);
        for (std::uint32_t y = 0; y < count; ++y)
            pickOthers(to[band], from[first + y], starts.get(), to.width, background);
    });
    return true;
}

}  // namespace tilepress
