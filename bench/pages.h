#pragma once

// Pages to measure on: Group 4 data in memory, as the library and libtiff each take
// them, and the pixels that libtiff makes of them.

#include "tilepress/CImg1G4.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<unsigned char>;

/// Packed rows without padding between them: the first pixel in bit 7, 1 is coded black, spare bits 0.
struct Bitmap {
    std::uint32_t width = 0, height = 0;
    Bytes bits;

    Bitmap() = default;
    Bitmap(std::uint32_t w, std::uint32_t h) : width(w), height(h), bits(std::size_t{(w + 7) / 8} * h) {}
    std::size_t rowBytes() const { return (width + 7) / 8; }
    unsigned char* row(std::size_t y) { return bits.data() + y * rowBytes(); }
    const unsigned char* row(std::size_t y) const { return bits.data() + y * rowBytes(); }
    void clearSpareBits() {
        for (std::size_t y = 0; width % 8 && y < height; ++y)
            row(y)[rowBytes() - 1] &= static_cast<unsigned char>(0xFF00 >> width % 8);
    }
};

struct Page {
    std::string name;
    Bitmap bitmap;  ///< what libtiff decodes
    bool tiled = false;
    std::uint32_t tileWidth = 0, tileHeight = 0;  ///< of a tile, or of a strip
    std::vector<Bytes> tiles;                     ///< plain byte streams, most significant bit first

    double pixels() const { return double(bitmap.width) * bitmap.height; }
    std::size_t codedBytes() const;
    std::uint32_t tilesAcross() const { return (bitmap.width + tileWidth - 1) / tileWidth; }
    /// Rows that tile k holds: the last strip holds only what is left, a tile is always whole.
    std::uint32_t rowsOf(std::uint32_t k) const;
};

using PagePtr = std::shared_ptr<const Page>;

/// The file's bilevel pages. What is not Group 4 is coded so first. Says on the standard error stream what it
/// leaves out, and gives nothing when the file cannot be read.
std::vector<PagePtr> loadPages(const std::string& path);

/// A page of one strip.
PagePtr coded(std::string name, Bitmap bitmap);

/// The page's tiles in the form that the library takes: 16-bit words.
class CodedTiles {
public:
    explicit CodedTiles(const Page& page);

    struct Release {
        void operator()(CImg1G4* image) const {
            image->releaseData();
            delete image;
        }
    };
    using Image = std::unique_ptr<CImg1G4, Release>;
    /// A new image of the page. Its background is not known.
    Image image() const;

private:
    std::uint32_t width_, height_, tileWidth_, tileHeight_;
    std::vector<Bytes> words_;
};

}  // namespace bench
