#include "g4image/painters.h"

#include "foundation/heap.h"
#include "kernels/grey_maps.h"
#include "kernels/mark_tables.h"
#include "kernels/vectors.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <cstring>

using namespace tilepress;
using namespace tilepress::g4;

// The reductions take black runs only: white ones overlap where tiles meet. The polarity
// of an image whose background is not known is settled after the walk.

/// Walks `height` rows that fold into `bands` destination rows: onRow(k) decodes a row of band k, onBand(k, rows)
/// ends it. False, with the code raised, when a tile is corrupt; its band is ended before.
template <class OnRow, class OnBand>
bool CImg1G4::walkBands(ImgULong height, ImgULong bands, OnRow onRow, OnBand onBand) {
    for (ImgULong band = 0, y = 0; band < bands; ++band) {
        const ImgULong top = y, end = markPosition(band + 1, height, bands);
        for (; y < end; ++y) {
            if (onRow(band, y - top) != ImgErrNone) {
                onBand(band, end - top);
                walkFailed();
                return false;
            }
            advanceRow();
        }
        onBand(band, end - top);
    }
    return true;
}

/// Sets the destination pixels whose cells a black pixel of the row touches.
ImgErr CImg1G4::decode_reduce_scanline(unsigned char* row, G4ScaleInfo* info) {
    const ImgULong* const columns = info->columns;
    WhiteCells* const white = info->white;
    const auto blackCells = [columns](std::size_t from, std::size_t to, auto paint) {
        paint(columns[from], std::size_t{columns[to - 1]} + 1);
    };
    if (!white) return paintRow(row, *info, blackCells);
    return paintRow(row, *info, [=](std::size_t from, std::size_t to, auto paint) {
        blackCells(from, to, paint);
        white->addBlack(from, to);
    });
}

/// Counts the row's black pixels by cells.
ImgErr CImg1G4::decode_reduce_scanline_grey(G4ScaleInfo* info) {
    CellCounter& cells = *info->cells;
    return decodeRow([&](const std::int32_t* list, std::int32_t count, ImgULong left) {
        clippedRuns(
            list, count, left, *info,
            [&](std::int32_t inside, std::int32_t, std::ptrdiff_t offset) { cells.addRuns(list, inside, offset); },
            [&](std::size_t from, std::size_t to) { cells.add(from, to); });
    });
}

/// Black ink. Where the background is not known it is settled, and the ink is white if it is 1; only a damaged page
/// keeps its black ink then, and needs another walk. Null when memory runs out.
CImg1* CImg1G4::reducedBySpans(CImg1* result, const ImgRect& r, bool& again) {
    const ImgULong width = r.getWidth(), newWidth = result->getWidth(), newHeight = result->getHeight();
    Heap<ImgULong> columns;
    ToggledRow painted;
    WhiteCells white;
    if (!painted.prepare(newWidth) || !ownerTable(columns, width, newWidth)) return nullptr;
    if (!backgroundKnown && !white.prepare(width, columns.get(), newWidth, newHeight)) return nullptr;
    G4ScaleInfo info(r);
    info.columns = columns.get();
    info.painted = &painted;
    info.rowBytes = packedBytes(newWidth);
    info.white = backgroundKnown ? nullptr : &white;
    unsigned char* const pixels = result->peekData();
    const std::size_t bytesPerRow = result->getBytesPerLine();
    const std::uint64_t area = std::uint64_t{width} * r.getHeight();
    std::uint64_t black = 0, walked = 0;
    const bool whole = walkBands(
        r.getHeight(), newHeight,
        [&](ImgULong band, ImgULong) {
            const ImgErr status = decode_reduce_scanline(pixels + band * bytesPerRow, &info);
            black += info.blackCount;
            if (info.white) info.white->endRow(band);
            return status;
        },
        [&](ImgULong, ImgULong rows) {
            walked += std::uint64_t{width} * rows;
            // White enough, whatever follows, but for damaged tiles that count a pixel twice.
            if (!isDark(black + area - walked, area)) info.white = nullptr;
        });
    if (!whole || backgroundKnown) return result;
    settleBackground(black, area);
    if (backgroundColor == 0) return result;
    again = !info.white || !white.isKnown();
    for (ImgULong band = 0; !again && band < newHeight; ++band)
        std::memcpy(pixels + band * bytesPerRow, white[band], info.rowBytes);
    return result;
}

/// Packs which of `count` cells have at most most[x] black pixels; pad bits become 0. Eight elements can be read
/// from the last multiple of eight on.
static void packWhite(unsigned char* out, const ImgULong* black, const ImgULong* most, ImgULong count) {
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

/// White ink: a cell is foreground where it is not black all over, which black pixels are counted for, since no one
/// run need cover it. Null when memory runs out.
CImg1* CImg1G4::reducedByCounts(CImg1* result, const ImgRect& r) {
    const ImgULong newWidth = result->getWidth();
    const std::size_t bytesPerRow = result->getBytesPerLine();
    CellCounter cells;
    Heap<ImgULong> counts(std::uint64_t{newWidth} + 8),
        most(std::uint64_t{newWidth} + 8);  // with a white one among them
    if (!counts || !most || !cells.prepare(r.getWidth(), newWidth)) return nullptr;
    G4ScaleInfo info(r);
    info.cells = &cells;
    ImgULong mostRows = 0;
    walkBands(
        r.getHeight(), result->getHeight(),
        [&](ImgULong, ImgULong row) {
            if (row > 0 && cells.mustFold(row)) cells.fold(counts.get());
            return decode_reduce_scanline_grey(&info);
        },
        [&](ImgULong band, ImgULong rows) {
            cells.fold(counts.get());
            if (rows != mostRows)
                for (ImgULong x = 0; x < newWidth; ++x)
                    most[x] = static_cast<ImgULong>(
                        std::min<std::uint64_t>(std::uint64_t{rows} * cells.width(x) - 1, 0xFFFFFFFF));
            mostRows = rows;
            packWhite(result->peekData() + band * bytesPerRow, counts.get(), most.get(), newWidth);
            std::fill_n(counts.get(), newWidth, 0);
        });
    return result;
}

CImg1* CImg1G4::Reduce_bkg(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    if (newWidth == 0 || newHeight == 0 || newWidth > r.getWidth() || newHeight > r.getHeight()) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    CImg1* const result = emptyResult(newWidth, newHeight);
    if (!result) return nullptr;
    result->setBackgroundColor(0);
    if (!PrepForDecode(r)) {
        walkFailed();
        return result;
    }
    bool again = false;
    const bool whiteInk = backgroundKnown && backgroundColor != 0;
    bool done = whiteInk || reducedBySpans(result, r, again);
    if (done && again) done = PrepForDecode(r);
    if (done && (whiteInk || again)) done = reducedByCounts(result, r) != nullptr;
    if (done) return result;
    delete result;
    imgRaise(ImgErrCreate);
    return nullptr;
}

/// Every destination pixel is its cell's top left one, in the source's polarity. No dispatcher asks for it.
CImg1* CImg1G4::Reduce(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    const ImgULong width = r.getWidth();
    if (newWidth == 0 || newHeight == 0 || newWidth > width || newHeight > r.getHeight()) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    CImg1* const result = emptyResult(newWidth, newHeight);
    if (!result) return nullptr;
    const unsigned char padding = getBackgroundColor() == 1 ? 0xFF : 0;
    std::memset(result->peekData(), padding, result->getTotalBytes());
    Heap<ImgULong> firstCell(std::uint64_t{width} + 1);  // of those that begin at a column or after it
    Heap<std::uint64_t> words(std::uint64_t{packedWords(newWidth)});
    if (!firstCell || !words || CCITT_EnableG4Decode() != ImgErrNone) {
        delete result;
        imgRaise(ImgErrCreate);
        return nullptr;
    }
    for (ImgULong cell = 0, x = 0; cell <= newWidth; ++cell)
        for (const ImgULong start = markPosition(cell, width, newWidth); x <= start; ++x) firstCell[x] = cell;
    if (!PrepForDecode(r)) {
        walkFailed();
        return result;
    }
    G4ScaleInfo info(r);
    const std::size_t bytesPerRow = result->getBytesPerLine();
    const ImgULong pad = result->getPadBits();
    walkBands(
        r.getHeight(), newHeight,
        [&](ImgULong band, ImgULong row) {
            if (row > 0) return decode_scanline();
            const ImgErr status = decodeRuns(
                info, [&](std::size_t from, std::size_t to) { fillSpan(words.get(), firstCell[from], firstCell[to]); });
            if (padding) fillSpan(words.get(), newWidth, std::size_t{newWidth} + pad);
            unsigned char* const pixels = result->peekData() + band * bytesPerRow;
            std::memset(pixels, 0, bytesPerRow);
            orWords(pixels, words.get(), bytesPerRow);
            std::fill_n(words.get(), packedWords(newWidth), 0);
            return status;
        },
        [](ImgULong, ImgULong) {});
    return result;
}

/// Counts of black pixels, in place, to grey pixels of a row of cells, the narrowest of which are `low` wide.
template <bool kWhiteInk>
static void greyRow(ImgULong* row, ImgULong cellCount, ImgULong height, const CellCounter& cells, const GreyMaps& maps,
                    ImgULong low) {
    const unsigned char *const narrow = maps.of(height, low), *const wide = maps.of(height, low + 1);
    for (ImgULong x = 0; x < cellCount; ++x) {
        const ImgULong width = cells.width(x), area = height * width;
        const ImgULong count = std::min(row[x], area);  // damaged tiles can count a pixel twice
        const ImgULong ink = kWhiteInk ? area - count : count;
        const unsigned char* const map = width == low ? narrow : wide;
        row[x] = greyPixel(map ? map[ink] : staircaseGrey(area + 1, ink));
    }
}

CImg32* CImg1G4::Reduce_greyscale(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    if (newWidth == 0 || newHeight == 0 || newWidth > r.getWidth() || newHeight > r.getHeight()) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    CellCounter cells;
    GreyMaps maps;
    CImg32* const result = CImg32::create(newWidth, newHeight, RGBOrderRGB);
    if (!result || !cells.prepare(r.getWidth(), newWidth) ||
        !maps.prepare(r.getWidth(), r.getHeight(), newWidth, newHeight)) {
        delete result;
        imgRaise(ImgErrCreate);
        return nullptr;
    }
    ImgULong** const rows = result->peekDataArray();
    const auto toGrey = [&](ImgULong band, ImgULong height) {
        if (backgroundKnown && backgroundColor == 1)
            greyRow<true>(rows[band], newWidth, height, cells, maps, r.getWidth() / newWidth);
        else greyRow<false>(rows[band], newWidth, height, cells, maps, r.getWidth() / newWidth);
    };
    const bool wasKnown = backgroundKnown;
    G4ScaleInfo info(r);
    info.cells = &cells;
    std::uint64_t black = 0;
    ImgULong reached = 0;
    bool whole = PrepForDecode(r) != 0;
    if (!whole) walkFailed();
    else
        whole = walkBands(
            r.getHeight(), newHeight,
            [&](ImgULong band, ImgULong row) {
                if (row > 0 && cells.mustFold(row)) black += cells.fold(rows[band]);
                return decode_reduce_scanline_grey(&info);
            },
            [&](ImgULong band, ImgULong height) {
                black += cells.fold(rows[band]);
                if (wasKnown) toGrey(band, height);
                reached = band + 1;
            });
    if (whole && !wasKnown) settleBackground(black, std::uint64_t{r.getWidth()} * r.getHeight());
    if (!wasKnown)
        for (ImgULong band = 0, top = 0; band < reached; ++band) {
            const ImgULong end = markPosition(band + 1, r.getHeight(), newHeight);
            toGrey(band, end - top);
            top = end;
        }
    for (ImgULong band = reached; band < newHeight; ++band) std::fill_n(rows[band], newWidth, 0x00FFFFFF);
    return result;
}
