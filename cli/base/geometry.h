#pragma once

// Sizes and rectangles as the command line gives them.

#include <cstdint>
#include <string>

struct Size {
    std::uint32_t width = 0, height = 0;

    std::uint64_t pixels() const { return std::uint64_t{width} * height; }
    bool operator==(const Size&) const = default;
};

struct Rect {
    std::uint32_t x = 0, y = 0, width = 0, height = 0;

    Size size() const { return {width, height}; }
};

// All throw Failure when the text is not what it should be.
Size parseSize(const std::string& text);      ///< WxH
Rect parseRect(const std::string& text);      ///< X,Y,W,H
double parseFactor(const std::string& text);  ///< 0.1, 1/10 or 10%

/// Throws Failure when the rectangle is not within the page.
void requireInside(const Rect& rect, Size page);

/// Whether columns and rows change places, as TIFF's orientation tag has it.
constexpr bool isTurned(std::uint32_t orientation) { return orientation > 4; }
/// The size as it is shown.
Size shownSize(Size stored, std::uint32_t orientation);
/// Where a rectangle of the shown page is stored.
Rect storedRect(const Rect& shown, Size stored, std::uint32_t orientation);

/// Whether a side becomes shorter.
constexpr bool reduces(Size from, Size to) { return to.width < from.width || to.height < from.height; }
Size scaled(Size from, double factor);  ///< rounded up
Size fitted(Size from, Size box);       ///< the largest of the same shape in the box, at least 1 x 1
