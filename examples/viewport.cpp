// The back end of a tile viewer: part of a Group 4 TIFF file at any size, as PNG.
//
//     viewport page.tif left top width height out-width out-height >part.png

#include <tilepress/page.h>

#include <err.h>
#include <png.h>
#include <tiffio.h>
#include <cstdlib>
#include <vector>

static void check(tp_status status) {
    if (status != TP_OK) errx(1, "%s", tp_status_text(status));
}

/// The file's first page as it lies there: nothing is decoded.
static tp_page* openPage(TIFF* tiff) {
    tp_page_info info{};
    info.size = sizeof info;
    uint16_t compression = 0, photometric = 0, order = 1;
    const bool tiled = TIFFIsTiled(tiff) != 0;
    TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetField(tiff, TIFFTAG_FILLORDER, &order);
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &info.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &info.height);
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &info.tile_width);  // strips have none, and 0 is the page's
    TIFFGetField(tiff, tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, &info.tile_height);
    info.photometric = photometric, info.fill_order = order;
    if (compression != COMPRESSION_CCITTFAX4) errx(1, "not a Group 4 file");
    std::vector<std::vector<unsigned char>> bytes(tiled ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff));
    std::vector<tp_coded> tiles;
    for (uint32_t k = 0; k < bytes.size(); ++k) {
        bytes[k].resize(TIFFGetStrileByteCount(tiff, k));
        const auto size = static_cast<tmsize_t>(bytes[k].size());
        if ((tiled ? TIFFReadRawTile : TIFFReadRawStrip)(tiff, k, bytes[k].data(), size) != size) errx(1, "cut short");
        tiles.push_back({bytes[k].data(), bytes[k].size()});
    }
    TIFFClose(tiff);
    tp_page* page = nullptr;
    check(tp_page_open(&info, tiles.data(), tiles.size(), &page));
    return page;
}

int main(int argc, char** argv) {
    TIFF* const tiff = argc == 8 ? TIFFOpen(argv[1], "r") : nullptr;
    if (!tiff) errx(1, "page.tif left top width height out-width out-height");
    tp_page* const page = openPage(tiff);
    const auto number = [argv](int k) { return static_cast<uint32_t>(std::strtoul(argv[k], nullptr, 10)); };
    png_image png{nullptr, PNG_IMAGE_VERSION, number(6), number(7), PNG_FORMAT_GRAY, 0, 0, 0, {}};
    std::vector<unsigned char> pixels(std::size_t{png.width} * png.height);
    const tp_view view{sizeof view, number(2),  number(3),   number(4),     number(5),
                       png.width,   png.height, TP_COVERAGE, TP_GREY8,      0,
                       0,           0,          0,           pixels.data(), static_cast<std::ptrdiff_t>(png.width)};
    tp_page_prepare(page, nullptr);  // once: then every view costs what it shows
    check(tp_page_render(page, &view, 1, nullptr));
    tp_page_release(page);
    return png_image_write_to_stdio(&png, stdout, 0, pixels.data(), 0, nullptr) ? 0 : 1;
}
