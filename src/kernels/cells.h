#pragma once

// Cells of bilevel pictures: the rectangles that the pixels of a reduction stand for.
// Whether they hold ink, and how much.

#include "foundation/bits.h"
#include "foundation/contract.h"
#include "kernels/bit_moves.h"
#include "kernels/bit_rows.h"
#include "kernels/vectors.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#if defined(__i386__) && defined(__SSE2__)
#  include <emmintrin.h>
#  define TILEPRESS_SUMS_BYTES 1  // where the machine's words are shorter than eight bytes
#endif

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
        storeLanes(out + at, a), storeLanes(out + at + 16, b), storeLanes(out + at + 32, c),
            storeLanes(out + at + 48, d);
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

/// Whether any of four bits is set, for every four of 64 bytes; where words begin with their lowest byte.
inline Bytes16 anyOfFours(const unsigned char* src) {
    const auto fours = [src](std::size_t at) {
        Words2 v = loadLanes<Words2>(src + at);
        v |= v >> 1;
        v = (v | v >> 2) & bothWords(everyByte(0x11));
        // Of each byte, of two bytes and of four brought together, the first at the front.
        auto w = reinterpret_cast<Words4>((v | v >> 3) & bothWords(everyByte(0x03)));
        w = (w << 2 | w >> 8) & Words4{0x000F000F, 0x000F000F, 0x000F000F, 0x000F000F};
        return (w << 4 | w >> 16) & Words4{0xFF, 0xFF, 0xFF, 0xFF};
    };
    return narrowed(fours(0), fours(16), fours(32), fours(48));
}

/// The same for a row of `cells` fours; bits after the last become 0. The row has whole 64 bytes.
inline void joinFours(unsigned char* dst, const unsigned char* row, std::size_t cells) {
    for (std::size_t done = 0, bytes = packedBytes(cells); done < bytes; done += 16) {
        const Bytes16 joined = anyOfFours(row + 4 * done);
        if (bytes - done >= 16) storeLanes(dst + done, joined);
        else std::memcpy(dst + done, &joined, bytes - done);
    }
    clearFrom(dst, packedBytes(cells), cells);
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

/// Writes a byte for each `group` of the 128 columns: the sum of them all. The first `planes` planes are in use.
template <unsigned group>
[[gnu::always_inline]] inline void storeSums(unsigned char* sums, const SumPlanes& from, unsigned planes) {
    constexpr unsigned groups = 8 / group;  // of each byte
    const Words2 plane[] = {from.ones, from.twos, from.fours, from.eights};
    const auto masked = [](Words2 v, unsigned byte) { return v & bothWords(everyByte(byte)); };
    Words2 total[groups]{};
    unrolled<4>([&](std::size_t k) {
        const std::size_t p = 3 - k;
        if (p >= planes) return;
        Words2 v = plane[p];
        if (group >= 2) v -= masked(v >> 1, 0x55);
        if (group >= 4) v = masked(v, 0x33) + masked(v >> 2, 0x33);
        if (group >= 8) v = masked(v + (v >> 4), 0x0F);
        unrolled<groups>(
            [&](std::size_t g) { total[g] += total[g] + masked(v >> (8 - group * (g + 1)), (1u << group) - 1); });
    });
    Bytes16 bytes[groups], other[groups];
    unrolled<groups>([&](std::size_t g) { bytes[g] = reinterpret_cast<Bytes16>(total[g]); });
    unrolled<std::bit_width(groups) - 1>([&](std::size_t) {
        interleaveBytes<groups>(other, bytes);
        unrolled<groups>([&](std::size_t g) { bytes[g] = other[g]; });
    });
    unrolled<groups>([&](std::size_t g) { storeLanes(sums + 16 * g, bytes[g]); });
}

/// For each `group` of columns, from those of the rows' first byte on, the ink of `count` rows there.
template <unsigned group>
inline void addRows(unsigned char* sums, const InkRows& rows, std::size_t first, std::size_t count) {
    const unsigned planes = static_cast<unsigned>(std::bit_width(count));
    if (rows.bytes < 16) {
        SumPlanes sum;
        sum.addAll(first, count, [&](std::size_t y) { return rows.shortRow(y); });
        storeSums<group>(sums, sum, planes);
        return;
    }
    for (std::size_t at = 0; at < rows.bytes; at += 16) {
        const std::size_t start = at + 16 <= rows.bytes ? at : rows.bytes - 16;
        SumPlanes sum;
        const unsigned char* row = rows.row(first) + start;
        sum.addAll(first, count, [&](std::size_t) {
            const Words2 bits = loadLanes<Words2>(row) ^ rows.flip;
            row += rows.rows.stride;
            return bits;
        });
        storeSums<group>(sums + 8 / group * start, sum, planes);
    }
}

/// As many sums at once add up to 240 at most: no byte of a word's product carries into the next.
template <unsigned group>
inline constexpr std::size_t kFew = group <= 2 ? 8 : 16 / group;

/// The total of one to kFew sums; reads eight bytes.
inline std::uint32_t totalOfFew(const unsigned char* sums, std::size_t count) {
    TILEPRESS_DEMAND(count >= 1 && count <= 8 && isReadable(sums, 8));
    const auto others = static_cast<unsigned>(64 - 8 * count);
#ifdef TILEPRESS_SUMS_BYTES
    const __m128i word = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(sums));
    const __m128i few = _mm_sll_epi64(word, _mm_cvtsi32_si128(static_cast<int>(others)));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_sad_epu8(few, _mm_setzero_si128())));
#else
    std::uint64_t word;
    std::memcpy(&word, sums, sizeof word);
    word = std::endian::native == std::endian::little ? word << others : word >> others;
    return static_cast<std::uint32_t>(word * everyByte(1) >> 56);
#endif
}

/// The total of any number of sums, one at least; reads up to seven bytes more.
template <unsigned group>
inline std::uint32_t totalOf(const unsigned char* sums, std::size_t count) {
    constexpr std::size_t few = kFew<group>;
    std::uint32_t total = 0;
    for (; count > few; count -= few, sums += few) total += totalOfFew(sums, few);
    return total + totalOfFew(sums, count);
}

}  // namespace tilepress
