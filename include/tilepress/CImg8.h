#ifndef TILEPRESS_CIMG8_H
#define TILEPRESS_CIMG8_H

/// \file
/// The palette image.

#include "tilepress/CImg.h"
#include "tilepress/ColorMap.h"

class Img8TileIterator;
namespace tilepress {
struct RowStorage;
}

/// One byte a pixel, an index into the image's own ColorMap. The background
/// colour is an index, 0 until it is set.
class TILEPRESS_API CImg8 : public CImg {
public:
    // Making: null on any failure, no error recorded.
    /// A bare object whose header is not set up.
    static CImg8* create();
    /// `map` is copied, null gives 256 black entries. All pixels 0.
    static CImg8* create(ImgULong width, ImgULong height, ColorMap* map, ImgAlignmentEnum alignment);
    /// Copies `length` bytes (at least 4), which must be the image's size; the caller keeps `data`.
    static CImg8* create(ImgULong width, ImgULong height, unsigned char* data, ImgULong length, ColorMap* map,
                         ImgAlignmentEnum alignment);
    /// Converts a bilevel `source`; null for every other kind.
    static CImg8* create(const IImg& source, ColorMap* map, ImgAlignmentEnum alignment);
    static CImg8* create(void*, ImgAlignmentEnum);  ///< reserved: null

    /// Frees the pixels; the colour map stays allocated.
    ~CImg8() override;
    IImg* clone() const override;  ///< always null

    ImgULong getBytesPerLine() const override;  ///< row length with its padding
    ImgULong getBackgroundColor() override;
    void setBackgroundColor(ImgULong index);  ///< an index into the colour map
    ColorMap* getColorMap() const;            ///< the image's

    // Header. The setters change the field they name and nothing that follows from it.
    ImgAlignmentEnum getAlignment();                   ///< padding of rows
    void setAlignment(ImgAlignmentEnum alignment);     ///< pixels are not moved
    ImgULong getPadBytes() const;                      ///< bytes after a row's pixels
    bool setExtents(ImgULong width, ImgULong height);  ///< false when a size is 0

    // Pixels, and who owns the block afterwards; blocks come from malloc.
    unsigned char* peekData() const;        ///< the image
    unsigned char** peekDataArray() const;  ///< the image: one pointer a row, spaced by the width
    unsigned char* ownData();               ///< the caller, who frees it
    /// Copies *data and nulls the pointer; the caller's block is neither adopted nor freed.
    ImgErr transferData(unsigned char** data, ImgULong length);
    /// The caller: copies `length` bytes. ImgErrCreate when `length` is not the image's size.
    ImgErr dupData(unsigned char* data, ImgULong length);
    Img8TileIterator* getTileIterator() const;  ///< reserved: null

    IImg* getSubImage(const ImgRect& rect) override;
    IImg* doRasOp(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) override;
    IImg* doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) override;
    void doRasOpInPlace(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) override;
    void doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) override;
    IImg* mirror(ImgMirT direction) override;
    IImg* rotate(double angle) override;
    using CImg::scale;
    IImg* scale(const ImgRect& source, ImgULong width, ImgULong height, ImgScaleAttr& attr) override;

private:
    friend struct tilepress::RowStorage;

    CImg8();
    bool initHeader(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight,
                    ImgAlignmentEnum alignment);
    bool initData();
    bool initData(unsigned char* data, ImgULong length);
    bool verifyHeader(ImgULong length) const;
    bool initColorMap(ColorMap* map);
    ImgULong calculateBackground();

    // transform/scale_colour.cpp
    CImg8* Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg8* Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg8* Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    // transform/rotate.cpp
    CImg8* mirrorX();
    CImg8* mirrorY();
    CImg8* rotate90();
    CImg8* rotateMinus90();
    CImg8* rotate180();
    CImg8* rotateGeneric(double degrees);
    CImg8* rotateShearX(int* table);
    CImg8* rotateShearY(int* table);
    // transform/rasop.cpp
    ImgErr rasOpSet(CImg8* dest, RasOpXfmAttr& attr, const CImg8& other);
    ImgErr rasOpSet(CImg8* dest, bool onlyOthers, ImgULong keepValue, ImgULong value);

    // The layout is part of the interface: add nothing, move nothing.
    unsigned char** rows;
    ImgULong padBytes;
    ImgULong rowBytes;
    ImgAlignmentEnum alignment;
    ColorMap* colorMap;
};

#endif
