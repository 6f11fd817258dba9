#pragma once

#include "base/geometry.h"
#include "base/page_list.h"
#include "files/output_file.h"

#include <cstdint>
#include <optional>
#include <string>

/// How Group 4 pages are laid out: in tiles, or in strips.
struct G4Layout {
    std::optional<std::uint32_t> tile;       ///< side of a square tile, a multiple of 16
    std::optional<std::uint32_t> stripRows;  ///< of each strip
    bool singleStrip = false;

    bool tiled() const { return !singleStrip && !stripRows; }
    Size part(Size page) const;
};

struct RepackOptions {
    std::string input;
    OutputOptions output;
    PageList pages{"all"};
    G4Layout layout;
    std::uint64_t maxInputPixels = std::uint64_t{1} << 32;
    bool dither = false;  ///< grey and colour pages of TIFF files are taken, too
    bool check = true, quiet = false;
};

/// Codes a bilevel picture, or every page of a bilevel TIFF file, as Group 4 TIFF in the layout. The result is the exit
/// code; throws Failure.
int runEncode(const RepackOptions& options);
/// The same for TIFF files only.
int runRepack(const RepackOptions& options);
