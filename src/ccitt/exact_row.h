#pragma once

// The exact row decoder: it defines what every stream gives, however damaged, for callers of either kind.

#include "ccitt/decode_row.h"

#include <cstdint>

namespace tilepress::g4 {

/// What a row is decoded from and into.
struct CodedRow {
    const CodedData& in;
    std::int64_t& bit;  ///< where its codes begin; behind them when it is decoded
    RowList reference;
    std::int32_t width;
    std::int32_t* coding;
    std::int32_t& count;  ///< of the elements, when it is decoded
};

RowStatus decodeExact(const CodedRow& row, Decoding how);

}  // namespace tilepress::g4
