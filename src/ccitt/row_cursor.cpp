#include "ccitt/row_cursor.h"

#include "ccitt/coded_bytes.h"
#include "kernels/bit_rows.h"

#include <cstring>

namespace tilepress::g4 {

RowCursor::~RowCursor() {
    freeLine(coding_);
    freeLine(row_);
}

bool RowCursor::prepare(std::uint32_t width, Decoding how, bool blackPaper) {
    blackPaper_ = blackPaper;
    width_ = static_cast<std::int32_t>(width);
    how_ = how;
    coding_ = allocateLine(width);
    row_ = allocateLine(width);
    return coding_ && row_;
}

bool RowCursor::enter(const TileCodes& codes) {
    bit_ = 0;
    count_ = whiteLine(row_, width_);
    still_ = !codes.bytes;
    if (still_) {
        becomePaper();
        return true;
    }
    if (codes.order != CodeOrder::ready) return copy(codes);
    codes_ = {codes.bytes, codes.length, false};
    return true;
}

void RowCursor::becomePaper() {
    count_ = whiteLine(row_, width_);
    if (!blackPaper_) return;
    row_[1] = 1;
    ++count_;
}

bool RowCursor::copy(const TileCodes& codes) {
    const auto size = static_cast<std::uint64_t>(codes.length);
    const std::uint64_t even = size + size % 2, needed = even + kCodedBack;
    if (needed > SIZE_MAX || (needed > room_ && !copied_.reserve(needed))) {
        room_ = 0;
        still_ = true;
        return false;
    }
    if (needed > room_) room_ = needed;
    unsigned char* const bytes = copied_.get();
    const auto count = static_cast<std::size_t>(size);
    codes_ = {bytes, codes.length, false};
    if (codes.order == CodeOrder::pairsExchanged) {
        exchangePairs(bytes, codes.bytes, count);
        codes_.length = static_cast<std::int64_t>(even);
    } else {
        std::memcpy(bytes, codes.bytes, count);
        if (codes.order == CodeOrder::lowBitFirst) reverseBitsInBytes(bytes, count);
    }
    std::memset(bytes + codes_.length, 0, static_cast<std::size_t>(needed) - static_cast<std::size_t>(codes_.length));
    return true;
}

}  // namespace tilepress::g4
