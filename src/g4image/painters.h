#pragma once

// What the row painters share: the parameters of a walk, and the one loop that
// turns a decoded tile row into the runs of the rectangle.

#include "ccitt/clipped_runs.h"
#include "ccitt/decode_family.h"
#include "ccitt/decode_row.h"
#include "foundation/bits.h"
#include "transform/cell_counter.h"
#include "tilepress/CImg1G4.h"

#include <algorithm>
#include <cstdint>
#include <utility>

/// Parameters of one walk over a rectangle of a compressed image.
class G4ScaleInfo {
public:
    explicit G4ScaleInfo(const ImgRect& rect) : clipStart(rect.getLeft()), width(rect.getWidth()) {}

    std::int64_t clipStart;                ///< the rectangle's left column
    std::int64_t width;                    ///< its width
    bool paintWhite = false;               ///< the background is known to be 1: rows are painted inverted
    std::uint64_t* words = nullptr;        ///< work row of the destination, clear between rows
    std::size_t rowBytes = 0;              ///< destination bytes that the work row covers
    const ImgULong* columns = nullptr;     ///< destination column of every source column
    tilepress::CellCounter* cells = nullptr;
    std::uint64_t blackCount = 0;          ///< pixels painted in the last row
};

namespace tilepress::g4 {

/// Calls onRun(from, to) for the runs of a tile row inside the rectangle, as half-open columns
/// counted from the rectangle's left edge. Every black pixel of the rectangle arrives and
/// nothing outside it does, whatever the list holds.
template <class OnRun>
inline void clippedRuns(const std::int32_t* list, std::int32_t count, ImgULong tileLeft, const G4ScaleInfo& info,
                        OnRun onRun) {
    // Kept: the first white run of a row begins one column early, in the tile to the left, and is
    // not painted at all where there is no such tile. Later white runs and all black ones are exact.
    const std::int32_t first = !info.paintWhite ? 2 : list[1] == 1 ? 3 : 1;
    clippedRuns(list, count, first, tileLeft, ColumnRange{info.clipStart, info.width}, onRun);
}

/// ORs the work row into a destination row and clears it.
inline void flushRow(unsigned char* row, const G4ScaleInfo& info) {
    orWords(row, info.words, info.rowBytes);
    std::fill_n(info.words, (info.rowBytes + 7) / 8, 0);
}

}  // namespace tilepress::g4

/// Decodes the next row of every tile of the span, and hands each to onTile(list, count, left column).
template <class OnTile>
ImgErr CImg1G4::decodeRow(OnTile onTile) {
    using namespace tilepress::g4;
    if (currentTileRow > lastTileRow) return ImgErrBadArgument;
    const DecodeTables* tables = classDecodeTables();
    if (!tables) return ImgErrDecode;
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
            if (decodeLine(*tables, in, bit, {tile.referenceLine, tile.referenceCount},
                           static_cast<std::int32_t>(tileWidth), tile.codingLine, tile.codingCount) != kRowDecoded)
                return ImgErrDecode;
            tile.bytePosition = static_cast<std::int32_t>(bit >> 3);
            tile.bitPosition = static_cast<std::int32_t>(bit & 7) + 1;
            std::swap(tile.codingLine, tile.referenceLine);
            std::swap(tile.codingCount, tile.referenceCount);
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
