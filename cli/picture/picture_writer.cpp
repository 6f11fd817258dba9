#include "picture/picture_writer.h"

#include "base/failure.h"
#include "picture/picture_formats.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace {

struct Kind {
    const char* ending;
    Format format;
    const char* name;
    std::uint32_t mostSide = 0;  ///< the longest side it can hold; 0: no shorter than ours
    bool hasQuality = false;
};

constexpr Kind kKinds[] = {{"png", Format::png, "PNG"},
                           {"pbm", Format::pbm, "PBM"},
                           {"pgm", Format::pgm, "PGM"},
                           {"ppm", Format::ppm, "PPM"},
                           {"pnm", Format::pnm, "PNM"},
                           {"tif", Format::tiff, "TIFF"},
                           {"tiff", Format::tiff, "TIFF"},
                           {"jpg", Format::jpeg, "JPEG", 65500, true},
                           {"jpeg", Format::jpeg, "JPEG", 65500, true},
                           {"webp", Format::webp, "WebP", 16383, true}};

const Kind& kindByName(const std::string& name, const std::string& path) {
    std::string ending = name;
    if (ending.empty() && path == "-") ending = "png";
    if (ending.empty()) {
        const auto dot = path.find_last_of("./");
        if (dot != std::string::npos && path[dot] == '.') ending = path.substr(dot + 1);
    }
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto* const kind = std::ranges::find_if(kKinds, [&](const Kind& known) { return ending == known.ending; });
    if (kind != std::end(kKinds)) return *kind;
    throw Failure(Exit::failed, fmt::format("{}: the picture's format is not known by '{}'; known are png, pbm, pgm, "
                                            "ppm, pnm, tif, jpg and webp",
                                            path, ending));
}

const Kind& kindOf(Format format) { return *std::ranges::find(kKinds, format, &Kind::format); }

}  // namespace

Coding::Coding(const std::string& name, const std::string& path, std::optional<int> chosen)
    : format(kindByName(name, path).format), quality(chosen) {
    if (quality && !kindOf(format).hasQuality)
        throw Failure(Exit::failed,
                      fmt::format("{} keeps every pixel: --quality is for JPEG and WebP", kindOf(format).name));
}

void Coding::require(Pixels pixels, Size size) const {
    if (format == Format::pbm && pixels != Pixels::bilevel)
        throw Failure(Exit::failed, "PBM holds black and white only; choose PGM or PNG, or --mode ink");
    if (format == Format::pgm && pixels != Pixels::bilevel && pixels != Pixels::grey)
        throw Failure(Exit::failed, "PGM holds greys only; choose PPM or PNG");
    const Kind& kind = kindOf(format);
    if (kind.mostSide > 0 && std::max(size.width, size.height) > kind.mostSide)
        throw Failure(Exit::tooLarge, fmt::format("{} holds at most {} pixels a side, and the picture has {} x {}; "
                                                  "choose PNG or TIFF, or a smaller size",
                                                  kind.name, kind.mostSide, size.width, size.height));
}

void writePicture(const Picture& picture, const OutputOptions& output, const Coding& coding, Progress& progress) {
    coding.require(picture.pixels(), picture.size());
    OutputFile file(output);
    switch (coding.format) {
    case Format::png: writePng(picture, file, progress); break;
    case Format::tiff: writeTiff(picture, file, progress); break;
    case Format::jpeg: writeJpeg(picture, file, coding.quality, progress); break;
    case Format::webp: writeWebp(picture, file, coding.quality, progress); break;
    default: writePnm(picture, file, coding.format, progress);
    }
    file.commit();
}
