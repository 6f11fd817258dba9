#pragma once

// One row's changing-element list into Group 4 codes.

#include "ccitt/bit_writer.h"
#include "ccitt/decode_row.h"

#include <cstdint>

namespace tilepress::g4 {

/// Whether the list is a row: it increases from 0 to its end, width + 1, and is closed by two more of it.
bool isRow(RowList list, std::int32_t end);

/// Upper bound of a row's bits: seven a column and eighteen for its first run.
constexpr std::int64_t maxRowBits(std::int32_t width) { return 7 * std::int64_t{width} + 18; }

/// Appends the row between lines of foundation/line.h. Both lists are rows of one width.
void encodeLine(const EncodeTables& tables, PlainWriter& out, RowList reference, RowList coding);

/// The same between a caller's arrays, reading no element past their counts.
void encodeRow(const EncodeTables& tables, WordWriter& out, RowList reference, RowList coding);

}  // namespace tilepress::g4
