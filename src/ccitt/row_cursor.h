#pragma once

// A place in a tile's codes with the row that was decoded last.

#include "ccitt/decode_row.h"
#include "foundation/heap.h"

#include <cstdint>
#include <utility>

namespace tilepress::g4 {

/// How a tile's codes lie in memory.
enum class CodeOrder {
    ready,          ///< as the decoder reads them: plain bytes followed by kCodedBack zeros
    plain,          ///< plain bytes, with nothing known of what follows them
    lowBitFirst,    ///< the same with the lowest bit of each byte first
    pairsExchanged  ///< the two bytes of every 16-bit pair exchanged; of an odd length the last byte's partner is 0
};

/// A tile's codes. A tile without bytes is paper.
struct TileCodes {
    const unsigned char* bytes = nullptr;
    std::int64_t length = 0;
    CodeOrder order = CodeOrder::ready;
};

/// The rows of a tile, from the top. Codes that are not ready for the decoder are copied on entering the tile.
class RowCursor {
public:
    RowCursor() = default;
    RowCursor(const RowCursor&) = delete;
    RowCursor& operator=(const RowCursor&) = delete;
    ~RowCursor();

    /// For tiles of `width` pixels on white paper or on black; false when memory runs out.
    bool prepare(std::uint32_t width, Decoding how, bool blackPaper = false);
    /// Goes to the top of a tile; false when memory runs out. The codes must stay until the next one is entered.
    bool enter(const TileCodes& codes);

    /// Decodes a row; where that fails, the row before stays.
    RowStatus next() {
        if (still_) return kRowDecoded;
        if (staysWhite(codes_, bit_, row())) {
            ++bit_;
            return kRowDecoded;
        }
        const RowStatus status = decodeLine(codes_, bit_, row(), width_, coding_, codingCount_, how_);
        if (status != kRowDecoded) return status;
        std::swap(coding_, row_);
        std::swap(codingCount_, count_);
        return kRowDecoded;
    }
    /// The row that was decoded last; before the first the white one that it is decoded against.
    RowList row() const { return {row_, count_}; }
    /// Nothing more is decoded: the row stays as it is, or is paper.
    void stay(bool paper) {
        still_ = true;
        if (paper) becomePaper();
    }
    /// The bit at which the next row's codes begin.
    std::int64_t position() const { return bit_; }
    /// The codes as they are decoded.
    const CodedData& codes() const { return codes_; }

private:
    bool copy(const TileCodes& codes);
    void becomePaper();

    CodedData codes_{nullptr, 0, false};
    std::int64_t bit_ = 0;
    std::int32_t* coding_ = nullptr;
    std::int32_t* row_ = nullptr;
    std::int32_t width_ = 0, codingCount_ = 0, count_ = 0;
    Decoding how_ = Decoding::classic;
    bool blackPaper_ = false;
    bool still_ = true;
    Heap<unsigned char> copied_;
    std::uint64_t room_ = 0;
};

}  // namespace tilepress::g4
