#include "tilepress/CImg32.h"

#include "model/row_storage.h"
#include "tilepress/Export.h"
#include "tilepress/TileIterators.h"

#include <algorithm>
#include <new>

using namespace tilepress;

// --- header and storage ---

CImg32::CImg32() : CImg(ImageTypeRGB, 0), rows(nullptr), rgbOrder(RGBOrderRGB) {
    bitsPerSample = 8;
    samplesPerPixel = 4;
}

bool CImg32::initHeader(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH, RGBOrder order) {
    if (width > UINT32_MAX / 4) return false;
    if (!setExtentsAndTiles(width, height, tileW, tileH)) return false;
    rgbOrder = order;
    backgroundKnown = false;
    bytesPerLine = 4 * width;
    return true;
}

// Kept: a length beyond the image's size passes, unlike the other kinds.
bool CImg32::verifyHeader(ImgULong length) const {
    const std::uint64_t width = getWidth(), height = getHeight();
    return width > 0 && height > 0 && bytesPerLine == 4 * width && totalBytes == height * bytesPerLine &&
           totalBytes <= length;
}

bool CImg32::initData() { return RowStorage::make(*this, true); }
bool CImg32::initData(ImgULong* data, ImgULong length) { return RowStorage::copy(*this, data, length); }

bool CImg32::initDataFrom24(unsigned char* data, ImgULong length, ImgAlignmentEnum rowAlignment, RGBOrder sourceOrder) {
    if (!data || length < 3 || !RowStorage::setTotalBytes(*this)) return false;
    const std::uint64_t width = getWidth(), height = getHeight(), widened = std::uint64_t{length} * 4 / 3;
    if (!verifyHeader(static_cast<ImgULong>(std::min<std::uint64_t>(widened, UINT32_MAX)))) return false;
    if (rowAlignment == ImgAlignDword && length < (height - 1) * ((width * 3 + 3) / 4 * 4) + width * 3) return false;
    return initData() &&
           Export::copy24To32(rows[0], data, getWidth(), getHeight(), rowAlignment, sourceOrder, rgbOrder);
}

// --- making and ending ---

CImg32* CImg32::create() { return new (std::nothrow) CImg32; }

CImg32* CImg32::create(ImgULong width, ImgULong height, RGBOrder order) {
    return finished(create(), [&](CImg32& image) {
        return image.initHeader(width, height, width, height, order) && image.initData();
    });
}

CImg32* CImg32::create(ImgULong width, ImgULong height, ImgULong* data, ImgULong length, RGBOrder order) {
    return finished(create(), [&](CImg32& image) {
        return image.initHeader(width, height, width, height, order) && image.initData(data, length);
    });
}

CImg32* CImg32::create(const IImg& source, RGBOrder order) {
    CImg32* image = RowStorage::createUnset(source.getWidth(), source.getHeight(), order);
    // Kept: a refused conversion leaves a blank image, and no code.
    if (image) convertInto(*image, source);
    return image;
}

CImg32* CImg32::createFrom24(ImgULong width, ImgULong height, unsigned char* data, ImgULong length,
                             ImgAlignmentEnum rowAlignment, RGBOrder sourceOrder, RGBOrder imageOrder) {
    return finished(create(), [&](CImg32& image) {
        return image.initHeader(width, height, width, height, imageOrder) &&
               image.initDataFrom24(data, length, rowAlignment, sourceOrder);
    });
}

CImg32::~CImg32() {
    freeRows(rows);
    bytesPerLine = totalBytes = tileWidth = tileHeight = backgroundColor = numberOfTiles = 0;
    backgroundKnown = false;
}

IImg* CImg32::clone() const { return create(*this, RGBOrderRGB); }

// --- pixels ---

ImgErr CImg32::transferData(ImgULong** data, ImgULong length) { return RowStorage::transfer(*this, data, length); }
ImgErr CImg32::dupData(ImgULong* data, ImgULong length) { return RowStorage::duplicate(*this, data, length); }
ImgULong* CImg32::ownData() { return releaseBlock(rows); }
ImgULong* CImg32::peekData() const { return rows ? rows[0] : nullptr; }
ImgULong** CImg32::peekDataArray() const { return rows; }

Img32TileIterator* CImg32::getTileIterator(ImgLong tileW, ImgLong tileH, TileFormat format) {
    return Img32TileIterator::createIterator(this, static_cast<ImgULong>(tileW), static_cast<ImgULong>(tileH), format);
}

// --- header fields ---

RGBOrder CImg32::getRGBOrder() const { return rgbOrder; }

ImgULong CImg32::calculateBackground() {
    if (!backgroundKnown) setBackgroundColor(0);
    return backgroundColor;
}

ImgULong CImg32::getBackgroundColor() { return calculateBackground(); }

void CImg32::setBackgroundColor(ImgULong pixel) {
    backgroundColor = pixel;
    backgroundKnown = true;
}
