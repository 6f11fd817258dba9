#include "pages.h"

#include "tiff_peer.h"

#include <algorithm>
#include <cstdio>

namespace bench {

std::size_t Page::codedBytes() const {
    std::size_t sum = 0;
    for (const Bytes& tile : tiles) sum += tile.size();
    return sum;
}

std::uint32_t Page::rowsOf(std::uint32_t k) const {
    if (tiled) return tileHeight;
    return std::min(tileHeight, bitmap.height - k * tileHeight);
}

namespace {

struct Format {
    std::uint16_t bits = 1, samples = 1, compression = 1, fillOrder = FILLORDER_MSB2LSB;
};

Format formatOf(TIFF* tiff) {
    Format format;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &format.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &format.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &format.compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &format.fillOrder);
    return format;
}

/// Size and tiling, and the coded bytes of every tile.
Page rawPage(TIFF* tiff, const Format& format) {
    Page page;
    std::uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    page.bitmap = Bitmap(width, height);
    page.tiled = TIFFIsTiled(tiff);
    page.tileWidth = width;
    if (page.tiled) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &page.tileWidth);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &page.tileHeight);
    } else {
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &page.tileHeight);
        page.tileHeight = std::min(page.tileHeight, height);
    }
    const std::uint32_t count = page.tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    for (std::uint32_t k = 0; k < count; ++k) {
        Bytes bytes(static_cast<std::size_t>(TIFFGetStrileByteCount(tiff, k)));
        const auto size = static_cast<tmsize_t>(bytes.size());
        if (page.tiled) TIFFReadRawTile(tiff, k, bytes.data(), size);
        else TIFFReadRawStrip(tiff, k, bytes.data(), size);
        if (format.fillOrder == FILLORDER_LSB2MSB) TIFFReverseBits(bytes.data(), size);
        page.tiles.push_back(std::move(bytes));
    }
    return page;
}

/// The pixels of a page that has another compression.
Bitmap decodedRows(TIFF* tiff, const Page& page) {
    Bitmap bitmap(page.bitmap.width, page.bitmap.height);
    Bytes tile(static_cast<std::size_t>(page.tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff)));
    for (std::uint32_t k = 0; k < page.tiles.size(); ++k) {
        std::fill(tile.begin(), tile.end(), static_cast<unsigned char>(0));
        if (page.tiled) TIFFReadEncodedTile(tiff, k, tile.data(), static_cast<tmsize_t>(tile.size()));
        else TIFFReadEncodedStrip(tiff, k, tile.data(), static_cast<tmsize_t>(tile.size()));
        placeTile(page, k, tile.data(), bitmap);
    }
    bitmap.clearSpareBits();
    return bitmap;
}

}  // namespace

std::vector<PagePtr> loadPages(const std::string& path) {
    std::vector<PagePtr> pages;
    const Tiff tiff(TIFFOpen(path.c_str(), "r"));
    if (!tiff) {
        std::fprintf(stderr, "%s: cannot be read as a TIFF file\n", path.c_str());
        return pages;
    }
    const unsigned count = static_cast<unsigned>(TIFFNumberOfDirectories(tiff.get()));
    for (unsigned k = 0; k < count; ++k) {
        TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(k));
        const Format format = formatOf(tiff.get());
        std::string name = path.substr(path.rfind('/') + 1);
        if (name.size() > 4 && name.ends_with(".tif")) name.resize(name.size() - 4);
        if (count > 1) name += "." + std::to_string(k + 1);
        if (format.bits != 1 || format.samples != 1) {
            std::fprintf(stderr, "%s: page %u is not bilevel, left out\n", path.c_str(), k + 1);
            continue;
        }
        Page page = rawPage(tiff.get(), format);
        if (format.compression == COMPRESSION_CCITTFAX4) {
            page.name = std::move(name);
            if (!MemoryTiff(page).decode(page, page.bitmap)) {
                std::fprintf(stderr, "%s: page %u is damaged, left out\n", path.c_str(), k + 1);
                continue;
            }
            page.bitmap.clearSpareBits();
            pages.push_back(std::make_shared<Page>(std::move(page)));
        } else {
            pages.push_back(coded(std::move(name), decodedRows(tiff.get(), page)));
        }
    }
    return pages;
}

PagePtr coded(std::string name, Bitmap bitmap) {
    Page page;
    page.name = std::move(name);
    page.tileWidth = bitmap.width;
    page.tileHeight = bitmap.height;
    StripEncoder encoder;
    encoder.encode(bitmap);
    page.tiles.push_back(encoder.strip());
    page.bitmap = std::move(bitmap);
    return std::make_shared<Page>(std::move(page));
}

CodedTiles::CodedTiles(const Page& page)
    : width_(page.bitmap.width), height_(page.bitmap.height), tileWidth_(page.tileWidth), tileHeight_(page.tileHeight),
      words_(page.tiles) {
    for (Bytes& bytes : words_) {
        if (bytes.size() % 2) bytes.push_back(0);
        for (std::size_t k = 0; k < bytes.size(); k += 2) std::swap(bytes[k], bytes[k + 1]);
    }
}

CodedTiles::Image CodedTiles::image() const {
    std::vector<unsigned char*> tiles;
    std::vector<ImgULong> lengths;
    for (const Bytes& bytes : words_) {
        tiles.push_back(const_cast<unsigned char*>(bytes.data()));  // copied from, not written
        lengths.push_back(static_cast<ImgULong>(bytes.size()));
    }
    return Image(CImg1G4::create(width_, height_, tileWidth_, tileHeight_, tiles.data(), lengths.data(), 0x00FFFFFF,
                                 0xFF000000, ImgAlignNone));
}

}  // namespace bench
