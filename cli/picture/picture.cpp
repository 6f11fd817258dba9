#include "picture/picture.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <cstring>

Pixels Picture::pixels() const {
    switch (image->getType()) {
    case ImageTypePalette: return grey ? Pixels::grey : Pixels::palette;
    case ImageTypeRGB: return grey ? Pixels::grey : Pixels::rgb;
    default: return Pixels::bilevel;
    }
}

std::uint64_t expandedBytes(Size size, Pixels pixels) {
    const std::uint64_t width = size.width;
    return size.height * (pixels == Pixels::bilevel ? (width + 7) / 8 : pixels == Pixels::rgb ? 3 * width : width);
}

std::uint64_t Picture::rowBytes() const { return expandedBytes({image->getWidth(), 1}, pixels()); }

void Picture::copyRow(std::uint32_t y, unsigned char* row) const {
    const std::size_t width = image->getWidth();
    switch (pixels()) {
    case Pixels::bilevel: {
        const auto bytes = static_cast<std::size_t>(rowBytes());
        std::memcpy(row, bilevel().peekData() + std::size_t{y} * image->getBytesPerLine(), bytes);
        if (width % 8 != 0) row[bytes - 1] &= static_cast<unsigned char>(0xFF00 >> width % 8);
        break;
    }
    case Pixels::palette:
    case Pixels::grey:
        if (image->getType() == ImageTypePalette) std::memcpy(row, palette().peekDataArray()[y], width);
        else
            for (std::size_t x = 0; x < width; ++x) row[x] = static_cast<unsigned char>(rgb().peekDataArray()[y][x]);
        break;
    case Pixels::rgb: {
        const ImgULong* const from = rgb().peekDataArray()[y];
        const bool redLow = rgb().getRGBOrder() == RGBOrderRGB;
        for (std::size_t x = 0; x < width; ++x, row += 3) {
            row[redLow ? 0 : 2] = static_cast<unsigned char>(from[x]);
            row[1] = static_cast<unsigned char>(from[x] >> 8);
            row[redLow ? 2 : 0] = static_cast<unsigned char>(from[x] >> 16);
        }
        break;
    }
    }
}

void Picture::invert() {
    if (pixels() == Pixels::bilevel) {
        image->invert();
        return;
    }
    ImgULong* const data = rgb().peekData();
    const std::uint64_t count = size().pixels();
    for (std::uint64_t i = 0; i < count; ++i) data[i] ^= 0x00FFFFFF;
}

Picture pictureOf(IImg* image, bool grey) {
    Picture picture;
    picture.image.reset(image);
    picture.grey = grey;
    if (!image) throw Failure(Exit::tooLarge, "not enough memory for the picture");
    return picture;
}

std::unique_ptr<ColorMap> greyRamp() {
    auto map = std::make_unique<ColorMap>(256, 255);
    for (int i = 0; i < map->count; ++i) map->entries[i] = {i, i, i};
    return map;
}

void requirePixels(const std::string& what, Size size, std::uint64_t most) {
    if (size.pixels() <= most) return;
    throw Failure(Exit::tooLarge, fmt::format("{} has {} x {} = {} pixels; the limit is {}", what, size.width,
                                              size.height, size.pixels(), most));
}

Picture dithered(const Picture& picture) {
    return pictureOf(CImg1::create(*picture.image, 0x00FFFFFF, 0xFF000000, ImgAlignNone));
}
