#include "ccitt/row_cursor.h"

#include "ccitt/coded_bytes.h"
#include "kernels/bit_rows.h"

#include <algorithm>
#include <cstring>

namespace tilepress::g4 {

/// Bytes that the window holds at first: some rows of a drawing. It is moved on when half of them are behind.
static constexpr std::int64_t kWindow = 2048;
/// Bits that are looked at behind a row: an end-of-block's.
static constexpr std::int64_t kLookedAhead = 64;

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
    tile_ = codes;
    window_.base = 0;
    goesOn_ = false;
    if (still_) {
        becomePaper();
        return true;
    }
    codes_ = {codes.bytes, codes.length, false};
    if (codes.order == CodeOrder::ready) return true;
    if (!reserve(std::min(length(), kWindow))) return false;
    copyFrom(0);
    return true;
}

void RowCursor::becomePaper() {
    count_ = whiteLine(row_, width_);
    if (!blackPaper_) return;
    row_[1] = 1;
    ++count_;
}

// --- codes that are copied ---

/// Without room there is nothing that could be decoded.
bool RowCursor::reserve(std::int64_t room) {
    if (room <= window_.room && window_.bytes) return true;
    window_.room = 0;
    still_ = !window_.bytes.reserve(static_cast<std::uint64_t>(room) + kCodedBack);
    if (still_) return false;
    window_.room = room;
    return true;
}

/// Copies the codes from an even byte on, as many as there is room for.
void RowCursor::copyFrom(std::int64_t base) {
    const std::int64_t left = length() - base, size = std::min(left, window_.room);
    const auto count = static_cast<std::size_t>(std::min(size, tile_.length - base));
    const unsigned char* const from = tile_.bytes + base;
    unsigned char* const bytes = window_.bytes.get();
    if (tile_.order == CodeOrder::pairsExchanged) {
        exchangePairs(bytes, from, count);
    } else {
        std::memcpy(bytes, from, count);
        if (tile_.order == CodeOrder::lowBitFirst) reverseBitsInBytes(bytes, count);
    }
    std::memset(bytes + size, 0, kCodedBack);
    codes_ = {bytes, size, false};
    window_.base = base;
    goesOn_ = size < left;
    window_.certain = 8 * size - kLookedAhead;
}

/// After a row that began at `begin`: decodes it with more codes where it could depend on them, and moves the window on
/// before the next one comes near its end.
RowStatus RowCursor::moveOn(std::int64_t begin, RowStatus status) {
    while (goesOn_ && (status != kRowDecoded || bit_ > window_.certain)) {
        const std::int64_t passed = begin / 16 * 2;
        if (passed == 0 && !reserve(std::min(2 * window_.room, length()))) return kRowNoMemory;
        copyFrom(window_.base + passed);
        begin = bit_ = begin - 8 * passed;
        status = decodeLine(codes_, bit_, row(), width_, coding_, codingCount_, how_);
    }
    if (status == kRowDecoded && goesOn_ && bit_ > 4 * window_.room) {
        const std::int64_t passed = bit_ / 16 * 2;
        copyFrom(window_.base + passed);
        bit_ -= 8 * passed;
    }
    return status;
}

const CodedData* RowCursor::rest(std::int64_t& bit) {
    if (goesOn_) {
        const std::int64_t passed = bit_ / 16 * 2, base = window_.base + passed;
        if (!reserve(length() - base)) return nullptr;
        copyFrom(base);
        bit_ -= 8 * passed;
    }
    bit = bit_;
    return &codes_;
}

}  // namespace tilepress::g4
