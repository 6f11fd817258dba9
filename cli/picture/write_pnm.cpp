#include "picture/component_rows.h"
#include "picture/picture_formats.h"

#include <fmt/format.h>

namespace {

/// Number of components a pixel takes in the file; 0 stands for packed bits.
unsigned componentsOf(Format format, Pixels pixels) {
    if (format == Format::ppm) return 3;
    if (format == Format::pgm) return 1;
    return pixels == Pixels::bilevel ? 0 : pixels == Pixels::grey ? 1 : 3;
}

void writeBits(const Picture& picture, OutputFile& file, Progress& progress) {
    const auto row = rowBuffer(picture);
    const std::uint32_t height = picture.size().height;
    for (std::uint32_t y = 0; y < height; ++y) {
        picture.copyRow(y, row.get());
        file.write(row.get(), picture.rowBytes());
        progress.show("writing", y, height);
    }
}

}  // namespace

void writePnm(const Picture& picture, OutputFile& file, Format format, Progress& progress) {
    const unsigned components = componentsOf(format, picture.pixels());
    const std::uint32_t width = picture.size().width, height = picture.size().height;
    const std::string header = components == 0
                                   ? fmt::format("P4\n{} {}\n", width, height)
                                   : fmt::format("P{}\n{} {}\n255\n", components == 1 ? 5 : 6, width, height);
    file.write(header.data(), header.size());
    if (components == 0) {
        writeBits(picture, file, progress);
        return;
    }
    ComponentRows rows(picture, components);
    for (std::uint32_t y = 0; y < height; ++y) {
        file.write(rows.row(y), rows.bytes());
        progress.show("writing", y, height);
    }
}
