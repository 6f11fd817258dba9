#pragma once

// Run tables: how many positions each mark of a Rothstein code owns.

#include "foundation/heap.h"
#include "tilepress/api.h"
#include "transform/marks.h"

#include <cstdint>

namespace tilepress {

/// Calls group(first, size, number) for each mark's positions, in order. No marks, or more than there are
/// positions, mark every position.
template <class Group>
inline void forEachMark(std::uint32_t positions, std::uint32_t marks, Group group) {
    if (marks == 0 || marks > positions) marks = positions;
    for (std::uint32_t k = 0, first = 0; k < marks; ++k) {
        const std::uint32_t next = markPosition(k + 1, positions, marks);
        group(first, next - first, k);
        first = next;
    }
}

/// A run table of `positions` entries, or null.
inline ImgULong* runTable(std::uint32_t positions, std::uint32_t marks) {
    ImgULong* runs = allocate<ImgULong>(positions);
    if (runs)
        forEachMark(positions, marks,
                    [runs](std::uint32_t first, std::uint32_t size, std::uint32_t) { runs[first] = size; });
    return runs;
}

}  // namespace tilepress
