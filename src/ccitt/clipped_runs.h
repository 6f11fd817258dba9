#pragma once

// The runs of a changing-element list within a range of columns.

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

/// Columns that are wanted, `width` from `start` on.
struct ColumnRange {
    std::int64_t start, width;
};

/// Calls onRun(from, to) for every second run, from the one that ends with element `k` on, as half-open columns of the
/// range. `left` is the list's first column. Nothing outside the range arrives, whatever the list holds.
template <class OnRun>
inline void clippedRuns(const std::int32_t* list, std::int32_t count, std::int32_t k, std::int64_t left,
                        const ColumnRange& range, OnRun onRun) {
    const std::int64_t toImage = left - 1;
    for (; k < count - 2; k += 2) {
        const std::int64_t start = toImage + list[k - 1];
        if (start < 0) continue;
        const std::int64_t from = std::max<std::int64_t>(start - range.start, 0);
        const std::int64_t to = std::min(toImage + list[k] - range.start, range.width);
        if (from < to) onRun(static_cast<std::size_t>(from), static_cast<std::size_t>(to));
    }
}

}  // namespace tilepress::g4
