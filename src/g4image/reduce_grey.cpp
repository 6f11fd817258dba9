// Compressed images reduced to grey ones.

#include "g4image/scale_info.h"

#include "kernels/cell_counter.h"
#include "kernels/grey_maps.h"
#include "model/image_kinds.h"

#include <algorithm>

namespace tilepress::g4 {
namespace {

/// Counts of black pixels, in place, to grey pixels of a row of cells, the narrowest of which are `low` wide.
template <bool kWhiteInk>
void greyRow(ImgULong* row, ImgULong cellCount, ImgULong height, const CellCounter& cells, const GreyMaps& maps,
             ImgULong low) {
    const unsigned char *const narrow = maps.of(height, low), *const wide = maps.of(height, low + 1);
    for (ImgULong x = 0; x < cellCount; ++x) {
        const ImgULong width = cells.width(x), area = height * width;
        const ImgULong count = std::min(row[x], area);  // damaged tiles can count a pixel twice
        const ImgULong ink = kWhiteInk ? area - count : count;
        const unsigned char* const map = width == low ? narrow : wide;
        row[x] = greyPixel(map ? map[ink] : staircaseGrey(area + 1, ink));
    }
}

}  // namespace
}  // namespace tilepress::g4

using namespace tilepress;
using namespace tilepress::g4;

/// Counts the row's black pixels by cells, in `info->cells`; before these could overflow they are added to `sums`, one
/// a cell. The destination row is painted when all of its rows are counted.
ImgErr CImg1G4::decode_reduce_scanline_grey(ImgULong*, G4ScaleInfo* info, ImgULong* sums) {
    CellCounter& cells = *info->cells;
    info->blackCount = info->rowOfBand > 0 && cells.mustFold(info->rowOfBand) ? cells.fold(sums) : 0;
    return info->tiles([&](const TileRow& row) {
        clippedRuns(
            row, info->clip,
            [&](std::int32_t inside, std::int32_t, std::ptrdiff_t offset) { cells.addRuns(row.list, inside, offset); },
            [&](std::size_t from, std::size_t to) { cells.add(from, to); });
    });
}

CImg32* CImg1G4::Reduce_greyscale(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    if (!isReduction(r, newWidth, newHeight)) return refuse(ImgErrBadArgument);
    const ImgULong width = r.getWidth(), height = r.getHeight();
    G4ScaleInfo info(*this, r);
    CellCounter cells;
    GreyMaps maps;
    Temporary<CImg32> result(CImg32::create(newWidth, newHeight, RGBOrderRGB));
    if (!result || !info.prepare(0) || !cells.prepare(width, newWidth) ||
        !maps.prepare(width, height, newWidth, newHeight))
        return refuse(ImgErrCreate);
    ImgULong** const rows = result->peekDataArray();
    const auto toGrey = [&](ImgULong band, ImgULong inBand) {
        const auto paint = backgroundKnown && backgroundColor == 1 ? greyRow<true> : greyRow<false>;
        paint(rows[band], newWidth, inBand, cells, maps, width / newWidth);
    };
    const bool wasKnown = backgroundKnown;
    info.cells = &cells;
    std::uint64_t black = 0;
    ImgULong reached = 0;
    const auto onRow = [&](ImgULong band, ImgULong) {
        const ImgErr status = decode_reduce_scanline_grey(rows[band], &info, rows[band]);
        black += info.blackCount;
        return status;
    };
    const auto onBand = [&](ImgULong band, ImgULong inBand) {
        black += cells.fold(rows[band]);
        if (wasKnown) toGrey(band, inBand);
        reached = band + 1;
    };
    const bool whole = info.begin() && info.bands(newHeight, onRow, onBand);
    if (whole && !wasKnown) setBackgroundColor(isMostlyBlack(black, std::uint64_t{width} * height));
    MarkWalk mark(height, newHeight);
    for (ImgULong band = 0; !wasKnown && band < reached; ++band, mark.advance()) toGrey(band, mark.size());
    for (ImgULong band = reached; band < newHeight; ++band) std::fill_n(rows[band], newWidth, 0x00FFFFFF);
    return result.release();
}
