#pragma once

// The runs of an increasing list within a range of columns, found by searching its ends.

#include "page/tile_walk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tilepress {

/// Columns of the page that are wanted.
struct Columns {
    std::uint32_t left, width;
};

/// Calls onRun(from, to) for a run that the range cuts, with half-open columns of the range, and, in between,
/// onList(list, count, offset) for a stretch of the list whose runs all lie inside: they end with its elements 2, 4 and
/// so on, two elements follow the last one, and an element's column is its value plus `offset`. `first` is 2 for black
/// runs and 1 for white ones.
template <class OnList, class OnRun>
inline void runsWithin(const g4::TileRow& row, std::int32_t first, const Columns& range, OnList onList, OnRun onRun) {
    const std::int32_t *const list = row.list, *const end = list + row.count - 2;
    const std::int64_t offset = std::int64_t{row.left} - 1 - range.left, width = range.width;
    const std::int32_t* k = list + first;  // where a run ends
    if (offset + 1 < 0) {
        k = std::upper_bound(list + 1, end, -offset, [](std::int64_t v, std::int32_t e) { return v < e; });
        if ((k - list) % 2 != first % 2) ++k;
    }
    // The first run may begin left of the range, and the first white one does so by what its list says.
    if (k < end && (k[-1] + offset < 0 || k == list + 1)) {
        const std::int64_t from = std::max<std::int64_t>(std::max(k[-1], 1) + offset, 0);
        const std::int64_t to = std::min(*k + offset, width);
        if (from < to) onRun(static_cast<std::size_t>(from), static_cast<std::size_t>(to));
        k += 2;
    }
    if (k >= end) return;
    const std::int32_t* past = end;  // of the runs that end inside
    if (end[-1] + offset > width)
        past = std::upper_bound(k, end, width - offset, [](std::int64_t v, std::int32_t e) { return v < e; });
    const std::ptrdiff_t inside = past > k ? (past - k + 1) / 2 : 0;
    if (inside > 0) onList(k - 2, static_cast<std::int32_t>(2 * inside + 2 + 1), static_cast<std::ptrdiff_t>(offset));
    k += 2 * inside;
    if (k < end && k[-1] + offset < width)
        onRun(static_cast<std::size_t>(k[-1] + offset), static_cast<std::size_t>(width));
}

}  // namespace tilepress
