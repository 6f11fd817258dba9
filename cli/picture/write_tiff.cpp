#include "files/unnamed_tiff.h"
#include "picture/picture_formats.h"

#include <tiffio.h>

namespace {

void setFields(TIFF* tiff, const Picture& picture) {
    const Pixels pixels = picture.pixels();
    const bool bilevel = pixels == Pixels::bilevel, rgb = pixels == Pixels::rgb;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.size().width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.size().height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bilevel ? 1 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, rgb ? 3 : 1);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, bilevel ? COMPRESSION_CCITTFAX4 : COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 bilevel                     ? PHOTOMETRIC_MINISWHITE
                 : rgb                       ? PHOTOMETRIC_RGB
                 : pixels == Pixels::palette ? PHOTOMETRIC_PALETTE
                                             : PHOTOMETRIC_MINISBLACK);
    // A bilevel page in one strip codes best; others in strips of some 64 KB.
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, bilevel ? picture.size().height : TIFFDefaultStripSize(tiff, 0));
    if (pixels == Pixels::palette) {
        const ColorMap& map = *picture.palette().getColorMap();
        std::uint16_t red[256] = {}, green[256] = {}, blue[256] = {};
        for (int i = 0; i < map.count && i < 256; ++i) {
            red[i] = static_cast<std::uint16_t>(map.entries[i].red * 257);
            green[i] = static_cast<std::uint16_t>(map.entries[i].green * 257);
            blue[i] = static_cast<std::uint16_t>(map.entries[i].blue * 257);
        }
        TIFFSetField(tiff, TIFFTAG_COLORMAP, red, green, blue);
    }
    if (picture.dpiX > 0) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, picture.dpiX);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, picture.dpiY);
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
}

}  // namespace

void writeTiff(const Picture& picture, OutputFile& file, Progress& progress) {
    UnnamedTiff unnamed;
    TIFF* const tiff = unnamed.get();
    setFields(tiff, picture);
    const auto row = rowBuffer(picture);
    const std::uint32_t height = picture.size().height;
    for (std::uint32_t y = 0; y < height; ++y) {
        picture.copyRow(y, row.get());
        unnamed.require(TIFFWriteScanline(tiff, row.get(), y, 0) == 1);
        progress.show("writing", y, height);
    }
    unnamed.require(TIFFFlush(tiff) == 1);
    unnamed.copyTo(file);
}
