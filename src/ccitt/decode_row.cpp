#include "ccitt/decode_row.h"

#include "ccitt/padded_line.h"
#include "kernels/vectors.h"

#include <algorithm>
#include <cstring>

// There are two decoders. The exact one defines what every stream gives, however
// damaged, for callers of either kind. The fast one handles rows whose positions increase all the way, against
// a reference that does, and gives up on anything else before it could differ; the
// row is then decoded again by the exact one.

namespace tilepress::g4 {
namespace {

// --- the exact decoder ----------------------------------------------------------

class ExactRow {
public:
    ExactRow(const CodedData& in, std::int64_t bit, RowList reference, std::int32_t width, std::int32_t* coding,
             Decoding how)
        : in_(in), bit_(bit), ref_(reference.elements), limit_(reference.count - 3), width_(width), coding_(coding),
          standard_(how == Decoding::standard) {}

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
        const ModeEntry mode = kDecodeTables.mode[in_.peek(bit_, kModeBits)];
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
        RunEntry code;
        do {
            code = kDecodeTables.run[black_][in_.peek(bit_, kRunBits)];
            if (code.run < 0) return noCode(kRowInvalidRun, kRunBits);
            bit_ += code.length;
            // Columns count from 1. The sum of make-up codes is held just past the row, not refused: a later
            // invalid code has a status of its own.
            a0_ = static_cast<std::int32_t>(
                std::min<std::int64_t>(std::int64_t{a0_} + code.run + (a0_ == 0), std::int64_t{width_} + 2));
        } while (code.run > 63);
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

RowStatus decodeExact(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width,
                      std::int32_t* coding, std::int32_t& codingCount, Decoding how) {
    ExactRow row(in, bit, reference, width, coding, how);
    const RowStatus status = row.decode();
    if (status != kRowDecoded) return status;
    codingCount = row.count();
    bit = row.position();
    return kRowDecoded;
}

// --- the fast decoder -----------------------------------------------------------

/// Whether the list increases from 0 to width + 1 and is closed by two more of it.
bool increases(RowList list, std::int32_t width) {
    const std::int32_t* c = list.elements;
    const std::int32_t last = list.count - 3;
    int bad = (c[0] != 0) | (c[last] != width + 1) | (c[last + 1] != width + 1) | (c[last + 2] != width + 1);
    for (std::int32_t k = 0; k < last; ++k) bad |= c[k] >= c[k + 1];
    return bad == 0;
}

/// Where the row lives: between padded lines every access may run a few elements
/// over, in a caller's arrays none may.
struct PaddedLists {
    static constexpr bool kExact = false;
};
struct CallersLists {
    static constexpr bool kExact = true;
};

/// Refills unless that would read past `readEnd`; padded data need no such test.
template <class Lists, class Bits>
inline bool refill(Bits& bits, const unsigned char* readEnd) {
    if (Lists::kExact && bits.p > readEnd) return false;
    bits.refill();
    return true;
}

/// A run of make-up codes and its terminating code; negative for the exact decoder.
template <class Lists, class Bits>
inline std::int32_t readRun(Bits& bits, const unsigned char* readEnd, const std::array<RunEntry, 1 << kRunBits>& table,
                            std::int32_t limit) {
    std::int32_t sum = 0;
    for (;;) {
        const RunEntry code = table[bits.top(kRunBits)];
        if (code.run < 0) return -1;
        bits.drop(code.length);
        sum += code.run;
        if (code.run <= 63) return sum;
        if (sum > limit || !refill<Lists>(bits, readEnd)) return -1;
    }
}

/// Where vertical codes lead whose first has its b1 at `here`, each next one the element after.
struct Steps {
    Ints4 to;
    /// Bit k for the code k after which the cursor moves otherwise, or that leads left of a0 or to the end of the row.
    unsigned refused;

    Steps(const VerticalCodes& codes, const std::int32_t* here, std::int32_t a0) {
        static constexpr Ints4 counted[5] = {{}, {-1, 0, 0, 0}, {-1, -1, 0, 0}, {-1, -1, -1, 0}, {-1, -1, -1, -1}};
        to = loadLanes<Ints4>(here) + widened(codes.deltas);
        const Ints4 before = loadLanes<Ints4>(here - 1), after = loadLanes<Ints4>(here + 1);
        refused = laneBits(((before > to) | (after <= to) | (to <= shifted(to, a0))) & counted[codes.count]);
    }
};

/// The count of the decoded list, or 0 to leave the row to the exact decoder.
///
/// a0 increases with every code and the cursor i is the first element of the right parity
/// past it. After a vertical code that is i + 1 nearly always, so that up to four of them are
/// taken at once and all checked together; else it is i - 1, i + 3 or i + 5. Behind the last
/// change, at index `last`, the list repeats width + 1, which ends every search.
template <class Lists, class Bits>
std::int32_t decodeFast(Bits& bits, const unsigned char* readEnd, RowList reference, std::int32_t width,
                        std::int32_t* coding) {
    const std::int32_t* const ref = reference.elements;
    const std::int32_t last = reference.count - 3, end = width + 1;
    const auto at = [&](std::int32_t i) { return ref[Lists::kExact ? std::min(i, last + 2) : i]; };
    std::int32_t i = 1, n = 1, a0 = 0;
    coding[0] = 0;
    for (;;) {
        if (!refill<Lists>(bits, readEnd)) return 0;
        int room = Bits::kRefilled - static_cast<int>(kVerticalBits);
        do {
            const VerticalCodes codes = kDecodeTables.verticals[bits.top(kVerticalBits)];
            if (codes.count != 0 && (!Lists::kExact || (i + 4 < reference.count && n <= width))) [[likely]] {
                const Steps steps(codes, ref + i, a0);
                storeLanes(coding + n, steps.to);
                if (steps.refused == 0) [[likely]] {
                    n += codes.count;
                    i += codes.count;
                    room -= codes.length;
                    bits.drop(codes.length);
                    a0 = coding[n - 1];
                    continue;
                }
                const int taken = std::countr_zero(steps.refused);
                // The row's last code ends them too.
                if (coding[n + taken] == end) {
                    bits.drop(codes.lengths >> 4 * taken & 15u);
                    return n + taken + 1;
                }
                if (taken > 0) {
                    const int length = codes.lengths >> 4 * (taken - 1) & 15;
                    n += taken;
                    i += taken;
                    room -= length;
                    bits.drop(static_cast<unsigned>(length));
                    a0 = coding[n - 1];
                    if (room < 0) break;
                }
            }
            const ModeEntry mode = kDecodeTables.mode[bits.top(kModeBits)];
            if (mode.mode == kHorizontal) [[unlikely]] {
                if (!refill<Lists>(bits, readEnd)) return 0;
                bits.drop(3);
                const std::int32_t a1 =
                    a0 + (a0 == 0) + readRun<Lists>(bits, readEnd, kDecodeTables.run[~n & 1], width);
                // Without make-up codes both runs take 29 bits; behind one the bits are refilled.
                if (Bits::kRefilled < 56 && !refill<Lists>(bits, readEnd)) return 0;
                const std::int32_t length = readRun<Lists>(bits, readEnd, kDecodeTables.run[n & 1], width);
                const std::int32_t a2 = a1 + length;
                if (a1 <= a0 || length < 0 || a2 > end) return 0;
                coding[n] = a1;
                if (a1 == end) return n + 1;
                if (length == 0) return 0;
                coding[n + 1] = a2;
                n += 2;
                a0 = a2;
                if (a0 == end) return n;
                while (at(i) <= a0) i += 2;
                break;
            }
            if (mode.length == 0) [[unlikely]]
                return 0;
            bits.drop(mode.length);
            room -= mode.length;
            const std::int32_t before = ref[i - 1], here = at(i), after1 = at(i + 1), after3 = at(i + 3);
            if (mode.pass) {
                a0 = after1;
                i += 2;
                if (a0 >= end) return 0;
            } else {
                const std::int32_t a1 = here + mode.delta;
                if (a1 <= a0) return 0;
                a0 = a1;
                coding[n++] = a1;
                i += 1;
                if ((before > a1) | (after1 <= a1)) [[unlikely]]
                    i += -2 * (before > a1) + 2 * (after1 <= a1) + 2 * (after3 <= a1);
                if (a0 >= end) return a0 == end ? n : 0;
            }
        } while (room >= 0);
    }
}

// Sums of a position and a code stay within 32 bits below these.
constexpr std::int32_t kMaxWidth = 0x7FFFFFFF - 8, kMaxFastWidth = 0x3FFFFFFF;

}  // namespace

RowStatus decodeRow(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width, std::int32_t* coding,
                    std::int32_t& codingCount) {
    if (width < 0 || width > kMaxWidth || reference.count < 4) return kRowPastEnd;
    const std::int64_t wordsEnd = in.length & ~std::int64_t{1};
    if (in.wordOrder && width <= kMaxFastWidth && bit >= 0 && (bit >> 4) * 2 + 16 <= wordsEnd &&
        increases(reference, width)) {
        WordBits bits(in.bytes, bit);
        const unsigned char* readEnd = in.bytes + wordsEnd - 8;
        const std::int32_t n = decodeFast<CallersLists>(bits, readEnd, reference, width, coding);
        if (n != 0) {
            coding[n] = coding[n + 1] = width + 1;
            codingCount = n + 2;
            bit = bits.position(in.bytes);
            return kRowDecoded;
        }
    }
    return decodeExact(in, bit, reference, width, coding, codingCount, Decoding::classic);
}

RowStatus decodeLine(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width,
                     std::int32_t* coding, std::int32_t& codingCount, Decoding how) {
    if (width < 0 || width > kMaxWidth || reference.count < 4) return kRowPastEnd;
    if (width <= kMaxFastWidth && reference.elements[kLineIrregular] == 0 && bit >= 0 && bit >> 3 <= in.length) {
        PlainBits bits(in.bytes, bit);
        const std::int32_t n = decodeFast<PaddedLists>(bits, nullptr, reference, width, coding);
        if (n != 0) {
            std::fill_n(coding + n, kLineRepeats, width + 1);
            coding[kLineIrregular] = 0;
            codingCount = n + 2;
            bit = bits.position(in.bytes);
            return kRowDecoded;
        }
    }
    const RowStatus status = decodeExact(in, bit, reference, width, coding, codingCount, how);
    if (status != kRowDecoded) return status;
    std::fill_n(coding + codingCount, kLineRepeats, width + 1);
    coding[kLineIrregular] = !increases({coding, codingCount}, width);
    return kRowDecoded;
}

std::int32_t whiteLine(std::int32_t* line, std::int32_t width) {
    line[0] = 0;
    std::fill_n(line + 1, kLineRepeats + 2, width + 1);
    line[kLineIrregular] = 0;
    return 4;
}

}  // namespace tilepress::g4
