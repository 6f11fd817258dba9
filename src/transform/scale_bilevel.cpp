// Bilevel images enlarged, and reduced to bilevel ones.

#include "tilepress/CImg1.h"
#include "transform/bit_rows.h"
#include "transform/cells.h"
#include "transform/repeat_bits.h"
#include "transform/runs.h"
#include "transform/scale.h"

#include <algorithm>
#include <cstring>

namespace tilepress {
namespace {

/// Kept: the source's alignment goes into the background's display colour, and the result has neither the source's
/// alignment nor its colours.
CImg1* createScaled(const CImg1& source, ImgULong width, ImgULong height) {
    return CImg1::create(width, height, static_cast<ImgULong>(alignmentOf(source)), 0xFF000000, ImgAlignNone);
}

/// Bits of a row that are cells' first pixels; `inner` are the other pixels of cells.
struct CellBits {
    BitMoves firsts;
    Heap<std::uint64_t> inner, row, out;

    /// Cells on `width` pixels from bit `shift` on; false when memory runs out.
    bool prepare(unsigned shift, ImgULong width, ImgULong cells) {
        const std::uint64_t bits = std::uint64_t{shift} + width;
        if (!firsts.prepare(bits) || !inner.reserve(firsts.words()) || !row.reserve(2 * std::uint64_t{firsts.pairs()}) ||
            !out.reserve(std::uint64_t{packedWords(cells)} + 1))
            return false;
        forEachMark(width, cells,
                    [&](ImgULong first, ImgULong, ImgULong) { firsts.mark(std::size_t{first} + shift); });
        fillSpan(inner.get(), shift, static_cast<std::size_t>(bits));
        for (std::size_t w = 0; w < firsts.words(); ++w) inner[w] &= ~firsts.marks(w);
        return true;
    }
    /// Writes a destination row: what `row` has at the cells' first pixels, where no other bits are.
    void store(unsigned char* dst, std::size_t bytes) const {
        gatherBits(out.get(), row.get(), firsts);
        storeWords(dst, out.get(), bytes);
    }
};

/// Sets the pixels of `result` whose cells hold ink. False when memory runs out.
bool reduceInk(CImg1& result, const CImg1& source, const ImgRect& part, bool whiteIsInk) {
    const InkRows rows(source, part, whiteIsInk);
    const std::size_t bytes = result.getBytesPerLine();
    CellBits cells;
    if (!cells.prepare(part.getLeft() % 8, part.getWidth(), result.getWidth())) return false;
    Heap<unsigned char> merged(16 * std::uint64_t{cells.firsts.pairs()});
    if (!merged) return false;
    forEachMark(part.getHeight(), result.getHeight(), [&](ImgULong first, ImgULong count, ImgULong band) {
        mergeRows(merged.get(), rows, first, count);
        if (findInk(cells.row.get(), merged.get(), cells.firsts, cells.inner.get()))
            cells.store(result.peekData() + band * bytes, bytes);
    });
    return true;
}

/// Sets the pixels of `result` whose cells begin with a set bit. False when memory runs out.
bool pickFirsts(CImg1& result, const CImg1& source, const ImgRect& part) {
    const InkRows rows(source, part, false);
    const std::size_t bytes = result.getBytesPerLine();
    CellBits cells;
    if (!cells.prepare(part.getLeft() % 8, part.getWidth(), result.getWidth())) return false;
    forEachMark(part.getHeight(), result.getHeight(), [&](ImgULong first, ImgULong, ImgULong band) {
        loadWords(cells.row.get(), rows.row(first), rows.bytes);
        for (std::size_t w = 0; w < cells.firsts.words(); ++w) cells.row[w] &= cells.firsts.marks(w);
        cells.store(result.peekData() + band * bytes, bytes);
    });
    return true;
}

/// Widens rows of `width` pixels to `newWidth`.
class Widener {
public:
    Widener(ImgULong width, ImgULong newWidth) : width_(width), newWidth_(newWidth) {}

    /// False when memory runs out.
    bool prepare() {
        if (!aligned_.reserve(8 * std::uint64_t{packedWords(width_)}) ||
            !src_.reserve(std::uint64_t{packedWords(width_)} + 2))  // what bitsAt reads after the last bit
            return false;
        if (doubles()) return true;
        if (!lasts_.prepare(newWidth_) || !inner_.reserve(2 * std::uint64_t{lasts_.pairs()}) || !out_.reserve(2 * std::uint64_t{lasts_.pairs()}))
            return false;
        std::memset(inner_.get(), 0xFF, 16 * lasts_.pairs());
        forEachMark(newWidth_, width_, [this](ImgULong first, ImgULong run, ImgULong) {
            inner_[first / 64] ^= std::uint64_t{1} << (63 - first % 64);
            lasts_.mark(std::size_t{first} + run - 1);
        });
        return true;
    }

    /// Fills the clear row `dst`, `bytes` long, from the pixels from bit `shift` on; false when it stays clear.
    bool widen(unsigned char* dst, std::size_t bytes, const InkRows& rows, std::size_t y, unsigned shift) {
        const std::size_t used = packedBytes(width_);
        copyBits(aligned_.get(), used, rows.row(y), rows.bytes, shift);
        if (rows.flip[0] != 0)
            for (std::size_t i = 0; i < 8 * packedWords(width_); i += 8)
                storeWord(aligned_.get() + i, ~loadWord(aligned_.get() + i));
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

    ImgULong width_, newWidth_;
    Heap<unsigned char> aligned_;
    Heap<std::uint64_t> src_, inner_, out_;
    BitMoves lasts_;
};

/// Repeats the pixels of `part` over the clear `result`. False when memory runs out.
bool enlarge(CImg1& result, const CImg1& source, const ImgRect& part, bool whiteIsInk) {
    const InkRows rows(source, part, whiteIsInk);
    const std::size_t bytes = result.getBytesPerLine();
    Widener widener(part.getWidth(), result.getWidth());
    if (!widener.prepare()) return false;
    forEachMark(result.getHeight(), part.getHeight(), [&](ImgULong first, ImgULong copies, ImgULong y) {
        unsigned char* const row = result.peekData() + first * bytes;
        if (!widener.widen(row, bytes, rows, y, part.getLeft() % 8)) return;
        for (ImgULong copy = 1; copy < copies; ++copy) std::memcpy(row + copy * bytes, row, bytes);
    });
    return true;
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

CImg1* CImg1::Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!enlarges(*this, src, dstWidth, dstHeight)) return nullptr;
    const bool whiteIsInk = calculateBackground() == 1;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    if (!result) return nullptr;
    result->setBackgroundColor(0);
    return finished(result, enlarge(*result, *this, src, whiteIsInk));
}

CImg1* CImg1::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    const bool whiteIsInk = calculateBackground() == 1;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    if (!result) return nullptr;
    result->setBackgroundColor(0);
    return finished(result, reduceInk(*result, *this, src, whiteIsInk));
}

CImg1* CImg1::QuickReduce_bkg(ImgULong dstWidth, ImgULong dstHeight, ImgRect& src, ImgULong background) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    // Kept: with another background bits would only be cleared, and all of them are clear from the start.
    if (!result || background != 0) return result;
    return finished(result, reduceInk(*result, *this, src, false));
}

/// Every cell's top left pixel as it is; no request leads here.
CImg1* CImg1::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    return result ? finished(result, pickFirsts(*result, *this, src)) : nullptr;
}
