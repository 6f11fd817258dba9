#pragma once

// The fast row decoder, for rows whose positions increase all the way, against a reference that does. Anything else is
// left to the exact decoder before it could differ.
//
// a0 increases with every code, and the cursor is the first element of the reference past it that has the right parity:
// b1. After a vertical code that is the next element nearly always, so that up to four of them, and a pass code behind,
// are taken at once and all checked together; else it is one before, three on or five on. Behind its last change the
// reference repeats width + 1, which ends every search.

#include "ccitt/bit_reader.h"
#include "ccitt/decode_row.h"
#include "ccitt/decode_tables.h"
#include "ccitt/padded_line.h"
#include "kernels/vectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <tuple>

namespace tilepress::g4 {

/// How many elements behind the cursor are read, and behind the row's last one written, between two looks at a list's
/// end: by two groups of codes.
inline constexpr int kReadAhead = 2 * kMaxAdvance + 6, kWrittenAhead = 2 * kMaxChanges;

/// Lines of ccitt/padded_line.h and padded data: every access may run over.
struct PaddedLists {
    static_assert(kReadAhead <= kLineBack && kWrittenAhead <= kLineBack && kLineRepeats % 4 == 0);

    const std::int32_t* first_;

    explicit PaddedLists(RowList reference) : first_(reference.elements + 1) {}
    const std::int32_t* first() const { return first_; }
    const std::int32_t* readable(const std::int32_t* here) const { return here; }
    bool writable(const std::int32_t*) const { return true; }
    bool readable(const unsigned char*) const { return true; }
    void close(std::int32_t* list, std::int32_t end) const {
        for (int k = 0; k < kLineRepeats; k += 4) storeLanes(list + k, Ints4{end, end, end, end});
    }
};

/// A caller's arrays and words, of which nothing else may be touched.
class CallersLists {
public:
    /// Room for two elements before the cursor, the rest of the list, and what is read ahead from behind that; in front
    /// for the lanes that end with the list.
    using Copy = std::array<std::int32_t, 2 + 2 + 2 * kReadAhead + 4>;

    CallersLists(const CodedRow& row, const unsigned char* wordsEnd, Copy& copy)
        : begin_(row.reference.elements), end_(begin_ + row.reference.count),
          lastRead_(begin_ + std::max(row.reference.count - kReadAhead, 0)),
          lastWritten_(row.coding + std::max(row.width + 4 - kWrittenAhead, 0)),
          lastWord_(wordsEnd - sizeof(MachineWord)), copy_(copy.data()), first_(readable(begin_ + 1)) {}

    const std::int32_t* first() const { return first_; }

    /// The cursor, or its place in a copy of the list's end, which has room behind it.
    const std::int32_t* readable(const std::int32_t* here) {
        if (here <= lastRead_) [[likely]]
            return here;
        lastRead_ = copy_ + std::tuple_size_v<Copy>;
        const std::int32_t* const from = here - std::min<std::ptrdiff_t>(here - begin_, 2);
        std::int32_t* to = copy_ + 2;
        for (const std::int32_t* p = from; p < end_ - 4; p += 4, to += 4) storeLanes(to, loadLanes<Ints4>(p));
        to = copy_ + 2 + (end_ - from);
        storeLanes(to - 4, loadLanes<Ints4>(end_ - 4));
        const std::int32_t end = end_[-1];
        for (int k = 0; k < kReadAhead; k += 4) storeLanes(to + k, Ints4{end, end, end, end});
        return copy_ + 2 + (here - from);
    }
    bool writable(const std::int32_t* out) const { return out <= lastWritten_; }
    bool readable(const unsigned char* word) const { return word <= lastWord_; }
    void close(std::int32_t* list, std::int32_t end) const { list[0] = list[1] = end; }

private:
    const std::int32_t *begin_, *end_, *lastRead_;
    const std::int32_t* lastWritten_;
    const unsigned char* lastWord_;
    std::int32_t* copy_;
    const std::int32_t* first_;
};

template <class Bits, class Lists>
class FastRow {
public:
    FastRow(const CodedRow& row, Lists lists)
        : bits_(row.in.bytes, row.bit), lists_(lists), here_(lists.first()), coding_(row.coding), out_(row.coding + 1),
          end_(row.width + 1) {}

    /// The count of the decoded list less its two closing elements, or 0 to leave the row to the exact decoder.
    std::int32_t decode() {
        coding_[0] = 0;
        Step step;
        do {
            step = groups();
            if (step == Step::vertical) step = vertical();
            else if (step == Step::runs) step = runs();
        } while (step == Step::groups);
        if (step == Step::giveUp) return 0;
        lists_.close(out_, end_);
        return static_cast<std::int32_t>(out_ - coding_);
    }
    const Bits& bits() const { return bits_; }

private:
    enum class Step { groups, vertical, runs, rowEnds, giveUp };

    // The bits that a refill gives are enough for a group, or where there are more of them for two, and for two runs of
    // no make-up codes. Behind a make-up code they are refilled, and again enough for two runs.
    static constexpr unsigned kGroups = Bits::kRefilled >= 2 * kGroupBits + kTwoRunsBits ? 2 : 1;
    static constexpr bool kRefillsForRuns = Bits::kRefilled < kGroups * kGroupBits + kTwoRunsBits;
    static constexpr bool kRefillsBetweenRuns = Bits::kRefilled < kTwoRunsBits;
    static_assert(Bits::kRefilled >= kGroups * kGroupBits && Bits::kRefilled >= kRunBits);

    /// Whole groups, as many as there are.
    Step groups() {
        do {
            here_ = lists_.readable(here_);
            if (!lists_.writable(out_) || !refill()) return Step::giveUp;
        } while (group() && (kGroups == 1 || group()));
        return refused_ != 0 ? Step::vertical : Step::runs;
    }

    /// False where one of its codes is refused, or runs follow.
    bool group() {
        index_ = bits_.top(kGroupBits);
        const CodeGroup& codes = kCodeGroups.groups[index_];
        const Ints4 to = loadLanes<Ints4>(here_) + widened(codes.deltas);
        storeLanes(out_, to);
        refused_ = refused(to) & codes.lanes;
        if (refused_ != 0) [[unlikely]]
            return false;
        bits_.drop(codes.length);
        out_ += codes.changes;
        here_ += codes.advance;
        if (codes.lanes >= kRunsFollow) [[unlikely]]
            return false;
        a0_ = lastPassed(codes);
        return true;
    }

    /// Bit k for the code k after which the cursor moves otherwise, or that leads left of a0 or to the end of the row.
    unsigned refused(Ints4 to) const {
        const Ints4 before = loadLanes<Ints4>(here_ - 1), after = loadLanes<Ints4>(here_ + 1);
        return 15 ^ laneBits(without((after > to) & (to > shifted(to, a0_)), before > to));
    }

    /// a0 after a group of one code at least: b2 of its pass code, or its last change.
    Ints4 lastPassed(const CodeGroup& codes) const {
        const std::int32_t* past = out_;
        // As often as not: no branch.
        if (__builtin_expect_with_probability(codes.advance != codes.changes, 1, 0.5)) past = here_;
        return firstLane(past[-1]);
    }

    /// The first code that was refused, and those before it.
    Step vertical() {
        const int k = std::countr_zero(refused_);
        const unsigned length = kCodeGroups.lengths[index_] >> 4 * k & 15;
        if (length == 0) return Step::giveUp;  // a pass code at the end of the row
        bits_.drop(length);
        const Ints4 to = loadLanes<Ints4>(out_);
        const std::int32_t a1 = out_[k];
        if ((laneBits(to > shifted(to, a0_)) >> k & 1) == 0 || a1 > end_) return Step::giveUp;
        out_ += k + 1;
        here_ += k;
        if (a1 == end_) return Step::rowEnds;
        here_ += 1 - 2 * (here_[-1] > a1) + 2 * (here_[1] <= a1) + 2 * (here_[3] <= a1);
        a0_ = firstLane(a1);
        return Step::groups;
    }

    /// The runs of a horizontal code.
    Step runs() {
        const CodeGroup& codes = kCodeGroups.groups[index_];
        if (codes.lanes == kNoCode || (kRefillsForRuns && !refill())) return Step::giveUp;
        if (codes.advance != 0) a0_ = lastPassed(codes);
        const bool black = ((out_ - coding_) & 1) == 0;
        const std::int32_t a0 = a0_[0], a1 = a0 + (a0 == 0) + run(black);  // columns count from 1
        if (kRefillsBetweenRuns && !refill()) return Step::giveUp;
        const std::int32_t a2 = a1 + run(!black);
        out_[0] = a1;
        out_[1] = a2;
        out_ += a1 == end_ ? 1 : 2;
        if ((a1 > a0) & (a2 > a1) & (a2 < end_)) [[likely]]
            return passTo(a2);
        // To the end of the row, where the second run may be 0.
        return a1 > a0 && a2 >= a1 && a2 == end_ ? Step::rowEnds : Step::giveUp;
    }

    /// Moves a0 behind runs, and the cursor by pairs past it.
    Step passTo(std::int32_t a2) {
        const Ints4 all = {a2, a2, a2, a2};
        for (unsigned passed = 4; passed == 4; here_ += (passed + 1) & ~1u) {
            here_ = lists_.readable(here_);
            passed = static_cast<unsigned>(std::countr_zero(laneBits(loadLanes<Ints4>(here_) > all) | 16u));
        }
        a0_ = firstLane(a2);
        return Step::groups;
    }

    /// A run's make-up codes and its terminating code; far below 0 where there is none.
    std::int32_t run(bool black) {
        for (std::int32_t sum = 0;;) {
            const unsigned code = kRuns[black][runSlot(bits_.top(kRunBits))];
            bits_.drop(code & 15);
            sum += static_cast<std::int32_t>(code >> 4);
            if (code < kMakeUp) return sum;
            if (code == kNoRun || sum > end_ || !refill()) return INT32_MIN / 2;
        }
    }

    bool refill() {
        if (!lists_.readable(bits_.p)) return false;
        bits_.refill();
        return true;
    }

    Bits bits_;
    Lists lists_;
    const std::int32_t* here_;
    std::int32_t *const coding_, *out_;
    const std::int32_t end_;
    Ints4 a0_{};  // in the first lane
    std::size_t index_ = 0;
    unsigned refused_ = 0;
};

/// False to leave the row to the exact decoder. Apart from its callers, so that the row's state stays in registers.
template <class Bits, class Lists>
[[gnu::noinline, gnu::flatten]] bool decodeFast(const CodedRow& to, Lists lists) {
    FastRow<Bits, Lists> row(to, lists);
    const std::int32_t count = row.decode();
    if (count == 0) return false;
    to.count = count + 2;
    to.bit = row.bits().position(to.in.bytes);
    return true;
}

}  // namespace tilepress::g4
