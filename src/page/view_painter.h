#pragma once

// One view while the rows of the page come by.

#include "kernels/marks.h"
#include "page/count_painter.h"
#include "page/span_painter.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace tilepress {

/// Takes the tiles of the rows under its rectangle, each row from the left, and writes its picture.
class ViewPainter {
public:
    explicit ViewPainter(const ViewPlan& plan);
    ViewPainter(const ViewPainter&) = delete;
    ViewPainter& operator=(const ViewPainter&) = delete;

    static std::uint64_t memory(const ViewPlan& plan);
    /// False when memory runs out.
    bool prepare();

    const g4::PageRect& rect() const { return plan_.rect; }
    /// Whether the row is one that changes the picture.
    bool wants(std::uint32_t pageRow) const {
        return pageRow - plan_.rect.top < plan_.rect.height && (counts_ || spans_->wants(rowOfBand_));
    }
    void add(const g4::TileRow& row) {
        if (counts_) counts_->add(row);
        else spans_->add(row);
    }
    /// After the tiles of a page's row, wanted or not.
    void endRow(std::uint32_t pageRow);

private:
    const ViewPlan plan_;
    PictureRows rows_;
    std::optional<CountPainter> counts_;
    std::optional<SpanPainter> spans_;
    MarkWalk marks_;  ///< of the picture's rows on the page's or the other way round, whichever are fewer
    std::uint32_t rowOfBand_ = 0;
};

}  // namespace tilepress
