#pragma once

#include "base/page_list.h"
#include "files/output_file.h"
#include "picture/drawing.h"

#include <optional>
#include <string>

struct ConvertOptions {
    std::string input, format;
    std::optional<int> quality;  ///< 1 to 100, of JPEG and WebP
    OutputOptions output;
    ShowOptions show;
    PageList pages{"1"};
    unsigned page = 1;  ///< of them, the one at hand
    Pixels to = Pixels::bilevel;
    std::uint64_t maxPixels = std::uint64_t{1} << 28;
    bool quiet = false, stats = false;
};

/// Converts a page or picture, at its size, to another kind of pixel. The result is the exit code; throws Failure.
int runConvert(const ConvertOptions& options);
