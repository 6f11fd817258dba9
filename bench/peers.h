#pragma once

// libtiff on memory, and Leptonica's images.

#include "pages.h"

#include <leptonica/allheaders.h>
#include <tiffio.h>

#include <memory>

namespace bench {

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

struct DestroyPix {
    void operator()(PIX* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<PIX, DestroyPix>;

/// A file in memory; must outlive what opens it.
struct MemoryFile {
    Bytes data;
    std::uint64_t position = 0;

    Tiff open(const char* mode);
};

/// Lays a decoded tile or strip into the page.
void placeTile(const Page& page, std::uint32_t k, const unsigned char* rows, Bitmap& into);

/// A page as libtiff reads it: the directory in memory, the coded bytes the page's own.
class MemoryTiff {
public:
    explicit MemoryTiff(const Page& page);
    /// Strips go straight into the bitmap, tiles over a buffer. The bitmap has the page's size.
    bool decode(const Page& page, Bitmap& into);

private:
    MemoryFile file_;
    Tiff tiff_;
    Bytes tile_;
};

/// libtiff's encoder into memory, one strip a page.
class StripEncoder {
public:
    void encode(const Bitmap& bitmap);
    Bytes strip();  ///< of the last page encoded

private:
    MemoryFile file_;
};

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
