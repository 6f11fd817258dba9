// Compressed images reduced to bilevel ones.

#include "g4image/scale_info.h"

#include "foundation/heap.h"
#include "kernels/bit_moves.h"
#include "kernels/cell_counter.h"
#include "kernels/mark_tables.h"
#include "kernels/vectors.h"
#include "kernels/white_cells.h"
#include "model/image_kinds.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <cstring>

// The reductions take black runs only: white ones overlap where tiles meet. The polarity
// of an image whose background is not known is settled after the walk.

namespace tilepress::g4 {
namespace {

/// The cells that a run touches.
struct InkCells {
    const ImgULong* columns;

    template <class Paint>
    void operator()(std::size_t from, std::size_t to, Paint paint) const {
        paint(columns[from], std::size_t{columns[to - 1]} + 1);
    }
};

/// The same, and what lies between the runs.
struct InkAndGaps {
    InkCells ink;
    WhiteCells& gaps;

    template <class Paint>
    void operator()(std::size_t from, std::size_t to, Paint paint) const {
        ink(from, to, paint);
        gaps.addBlack(from, to);
    }
};

/// Black ink, row by row with paintRow(row, info). Where the background is not known it is settled, and the ink is
/// white if it is 1; only a damaged page keeps its black ink then, and needs another walk. False when memory runs out.
template <class PaintRow>
bool reduceBlackInk(CImg1G4& image, CImg1& result, const ImgRect& r, bool& again, PaintRow paintRow) {
    const ImgULong width = r.getWidth(), newWidth = result.getWidth(), newHeight = result.getHeight();
    const bool learns = !image.isBackgroundKnown();
    G4ScaleInfo info(image, r);
    Heap<ImgULong> columns;
    WhiteCells white;
    if (!info.prepare(newWidth) || !ownerTable(columns, width, newWidth) ||
        (learns && !white.prepare(width, columns.get(), newWidth, newHeight)))
        return false;
    info.columns = columns.get();
    WhiteCells* learning = learns ? &white : nullptr;
    const auto row = [&](ImgULong band) { return result.peekData() + std::size_t{band} * result.getBytesPerLine(); };
    const std::uint64_t area = std::uint64_t{width} * r.getHeight();
    std::uint64_t black = 0, walked = 0;
    const auto onRow = [&](ImgULong band, ImgULong) {
        const ImgErr status =
            learning ? info.paint(row(band), InkAndGaps{{info.columns}, white}) : paintRow(row(band), info);
        black += info.blackCount;
        if (learning) learning->endRow(band);
        return status;
    };
    const auto onBand = [&](ImgULong, ImgULong rows) {
        walked += std::uint64_t{width} * rows;
        // White enough, whatever follows, but for damaged tiles that count a pixel twice.
        if (!isMostlyBlack(black + area - walked, area)) learning = nullptr;
    };
    if (!info.begin() || !info.bands(newHeight, onRow, onBand) || !learns) return true;
    image.setBackgroundColor(isMostlyBlack(black, area));
    if (image.getBackgroundColor() == 0) return true;
    again = !learning || !white.isKnown();
    for (ImgULong band = 0; !again && band < newHeight; ++band)
        std::memcpy(row(band), white[band], packedBytes(newWidth));
    return true;
}

/// Packs which of `count` cells have at most most[x] black pixels; pad bits become 0. Eight elements can be read
/// from the last multiple of eight on.
void packWhite(unsigned char* out, const ImgULong* black, const ImgULong* most, ImgULong count) {
    const auto four = [=](ImgULong x) {
        constexpr Words4 top{0x80000000, 0x80000000, 0x80000000, 0x80000000};  // compares as without sign
        const Ints4 passed = reinterpret_cast<Ints4>(loadLanes<Words4>(black + x) ^ top) <=
                             reinterpret_cast<Ints4>(loadLanes<Words4>(most + x) ^ top);
        return laneBits(__builtin_shufflevector(passed, passed, 3, 2, 1, 0));
    };
    for (ImgULong x = 0; x < count; x += 8) {
        const unsigned byte = four(x) << 4 | four(x + 4);
        *out++ = static_cast<unsigned char>(count - x < 8 ? byte & 0xFF00u >> (count - x) : byte);
    }
}

/// White ink: a cell is foreground where it is not black all over, which black pixels are counted for, row by row with
/// countRow(counts, info), since no one run need cover it. False when memory runs out.
template <class CountRow>
bool reduceWhiteInk(CImg1G4& image, CImg1& result, const ImgRect& r, CountRow countRow) {
    const ImgULong newWidth = result.getWidth();
    G4ScaleInfo info(image, r);
    CellCounter cells;
    Heap<ImgULong> counts(std::uint64_t{newWidth} + 8),
        most(std::uint64_t{newWidth} + 8);  // with a white one among them
    if (!counts || !most || !info.prepare(0) || !cells.prepare(r.getWidth(), newWidth)) return false;
    info.cells = &cells;
    ImgULong mostRows = 0;
    const auto onBand = [&](ImgULong band, ImgULong rows) {
        cells.fold(counts.get());
        if (rows != mostRows)
            for (ImgULong x = 0; x < newWidth; ++x)
                most[x] = static_cast<ImgULong>(
                    std::min<std::uint64_t>(std::uint64_t{rows} * cells.width(x) - 1, 0xFFFFFFFF));
        mostRows = rows;
        packWhite(result.peekData() + std::size_t{band} * result.getBytesPerLine(), counts.get(), most.get(), newWidth);
        std::fill_n(counts.get(), newWidth, 0);
    };
    if (info.begin())
        info.bands(
            result.getHeight(), [&](ImgULong, ImgULong) { return countRow(counts.get(), info); }, onBand);
    return true;
}

}  // namespace
}  // namespace tilepress::g4

using namespace tilepress;
using namespace tilepress::g4;

/// Sets the destination pixels whose cells a black pixel of the row touches.
ImgErr CImg1G4::decode_reduce_scanline(unsigned char* row, G4ScaleInfo* info) {
    return info->paint(row, InkCells{info->columns});
}

CImg1* CImg1G4::Reduce_bkg(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    if (!isReduction(r, newWidth, newHeight)) return refuse(ImgErrBadArgument);
    Temporary<CImg1> result(emptyLike(*this, newWidth, newHeight));
    if (!result) return refuse(ImgErrCreate);
    result->setBackgroundColor(0);
    const auto paintRow = [this](unsigned char* row, G4ScaleInfo& info) { return decode_reduce_scanline(row, &info); };
    const auto countRow = [this](ImgULong* counts, G4ScaleInfo& info) {
        return decode_reduce_scanline_grey(nullptr, &info, counts);
    };
    bool whiteInk = backgroundKnown && backgroundColor != 0;
    bool done = whiteInk || reduceBlackInk(*this, *result, r, whiteInk, paintRow);
    if (done && whiteInk) done = reduceWhiteInk(*this, *result, r, countRow);
    if (!done) return refuse(ImgErrCreate);
    return result.release();
}

/// Every destination pixel is its cell's top left one, in the source's polarity. No dispatcher asks for it.
CImg1* CImg1G4::Reduce(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    const ImgULong width = r.getWidth();
    if (!isReduction(r, newWidth, newHeight)) return refuse(ImgErrBadArgument);
    Temporary<CImg1> result(emptyLike(*this, newWidth, newHeight));
    if (!result) return refuse(ImgErrCreate);
    const bool dark = getBackgroundColor() == 1;
    std::memset(result->peekData(), dark ? 0xFF : 0, result->getTotalBytes());
    G4ScaleInfo info(*this, r);
    Heap<ImgULong> firstCell(std::uint64_t{width} + 1);  // of those that begin at a column or after it
    Heap<std::uint64_t> words(std::uint64_t{packedWords(newWidth)});
    if (!firstCell || !words || !info.prepare(0) || CCITT_EnableG4Decode() != ImgErrNone) return refuse(ImgErrCreate);
    for (ImgULong cell = 0, x = 0; cell <= newWidth; ++cell)
        for (const ImgULong start = markPosition(cell, width, newWidth); x <= start; ++x) firstCell[x] = cell;
    const std::size_t bytesPerRow = result->getBytesPerLine();
    const auto onRow = [&](ImgULong band, ImgULong row) {
        if (row > 0) return ImgErrNone;
        const ImgErr status =
            info.runs([&](std::size_t from, std::size_t to) { fillSpan(words.get(), firstCell[from], firstCell[to]); });
        if (dark) fillSpan(words.get(), newWidth, std::size_t{newWidth} + result->getPadBits());
        storeWords(result->peekData() + std::size_t{band} * bytesPerRow, words.get(), bytesPerRow);
        std::fill_n(words.get(), packedWords(newWidth), 0);
        return status;
    };
    if (info.begin()) info.bands(newHeight, onRow, [](ImgULong, ImgULong) {});
    return result.release();
}
