#pragma once

// libtiff, and Leptonica's images.

#include "tiff_peer.h"

#include <leptonica/allheaders.h>

#include <memory>

namespace bench {

struct DestroyPix {
    void operator()(PIX* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<PIX, DestroyPix>;

PixPtr toPix(const Bitmap& bitmap);
/// 8 or 32 bits a pixel, `bytes` of them a row.
PixPtr toPix(const unsigned char* rows, std::uint32_t width, std::uint32_t height, int depth);
/// A 1-bit image's rows in our form.
Bitmap toBitmap(PIX* pix);

/// Ink of every whole cell of 10 by 10 pixels, as fast as Leptonica's primitives allow.
PixPtr inkTenth(PIX* pix);
/// The same for 3 by 3 pixels.
PixPtr inkThird(PIX* pix);

/// Black pixels of every 10 x 10 cell, rightmost and lowest incomplete cells left out.
void countTenths(const Bitmap& bitmap, std::vector<std::uint32_t>& counts);

}  // namespace bench
