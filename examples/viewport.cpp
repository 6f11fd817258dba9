// The back end of a tile viewer: part of a Group 4 TIFF file at any size, as PNG.
//
//     viewport page.tif left top width height out-width out-height >part.png

#include <tilepress/page.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include <png.h>
#include <tiffio.h>

static void require(bool condition, const char* message) {
    if (condition) return;
    std::fprintf(stderr, "viewport: %s\n", message);
    std::exit(1);
}

/// A page of the file's first directory, as it lies there: nothing is decoded.
static tp_page* openPage(const char* path) {
    const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFOpen(path, "r"), TIFFClose);
    require(tiff != nullptr, "cannot open the file");
    tp_page_info info{};
    info.size = sizeof info;
    std::uint16_t compression = 0, photometric = 0, order = 1;
    TIFFGetField(tiff.get(), TIFFTAG_COMPRESSION, &compression);
    require(compression == COMPRESSION_CCITTFAX4, "not a Group 4 file");
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &info.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &info.height);
    TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_FILLORDER, &order);
    info.photometric = photometric;
    info.fill_order = order;
    const bool tiled = TIFFIsTiled(tiff.get()) != 0;
    if (tiled) TIFFGetField(tiff.get(), TIFFTAG_TILEWIDTH, &info.tile_width);
    TIFFGetField(tiff.get(), tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, &info.tile_height);

    const std::uint32_t count = tiled ? TIFFNumberOfTiles(tiff.get()) : TIFFNumberOfStrips(tiff.get());
    std::vector<std::vector<unsigned char>> bytes(count);
    std::vector<tp_coded> tiles(count);
    for (std::uint32_t k = 0; k < count; ++k) {
        bytes[k].resize(static_cast<std::size_t>(TIFFGetStrileByteCount(tiff.get(), k)));
        const tmsize_t size = static_cast<tmsize_t>(bytes[k].size());
        const tmsize_t read = tiled ? TIFFReadRawTile(tiff.get(), k, bytes[k].data(), size)
                                    : TIFFReadRawStrip(tiff.get(), k, bytes[k].data(), size);
        require(read == size, "cannot read a tile");
        tiles[k] = {bytes[k].data(), bytes[k].size()};
    }
    tp_page* page = nullptr;
    const tp_status status = tp_page_open(&info, tiles.data(), count, &page);
    require(status == TP_OK, tp_status_text(status));
    return page;
}

int main(int argc, char** argv) {
    require(argc == 8, "page.tif left top width height out-width out-height");
    const std::unique_ptr<tp_page, void (*)(tp_page*)> page(openPage(argv[1]), tp_page_release);
    std::uint32_t number[6];
    for (int k = 0; k < 6; ++k) number[k] = static_cast<std::uint32_t>(std::strtoul(argv[k + 2], nullptr, 10));
    std::vector<unsigned char> pixels(std::size_t{number[4]} * number[5]);
    tp_view view{};
    view.size = sizeof view;
    view.left = number[0], view.top = number[1], view.width = number[2], view.height = number[3];
    view.out_width = number[4], view.out_height = number[5];
    view.mode = TP_COVERAGE;
    view.format = TP_GREY8;
    view.pixels = pixels.data();
    view.stride = static_cast<std::ptrdiff_t>(view.out_width);
    tp_page_prepare(page.get(), nullptr);  // once: then every view costs what it shows
    const tp_status status = tp_page_render(page.get(), &view, 1, nullptr);
    require(status == TP_OK, tp_status_text(status));

    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = view.out_width, png.height = view.out_height;
    png.format = PNG_FORMAT_GRAY;
    require(png_image_write_to_stdio(&png, stdout, 0, pixels.data(), 0, nullptr) != 0, "cannot write");
}
