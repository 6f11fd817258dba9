#pragma once

// Areas of packed pixels enlarged, and reduced to packed pixels.

#include "foundation/bits.h"
#include "foundation/heap.h"
#include "kernels/bit_moves.h"
#include "kernels/bit_rows.h"
#include "kernels/cells.h"
#include "kernels/mark_tables.h"
#include "kernels/repeat_bits.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// Bits of a row that are cells' first pixels; `inner` are the other pixels of cells.
struct CellBits {
    BitMoves firsts;
    Heap<std::uint64_t> inner, row, out;

    /// Cells on `width` pixels from bit `shift` on; false when memory runs out.
    bool prepare(unsigned shift, std::uint32_t width, std::uint32_t cells) {
        const std::uint64_t bits = std::uint64_t{shift} + width;
        if (!firsts.prepare(bits) || !inner.reserve(firsts.words()) ||
            !row.reserve(2 * std::uint64_t{firsts.pairs()}) || !out.reserve(std::uint64_t{packedWords(cells)} + 1))
            return false;
        forEachMark(width, cells, [&](std::uint32_t first, std::uint32_t, std::uint32_t) {
            firsts.mark(std::size_t{first} + shift);
        });
        fillSpan(inner.get(), shift, static_cast<std::size_t>(bits));
        for (std::size_t w = 0; w < firsts.words(); ++w) inner[w] &= ~firsts.marks(w);
        return true;
    }
    /// Writes a whole destination row: what `row` has at the cells' first pixels, where no other bits are.
    void store(const PackedRows& to, std::size_t y) const {
        gatherBits(out.get(), row.get(), firsts);
        storeWords(to[y], out.get(), static_cast<std::size_t>(to.stride));
    }
};

/// The rows of an area as reductions and enlargements take them, in order. What else rows come from has the same
/// members.
struct InkSource {
    const BitArea area;
    const InkRows rows;

    InkSource(const BitArea& from, bool whiteIsInk) : area(from), rows(from, whiteIsInk) {}
    std::uint32_t width() const { return area.width; }
    std::uint32_t height() const { return area.height; }
    /// Where the first pixel is in a byte of merged rows.
    unsigned shift() const { return area.left % 8; }

    /// Gives the pixels that are ink in any of `count` rows, and anything around them, in a whole number of sixteen
    /// bytes. False when there are no such rows.
    bool merge(unsigned char* out, std::uint32_t first, std::uint32_t count) const {
        mergeRows(out, rows, first, count);
        return true;
    }
    /// Gives a row's pixels from the first bit on, and after them anything that fills a word.
    bool read(unsigned char* out, std::uint32_t y) const {
        copyBits(out, packedBytes(area.width), rows.row(y), rows.bytes, shift());
        if (rows.flip[0] != 0)
            for (std::size_t i = 0; i < 8 * packedWords(area.width); i += 8) storeWord(out + i, ~loadWord(out + i));
        return true;
    }
};

/// As reduceInk for cells of four columns, the first of which begins a byte.
template <class Source>
bool quarterInk(const BitArea& to, Source&& from) {
    Heap<unsigned char> merged((std::uint64_t{from.width()} + 511) / 512 * 64);
    if (!merged) return false;
    return eachMark(from.height(), to.height, [&](std::uint32_t first, std::uint32_t count, std::uint32_t band) {
        if (!from.merge(merged.get(), first, count)) return false;
        joinFours(to.rows[band], merged.get(), to.width);
        return true;
    });
}

/// Sets the pixels of the clear `to` whose cells hold ink. False when memory or rows run out.
template <class Source>
bool reduceInk(const BitArea& to, Source&& from) {
    const bool fours = from.width() % 4 == 0 && to.width == from.width() / 4 && from.shift() == 0;
    if (fours && std::endian::native == std::endian::little) return quarterInk(to, from);
    CellBits cells;
    if (!cells.prepare(from.shift(), from.width(), to.width)) return false;
    Heap<unsigned char> merged(16 * std::uint64_t{cells.firsts.pairs()});
    if (!merged) return false;
    return eachMark(from.height(), to.height, [&](std::uint32_t first, std::uint32_t count, std::uint32_t band) {
        if (!from.merge(merged.get(), first, count)) return false;
        if (findInk(cells.row.get(), merged.get(), cells.firsts, cells.inner.get())) cells.store(to.rows, band);
        return true;
    });
}

/// Sets the pixels of the clear `to` whose cells begin with a set bit. False when memory runs out.
inline bool pickFirsts(const BitArea& to, const BitArea& from) {
    const InkRows rows(from, false);
    CellBits cells;
    if (!cells.prepare(from.left % 8, from.width, to.width)) return false;
    forEachMark(from.height, to.height, [&](std::uint32_t first, std::uint32_t, std::uint32_t band) {
        loadWords(cells.row.get(), rows.row(first), rows.bytes);
        for (std::size_t w = 0; w < cells.firsts.words(); ++w) cells.row[w] &= cells.firsts.marks(w);
        cells.store(to.rows, band);
    });
    return true;
}

/// Widens rows of `width` pixels to `newWidth`.
class Widener {
public:
    Widener(std::uint32_t width, std::uint32_t newWidth) : width_(width), newWidth_(newWidth) {}

    /// False when memory runs out.
    bool prepare() {
        if (!aligned_.reserve(8 * std::uint64_t{packedWords(width_)}) ||
            !src_.reserve(std::uint64_t{packedWords(width_)} + 2))  // what bitsAt reads after the last bit
            return false;
        if (doubles()) return true;
        if (!lasts_.prepare(newWidth_) || !inner_.reserve(2 * std::uint64_t{lasts_.pairs()}) ||
            !out_.reserve(2 * std::uint64_t{lasts_.pairs()}))
            return false;
        std::memset(inner_.get(), 0xFF, 16 * lasts_.pairs());
        forEachMark(newWidth_, width_, [this](std::uint32_t first, std::uint32_t size, std::uint32_t) {
            inner_[first / 64] ^= std::uint64_t{1} << (63 - first % 64);
            lasts_.mark(std::size_t{first} + size - 1);
        });
        return true;
    }

    /// Where a row's pixels go before it is widened; as long as whole words of them.
    unsigned char* row() { return aligned_.get(); }
    /// Fills the clear row `dst`, `bytes` long, from row(); false when it stays clear.
    bool widen(unsigned char* dst, std::size_t bytes) {
        clearFrom(aligned_.get(), 8 * packedWords(width_), width_);
        loadWords(src_.get(), aligned_.get(), 8 * packedWords(width_));
        if (std::all_of(src_.get(), src_.get() + packedWords(width_), [](std::uint64_t w) { return w == 0; }))
            return false;
        if (doubles()) {
            doubleBits(dst, bytes, aligned_.get());
        } else {
            repeatBits(out_.get(), src_.get(), width_, lasts_, inner_.get());
            storeWords(dst, out_.get(), bytes);
        }
        return true;
    }

private:
    bool doubles() const { return newWidth_ % 2 == 0 && newWidth_ / 2 == width_; }

    std::uint32_t width_, newWidth_;
    Heap<unsigned char> aligned_;
    Heap<std::uint64_t> src_, inner_, out_;
    BitMoves lasts_;
};

/// Repeats pixels over the clear `to`. False when memory or rows run out.
template <class Source>
bool enlargeBits(const BitArea& to, Source&& from) {
    const std::size_t bytes = static_cast<std::size_t>(to.rows.stride);
    Widener widener(from.width(), to.width);
    if (!widener.prepare()) return false;
    return eachMark(to.height, from.height(), [&](std::uint32_t first, std::uint32_t copies, std::uint32_t y) {
        if (!from.read(widener.row(), y)) return false;
        const bool inked = widener.widen(to.rows[first], bytes);
        for (std::uint32_t copy = 1; inked && copy < copies; ++copy)
            std::memcpy(to.rows[first + copy], to.rows[first], bytes);
        return true;
    });
}

}  // namespace tilepress
