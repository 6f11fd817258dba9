#pragma once

// The runs of decoded rows inside a rectangle, and packed rows painted with them.

#include "foundation/bits.h"
#include "kernels/toggled_row.h"
#include "page/tile_walk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

/// Which runs are wanted: those in the `width` columns of the page from `start` on.
struct Clip {
    std::int64_t start, width;
    bool white = false;  ///< the white ones; else the black ones
};

/// The element that ends the first run that is wanted.
inline std::int32_t firstRun(const std::int32_t* list, const Clip& clip) {
    // Kept: the first white run of a row begins one column early, in the tile to the left, and is
    // not painted at all where there is no such tile. Later white runs and all black ones are exact.
    return !clip.white ? 2 : list[1] == 1 ? 3 : 1;
}

/// Calls onRun(from, to) for every second run from the one that ends with element `k` on, as half-open columns counted
/// from the clip's start. Nothing outside the clip arrives, whatever the list holds.
template <class OnRun>
inline void clippedRuns(const TileRow& row, std::int32_t k, const Clip& clip, OnRun onRun) {
    const std::int64_t toPage = std::int64_t{row.left} - 1;
    for (; k < row.count - 2; k += 2) {
        const std::int64_t start = toPage + row.list[k - 1];
        if (start < 0) continue;
        const std::int64_t from = std::max<std::int64_t>(start - clip.start, 0);
        const std::int64_t to = std::min(toPage + row.list[k] - clip.start, clip.width);
        if (from < to) onRun(static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    }
}
template <class OnRun>
inline void clippedRuns(const TileRow& row, const Clip& clip, OnRun onRun) {
    clippedRuns(row, firstRun(row.list, clip), clip, onRun);
}

/// How much of a list can be painted without clipping: its first elements, or none. They increase, and their runs lie
/// in the clip. `offset` makes columns of elements.
inline std::int32_t insideCount(const TileRow& row, std::int64_t offset, const Clip& clip) {
    if (row.list[kLineIrregular] != 0 || offset + !clip.white < 0) return 0;
    std::int32_t count = row.count;
    while (count > 3 && offset + row.list[count - 3] > clip.width) --count;
    return count;
}

/// Calls onList(count, k, offset) for the first elements of a list, whose runs from the one that ends with element k on
/// lie inside the clip, and then onRun(from, to) for the runs that had to be clipped. Every run that is wanted arrives
/// and nothing outside the clip does, whatever the list holds.
template <class OnList, class OnRun>
inline void clippedRuns(const TileRow& row, const Clip& clip, OnList onList, OnRun onRun) {
    if (row.count <= kWhiteCount && !clip.white) return;
    const std::int64_t offset = std::int64_t{row.left} - 1 - clip.start;
    const std::int32_t inside = insideCount(row, offset, clip);
    std::int32_t k = firstRun(row.list, clip);
    if (inside > 0) {
        onList(inside, k, static_cast<std::ptrdiff_t>(offset));
        k += std::max(inside - 1 - k, 0) / 2 * 2;
    }
    clippedRuns(row, k, clip, onRun);
}

/// Where a run is painted: on its own columns.
struct Copied {
    template <class Paint>
    void operator()(std::size_t from, std::size_t to, Paint paint) const {
        paint(from, to);
    }
};

/// Paints the runs of rows into packed rows of one width.
class RowPainter {
public:
    /// False when memory runs out.
    bool prepare(std::uint32_t width) {
        bytes_ = packedBytes(width);
        return painted_.prepare(width);
    }
    /// Takes a walk's next row and sets the pixels of the runs that are wanted where onto(from, to, paint) lays them;
    /// of a row that ends the walk, those of the tiles before the damaged one. False when the walk has ended.
    template <class Onto>
    bool paint(TileWalk& walk, const Clip& clip, unsigned char* to, Onto onto) {
        pixels_ = 0;
        const bool good = walk.next([&](const TileRow& tile) { pixels_ += paintTile(tile, clip, to, onto); });
        painted_.orInto(to, bytes_);
        return good;
    }
    /// How many pixels the runs of the last row have.
    std::uint64_t pixels() const { return pixels_; }

private:
    /// Runs wait in the work row, but those of a damaged tile, which come in any order, go straight into `to`.
    template <class Onto>
    std::uint64_t paintTile(const TileRow& row, const Clip& clip, unsigned char* to, Onto onto) {
        const bool inOrder = row.list[kLineIrregular] == 0;
        std::uint64_t pixels = 0;
        clippedRuns(
            row, clip,
            [&](std::int32_t inside, std::int32_t k, std::ptrdiff_t offset) {
                pixels += painted_.addRuns(row.list, inside, k, offset, onto);
            },
            [&](std::size_t from, std::size_t end) {
                pixels += end - from;
                onto(from, end, [&](std::size_t first, std::size_t last) {
                    if (inOrder) painted_.add(first, last);
                    else setBits(to, first, last);
                });
            });
        return pixels;
    }
    static void setBits(unsigned char* row, std::size_t from, std::size_t to) {
        for (; from < to; ++from) row[from / 8] = static_cast<unsigned char>(row[from / 8] | 0x80 >> from % 8);
    }

    ToggledRow painted_;
    std::size_t bytes_ = 0;
    std::uint64_t pixels_ = 0;
};

}  // namespace tilepress::g4
