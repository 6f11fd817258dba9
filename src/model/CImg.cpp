#include "tilepress/CImg.h"

#include <cmath>
#include <cstdint>

// --- end and beginning ---

IImg::~IImg() = default;
CImg::~CImg() = default;  // the rectangle clears itself

CImg::CImg(ImageType kind, ImgULong unset)
    : type(kind), bitsPerSample(unset), samplesPerPixel(unset), bytesPerLine(unset), totalBytes(unset),
      tileWidth(unset), tileHeight(unset), backgroundColor(unset), backgroundKnown(false), numberOfTiles(unset) {
    rect.setRect(unset, unset, unset, unset);
}

/// Tiles that cover an extent; 0 while there is no tile size.
static std::uint64_t tilesOver(ImgULong extent, ImgULong tile) {
    return tile == 0 ? 0 : (std::uint64_t{extent} + tile - 1) / tile;
}

bool CImg::setExtentsAndTiles(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH) {
    if (width == 0 || height == 0 || tileW == 0 || tileH == 0) return false;
    const std::uint64_t across = tilesOver(width, tileW), down = tilesOver(height, tileH);
    if (across * down > UINT32_MAX) return false;
    rect.setRect(width, height);
    tileWidth = tileW;
    tileHeight = tileH;
    numberOfTiles = static_cast<ImgULong>(across * down);
    return true;
}

/// Whether extent / tile is whole to within a ten-thousandth; false for a tile of 0.
static bool dividesEvenly(ImgULong extent, ImgULong tile) {
    const double quotient = static_cast<double>(extent) / static_cast<double>(tile);
    return std::floor((quotient - std::floor(quotient)) * 10000) == 0;
}

bool CImg::areTileExtentsValid(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH) {
    return dividesEvenly(width, tileW) && dividesEvenly(height, tileH);
}

// --- header ---

ImgULong CImg::getBitsPerSample() const { return bitsPerSample; }
ImgULong CImg::getSamplesPerPixel() const { return samplesPerPixel; }
ImgULong CImg::getBytesPerLine() const { return bytesPerLine; }
ImgErr CImg::getLastError() { return CImgErr::get(); }
ImgULong CImg::getHeight() const { return rect.getHeight(); }
ImgULong CImg::getHeightInTiles() const { return static_cast<ImgULong>(tilesOver(getHeight(), tileHeight)); }
ImgULong CImg::getTotalBytes() const { return totalBytes; }
ImgULong CImg::getNumberOfTiles() const { return numberOfTiles; }
const ImgRect& CImg::getRect() const { return rect; }
ImgULong CImg::getTileHeight() const { return tileHeight; }
ImgULong CImg::getTileWidth() const { return tileWidth; }
ImageType CImg::getType() { return type; }
ImgULong CImg::getWidth() const { return rect.getWidth(); }
ImgULong CImg::getWidthInTiles() const { return static_cast<ImgULong>(tilesOver(getWidth(), tileWidth)); }
ImgULong CImg::getTop() const { return rect.getTop(); }
ImgULong CImg::getLeft() const { return rect.getLeft(); }
ImgULong CImg::getBottom() const { return rect.getBottom(); }
ImgULong CImg::getRight() const { return rect.getRight(); }
bool CImg::isBackgroundKnown() const { return backgroundKnown; }

// --- placeholders ---

// Kept: these return the image itself, not a copy; a caller must not delete the result as another.
IImg* CImg::applyFilter() { return this; }
IImg* CImg::invert() { return this; }
IImg* CImg::doRasOp(RasOpT, bool, ImgULong, ImgULong) { return this; }
IImg* CImg::doRasOp(RasOpT, RasOpXfmAttr&, const IImg&) { return this; }
IImg* CImg::sxfm() { return this; }

void CImg::doRasOpInPlace(RasOpT, bool, ImgULong, ImgULong) {}
void CImg::doRasOpInPlace(RasOpT, RasOpXfmAttr&, const IImg&) {}
void CImg::drawArc() {}
void CImg::drawCircle() {}
void CImg::drawElipse() {}
void CImg::drawLines(IntPtT*, IntPtT*, bool) {}
void CImg::drawPolyLine() {}
void CImg::drawPolygon() {}
void CImg::drawRectangle() {}
void CImg::drawSpline() {}
bool CImg::stream(void*) { return false; }
bool CImg::writeTIFF() { return false; }
