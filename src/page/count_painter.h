#pragma once

// Pictures whose pixels say how much of their cells is ink.

#include "foundation/heap.h"
#include "kernels/cell_counter.h"
#include "kernels/grey_maps.h"
#include "kernels/widen_pixels.h"
#include "page/picture_rows.h"
#include "page/runs_within.h"

#include <cstdint>

namespace tilepress {

/// Counts the coded black pixels of every cell; what is enlarged across is repeated as tones.
class CountPainter {
public:
    CountPainter(const ViewPlan& plan, PictureRows& rows)
        : plan_(plan), rows_(rows), widener_(plan.cellsAcross(), plan.width) {}

    static std::uint64_t memory(const ViewPlan& plan);
    bool prepare();
    /// A row of a tile, from the left; every row of a band, then its end.
    void add(const g4::TileRow& row) {
        if (row.count > g4::kWhiteCount) addRuns(row);
    }
    void endRow(std::uint32_t rowOfBand) {
        if (!hasMaps_ && cells_.mustFold(rowOfBand + 1)) fold();
    }
    void endBand(std::uint32_t height, std::uint32_t copies);

private:
    void addRuns(const g4::TileRow& row);
    void fold();
    template <bool kWhiteInk>
    void toneFolded(std::uint32_t height);
    template <bool kWhiteInk>
    void toneRow(std::uint32_t height);

    const ViewPlan& plan_;
    PictureRows& rows_;
    CellCounter cells_;
    GreyMaps maps_;
    PixelWidener<unsigned char> widener_;
    bool hasMaps_ = false;  ///< of every cell; then sums need not be folded before a band's end
    // Of other cells:
    Heap<ImgULong> counts_;
    Heap<std::uint64_t> totals_;  ///< where they have more pixels than 32 bits count
    Heap<unsigned char> tones_, wide_;
};

}  // namespace tilepress
