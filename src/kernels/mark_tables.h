#pragma once

// Tables of how many positions each mark of a Rothstein code owns.

#include "foundation/heap.h"
#include "kernels/marks.h"
#include "tilepress/api.h"

#include <cstdint>

namespace tilepress {

/// Calls group(first, size, number) for each mark's positions, in order, until it says false, which is the result. No
/// marks, or more than there are positions, mark every position.
template <class Group>
inline bool eachMark(std::uint32_t positions, std::uint32_t marks, Group group) {
    if (marks == 0 || marks > positions) marks = positions;
    MarkWalk mark(positions, marks ? marks : 1);
    for (std::uint32_t k = 0; k < marks; ++k, mark.advance())
        if (!group(mark.position(), mark.size(), k)) return false;
    return true;
}

/// The same for all of them.
template <class Group>
inline void forEachMark(std::uint32_t positions, std::uint32_t marks, Group group) {
    eachMark(positions, marks, [&](std::uint32_t first, std::uint32_t size, std::uint32_t number) {
        group(first, size, number);
        return true;
    });
}

/// Where each mark lies, and `positions` after the last; false when memory runs out.
inline bool markTable(Heap<ImgULong>& table, std::uint32_t positions, std::uint32_t marks) {
    if (!table.reserve(std::uint64_t{marks} + 1)) return false;
    forEachMark(positions, marks,
                [&table](std::uint32_t first, std::uint32_t, std::uint32_t mark) { table[mark] = first; });
    table[marks] = positions;
    return true;
}

/// Which mark owns each position; false when memory runs out.
inline bool ownerTable(Heap<ImgULong>& table, std::uint32_t positions, std::uint32_t marks) {
    if (!table.reserve(positions)) return false;
    forEachMark(positions, marks, [&table](std::uint32_t first, std::uint32_t size, std::uint32_t mark) {
        for (std::uint32_t i = first; i < first + size; ++i) table[i] = mark;
    });
    return true;
}

/// At each mark's position how many positions it owns, and elsewhere 0; null when memory runs out.
inline ImgULong* sizeTable(std::uint32_t positions, std::uint32_t marks) {
    ImgULong* sizes = allocate<ImgULong>(positions);
    if (sizes)
        forEachMark(positions, marks,
                    [sizes](std::uint32_t first, std::uint32_t size, std::uint32_t) { sizes[first] = size; });
    return sizes;
}

}  // namespace tilepress
