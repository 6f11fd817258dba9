#pragma once

// The records of the binary interface as programs compiled long ago see them:
// fields in order, whatever the classes call them.

#include "tilepress/CImg1G4.h"

#include <cstring>

namespace layout {

struct Header {
    void* operations;
    uint32_t type, bitsPerSample, samplesPerPixel, bytesPerLine, totalBytes;
    uint32_t left, top, right, bottom;
    uint32_t tileWidth, tileHeight, backgroundColor;
    bool backgroundKnown;
    uint32_t numberOfTiles;
};
struct Bilevel : Header {
    unsigned char* pixels;
    uint32_t padBits, alignment, foreground, background;
};
struct Palette : Header {
    unsigned char** rows;
    uint32_t padBytes, rowBytes, alignment;
    void* colorMap;
};
struct Rgb : Header {
    uint32_t** rows;
    uint32_t order;
};
struct Tile {
    void* operations;
    unsigned char* data;
    int32_t* codingLine;
    int32_t codingCount;
    int32_t* referenceLine;
    int32_t referenceCount;
    int32_t bytePosition, bitPosition;
    uint32_t xOrigin, yOrigin;
};
struct Compressed : Header {
    uint32_t padBits, alignment, foreground, background;
    Tile** tileRows;
    int32_t **lineBufferA, **lineBufferB;
    uint32_t* tileLengths;
    uint32_t state[7];
};

/// The object as its record.
template <class Record, class Object>
Record read(const Object& object) {
    static_assert(sizeof(Record) == sizeof(Object));
    Record record;
    std::memcpy(static_cast<void*>(&record), static_cast<const void*>(&object), sizeof record);
    return record;
}

}  // namespace layout
