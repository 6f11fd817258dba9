#pragma once

// Pictures whose pixels are all ink or all paper: those that are not reduced, ink that is never lost, and nearest
// pixels.

#include "foundation/heap.h"
#include "kernels/toggled_row.h"
#include "page/picture_rows.h"
#include "page/runs_within.h"

#include <cstdint>

namespace tilepress {

/// Paints the runs of one coded colour where they lie in the picture's row.
class SpanPainter {
public:
    SpanPainter(const ViewPlan& plan, PictureRows& rows);

    static std::uint64_t memory(const ViewPlan& plan);
    bool prepare();
    /// Whether a row of a band is looked at; every one of them, or the first.
    bool wants(std::uint32_t rowOfBand) const { return merges_ || rowOfBand == 0; }
    /// A row of a tile, from the left; after a row's tiles its end, and after a band's rows the band's.
    void add(const g4::TileRow& row) {
        if (paintsWhite_ || row.count > g4::kWhiteCount) addRuns(row);
    }
    void endRow() { painted_.orInto(bits_.get(), packedBytes(plan_.width)); }
    void endBand(std::uint32_t copies);

private:
    void addRuns(const g4::TileRow& row);
    template <class Onto>
    void paint(const g4::TileRow& row, Onto onto);

    const ViewPlan& plan_;
    PictureRows& rows_;
    const bool merges_;       ///< cells are ink where any of their pixels is
    const bool paintsWhite_;  ///< the white runs; else the black ones
    g4::ToggledRow painted_;
    Heap<ImgULong> columns_;
    Heap<unsigned char> bits_;
};

}  // namespace tilepress
