#pragma once

// libtiff on memory.

#include "pages.h"

#include <tiffio.h>

#include <memory>

namespace bench {

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

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

}  // namespace bench
