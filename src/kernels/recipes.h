#pragma once

// What pictures of any storage are put through in several steps. A kind of picture says how its pictures are made, and
// what of them can be seen:
//
//     like(image, width, height)    a picture like another for a result of which every pixel is written
//     blank(image)                  one of its size, for pixels that are moved about
//     turned(image)                 the picture by half a turn
//     area(image)                   its pixels, whole
//
// The first three give what owns a picture, or nothing when memory runs out.

#include "kernels/mirror_turn.h"
#include "kernels/shear.h"

#include <algorithm>
#include <cstdint>

namespace tilepress {

/// The picture mirrored or turned by right angles.
template <class Kind, class Image>
auto placed(const Kind& kind, Places places, const Image& image) {
    const auto from = kind.area(image);
    auto result = places.turned ? kind.like(image, from.height, from.width) : kind.like(image, from.width, from.height);
    if (result) place(places, kind.area(*result), from);
    return result;
}

/// The picture with row y moved right by table[height - 1 - y].
template <class Kind, class Image>
auto shearedAlongRows(const Kind& kind, Image& image, const int* table) {
    auto result = kind.blank(image);
    if (result) moveRows(kind.area(*result), kind.area(image), table);
    return result;
}

/// The picture with column x moved up by table[x].
template <class Kind, class Image>
auto shearedAlongColumns(const Kind& kind, Image& image, const int* table) {
    auto result = kind.blank(image);
    if (result && !moveColumns(kind.area(*result), kind.area(image), table)) result.reset();
    return result;
}

/// The picture turned by 0 to 360 degrees, a half turn and three shears.
template <class Kind, class Image>
auto turnedByShears(const Kind& kind, Image& image, double degrees) -> decltype(kind.blank(image)) {
    const auto whole = kind.area(image);
    const Shears shears(degrees, whole.width, whole.height);
    if (!shears) return nullptr;
    auto turned = shears.halfTurn ? kind.turned(image) : nullptr;
    if (shears.halfTurn && !turned) return nullptr;
    auto first = shearedAlongRows(kind, turned ? *turned : image, shears.alongRows.get());
    turned.reset();
    if (!first) return nullptr;
    const auto second = shearedAlongColumns(kind, *first, shears.alongColumns.get());
    first.reset();
    return second ? shearedAlongRows(kind, *second, shears.alongRows.get()) : nullptr;
}

/// The picture at another size: enlarge(width, height) or reduce() where neither dimension goes the other way. Else one
/// of them grows first: inSteps(width, height) enlarges to that size, and reduces what comes of it.
template <class Enlarge, class Reduce, class InSteps>
auto resized(std::uint32_t width, std::uint32_t height, std::uint32_t newWidth, std::uint32_t newHeight,
             Enlarge enlarge, Reduce reduce, InSteps inSteps) -> decltype(reduce()) {
    const bool grows = newWidth > width || newHeight > height, shrinks = newWidth < width || newHeight < height;
    if (!grows) return reduce();
    if (!shrinks) return enlarge(newWidth, newHeight);
    return inSteps(std::max(width, newWidth), std::max(height, newHeight));
}

}  // namespace tilepress
