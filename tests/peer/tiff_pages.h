#pragma once

// Pages of Group 4 TIFF files, in memory: the coded bytes as they stand in the file,
// and the pixels as libtiff decodes them.

#include "support/g4_images.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace support {

struct TiffPage {
    std::uint32_t width = 0, height = 0, tileWidth = 0, tileHeight = 0;
    std::vector<Bytes> tiles;  // in the order that CImg1G4 takes
    Picture picture = kNone;   // 1 where the code says black
};

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

inline void readCoded(TIFF* tiff, TiffPage& page) {
    const bool tiled = TIFFIsTiled(tiff);
    page.tileWidth = page.width;
    if (tiled) TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &page.tileWidth);
    TIFFGetFieldDefaulted(tiff, tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, &page.tileHeight);
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
    std::uint16_t photometric = 0;
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
    page.picture = Picture(page.width, page.height);
    TIFFReadRGBAImageOriented(tiff, page.width, page.height, page.picture.pixels.data(), ORIENTATION_TOPLEFT, 0);
    for (auto& pixel : page.picture.pixels) pixel = (TIFFGetR(pixel) == 0) == (photometric == PHOTOMETRIC_MINISWHITE);
}

inline std::vector<TiffPage> readTiff(const std::string& path) {
    std::vector<TiffPage> pages;
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpen(path.c_str(), "r"));
    if (!tiff) return pages;
    do {
        std::uint16_t compression = 0;
        TIFFGetField(tiff.get(), TIFFTAG_COMPRESSION, &compression);
        if (compression != COMPRESSION_CCITTFAX4) continue;
        TiffPage& page = pages.emplace_back();
        TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &page.width);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &page.height);
        readCoded(tiff.get(), page);
        readDecoded(tiff.get(), page);
    } while (TIFFReadDirectory(tiff.get()));
    return pages;
}

inline G4Image imageOf(TiffPage& page) {
    return makeG4(page.width, page.height, page.tileWidth, std::min(page.tileHeight, page.height), page.tiles);
}

}  // namespace support
