#pragma once

// Rows as lists of changing elements: 0, the columns at which the colour changes, counted from 1, and the row's end,
// width + 1, three times.

#include <cstdint>

namespace tilepress::g4 {

/// Widest row whose list, and sums with its end, stay within 32 bits.
inline constexpr std::uint32_t kMaxListWidth = 0x7FFFFFFF - 8;

/// A row list as the caller holds it.
struct RowList {
    const std::int32_t* elements;
    std::int32_t count;
};

/// Whether the list is a row: it increases from 0 to its end, width + 1, and is closed by two more of it.
bool isRow(RowList list, std::int32_t end);

}  // namespace tilepress::g4
