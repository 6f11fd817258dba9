#pragma once

// The pixels of images as the kernels see them.

#include "kernels/bit_rows.h"
#include "kernels/pixel_rows.h"
#include "model/image_kinds.h"

namespace tilepress {

inline PackedRows packedRows(const CImg1& image) {
    return {image.peekData(), static_cast<std::ptrdiff_t>(image.getBytesPerLine())};
}

/// The whole image, or a rectangle that lies in it.
inline BitArea areaOf(const CImg1& image) { return {packedRows(image), 0, image.getWidth(), image.getHeight()}; }
inline PixelArea<unsigned char> areaOf(const CImg8& image) {
    return {image.peekDataArray(), 0, image.getWidth(), image.getHeight()};
}
inline PixelArea<ImgULong> areaOf(const CImg32& image) {
    return {image.peekDataArray(), 0, image.getWidth(), image.getHeight()};
}
template <class Image>
inline auto areaOf(const Image& image, const ImgRect& part) {
    return areaOf(image).part(part.getLeft(), part.getTop(), part.getWidth(), part.getHeight());
}

}  // namespace tilepress
