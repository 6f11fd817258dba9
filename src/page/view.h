#pragma once

// A view as the caller asked for it, checked, and its geometry before the picture is turned.

#include "page/tile_walk.h"
#include "tilepress/page.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tilepress {

struct ViewPlan {
    g4::PageRect rect;            ///< of the page
    std::uint32_t width, height;  ///< of the upright picture
    std::uint32_t mode, format;
    bool turned;               ///< columns become rows
    bool fromRight, bottomUp;  ///< rows of the upright picture are reversed; its last row comes first
    bool blackPaper;           ///< coded white is ink
    bool invert;
    std::uint32_t ink, paper;  ///< 0xAARRGGBB
    unsigned char* pixels;
    std::ptrdiff_t stride;

    bool narrows() const { return width < rect.width; }
    bool lowers() const { return height < rect.height; }
    /// Cells of pixels across and down, each of which has its share of ink.
    std::uint32_t cellsAcross() const { return std::min(width, rect.width); }
    std::uint32_t bands() const { return std::min(height, rect.height); }
    /// Whether pixels are made from how much of a cell is ink.
    bool counts() const { return (mode == TP_GREY || mode == TP_COVERAGE) && (narrows() || lowers()); }
    unsigned char* row(std::uint32_t y) const { return pixels + static_cast<std::ptrdiff_t>(y) * stride; }
};

/// The rectangle, of which a width and height of 0 mean all from its corner on; false where it does not lie on the
/// page.
bool partOfPage(const tp_page_info& page, const g4::PageRect& asked, g4::PageRect& rect);

/// Fills in `plan`; the picture's pixels are checked against the limits.
tp_status planView(const tp_view& view, const tp_page_info& page, const tp_limits& limits, ViewPlan& plan);

/// Bytes of a picture's row of `width` pixels.
std::uint64_t rowBytes(std::uint32_t format, std::uint32_t width);

}  // namespace tilepress
