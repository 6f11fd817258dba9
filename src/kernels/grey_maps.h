#pragma once

// Grey levels of bilevel cells.

#include "foundation/heap.h"
#include "tilepress/api.h"

#include <cstdint>

namespace tilepress {

/// Cells of this many levels and more are mapped by a staircase, smaller ones by a square law.
inline constexpr std::uint32_t kStaircaseLevels = 11000;

/// The staircase: the grey of `count` foreground pixels of `levels` - 1.
inline unsigned char staircaseGrey(std::uint32_t levels, std::uint32_t count) {
    const std::uint64_t step = std::uint64_t{count} * 256 / levels;
    // Kept: one step short, so that the last 1/256 of the levels is black as the one before it.
    return static_cast<unsigned char>(step >= 255 ? 0 : 255 - step);
}

/// Fills the map of a cell of at least one pixel, `levels` - 1 in all: its grey by how many are foreground.
void fillGreyMap(unsigned char* map, std::uint32_t levels);

/// A pixel of three equal components.
inline ImgULong greyPixel(unsigned char grey) { return ImgULong{grey} * 0x010101u; }

/// The maps of one reduction: cells have one of two widths and one of two heights.
class GreyMaps {
public:
    /// False when memory runs out or a cell has more pixels than 32 bits count. `fill` makes each map.
    bool prepare(std::uint32_t srcWidth, std::uint32_t srcHeight, std::uint32_t dstWidth, std::uint32_t dstHeight,
                 void (*fill)(unsigned char* map, std::uint32_t levels) = fillGreyMap);

    /// The grey of a cell of which `count` pixels are foreground; `count` is at most the cell's area.
    unsigned char grey(std::uint32_t cellHeight, std::uint32_t cellWidth, std::uint32_t count) const {
        const unsigned char* map = of(cellHeight, cellWidth);
        return map ? map[count] : staircaseGrey(cellHeight * cellWidth + 1, count);
    }

    /// The map itself, or null for cells that the staircase serves.
    const unsigned char* of(std::uint32_t cellHeight, std::uint32_t cellWidth) const {
        return maps_[cellHeight != lowHeight_][cellWidth != lowWidth_].get();
    }

private:
    Heap<unsigned char> maps_[2][2];
    std::uint32_t lowWidth_ = 0, lowHeight_ = 0;
};

}  // namespace tilepress
