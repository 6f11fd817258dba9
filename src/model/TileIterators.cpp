#include "tilepress/TileIterators.h"

#include "foundation/heap.h"
#include "model/image_kinds.h"

#include <algorithm>
#include <cstring>
#include <new>

using namespace tilepress;

// --- placeholders ---

// NOLINTBEGIN(performance-unnecessary-value-param): images by value are the interface
Img1TileIterator::Img1TileIterator() = default;
Img1TileIterator::Img1TileIterator(CImg1) {}
Img1TileIterator::Img1TileIterator(CImg1, ImgULong, ImgULong) {}
Img1TileIterator::Img1TileIterator(CImg1, ImgULong, ImgULong, ImageType) {}
bool Img1TileIterator::getNextTile(void*, ImgULong, ImgULong, ImgULong, ImgULong, ImgULong, bool&) { return true; }

Img8TileIterator::Img8TileIterator() = default;
Img8TileIterator::Img8TileIterator(CImg8) {}
Img8TileIterator::Img8TileIterator(CImg8, ImgULong, ImgULong) {}
Img8TileIterator::Img8TileIterator(CImg8, ImgULong, ImgULong, ImageType) {}
bool Img8TileIterator::getNextTile(void*, ImgULong, ImgULong, ImgULong, ImgULong, ImgULong, bool&) { return true; }

Img1G4TileIterator::Img1G4TileIterator() = default;
Img1G4TileIterator::Img1G4TileIterator(CImg1G4) {}
Img1G4TileIterator::Img1G4TileIterator(CImg1G4, ImgULong, ImgULong) {}
Img1G4TileIterator::Img1G4TileIterator(CImg1G4, ImgULong, ImgULong, ImageType) {}
bool Img1G4TileIterator::getNextTile(void*, ImgULong, ImgULong, ImgULong, ImgULong, ImgULong, bool&) { return true; }
// NOLINTEND(performance-unnecessary-value-param)

// --- RGB ---

Img32TileIterator::Img32TileIterator() = default;
Img32TileIterator::~Img32TileIterator() {
    std::free(tileBuffer);
    std::free(backgroundRow);
}

/// Tiles that cover an extent; stores by how much they pass it.
static ImgULong countTiles(ImgULong extent, ImgULong tile, ImgULong& padding) {
    const ImgULong rest = extent % tile;
    padding = rest ? tile - rest : 0;
    return extent / tile + (rest ? 1 : 0);
}

Img32TileIterator* Img32TileIterator::createIterator(CImg32* source, ImgULong width, ImgULong height,
                                                     CImg32::TileFormat tileFormat) {
    if (tileFormat != CImg32::UNCOMPRESSED && tileFormat != CImg32::UNCOMPRESSED_NULL && tileFormat != CImg32::RESERVED)
        return nullptr;
    if (!source || width == 0 || height == 0) return nullptr;
    width = std::min(width, source->getWidth());
    height = std::min(height, source->getHeight());
    const std::uint64_t bytes = std::uint64_t{4} * width * height;
    if (width > UINT32_MAX / 4 || bytes > UINT32_MAX) return nullptr;

    Heap<ImgULong> background(std::uint64_t{width});
    Heap<unsigned char> buffer(bytes);
    Img32TileIterator* const it = background && buffer ? new (std::nothrow) Img32TileIterator : nullptr;
    if (!it) return nullptr;
    it->image = source;
    it->format = tileFormat;
    it->tileWidth = width;
    it->tileHeight = height;
    it->tileRowBytes = 4 * width;
    it->tileBytes = static_cast<ImgULong>(bytes);
    it->tilesAcross = countTiles(source->getWidth(), width, it->rightPadding);
    it->tilesDown = countTiles(source->getHeight(), height, it->bottomPadding);
    it->rightPaddingBytes = 4 * it->rightPadding;
    it->tileCount = it->tilesAcross * it->tilesDown;
    std::fill_n(background.get(), width, source->getBackgroundColor());
    it->backgroundRow = background.release();
    it->tileBuffer = buffer.release();
    return it;
}

/// Fills the buffer; pixels past the image are 0. Says whether every pixel copied was background.
void Img32TileIterator::copyTile(bool& allBackground) {
    const ImgULong bytes = tileRowBytes - (lastColumn ? rightPaddingBytes : 0);
    const ImgULong height = tileHeight - (lastRow ? bottomPadding : 0);
    if (lastRow || lastColumn) std::memset(tileBuffer, 0, tileBytes);
    allBackground = true;
    for (ImgULong i = 0; i < height; ++i) {
        const ImgULong* const row = image->peekDataArray()[tileY + i] + tileX;
        std::memcpy(tileBuffer + std::size_t{i} * tileRowBytes, row, bytes);
        allBackground = allBackground && std::memcmp(row, backgroundRow, bytes) == 0;
    }
}

void Img32TileIterator::tileUNCOMPRESSED() {
    bool allBackground;
    copyTile(allBackground);
    tileLength = tileBytes;
    tileColor = 0;
}

void Img32TileIterator::tileUNCOMPRESSED_NULL() {
    bool allBackground;
    copyTile(allBackground);
    // Kept: compared with the background at creation, reported as the background now.
    tileLength = allBackground ? 0 : tileBytes;
    tileColor = allBackground ? image->getBackgroundColor() : 0;
}

bool Img32TileIterator::getNextTile(unsigned char*& data, ImgULong& length, ImgULong& color, ImgULong& x, ImgULong& y,
                                    ImgULong& width, ImgULong& height, ImgULong& validWidth, ImgULong& validHeight) {
    if (currentTileRow == tilesDown || !hasPixels(*image)) return false;
    tileX = tileWidth * currentTileColumn;
    tileY = tileHeight * currentTileRow;
    lastRow = currentTileRow == tilesDown - 1;
    lastColumn = currentTileColumn == tilesAcross - 1;
    // Kept: the reserved format produces nothing.
    if (format == CImg32::UNCOMPRESSED) tileUNCOMPRESSED();
    if (format == CImg32::UNCOMPRESSED_NULL) tileUNCOMPRESSED_NULL();
    ++currentTileColumn;
    if (lastColumn) {
        currentTileColumn = 0;
        ++currentTileRow;
    }
    data = tileBuffer;
    length = tileLength;
    color = tileColor;
    x = tileX;
    y = tileY;
    width = tileWidth;
    height = tileHeight;
    validWidth = tileWidth - (lastColumn ? rightPadding : 0);
    validHeight = tileHeight - (lastRow ? bottomPadding : 0);
    return true;
}

ImgULong Img32TileIterator::getWidthInTiles() { return tilesAcross; }
ImgULong Img32TileIterator::getHeightInTiles() { return tilesDown; }
ImgULong Img32TileIterator::getRowPadding() { return rightPadding; }
