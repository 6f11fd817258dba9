#include "g4image/painters.h"

using namespace tilepress::g4;

// A row's positions, and sums with them, must fit 32 bits.
static constexpr std::uint32_t kLargestTileWidth = 0x7FFFFFF0;

int CImg1G4::PrepForDecode(const ImgRect& r) {
    if (!tileRows || tileWidth > kLargestTileWidth) return 0;
    currentRow = r.getTop();
    firstTileColumn = r.getLeft() / tileWidth;
    lastTileColumn = r.getRight() / tileWidth;
    firstTileRow = currentTileRow = r.getTop() / tileHeight;
    lastTileRow = r.getBottom() / tileHeight;
    rowInTileRow = r.getTop() % tileHeight;
    InitTileRowDecode();
    for (ImgULong skipped = 0; skipped < rowInTileRow; ++skipped)
        if (decode_scanline() != ImgErrNone) return 0;
    return 1;
}

void CImg1G4::InitTileRowDecode() {
    const ImgULong across = getWidthInTiles();
    Img1G4Tile* const row = tileRows[currentTileRow];
    for (ImgULong column = 0; column < across; ++column) {
        Img1G4Tile& tile = row[column];
        tile.bytePosition = 0;
        tile.bitPosition = 1;
        tile.codingLine = lineBufferA[column];
        tile.codingCount = 0;
        tile.referenceLine = lineBufferB[column];
        tile.referenceCount = whiteLine(tile.referenceLine, static_cast<std::int32_t>(tileWidth));
    }
}

ImgErr CImg1G4::decode_scanline() {
    return decodeRow([](const std::int32_t*, std::int32_t, ImgULong) {});
}

void CImg1G4::advanceRow() {
    ++currentRow;
    if (++rowInTileRow == tileHeight && currentTileRow < lastTileRow) {
        ++currentTileRow;
        rowInTileRow = 0;
        InitTileRowDecode();
    }
}

/// Called with the row at which a walk failed; nobody listens yet.
void CImg1G4::SendIncompleteStatus(int) {}

/// Reports a walk that a corrupt tile ended.
void CImg1G4::walkFailed() {
    SendIncompleteStatus(static_cast<int>(currentRow));
    imgRaise(ImgErrDecode);
}

/// Records the background once it is known how many of `pixels` are black.
void CImg1G4::settleBackground(std::uint64_t black, std::uint64_t pixels) {
    backgroundColor = isDark(black, pixels) ? 1 : 0;
    backgroundKnown = true;
}
