#include "picture/picture_reader.h"

#include "base/failure.h"

#include <cstring>

namespace {

/// Bits x to x + width - 1 of a row, from the highest bit of `to` on.
void copyBits(unsigned char* to, const unsigned char* row, std::size_t x, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i)
        if (row[(x + i) / 8] >> (7 - (x + i) % 8) & 1) to[i / 8] |= static_cast<unsigned char>(0x80 >> i % 8);
}

void copyColours(ImgULong* to, const unsigned char* row, std::size_t width) {
    for (std::size_t x = 0; x < width; ++x, row += 3)
        to[x] = static_cast<ImgULong>(row[0] << 16 | row[1] << 8 | row[2]);
}

}  // namespace

std::size_t PictureReader::rowBytes() const { return static_cast<std::size_t>(expandedBytes({size.width, 1}, pixels)); }

Picture PictureReader::read(const Rect& rect) {
    Picture picture;
    if (pixels == Pixels::bilevel) {
        picture = pictureOf(CImg1::create(rect.width, rect.height, 0x00FFFFFF, 0xFF000000, ImgAlignNone));
    } else if (pixels == Pixels::rgb) {
        // Red in byte 2 is what conversions to black and white weigh as red.
        picture = pictureOf(CImg32::create(rect.width, rect.height, RGBOrderBGR));
    } else {
        if (!colours) colours = greyRamp();
        picture =
            pictureOf(CImg8::create(rect.width, rect.height, colours.get(), ImgAlignNone), pixels == Pixels::grey);
    }
    picture.dpiX = dpiX;
    picture.dpiY = dpiY;
    const auto row = std::make_unique<unsigned char[]>(rowBytes());
    for (std::uint32_t y = 0; y < rect.y; ++y) nextRow(row.get());
    for (std::uint32_t y = 0; y < rect.height; ++y) {
        nextRow(row.get());
        if (pixels == Pixels::bilevel)
            copyBits(picture.bilevel().peekData() + std::size_t{y} * picture.image->getBytesPerLine(), row.get(),
                     rect.x, rect.width);
        else if (pixels == Pixels::rgb)
            copyColours(picture.rgb().peekDataArray()[y], row.get() + std::size_t{3} * rect.x, rect.width);
        else std::memcpy(picture.palette().peekDataArray()[y], row.get() + rect.x, rect.width);
    }
    return picture;
}

std::unique_ptr<PictureReader> openPicture(InputFile input) {
    switch (input.kind()) {
    case InputFile::Kind::png: return openPng(std::move(input));
    case InputFile::Kind::pnm: return openPnm(std::move(input));
    default: throw Failure(Exit::unsupported, input.name() + ": neither TIFF nor PNG nor PBM, PGM or PPM");
    }
}
