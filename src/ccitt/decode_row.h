#pragma once

// One row of a Group 4 stream into its changing-element list.

#include "ccitt/bit_reader.h"
#include "ccitt/padded_line.h"
#include "ccitt/row_list.h"

#include <cstdint>

namespace tilepress::g4 {

enum RowStatus : std::int16_t {
    kRowDecoded = 0,
    kRowPastEnd = 1,
    kRowInvalidRun = 2,
    kRowExtension = 5,
    kRowInvalidMode = 6,
    // By the standard alone:
    kRowBackwards = 7,  // a code leads left of where the row already is
    kRowNoData = 8,     // the data end, or an end-of-block ends them, before the row does
    // By a cursor alone:
    kRowNoMemory = 9
};

/// What rows mean that no coder of the plain kind writes.
enum class Decoding {
    /// As callers of the exported functions know it: a run of nothing changes the colour but appends no element, rows
    /// may go back, and an end-of-block makes its row white.
    classic,
    /// ITU-T T.6. A run of nothing changes the colour twice at one place, where the row then has no changing element;
    /// so lists of rows that are decoded increase strictly.
    standard
};

/// Decodes the row at `bit` of `in` against `reference` into `coding`, which has
/// room for width + 4 elements and no more is written; reads of the reference stay within its count.
/// `bit` and `codingCount` change only on success.
RowStatus decodeRow(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width, std::int32_t* coding,
                    std::int32_t& codingCount);

/// The same between lines of ccitt/padded_line.h, for plain data followed by at
/// least kCodedBack zero bytes, as ccitt/coded_bytes.h makes them.
RowStatus decodeLine(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width,
                     std::int32_t* coding, std::int32_t& codingCount, Decoding how = Decoding::classic);

/// What a row is decoded from and into.
struct CodedRow {
    const CodedData& in;
    std::int64_t& bit;  ///< where its codes begin; behind them when it is decoded
    RowList reference;
    std::int32_t width;
    std::int32_t* coding;
    std::int32_t& count;  ///< of the elements, when it is decoded
};

/// The exact decoder (exact_row.cpp): it defines what every stream gives, however damaged.
RowStatus decodeExact(const CodedRow& row, Decoding how);

/// Elements of the all-white row.
inline constexpr std::int32_t kWhiteCount = 4;

/// Whether a line that follows a white one is white too by a single code.
inline bool staysWhite(const CodedData& in, std::int64_t bit, RowList reference) {
    return reference.count == kWhiteCount && reference.elements[kLineIrregular] == 0 && bit >= 0 &&
           bit >> 3 < in.length && (in.bytes[bit >> 3] << (bit & 7) & 0x80) != 0;
}

/// Makes a line the all-white row; the result is its count.
std::int32_t whiteLine(std::int32_t* line, std::int32_t width);

}  // namespace tilepress::g4
