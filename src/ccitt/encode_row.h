#pragma once

// One row's changing-element list into Group 4 codes.

#include "ccitt/bit_writer.h"
#include "ccitt/row_list.h"

#include <cstdint>

namespace tilepress::g4 {

/// Upper bound of a row's bits: each code but the first has at most seven for every column that it passes.
constexpr std::int64_t maxRowBits(std::int32_t width) { return 7 * std::int64_t{width} + 18; }

/// Appends the row, given the one above; both lists are rows of one width. Reads no element past their counts.
template <class Writer>
void encodeRow(Writer& out, RowList reference, RowList coding);

extern template void encodeRow(PlainWriter&, RowList, RowList);
extern template void encodeRow(WordWriter&, RowList, RowList);

}  // namespace tilepress::g4
