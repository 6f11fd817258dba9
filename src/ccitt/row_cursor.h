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

/// The rows of a tile, from the top. Codes that are not ready for the decoder are copied as rows come to them, into a
/// window that grows for a row of more codes than it holds, and with damaged ones up to the tile's end.
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

    /// Decodes a row; where that fails, the row before stays. After kRowNoMemory another tile must be entered.
    RowStatus next() {
        if (still_) return kRowDecoded;
        if (staysWhite(codes_, bit_, row())) {
            ++bit_;
            return kRowDecoded;
        }
        const std::int64_t begin = bit_;
        RowStatus status = decodeLine(codes_, bit_, row(), width_, coding_, codingCount_, how_);
        if (goesOn_) status = moveOn(begin, status);
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
    std::int64_t position() const { return 8 * window_.base + bit_; }
    /// Bytes of the tile's codes.
    std::int64_t length() const {
        return tile_.length + (tile_.order == CodeOrder::pairsExchanged && tile_.length % 2);
    }
    /// The codes from the next row's or a little before them up to the tile's end, and the bit at which that row's
    /// begin; null when memory runs out.
    const CodedData* rest(std::int64_t& bit);

private:
    /// The stretch of codes that is copied.
    struct Window {
        Heap<unsigned char> bytes;
        std::int64_t room = 0;     ///< bytes, without the zeros behind them
        std::int64_t base = 0;     ///< the tile's byte that is the first
        std::int64_t certain = 0;  ///< a row that ends before this bit does not depend on what follows
    };

    bool reserve(std::int64_t room);
    void copyFrom(std::int64_t base);
    RowStatus moveOn(std::int64_t begin, RowStatus status);
    void becomePaper();

    CodedData codes_{nullptr, 0, false};
    std::int64_t bit_ = 0;
    std::int32_t* coding_ = nullptr;
    std::int32_t* row_ = nullptr;
    std::int32_t width_ = 0, codingCount_ = 0, count_ = 0;
    Decoding how_ = Decoding::classic;
    bool blackPaper_ = false;
    bool still_ = true;
    bool goesOn_ = false;  ///< the window is not all of the tile's codes from it on
    TileCodes tile_;
    Window window_;
};

}  // namespace tilepress::g4
