#pragma once

// What every scaling worker tests first.

#include "foundation/refuse.h"
#include "model/image_kinds.h"
#include "model/temporary.h"

namespace tilepress {

/// Whether `part` can be read; raises when not.
template <class Image>
bool hasPart(const Image& image, const ImgRect& part) {
    return (hasPixels(image) && inside(image, part)) || refuse(ImgErrBadArgument);
}

/// Whether `part` enlarges to that size. A size that is smaller raises nothing.
template <class Image>
bool canEnlarge(const Image& image, const ImgRect& part, ImgULong width, ImgULong height) {
    return hasPart(image, part) && width >= part.getWidth() && height >= part.getHeight();
}

/// Whether `part` reduces to that size. A size that is larger or 0 raises nothing.
template <class Image>
bool canReduce(const Image& image, const ImgRect& part, ImgULong width, ImgULong height) {
    return hasPart(image, part) && isReduction(part, width, height);
}

}  // namespace tilepress
