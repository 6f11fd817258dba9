#include "tilepress/CImg1G4.h"

#include "ccitt/coded_bytes.h"
#include "foundation/heap.h"
#include "model/bilevel_row.h"
#include "model/temporary.h"
#include "tilepress/Export.h"

#include <cstddef>
#include <cstdlib>
#include <new>

using namespace tilepress;

// --- tiles ---

Img1G4Tile::Img1G4Tile()
    : data(nullptr), codingLine(nullptr), codingCount(0), referenceLine(nullptr), referenceCount(0), bytePosition(0),
      bitPosition(0), xOrigin(0), yOrigin(0) {}

Img1G4Tile::Img1G4Tile(unsigned char*, ImgULong, ImgULong) : Img1G4Tile() {}
Img1G4Tile::~Img1G4Tile() = default;  // the image frees the bytes: see CImg1G4::releaseData
unsigned char* Img1G4Tile::getData() { return nullptr; }

// --- the grid ---

CImg1G4::CImg1G4()
    : CImg(ImageTypeBilevelG4, kUnset), padBits(kUnset), alignment(ImgAlignNone), foregroundInterpretation(kUnset),
      backgroundInterpretation(kUnset), tileRows(nullptr), lineBufferA(nullptr), lineBufferB(nullptr),
      tileLengths(nullptr), currentRow(kUnset), rowInTileRow(kUnset), currentTileRow(kUnset), firstTileColumn(kUnset),
      firstTileRow(kUnset), lastTileColumn(kUnset), lastTileRow(kUnset) {}

/// A line for every tile column, in one block that the first of them owns; null when memory runs out.
static int32_t** makeLines(std::size_t across, ImgULong tileWidth) {
    const std::size_t length = std::size_t{tileWidth} + 6;
    if (length < tileWidth || length > SIZE_MAX / across) return nullptr;
    Heap<int32_t> block(std::uint64_t{length} * across);
    int32_t** const lines = block ? allocate<int32_t*>(across) : nullptr;
    if (!lines) return nullptr;
    for (std::size_t column = 0; column < across; ++column) lines[column] = block.get() + column * length;
    block.release();
    return lines;
}

static void freeLines(int32_t** lines) {
    if (lines) std::free(lines[0]);
    std::free(lines);
}

bool CImg1G4::initHeader(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH, ImgULong background,
                         ImgULong foreground, ImgAlignmentEnum rowAlignment) {
    if (!setExtentsAndTiles(width, height, tileW, tileH)) return false;
    backgroundInterpretation = background;
    foregroundInterpretation = foreground;
    alignment = rowAlignment;
    backgroundKnown = false;
    const BilevelRow row(width, alignment);
    padBits = row.padBits;
    bytesPerLine = row.bytes;
    bitsPerSample = samplesPerPixel = 1;
    const std::size_t across = getWidthInTiles(), down = getHeightInTiles();
    // Kept: a grid that was there is left allocated; shallow copies may share it.
    tileRows = allocate<Img1G4Tile*>(down);
    tileLengths = allocate<ImgULong>(numberOfTiles);
    // Kept: working lines where the layout has them; walks have lines of their own.
    lineBufferA = makeLines(across, tileWidth);
    lineBufferB = makeLines(across, tileWidth);
    // An array that cannot be must not reach new, which would end the process: one more for its count.
    const bool fits = (std::uint64_t{numberOfTiles} + 1) * sizeof(Img1G4Tile) <= PTRDIFF_MAX;
    Img1G4Tile* const records = tileRows && tileLengths && lineBufferA && lineBufferB && fits
                                    ? new (std::nothrow) Img1G4Tile[numberOfTiles]
                                    : nullptr;
    if (!records) {
        releaseData();
        return false;
    }
    for (std::size_t k = 0; k < down; ++k) tileRows[k] = records + k * across;
    return true;
}

bool CImg1G4::verifyHeader(ImgULong) const { return true; }

bool CImg1G4::initData(unsigned char** tiles, ImgULong* lengths) {
    if (!tiles || !lengths || !tileRows) return true;
    const ImgULong across = getWidthInTiles();
    totalBytes = 0;
    for (ImgULong k = 0; k < numberOfTiles; ++k) {
        Img1G4Tile& tile = tileRows[0][k];
        tile.bytePosition = 0;
        tile.bitPosition = 1;
        tile.xOrigin = k % across * tileWidth;
        tile.yOrigin = k / across * tileHeight;
        std::free(tile.data);
        tile.data = lengths[k] && tiles[k] ? codedBytes(tiles[k], lengths[k]) : nullptr;
        tileLengths[k] = lengths[k];
        totalBytes += lengths[k];
    }
    return true;
}

void CImg1G4::releaseData() {
    if (Img1G4Tile* const records = tileRows ? tileRows[0] : nullptr) {
        for (std::size_t k = 0; k < numberOfTiles; ++k) std::free(records[k].data);
        delete[] records;
    }
    freeLines(lineBufferA);
    freeLines(lineBufferB);
    std::free(tileRows);
    std::free(tileLengths);
    *this = CImg1G4();
}

// --- making and ending ---

CImg1G4* CImg1G4::create() { return new (std::nothrow) CImg1G4; }

CImg1G4* CImg1G4::create(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH, ImgULong background,
                         ImgULong foreground, ImgAlignmentEnum rowAlignment) {
    return finished(create(), [&](CImg1G4& image) {
        return image.initHeader(width, height, tileW, tileH, background, foreground, rowAlignment);
    });
}

CImg1G4* CImg1G4::create(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH, unsigned char** tiles,
                         ImgULong* lengths, ImgULong background, ImgULong foreground, ImgAlignmentEnum rowAlignment) {
    CImg1G4* image = create(width, height, tileW, tileH, background, foreground, rowAlignment);
    if (image) image->initData(tiles, lengths);
    return image;
}

CImg1G4* CImg1G4::create(const IImg& source, ImgULong tileW, ImgULong tileH, ImgULong background, ImgULong foreground,
                         ImgAlignmentEnum rowAlignment) {
    CImg1G4* image = create(source.getWidth(), source.getHeight(), tileW, tileH, background, foreground, rowAlignment);
    // Kept: no conversion into this kind is accepted, so the grid stays empty.
    if (image) Export::xfm(*image, source);
    return image;
}

CImg1G4* CImg1G4::create(void*, ImgULong, ImgULong, ImgAlignmentEnum) { return nullptr; }

// Kept: frees nothing, since shallow copies may share tiles and lines; releaseData is for the last holder.
CImg1G4::~CImg1G4() = default;

// Kept: the copy is a grid of single pixels without data.
IImg* CImg1G4::clone() const { return create(*this, 1, 1, 0x00FFFFFF, 0xFF000000, ImgAlignNone); }

// --- header fields ---

ImgULong CImg1G4::getBackgroundInterpretation() const { return backgroundInterpretation; }
void CImg1G4::setBackgroundInterpretation(ImgULong color) { backgroundInterpretation = color; }
ImgULong CImg1G4::getForegroundInterpretation() const { return foregroundInterpretation; }
void CImg1G4::setForegroundInterpretation(ImgULong color) { foregroundInterpretation = color; }
ImgULong CImg1G4::getPadBits() const { return padBits; }
ImgAlignmentEnum CImg1G4::getAlignment() { return alignment; }
void CImg1G4::setAlignment(ImgAlignmentEnum value) { alignment = value; }

bool CImg1G4::setExtents(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH) {
    if (width == 0 || height == 0 || tileW == 0 || tileH == 0) return false;
    if (!areTileExtentsValid(width, height, tileW, tileH)) return false;
    // Kept: while a colour still reads as unset, also when it was set to that value, nothing changes and that is a
    // success.
    if (alignment == kUnset || backgroundInterpretation == kUnset || foregroundInterpretation == kUnset) return true;
    return initHeader(width, height, tileW, tileH, backgroundInterpretation, foregroundInterpretation, alignment);
}

ImgULong CImg1G4::getBackgroundColor() {
    if (!backgroundKnown) calculateBackground();
    return backgroundKnown ? backgroundColor : 0;
}

void CImg1G4::setBackgroundColor(ImgULong color) {
    backgroundColor = color;
    backgroundKnown = true;
}

unsigned char** CImg1G4::ownData() { return nullptr; }
Img1G4TileIterator* CImg1G4::getTileIterator() const { return nullptr; }
