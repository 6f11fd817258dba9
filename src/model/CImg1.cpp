#include "tilepress/CImg1.h"

#include "foundation/bits.h"
#include "foundation/heap.h"
#include "model/bilevel_row.h"
#include "model/temporary.h"
#include "tilepress/Export.h"

#include <algorithm>
#include <cstring>
#include <new>

using namespace tilepress;

// --- header and storage ---

CImg1::CImg1()
    : CImg(ImageTypeBilevel, kUnset), pixels(nullptr), padBits(kUnset), alignment(ImgAlignNone),
      foregroundInterpretation(kUnset), backgroundInterpretation(kUnset) {}

bool CImg1::initHeader(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH, ImgULong background,
                       ImgULong foreground, ImgAlignmentEnum rowAlignment) {
    if (!setExtentsAndTiles(width, height, tileW, tileH)) return false;
    backgroundInterpretation = background;
    foregroundInterpretation = foreground;
    alignment = rowAlignment;
    const BilevelRow row(width, alignment);
    padBits = row.padBits;
    bytesPerLine = row.bytes;
    bitsPerSample = samplesPerPixel = 1;
    return true;
}

bool CImg1::verifyHeader(ImgULong length) const {
    const ImgULong width = getWidth(), height = getHeight();
    const BilevelRow row(width, alignment);
    return width > 0 && height > 0 && bitsPerSample == 1 && samplesPerPixel == 1 && bytesPerLine == row.bytes &&
           padBits == row.padBits && totalBytes == std::uint64_t{height} * row.bytes && length == totalBytes;
}

bool CImg1::initData() {
    if (numberOfTiles == 0) return false;
    if (numberOfTiles > 1) return true;
    const std::uint64_t bytes = std::uint64_t{getHeight()} * bytesPerLine;
    if (bytes > UINT32_MAX) return false;
    totalBytes = static_cast<ImgULong>(bytes);
    pixels = allocate<unsigned char>(bytes);
    return pixels != nullptr;
}

bool CImg1::initData(unsigned char* data, ImgULong length) {
    if (!data || !initData()) return false;
    if (numberOfTiles > 1) return true;
    if (!verifyHeader(length)) return false;
    std::memcpy(pixels, data, totalBytes);
    return true;
}

// --- making and ending ---

CImg1* CImg1::create() { return new (std::nothrow) CImg1; }

CImg1* CImg1::create(ImgULong width, ImgULong height, ImgULong background, ImgULong foreground,
                     ImgAlignmentEnum rowAlignment) {
    return finished(create(), [&](CImg1& image) {
        return image.initHeader(width, height, width, height, background, foreground, rowAlignment) && image.initData();
    });
}

CImg1* CImg1::create(ImgULong width, ImgULong height, unsigned char* data, ImgULong length, ImgULong background,
                     ImgULong foreground, ImgAlignmentEnum rowAlignment) {
    return finished(create(), [&](CImg1& image) {
        return image.initHeader(width, height, width, height, background, foreground, rowAlignment) &&
               image.initData(data, length);
    });
}

CImg1* CImg1::create(const IImg& source, ImgULong background, ImgULong foreground, ImgAlignmentEnum rowAlignment) {
    CImg1* image = create(source.getWidth(), source.getHeight(), background, foreground, rowAlignment);
    if (!image) return nullptr;
    // Kept: a refused conversion leaves a blank image and says success.
    Export::xfm(*image, source);
    imgRaise(ImgErrNone);
    return image;
}

CImg1* CImg1::create(void*, ImgULong, ImgULong, ImgAlignmentEnum) { return nullptr; }

CImg1::~CImg1() {
    std::free(pixels);
    rect.setRect(0, 0);
    tileWidth = tileHeight = numberOfTiles = 0;
}

// Kept: the copy has alignment 0, so the pixels of an image of another alignment stay behind.
IImg* CImg1::clone() const { return create(*this, 0x00FFFFFF, 0xFF000000, ImgAlignNone); }

// --- pixels ---

ImgErr CImg1::transferData(unsigned char** data, ImgULong length) {
    if (!verifyHeader(length) || !data) return imgRaise(ImgErrCreate);
    if (pixels != *data) std::free(pixels);
    pixels = *data;
    *data = nullptr;
    return imgRaise(ImgErrNone);
}

ImgErr CImg1::dupData(unsigned char* data, ImgULong length) {
    if (!verifyHeader(length) || !data) return imgRaise(ImgErrCreate);
    if (!pixels && !initData()) return imgRaise(ImgErrCreate);
    std::memmove(pixels, data, length);
    return imgRaise(ImgErrNone);
}

unsigned char* CImg1::ownData() {
    unsigned char* block = pixels;
    pixels = nullptr;
    return block;
}

unsigned char* CImg1::peekData() const { return pixels; }
Img1TileIterator* CImg1::getTileIterator() const { return nullptr; }

// --- header fields ---

ImgULong CImg1::getBackgroundInterpretation() const { return backgroundInterpretation; }
void CImg1::setBackgroundInterpretation(ImgULong color) { backgroundInterpretation = color; }
ImgULong CImg1::getForegroundInterpretation() const { return foregroundInterpretation; }
void CImg1::setForegroundInterpretation(ImgULong color) { foregroundInterpretation = color; }
ImgULong CImg1::getPadBits() const { return padBits; }
ImgAlignmentEnum CImg1::getAlignment() { return alignment; }

// Kept: these two change the field they name and leave row length and byte count behind.
void CImg1::setAlignment(ImgAlignmentEnum value) { alignment = value; }
bool CImg1::setExtents(ImgULong width, ImgULong height) {
    if (width == 0 || height == 0) return false;
    rect.setRect(width, height);
    return true;
}

// --- background ---

/// Set bits of the `count` bytes at data, data + 2, data + 4 and so on.
static std::uint64_t countEverySecondByte(const unsigned char* data, std::size_t count) {
    std::uint64_t total = 0;
    const auto add = [&total](std::uint64_t v) {
        v -= v >> 1 & 0x5555555555555555;
        v = (v & 0x3333333333333333) + (v >> 2 & 0x3333333333333333);
        v = (v + (v >> 4)) & 0x0F0F0F0F0F0F0F0F;
        total += v * 0x0101010101010101 >> 56;
    };
    // A word reads one byte past its fourth; the last ones are left to the bytewise loop.
    for (; count > 4; count -= 4, data += 8) add(loadWord(data) & 0xFF00FF00FF00FF00);
    for (; count > 0; --count, data += 2) add(*data);
    return total;
}

ImgULong CImg1::calculateBackground() {
    if (backgroundKnown) return backgroundColor;
    const std::uint64_t rowBytes = bytesPerLine, end = pixels ? totalBytes : 0;
    const std::uint64_t sampledRows = getHeight() / 8 + getHeight() / 2;
    // Kept: the position runs on from row to row, which makes the sample a chequerboard over the first
    // five eighths of the image.
    std::uint64_t position = 0, set = 0;
    for (std::uint64_t r = 0; r < sampledRows && position < end; ++r) {
        const std::uint64_t skipped = r % 2;
        position += skipped;
        if (skipped >= rowBytes) continue;
        const std::uint64_t count = (rowBytes - skipped - 1) / 2 + 1;
        const std::uint64_t there = position < end ? (end - position + 1) / 2 : 0;
        set += countEverySecondByte(pixels + position, static_cast<std::size_t>(std::min(count, there)));
        position += 2 * count;
    }
    backgroundColor = set > std::uint64_t{2} * totalBytes ? 1 : 0;
    backgroundKnown = true;
    return backgroundColor;
}

ImgULong CImg1::getBackgroundColor() { return calculateBackground(); }

void CImg1::setBackgroundColor(ImgULong color) {
    backgroundColor = color;
    backgroundKnown = true;
}
