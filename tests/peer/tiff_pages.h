#pragma once

// Pages of Group 4 TIFF files, in memory: the coded bytes as they stand in the file,
// and the pixels as libtiff decodes them.

#include "support/g4_images.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace support {

struct TiffPage {
    std::uint32_t width = 0, height = 0, tileWidth = 0, tileHeight = 0;
    std::vector<Bytes> tiles;  // in the order that CImg1G4 takes
    std::size_t rowBytes = 0;
    Bytes pixels;  // packed, 1 where the code says black; pad bits 0
};

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

inline void readCoded(TIFF* tiff, TiffPage& page) {
    const bool tiled = TIFFIsTiled(tiff);
    std::uint16_t fillOrder = FILLORDER_MSB2LSB;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &fillOrder);
    const std::uint32_t count = tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    for (std::uint32_t k = 0; k < count; ++k) {
        Bytes code(static_cast<std::size_t>(TIFFGetStrileByteCount(tiff, k)));
        const auto size = static_cast<tmsize_t>(code.size());
        if (tiled) TIFFReadRawTile(tiff, k, code.data(), size);
        else TIFFReadRawStrip(tiff, k, code.data(), size);
        if (fillOrder == FILLORDER_LSB2MSB) TIFFReverseBits(code.data(), size);
        page.tiles.push_back(exchanged(code));
    }
}

inline void readDecoded(TIFF* tiff, TiffPage& page) {
    page.pixels.assign(page.rowBytes * page.height, 0);
    if (!TIFFIsTiled(tiff)) {
        for (std::uint32_t y = 0; y < page.height; ++y)
            TIFFReadScanline(tiff, page.pixels.data() + y * page.rowBytes, y, 0);
    } else {
        const std::size_t stride = page.tileWidth / 8;  // tile widths are multiples of 16
        Bytes tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
        for (std::uint32_t y = 0; y < page.height; y += page.tileHeight)
            for (std::uint32_t x = 0; x < page.width; x += page.tileWidth) {
                TIFFReadTile(tiff, tile.data(), x, y, 0, 0);
                const std::size_t bytes = std::min(stride, page.rowBytes - x / 8);
                for (std::uint32_t row = 0; row < page.tileHeight && y + row < page.height; ++row)
                    std::memcpy(page.pixels.data() + (y + row) * page.rowBytes + x / 8, tile.data() + row * stride,
                                bytes);
            }
    }
    if (page.width % 8 != 0)
        for (std::uint32_t y = 0; y < page.height; ++y)
            page.pixels[(y + 1) * page.rowBytes - 1] &= static_cast<unsigned char>(0xFF << (8 - page.width % 8));
}

inline std::vector<TiffPage> readTiff(const std::string& path) {
    std::vector<TiffPage> pages;
    const Tiff tiff(TIFFOpen(path.c_str(), "r"));
    if (!tiff) return pages;
    do {
        std::uint16_t compression = 0;
        TIFFGetField(tiff.get(), TIFFTAG_COMPRESSION, &compression);
        if (compression != COMPRESSION_CCITTFAX4) continue;
        TiffPage page;
        TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &page.width);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &page.height);
        page.rowBytes = (page.width + 7) / 8;
        if (TIFFIsTiled(tiff.get())) {
            TIFFGetField(tiff.get(), TIFFTAG_TILEWIDTH, &page.tileWidth);
            TIFFGetField(tiff.get(), TIFFTAG_TILELENGTH, &page.tileHeight);
        } else {
            page.tileWidth = page.width;
            TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_ROWSPERSTRIP, &page.tileHeight);
            page.tileHeight = std::min(page.tileHeight, page.height);
        }
        readCoded(tiff.get(), page);
        readDecoded(tiff.get(), page);
        pages.push_back(std::move(page));
    } while (TIFFReadDirectory(tiff.get()));
    return pages;
}

inline G4Image imageOf(TiffPage& page) {
    return makeG4(page.width, page.height, page.tileWidth, page.tileHeight, page.tiles);
}

}  // namespace support
