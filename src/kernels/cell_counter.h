#pragma once

// Counting the black pixels of the cells of one destination row while its source
// rows are decoded: two additions a run, however long the run is.

#include "foundation/bits.h"
#include "foundation/contract.h"
#include "foundation/heap.h"
#include "kernels/marks.h"
#include "tilepress/api.h"

#include <algorithm>
#include <cstdint>

namespace tilepress {

/// The cell that a source column lies in, and the pixels from there to its end.
struct CellEdge {
    std::uint32_t cell;
    std::uint32_t rest;
};

/// What the edges in a cell add up to: the pixels of the cell itself, and by how much the cells after it are covered.
/// In one word where the machine adds such words at once, with the pixels in its low half.
class EdgeSum {
public:
    void add(std::uint32_t rest) {
        if constexpr (kOneWord) parts_[0] += kCovers + rest;
        else parts_[0] += rest, ++parts_[1];
    }
    void take(std::uint32_t rest) {
        if constexpr (kOneWord) parts_[0] -= kCovers + rest;
        else parts_[0] -= rest, --parts_[1];
    }
    /// 0 where it has no edge.
    MachineWord any() const {
        if constexpr (kOneWord) return parts_[0];
        else return parts_[0] | parts_[1];
    }
    std::uint32_t own() const { return static_cast<std::uint32_t>(parts_[0]); }
    std::uint32_t covers() const {
        // The low half is signed: below zero it has borrowed one from the high half.
        if constexpr (kOneWord) return static_cast<std::uint32_t>(parts_[0] / kCovers) + (own() >> 31);
        else return parts_[1];
    }

private:
    static constexpr bool kOneWord = sizeof(MachineWord) == 8;
    static constexpr std::uint64_t kCovers = std::uint64_t{1} << 32;

    MachineWord parts_[8 / sizeof(MachineWord)];
};

/// A run adds its first edge and takes its last away.
class CellCounter {
public:
    /// As many pixels of a cell's are counted between folds.
    static constexpr std::uint32_t kWidestCell = 1u << 30;

    bool prepare(std::uint32_t srcWidth, std::uint32_t dstWidth) {
        cells_ = dstWidth;
        const std::uint32_t widest = srcWidth / dstWidth + (srcWidth % dstWidth != 0);
        if (widest > kWidestCell) return false;
        foldEvery_ = kWidestCell / widest;
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
        TILEPRESS_DEMAND(from <= to);
        const CellEdge first = edges_[from], last = edges_[to];
        sums_[first.cell].add(first.rest);
        sums_[last.cell].take(last.rest);
    }

    /// The same for every black run of a list that increases; an element's column is its value plus `offset`.
    void addRuns(const std::int32_t* list, std::int32_t count, std::ptrdiff_t offset) {
        const CellEdge* const edges = edges_.get();
        EdgeSum* const sums = sums_.get();
        for (const std::int32_t *change = list + 2, *end = list + count - 2; change < end; change += 2) {
            const CellEdge first = edges[offset + change[-1]], last = edges[offset + change[0]];
            sums[first.cell].add(first.rest);
            sums[last.cell].take(last.rest);
        }
    }

    /// Whether the sums must be folded away after so many rows, before they could overflow.
    bool mustFold(std::uint32_t rows) const { return rows % foldEvery_ == 0; }

    /// As many cells without a black pixel are handed over at once.
    static constexpr std::uint32_t kGroup = 8;

    /// Hands the counts over and starts anew: onCell(cell, width, count), or onWhite(cell) for kGroup cells from that
    /// one on.
    template <class OnCell, class OnWhite>
    void take(OnCell onCell, OnWhite onWhite) {
        const std::uint32_t* const widths = widths_.get();
        EdgeSum* const sums = sums_.get();
        std::uint32_t covering = 0;
        for (std::uint32_t cell = 0; cell < cells_;) {
            const std::uint32_t end = std::min(cell + kGroup, cells_);
            if (covering == 0 && end == cell + kGroup && isZero(sums + cell)) {
                onWhite(cell);
                cell = end;
                continue;
            }
            for (; cell < end; ++cell) {
                const EdgeSum sum = sums[cell];
                sums[cell] = {};
                onCell(cell, widths[cell], sum.own() + covering * widths[cell]);
                covering += sum.covers();
            }
        }
        sums[cells_] = {};
    }

    /// Adds the counts to `counts`, one a cell, and starts anew; the result is their total.
    std::uint64_t fold(ImgULong* counts) {
        std::uint64_t total = 0;
        take(
            [&total, counts](std::uint32_t cell, std::uint32_t, std::uint32_t count) {
                counts[cell] += count;
                total += count;
            },
            [](std::uint32_t) {});
        return total;
    }

    std::uint32_t width(std::uint32_t cell) const { return widths_[cell]; }

private:
    static bool isZero(const EdgeSum* sums) {
        MachineWord any = 0;
        for (std::uint32_t k = 0; k < kGroup; ++k) any |= sums[k].any();
        return any == 0;
    }

    Heap<CellEdge> edges_;
    Heap<std::uint32_t> widths_;
    Heap<EdgeSum> sums_;
    std::uint32_t cells_ = 0;
    std::uint32_t foldEvery_ = 1;
};

}  // namespace tilepress
