#pragma once

// Cells of bilevel pictures: the rectangles that the pixels of a reduction stand for.
// Whether they hold ink, and how much.

#include "foundation/bits.h"
#include "foundation/lanes.h"
#include "transform/bit_moves.h"
#include "transform/bit_rows.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// An area's rows, from the byte with its first pixel to the byte with its last one, in which ink is 1.
struct InkRows {
    PackedRows rows;
    std::size_t bytes;
    Words2 flip;  // all ones where clear bits are ink

    InkRows(const BitArea& area, bool whiteIsInk)
        : rows{area.rows.first + area.left / 8, area.rows.stride},
          bytes(packedBytes(std::uint64_t{area.left % 8} + area.width)),
          flip(bothWords(whiteIsInk ? ~std::uint64_t{0} : 0)) {}

    const unsigned char* row(std::size_t y) const { return rows[y]; }
    /// Sixteen bytes of a row from `at` on.
    Words2 lanes(std::size_t y, std::size_t at) const { return loadLanes<Words2>(row(y) + at) ^ flip; }
    /// A row of less than sixteen bytes, with anything after them.
    Words2 shortRow(std::size_t y) const {
        Words2 v{};
        std::memcpy(&v, row(y), bytes);
        return v ^ flip;
    }
};

// --- ink ----------------------------------------------------------------------------

/// ORs `count` rows from `first` on.
inline void mergeRows(unsigned char* out, const InkRows& rows, std::size_t first, std::size_t count) {
    if (rows.bytes < 16) {
        Words2 ink{};
        for (std::size_t y = first; y < first + count; ++y) ink |= rows.shortRow(y);
        storeLanes(out, ink);
        return;
    }
    std::size_t at = 0;
    for (; at + 64 <= rows.bytes; at += 64) {
        Words2 a{}, b{}, c{}, d{};
        for (std::size_t y = first; y < first + count; ++y) {
            a |= rows.lanes(y, at);
            b |= rows.lanes(y, at + 16);
            c |= rows.lanes(y, at + 32);
            d |= rows.lanes(y, at + 48);
        }
        storeLanes(out + at, a), storeLanes(out + at + 16, b), storeLanes(out + at + 32, c), storeLanes(out + at + 48, d);
    }
    for (; at < rows.bytes; at += 16) {
        const std::size_t start = at + 16 <= rows.bytes ? at : rows.bytes - 16;
        Words2 ink{};
        for (std::size_t y = first; y < first + count; ++y) ink |= rows.lanes(y, start);
        storeLanes(out + start, ink);
    }
}

/// Which cells of a row hold ink, at the cells' first pixels; false when none does.
///
/// The row is one long number, its first pixel the highest bit, and `inner` are all pixels of cells but their first
/// ones. Adding all ones to the inner pixels of a cell carries into its first pixel exactly when one of them is set,
/// and never further: the first pixel is left out of the sum.
inline bool findInk(std::uint64_t* hits, const unsigned char* row, const BitMoves& firsts, const std::uint64_t* inner) {
    std::uint64_t carry = 0, any = 0;
    for (std::size_t w = firsts.words(); w-- > 0;) {
        const std::uint64_t x = loadWord(row + 8 * w);
        hits[w] = (addWords(x & inner[w], inner[w], carry) | x) & firsts.marks(w);
        any |= hits[w];
    }
    return any != 0;
}

/// Brings the marked bits of a row together.
inline void gatherBits(std::uint64_t* out, const std::uint64_t* row, const BitMoves& marks) {
    BitWriter writer(out);
    for (std::size_t pair = 0; pair < marks.pairs(); ++pair) {
        const Words2 v = marks.gather(pair, loadLanes<Words2>(row + 2 * pair));
        writer.put(v[0], marks.count(2 * pair));
        writer.put(v[1], marks.count(2 * pair + 1));
    }
    writer.flush();
}

// --- amounts ------------------------------------------------------------------------

/// As many rows are added up at once: column sums of four bits.
inline constexpr std::size_t kRowsAtOnce = 15;

/// The sums of 128 columns, one bit of each in every plane.
struct SumPlanes {
    Words2 ones{}, twos{}, fours{}, eights{};

    void add(Words2 a) {
        const Words2 carry = ones & a;
        ones ^= a;
        addTwos(carry);
    }
    void add(Words2 a, Words2 b) {
        const Words2 one = ones ^ a;
        addTwos((ones & a) | (one & b));
        ones = one ^ b;
    }
    /// load(y) gives a row of columns.
    template <class Load>
    void addAll(std::size_t first, std::size_t count, Load load) {
        std::size_t y = first;
        for (; y + 2 <= first + count; y += 2) add(load(y), load(y + 1));
        if (y < first + count) add(load(y));
    }

private:
    void addTwos(Words2 carry) {
        const Words2 four = twos & carry;
        twos ^= carry;
        eights ^= fours & four;
        fours ^= four;
    }
};

inline Bytes16 twiceFirst(Bytes16 v) {
    return __builtin_shufflevector(v, v, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
inline Bytes16 twiceLast(Bytes16 v) {
    return __builtin_shufflevector(v, v, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}

/// Writes a byte for each of the 128 columns, of which the first `planes` planes are in use.
inline void storeSums(unsigned char* sums, const SumPlanes& from, unsigned planes) {
    const Bytes16 bits = {0x80, 0x40, 0x20, 0x10, 8, 4, 2, 1, 0x80, 0x40, 0x20, 0x10, 8, 4, 2, 1};
    const Words2 plane[] = {from.ones, from.twos, from.fours, from.eights};
    Bytes16 a{}, b{}, c{}, d{}, e{}, f{}, g{}, h{};
    // Twice the sum of the higher planes, and one where the column's bit is set: a byte of all ones is -1.
    const auto add = [bits](Bytes16& sum, Bytes16 eachBitEightTimes) {
        sum = sum + sum - reinterpret_cast<Bytes16>((eachBitEightTimes & bits) == bits);
    };
    for (unsigned p = planes; p-- > 0;) {
        const auto v = reinterpret_cast<Bytes16>(plane[p]);
        const Bytes16 first = twiceFirst(v), last = twiceLast(v);
        const Bytes16 ab = twiceFirst(first), cd = twiceLast(first), ef = twiceFirst(last), gh = twiceLast(last);
        add(a, twiceFirst(ab)), add(b, twiceLast(ab)), add(c, twiceFirst(cd)), add(d, twiceLast(cd));
        add(e, twiceFirst(ef)), add(f, twiceLast(ef)), add(g, twiceFirst(gh)), add(h, twiceLast(gh));
    }
    storeLanes(sums, a), storeLanes(sums + 16, b), storeLanes(sums + 32, c), storeLanes(sums + 48, d);
    storeLanes(sums + 64, e), storeLanes(sums + 80, f), storeLanes(sums + 96, g), storeLanes(sums + 112, h);
}

/// For each column, a byte for each bit of the rows' bytes, how many of `count` rows have ink there.
inline void addRows(unsigned char* sums, const InkRows& rows, std::size_t first, std::size_t count) {
    const unsigned planes = static_cast<unsigned>(std::bit_width(count));
    if (rows.bytes < 16) {
        SumPlanes sum;
        sum.addAll(first, count, [&](std::size_t y) { return rows.shortRow(y); });
        storeSums(sums, sum, planes);
        return;
    }
    for (std::size_t at = 0; at < rows.bytes; at += 16) {
        const std::size_t start = at + 16 <= rows.bytes ? at : rows.bytes - 16;
        SumPlanes sum;
        sum.addAll(first, count, [&](std::size_t y) { return rows.lanes(y, start); });
        storeSums(sums + 8 * start, sum, planes);
    }
}

/// The total of one to eight sums; reads eight.
inline std::uint32_t totalOfFew(const unsigned char* sums, std::size_t count) {
    // 120 at most: no byte of the product carries into the next.
    return static_cast<std::uint32_t>((loadWord(sums) >> (64 - 8 * count)) * everyByte(1) >> 56);
}

/// The total of any number of sums, one at least; reads up to seven more.
inline std::uint32_t totalOf(const unsigned char* sums, std::size_t count) {
    std::uint32_t total = 0;
    for (; count > 8; count -= 8, sums += 8) total += totalOfFew(sums, 8);
    return total + totalOfFew(sums, count);
}

}  // namespace tilepress
