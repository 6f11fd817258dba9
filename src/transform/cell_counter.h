#pragma once

// Counting the black pixels of the cells of one destination row while its source
// rows are decoded: two additions a run, however long the run is.

#include "foundation/heap.h"
#include "tilepress/api.h"
#include "transform/marks.h"

#include <algorithm>
#include <cstdint>

namespace tilepress {

/// The cell that a source column lies in, and the pixels from there to its end.
struct CellEdge {
    std::uint32_t cell;
    std::uint32_t rest;
};

/// A run adds its first edge and takes its last away. Each sum holds in its low half what
/// belongs to the edge's own cell and in its high half by how much the cells after it are covered.
class CellCounter {
public:
    bool prepare(std::uint32_t srcWidth, std::uint32_t dstWidth) {
        cells_ = dstWidth;
        const std::uint32_t widest = srcWidth / dstWidth + (srcWidth % dstWidth != 0);
        if (widest > kMostBetweenFolds) return false;
        foldEvery_ = kMostBetweenFolds / widest;
        if (!edges_.reserve(std::uint64_t{srcWidth} + 1) || !widths_.reserve(dstWidth) ||
            !sums_.reserve(std::uint64_t{dstWidth} + 1))
            return false;
        std::uint32_t from = 0;
        for (std::uint32_t cell = 0; cell < dstWidth; ++cell) {
            const std::uint32_t to = markPosition(cell + 1, srcWidth, dstWidth);
            widths_[cell] = to - from;
            for (; from < to; ++from) edges_[from] = {cell, to - from};
        }
        edges_[srcWidth] = {dstWidth, 0};
        return true;
    }

    void add(std::size_t from, std::size_t to) {
        const CellEdge first = edges_[from], last = edges_[to];
        sums_[first.cell] += kCovers + first.rest;
        sums_[last.cell] -= kCovers + last.rest;
    }

    /// Whether the sums must be folded away after so many rows, before they could overflow.
    bool mustFold(std::uint32_t rows) const { return rows % foldEvery_ == 0; }

    /// Adds the counts to `counts`, one a cell, and starts anew; the result is their total.
    std::uint64_t fold(ImgULong* counts) {
        std::int64_t covering = 0;
        std::uint64_t total = 0;
        for (std::uint32_t cell = 0; cell < cells_; ++cell) {
            const auto sum = static_cast<std::int64_t>(sums_[cell]);
            const auto own = static_cast<std::int32_t>(sum);
            const std::int64_t count = own + covering * widths_[cell];
            covering += (sum - own) >> 32;
            counts[cell] += static_cast<ImgULong>(count);
            total += static_cast<std::uint64_t>(count);
        }
        std::fill_n(sums_.get(), std::size_t{cells_} + 1, 0);
        return total;
    }

    std::uint32_t width(std::uint32_t cell) const { return widths_[cell]; }

private:
    static constexpr std::uint64_t kCovers = std::uint64_t{1} << 32;
    static constexpr std::uint32_t kMostBetweenFolds = 1u << 30;

    Heap<CellEdge> edges_;
    Heap<std::uint32_t> widths_;
    Heap<std::uint64_t> sums_;
    std::uint32_t cells_ = 0;
    std::uint32_t foldEvery_ = 1;
};

}  // namespace tilepress
