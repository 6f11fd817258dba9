#include "picture/picture_writer.h"

#include "base/failure.h"
#include "picture/picture_formats.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace {

constexpr std::pair<const char*, Format> kNames[] = {{"png", Format::png},  {"pbm", Format::pbm}, {"pgm", Format::pgm},
                                                     {"ppm", Format::ppm},  {"pnm", Format::pnm}, {"tif", Format::tiff},
                                                     {"tiff", Format::tiff}};

}  // namespace

Format chooseFormat(const std::string& name, const std::string& path) {
    std::string ending = name;
    if (ending.empty() && path == "-") return Format::png;
    if (ending.empty()) {
        const auto dot = path.find_last_of("./");
        if (dot != std::string::npos && path[dot] == '.') ending = path.substr(dot + 1);
    }
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& [known, format] : kNames)
        if (ending == known) return format;
    throw Failure(Exit::failed, fmt::format("{}: the picture's format is not known by '{}'; known are png, pbm, pgm, "
                                            "ppm, pnm and tif",
                                            path, ending));
}

void requireFormat(Format format, Pixels pixels) {
    if (format == Format::pbm && pixels != Pixels::bilevel)
        throw Failure(Exit::failed, "PBM holds black and white only; choose PGM or PNG, or --mode ink");
    if (format == Format::pgm && pixels != Pixels::bilevel && pixels != Pixels::grey)
        throw Failure(Exit::failed, "PGM holds greys only; choose PPM or PNG");
}

void writePicture(const Picture& picture, const OutputOptions& output, Format format, Progress& progress) {
    requireFormat(format, picture.pixels());
    OutputFile file(output);
    if (format == Format::png) writePng(picture, file, progress);
    else if (format == Format::tiff) writeTiff(picture, file, progress);
    else writePnm(picture, file, format, progress);
    file.commit();
}
