#pragma once

// What render and convert have in common: pages that become pictures.

#include "base/page_list.h"
#include "base/progress.h"
#include "files/output_file.h"
#include "picture/drawing.h"
#include "picture/picture_writer.h"
#include "sources/drawable.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

struct DrawOptions {
    std::string input, format;
    std::optional<int> quality;  ///< 1 to 100, of JPEG and WebP
    OutputOptions output;
    ShowOptions show;
    PageList pages{"1"};
    std::uint64_t maxPixels = std::uint64_t{1} << 28;
    bool salvage = false;  ///< damaged tiles are drawn as far as they are good, and the others whole
    bool quiet = false, stats = false;
};

/// What a command does with each page.
struct DrawSteps {
    /// Decides what to draw, and refuses what can be refused before a pixel is read.
    std::function<Drawing(const Drawable& from, const Shown& shown, const Coding& to)> plan;
    /// Makes what was drawn into the picture to write.
    std::function<Picture(Picture picture, const Drawing& drawing, const Shown& shown, Progress& progress)> finish;
};

/// Draws the pages, each into its output: where there are several, the output's name must tell them apart. A page that
/// fails is reported and keeps no other from its turn; the result is the worst of the codes. Outputs that are there and
/// shall stay are passed by. Throws Failure.
int drawPages(const DrawOptions& options, const DrawSteps& steps);
