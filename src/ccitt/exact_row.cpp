#include "ccitt/decode_row.h"

#include "ccitt/decode_tables.h"

#include <algorithm>

namespace tilepress::g4 {
namespace {

class ExactRow {
public:
    ExactRow(const CodedRow& row, Decoding how)
        : in_(row.in), bit_(row.bit), ref_(row.reference.elements), limit_(row.reference.count - 3), width_(row.width),
          coding_(row.coding), standard_(how == Decoding::standard) {}

    RowStatus decode() {
        coding_[0] = 0;
        while (coding_[last_] <= width_)
            if (const RowStatus status = step(); status != kRowDecoded) return status;
        if (coding_[last_] > width_ + 1) return kRowPastEnd;
        // A row that an end-of-block ended is white, whatever was decoded.
        if (endOfBlock_) {
            last_ = 1;
            coding_[0] = 0;
            coding_[1] = width_ + 1;
        }
        coding_[++last_] = width_ + 1;
        coding_[++last_] = width_ + 1;
        return kRowDecoded;
    }
    std::int64_t position() const { return bit_; }
    std::int32_t count() const { return last_ + 1; }

private:
    RowStatus step() {
        const ModeEntry mode = kModes[in_.peek(bit_, kModeBits)];
        switch (mode.mode) {
        case kEndOfBlock: return standard_ ? noCode(kRowInvalidMode, kModeBits) : skipEndOfBlock();
        case kExtension: return noCode(kRowExtension, kModeBits);
        case kHorizontal:
            bit_ += mode.length;
            if (const RowStatus status = run(); status != kRowDecoded) return status;
            return run();
        case kPass:
            bit_ += mode.length;
            findB1();
            a0_ = ref_[cursor_ + 1];
            // By the standard no code follows where the row is full.
            return standard_ && a0_ > width_ ? append(a0_) : kRowDecoded;
        default:
            bit_ += mode.length;
            findB1();
            return vertical(mode.delta);
        }
    }

    RowStatus vertical(int delta) {
        const auto a1 =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(ref_[cursor_]) + static_cast<std::uint32_t>(delta));
        if (standard_ && a1 < std::max(a0_, 1)) return kRowBackwards;
        a0_ = a1;
        black_ = !black_;
        return append(a0_);
    }

    // The search goes on from the last b1 in either direction and stays in the list.
    void findB1() {
        if (ref_[cursor_] <= a0_)
            while (cursor_ < limit_ && ref_[cursor_] <= a0_) ++cursor_;
        else
            while (cursor_ > 0 && ref_[cursor_ - 1] > a0_) --cursor_;
        if ((cursor_ & 1) == static_cast<int>(black_) && cursor_ < limit_) ++cursor_;
    }

    RowStatus append(std::int32_t position) {
        if (standard_ && position == coding_[last_]) {
            // Two changes at one place are none; at the row's end there is but one.
            if (position <= width_) --last_;
            return kRowDecoded;
        }
        if (last_ > width_) return kRowPastEnd;
        coding_[++last_] = position;
        return kRowDecoded;
    }

    RowStatus run() {
        const std::int32_t from = a0_;
        unsigned code;
        do {
            code = kRuns[black_][runSlot(in_.peek(bit_, kRunBits))];
            if (code == kNoRun) return noCode(kRowInvalidRun, kRunBits);
            bit_ += code & 15;
            // Columns count from 1. The sum of make-up codes is held just past the row, not refused: a later
            // invalid code has a status of its own.
            a0_ = static_cast<std::int32_t>(
                std::min<std::int64_t>(std::int64_t{a0_} + (code >> 4) + (a0_ == 0), std::int64_t{width_} + 2));
        } while (code >= kMakeUp);
        // Kept: a run that moves nothing appends nothing, yet the colour changes.
        const RowStatus status = a0_ != from || standard_ ? append(a0_) : kRowDecoded;
        black_ = !black_;
        return status;
    }

    /// The status of what is no code. By the standard the data may also have ended: within this code of at most
    /// `length` bits, with nothing but fill from here on, or by an end-of-block.
    RowStatus noCode(RowStatus status, unsigned length) const {
        if (!standard_) return status;
        if (bit_ + length > 8 * in_.length || in_.peek(bit_, 24) == 0x001001) return kRowNoData;
        for (std::int64_t bit = bit_; bit < 8 * in_.length; bit += 24)
            if (in_.peek(bit, 24) != 0) return status;
        return kRowNoData;
    }

    /// Whether a zero byte that follows an end-of-block is none of the data.
    bool fillHasEnded() const {
        // Without a length there is nothing to skip.
        if (in_.length < 0) return true;
        // Kept: the word order counts the words that reach past its bytes as gone; within images odd lengths are
        // rounded up.
        return in_.wordOrder ? 2 * ((bit_ + 31) >> 4) > in_.length
                             : (bit_ >> 3) >= ((in_.length + 1) & ~std::int64_t{1});
    }

    RowStatus skipEndOfBlock() {
        if (in_.peek(bit_ + 7, 5) != 1) return kRowInvalidMode;
        // Kept: the first four bits of the second end-of-line are not checked.
        if ((in_.peek(bit_ + 12, 12) & 0xFF) != 1) return kRowInvalidMode;
        bit_ += 24;
        while ((bit_ & 7) != 0 && in_.peek(bit_, 1) == 0) ++bit_;
        while (in_.peek(bit_, 8) == 0) {
            if (fillHasEnded()) return kRowPastEnd;
            bit_ += 8;
        }
        endOfBlock_ = true;
        if (coding_[last_] > width_) return kRowDecoded;
        // Kept: decoding of the row goes on behind the end-of-block.
        if (black_) return append(width_);
        coding_[last_] = width_;
        return kRowDecoded;
    }

    const CodedData& in_;
    std::int64_t bit_;
    const std::int32_t* ref_;
    std::int32_t limit_;  // the reference's last change: the cursor never passes it
    std::int32_t width_;
    std::int32_t* coding_;
    std::int32_t last_ = 0;
    std::int32_t cursor_ = 0;
    std::int32_t a0_ = 0;
    bool standard_;
    bool black_ = false;
    bool endOfBlock_ = false;
};

}  // namespace

RowStatus decodeExact(const CodedRow& to, Decoding how) {
    ExactRow row(to, how);
    const RowStatus status = row.decode();
    if (status != kRowDecoded) return status;
    to.count = row.count();
    to.bit = row.position();
    return kRowDecoded;
}

}  // namespace tilepress::g4
