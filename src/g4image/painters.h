#pragma once

// What the row painters share: the parameters of a walk, and the one loop that
// turns a decoded tile row into the runs of the rectangle.

#include "ccitt/clipped_runs.h"
#include "ccitt/decode_row.h"
#include "ccitt/padded_line.h"
#include "foundation/bits.h"
#include "kernels/cell_counter.h"
#include "kernels/toggled_row.h"
#include "kernels/white_cells.h"
#include "tilepress/CImg1G4.h"

#include <algorithm>
#include <cstdint>
#include <utility>

/// Parameters of one walk over a rectangle of a compressed image.
class G4ScaleInfo {
public:
    explicit G4ScaleInfo(const ImgRect& rect) : clipStart(rect.getLeft()), width(rect.getWidth()) {}

    std::int64_t clipStart;                        ///< the rectangle's left column
    std::int64_t width;                            ///< its width
    bool paintWhite = false;                       ///< the background is known to be 1: rows are painted inverted
    tilepress::g4::ToggledRow* painted = nullptr;  ///< work row of the destination, clear between rows
    std::size_t rowBytes = 0;                      ///< destination bytes that the work row covers
    const ImgULong* columns = nullptr;             ///< destination column of every source column
    tilepress::g4::WhiteCells* white = nullptr;    ///< null, or what is to learn of the runs as well
    tilepress::CellCounter* cells = nullptr;
    std::uint64_t blackCount = 0;  ///< pixels painted in the last row
};

namespace tilepress::g4 {

/// Whether a picture's background is 1.
inline bool isDark(std::uint64_t black, std::uint64_t pixels) {
    return !(static_cast<double>(black) / static_cast<double>(pixels) <= 0.55);
}

/// The element that ends the first run to paint.
inline std::int32_t firstRun(const std::int32_t* list, const G4ScaleInfo& info) {
    // Kept: the first white run of a row begins one column early, in the tile to the left, and is
    // not painted at all where there is no such tile. Later white runs and all black ones are exact.
    return !info.paintWhite ? 2 : list[1] == 1 ? 3 : 1;
}

/// How much of a list can be painted without clipping: its first elements, or none. They increase, and their runs lie
/// in the rectangle.
inline std::int32_t insideCount(const std::int32_t* list, std::int32_t count, std::int64_t offset,
                                const G4ScaleInfo& info) {
    if (list[kLineIrregular] != 0 || offset + !info.paintWhite < 0) return 0;
    while (count > 3 && offset + list[count - 3] > info.width) --count;
    return count;
}

/// Calls onList(count, k, offset) for the first elements of a tile row's list, whose runs from the one that ends with
/// element k on lie inside the rectangle, and then onRun(from, to) for the runs that had to be clipped. Columns are
/// half-open and counted from the rectangle's left edge. Every black pixel of the rectangle arrives and nothing
/// outside it does, whatever the list holds.
template <class OnList, class OnRun>
inline void clippedRuns(const std::int32_t* list, std::int32_t count, ImgULong tileLeft, const G4ScaleInfo& info,
                        OnList onList, OnRun onRun) {
    if (count <= 4 && !info.paintWhite) return;  // a white row
    const std::int64_t offset = std::int64_t{tileLeft} - 1 - info.clipStart;
    const std::int32_t inside = insideCount(list, count, offset, info);
    std::int32_t k = firstRun(list, info);
    if (inside > 0) {
        onList(inside, k, static_cast<std::ptrdiff_t>(offset));
        k += std::max(inside - 1 - k, 0) / 2 * 2;
    }
    clippedRuns(list, count, k, tileLeft, ColumnRange{info.clipStart, info.width}, onRun);
}

/// The same for the runs one by one.
template <class OnRun>
inline void clippedRuns(const std::int32_t* list, std::int32_t count, ImgULong tileLeft, const G4ScaleInfo& info,
                        OnRun onRun) {
    clippedRuns(list, count, firstRun(list, info), tileLeft, ColumnRange{info.clipStart, info.width}, onRun);
}

/// Sets the bits [from, to) of a packed row, one by one.
inline void setBits(unsigned char* row, std::size_t from, std::size_t to) {
    for (; from < to; ++from) row[from / 8] = static_cast<unsigned char>(row[from / 8] | 0x80 >> from % 8);
}

/// Paints the runs of a tile row inside the rectangle where onto(from, to, paint) lays them. They wait in the work
/// row, but those of a damaged tile, which come in any order, go straight into `row`. The result is how many
/// pixels the runs have.
template <class Onto>
inline std::uint64_t paintRuns(unsigned char* row, const std::int32_t* list, std::int32_t count, ImgULong tileLeft,
                               const G4ScaleInfo& info, Onto onto) {
    ToggledRow& painted = *info.painted;
    const bool inOrder = list[kLineIrregular] == 0;
    std::uint64_t pixels = 0;
    clippedRuns(
        list, count, tileLeft, info,
        [&](std::int32_t inside, std::int32_t k, std::ptrdiff_t offset) {
            pixels += painted.addRuns(list, inside, k, offset, onto);
        },
        [&](std::size_t from, std::size_t to) {
            pixels += to - from;
            onto(from, to, [&](std::size_t first, std::size_t last) {
                if (inOrder) painted.add(first, last);
                else setBits(row, first, last);
            });
        });
    return pixels;
}

}  // namespace tilepress::g4

/// Decodes the next row of every tile of the span, and hands each to onTile(list, count, left column).
template <class OnTile>
ImgErr CImg1G4::decodeRow(OnTile onTile) {
    using namespace tilepress::g4;
    if (currentTileRow > lastTileRow) return ImgErrBadArgument;
    // Stream positions are kept in 32 bits.
    constexpr std::int64_t kMostBytes = 0x7FFFFF00;
    Img1G4Tile* const row = tileRows[currentTileRow];
    const ImgULong* const lengths = tileLengths + std::size_t{currentTileRow} * getWidthInTiles();
    for (ImgULong column = firstTileColumn; column <= lastTileColumn; ++column) {
        Img1G4Tile& tile = row[column];
        if (tile.data) {
            const std::int64_t length = (std::int64_t{lengths[column]} + 1) & ~std::int64_t{1};
            const CodedData in{tile.data, std::min(length, kMostBytes), false};
            std::int64_t bit = 8 * std::int64_t{tile.bytePosition} + tile.bitPosition - 1;
            const RowList reference{tile.referenceLine, tile.referenceCount};
            if (staysWhite(in, bit, reference)) {
                ++bit;
            } else {
                if (decodeLine(in, bit, reference, static_cast<std::int32_t>(tileWidth), tile.codingLine,
                               tile.codingCount) != kRowDecoded)
                    return ImgErrDecode;
                std::swap(tile.codingLine, tile.referenceLine);
                std::swap(tile.codingCount, tile.referenceCount);
            }
            tile.bytePosition = static_cast<std::int32_t>(bit >> 3);
            tile.bitPosition = static_cast<std::int32_t>(bit & 7) + 1;
        }
        onTile(tile.referenceLine, tile.referenceCount, column * tileWidth);
    }
    return ImgErrNone;
}

/// Decodes the next row and hands its runs inside the rectangle to onRun(from, to).
template <class OnRun>
ImgErr CImg1G4::decodeRuns(const G4ScaleInfo& info, OnRun onRun) {
    return decodeRow([&](const std::int32_t* list, std::int32_t count, ImgULong left) {
        tilepress::g4::clippedRuns(list, count, left, info, onRun);
    });
}

/// Decodes the next row and paints its runs inside the rectangle where onto(from, to, paint) lays them; of a row
/// that fails, those of the tiles before the corrupt one.
template <class Onto>
ImgErr CImg1G4::paintRow(unsigned char* row, G4ScaleInfo& info, Onto onto) {
    info.blackCount = 0;
    const ImgErr status = decodeRow([&](const std::int32_t* list, std::int32_t count, ImgULong left) {
        info.blackCount += tilepress::g4::paintRuns(row, list, count, left, info, onto);
    });
    info.painted->orInto(row, info.rowBytes);
    return status;
}
