#pragma once

#include "base/geometry.h"
#include "base/page_list.h"
#include "files/output_file.h"
#include "picture/drawing.h"

#include <cstdint>
#include <optional>
#include <string>

struct RenderOptions {
    std::string input, format;
    std::optional<int> quality;  ///< 1 to 100, of JPEG and WebP
    OutputOptions output;
    ShowOptions show;
    PageList pages{"1"};
    unsigned page = 1;  ///< of them, the one at hand
    std::optional<Rect> rect;
    std::optional<double> factor, dpi;
    std::optional<Size> size, fit;
    Mode mode = Mode::grey;
    Background background = Background::automatic;
    double angle = 0;  ///< degrees, counter-clockwise
    ImgMirT mirror{};  ///< neither direction: none
    std::uint64_t maxPixels = std::uint64_t{1} << 28, maxInputPixels = std::uint64_t{1} << 32;
    bool salvage = false;  ///< damaged tiles are drawn as far as they are good, and the others whole
    bool quiet = false, stats = false;
};

/// Draws a page or picture into a picture file. The result is the exit code; throws Failure.
int runRender(const RenderOptions& options);
