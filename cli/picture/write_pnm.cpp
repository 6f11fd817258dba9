#include "picture/picture_formats.h"

#include <fmt/format.h>

namespace {

/// Number of components a pixel takes in the file; 0 stands for packed bits.
unsigned componentsOf(Format format, Pixels pixels) {
    if (format == Format::ppm) return 3;
    if (format == Format::pgm) return 1;
    return pixels == Pixels::bilevel ? 0 : pixels == Pixels::grey ? 1 : 3;
}

struct Rgb {
    unsigned char red, green, blue;
};

/// The colour of a pixel of a picture that is not RGB.
Rgb colourOf(const Picture& picture, const unsigned char* row, std::size_t x) {
    if (picture.pixels() == Pixels::bilevel) {
        const auto grey = static_cast<unsigned char>(row[x / 8] >> (7 - x % 8) & 1 ? 0 : 255);
        return {grey, grey, grey};
    }
    if (picture.pixels() == Pixels::grey) return {row[x], row[x], row[x]};
    const ColorMap& map = *picture.palette().getColorMap();
    if (row[x] >= map.count) return {0, 0, 0};
    const ColorMapEntry& entry = map.entries[row[x]];
    return {static_cast<unsigned char>(entry.red), static_cast<unsigned char>(entry.green),
            static_cast<unsigned char>(entry.blue)};
}

}  // namespace

void writePnm(const Picture& picture, OutputFile& file, Format format, Progress& progress) {
    const Pixels pixels = picture.pixels();
    const unsigned components = componentsOf(format, pixels);
    const std::size_t width = picture.size().width, height = picture.size().height;
    const std::string header = components == 0
                                   ? fmt::format("P4\n{} {}\n", width, height)
                                   : fmt::format("P{}\n{} {}\n255\n", components == 1 ? 5 : 6, width, height);
    file.write(header.data(), header.size());
    const auto row = rowBuffer(picture);
    const bool asItIs = components == 0 || (components == 1 && pixels == Pixels::grey) || pixels == Pixels::rgb;
    const auto out = std::make_unique<unsigned char[]>(asItIs ? 0 : components * width);
    for (std::uint32_t y = 0; y < height; ++y) {
        picture.copyRow(y, row.get());
        if (asItIs) {
            file.write(row.get(), picture.rowBytes());
        } else {
            unsigned char* to = out.get();
            for (std::size_t x = 0; x < width; ++x) {
                const Rgb colour = colourOf(picture, row.get(), x);
                *to++ = colour.red;
                if (components == 1) continue;
                *to++ = colour.green;
                *to++ = colour.blue;
            }
            file.write(out.get(), components * width);
        }
        progress.show("writing", y, height);
    }
}
