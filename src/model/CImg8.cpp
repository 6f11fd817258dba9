#include "tilepress/CImg8.h"

#include "model/row_storage.h"
#include "tilepress/Export.h"

#include <algorithm>
#include <new>

using namespace tilepress;

// --- header and storage ---

CImg8::CImg8()
    : CImg(ImageTypePalette, 0), rows(nullptr), padBytes(0), rowBytes(0), alignment(ImgAlignNone), colorMap(nullptr) {
    bitsPerSample = 8;
    samplesPerPixel = 1;
}

static ImgULong paddingOf(ImgULong width, ImgAlignmentEnum alignment) {
    return alignment == ImgAlignDword ? (4 - width % 4) % 4 : 0;
}

bool CImg8::initHeader(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH, ImgAlignmentEnum rowAlignment) {
    const ImgULong padding = paddingOf(width, rowAlignment);
    if (std::uint64_t{width} + padding > UINT32_MAX) return false;
    if (!setExtentsAndTiles(width, height, tileW, tileH)) return false;
    alignment = rowAlignment;
    backgroundKnown = false;
    padBytes = padding;
    rowBytes = width + padding;
    return true;
}

bool CImg8::verifyHeader(ImgULong length) const {
    const ImgULong width = getWidth(), height = getHeight();
    const ImgULong padding = paddingOf(width, alignment);
    const std::uint64_t bytes = std::uint64_t{width} + padding;
    return width > 0 && height > 0 && padBytes == padding && rowBytes == bytes && totalBytes == height * bytes &&
           length == totalBytes;
}

bool CImg8::initData() { return RowStorage::make(*this, true); }
bool CImg8::initData(unsigned char* data, ImgULong length) { return RowStorage::copy(*this, data, length); }

bool CImg8::initColorMap(ColorMap* map) {
    if (colorMap) return true;
    const ImgLong capacity = map ? map->capacity : 256, maximum = map ? map->maximum : 255;
    ColorMap* copy = new (std::nothrow) ColorMap(capacity, maximum);
    if (!copy || (capacity > 0 && !copy->entries)) {
        delete copy;
        return false;
    }
    if (map) {
        copy->count = map->entries ? std::clamp(map->count, int32_t{0}, copy->capacity) : 0;
        std::copy_n(map->entries, copy->count, copy->entries);
    }
    colorMap = copy;
    return true;
}

// --- making and ending ---

CImg8* CImg8::create() { return new (std::nothrow) CImg8; }

CImg8* CImg8::create(ImgULong width, ImgULong height, ColorMap* map, ImgAlignmentEnum rowAlignment) {
    return finished(create(), [&](CImg8& image) {
        return image.initHeader(width, height, width, height, rowAlignment) && image.initData() &&
               image.initColorMap(map);
    });
}

CImg8* CImg8::create(ImgULong width, ImgULong height, unsigned char* data, ImgULong length, ColorMap* map,
                     ImgAlignmentEnum rowAlignment) {
    return finished(create(), [&](CImg8& image) {
        return image.initHeader(width, height, width, height, rowAlignment) && image.initData(data, length) &&
               image.initColorMap(map);
    });
}

CImg8* CImg8::create(const IImg& source, ColorMap* map, ImgAlignmentEnum rowAlignment) {
    Temporary<CImg8> image(RowStorage::createUnset(source.getWidth(), source.getHeight(), map, rowAlignment));
    return image && Export::xfm(*image, source) ? image.release() : nullptr;
}

CImg8* CImg8::create(void*, ImgAlignmentEnum) { return nullptr; }

CImg8::~CImg8() {
    freeRows(rows);
    // Kept: the colour map stays allocated, for whoever still holds it.
    rowBytes = totalBytes = tileWidth = tileHeight = backgroundColor = numberOfTiles = 0;
    backgroundKnown = false;
}

// Kept: always null, since nothing converts a palette image into one.
IImg* CImg8::clone() const { return create(*this, nullptr, ImgAlignNone); }

// --- pixels ---

ImgErr CImg8::transferData(unsigned char** data, ImgULong length) { return RowStorage::transfer(*this, data, length); }
ImgErr CImg8::dupData(unsigned char* data, ImgULong length) { return RowStorage::duplicate(*this, data, length); }
unsigned char* CImg8::ownData() { return releaseBlock(rows); }
unsigned char* CImg8::peekData() const { return rows ? rows[0] : nullptr; }
unsigned char** CImg8::peekDataArray() const { return rows; }
Img8TileIterator* CImg8::getTileIterator() const { return nullptr; }

// --- header fields ---

ImgULong CImg8::getBytesPerLine() const { return rowBytes; }
ImgULong CImg8::getPadBytes() const { return padBytes; }
ColorMap* CImg8::getColorMap() const { return colorMap; }
ImgAlignmentEnum CImg8::getAlignment() { return alignment; }

// Kept: these two change the field they name and leave row length and byte count behind.
void CImg8::setAlignment(ImgAlignmentEnum value) { alignment = value; }
bool CImg8::setExtents(ImgULong width, ImgULong height) {
    if (width == 0 || height == 0) return false;
    rect.setRect(width, height);
    return true;
}

// Kept: the background does not become known by being asked for.
ImgULong CImg8::calculateBackground() {
    if (!backgroundKnown) backgroundColor = 0;
    return backgroundColor;
}

ImgULong CImg8::getBackgroundColor() { return calculateBackground(); }

void CImg8::setBackgroundColor(ImgULong index) {
    backgroundColor = index;
    backgroundKnown = true;
}
