#ifndef TILEPRESS_CIMG1_H
#define TILEPRESS_CIMG1_H

/// \file
/// The uncompressed one-bit image.

#include "tilepress/CImg.h"

class CImg32;
class Img1TileIterator;

/// One bit a pixel, rows from the top, the leftmost pixel in the highest bit of
/// a row's first byte; 1 is foreground. Rows are padded to a byte or, with
/// ImgAlignDword, to 32 bits. The background colour is a pixel value, 0 or 1.
class TILEPRESS_API CImg1 : public CImg {
public:
    // Making: null on any failure; only the conversion form records a code.
    /// A bare object whose header is not set up.
    static CImg1* create();
    /// All pixels 0. The interpretations are the colours in which 0 and 1 are shown.
    static CImg1* create(ImgULong width, ImgULong height, ImgULong backgroundInterpretation,
                         ImgULong foregroundInterpretation, ImgAlignmentEnum alignment);
    /// Copies `length` bytes, which must be rows times bytes per row; the caller keeps `data`.
    static CImg1* create(ImgULong width, ImgULong height, unsigned char* data, ImgULong length,
                         ImgULong backgroundInterpretation, ImgULong foregroundInterpretation,
                         ImgAlignmentEnum alignment);
    /// Converts `source`. A refused conversion gives a blank image of its size, and ImgErrNone.
    static CImg1* create(const IImg& source, ImgULong backgroundInterpretation, ImgULong foregroundInterpretation,
                         ImgAlignmentEnum alignment);
    static CImg1* create(void*, ImgULong, ImgULong, ImgAlignmentEnum);  ///< reserved: null

    /// Frees the pixels.
    ~CImg1() override;
    /// A copy without padding and with the default interpretations; blank unless this image's alignment is 0.
    IImg* clone() const override;

    // Background and display colours.
    ImgULong getBackgroundColor() override;            ///< estimated from a sample on first use
    void setBackgroundColor(ImgULong color);           ///< ends the estimate: this is the background
    ImgULong getBackgroundInterpretation() const;      ///< the colour that 0 is shown in
    void setBackgroundInterpretation(ImgULong color);  ///< the colour that 0 is shown in
    ImgULong getForegroundInterpretation() const;      ///< the colour that 1 is shown in
    void setForegroundInterpretation(ImgULong color);  ///< the colour that 1 is shown in

    // Header. The setters change the field they name and nothing that follows from it.
    ImgAlignmentEnum getAlignment();                   ///< padding of rows, or of those of expanded images
    void setAlignment(ImgAlignmentEnum alignment);     ///< pixels are not moved
    ImgULong getPadBits() const;                       ///< bits after a row's pixels
    bool setExtents(ImgULong width, ImgULong height);  ///< false when a size is 0

    // Pixels, and who owns the block afterwards; blocks come from malloc.
    unsigned char* peekData() const;  ///< the image
    unsigned char* ownData();         ///< the caller, who frees it
    /// The image: adopts *data and nulls the pointer. ImgErrCreate when `length` is not the image's size.
    ImgErr transferData(unsigned char** data, ImgULong length);
    /// The caller: copies `length` bytes. ImgErrCreate when `length` is not the image's size.
    ImgErr dupData(unsigned char* data, ImgULong length);
    Img1TileIterator* getTileIterator() const;  ///< reserved: null

    IImg* getSubImage(const ImgRect& rect) override;
    IImg* invert() override;
    using CImg::doRasOp;
    IImg* doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) override;
    using CImg::doRasOpInPlace;
    void doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) override;
    void drawLines(IntPtT* from, IntPtT* to, bool clear) override;
    IImg* mirror(ImgMirT direction) override;
    IImg* rotate(double angle) override;
    using CImg::scale;
    IImg* scale(const ImgRect& source, ImgULong width, ImgULong height, ImgScaleAttr& attr) override;

private:
    friend class CImg1G4;  // expands into bilevel images and turns them

    CImg1();
    bool initHeader(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight,
                    ImgULong backgroundInterpretation, ImgULong foregroundInterpretation, ImgAlignmentEnum alignment);
    bool initData();
    bool initData(unsigned char* data, ImgULong length);
    bool verifyHeader(ImgULong length) const;
    ImgULong calculateBackground();

    // transform/scale_bilevel.cpp, scale_grey.cpp
    CImg1* Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg1* Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg1* Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg1* QuickReduce_bkg(ImgULong dstWidth, ImgULong dstHeight, ImgRect& src, ImgULong background);
    CImg32* Reduce_greyscale(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    // transform/rotate.cpp
    CImg1* mirrorX();
    CImg1* mirrorY();
    CImg1* rotate90();
    CImg1* rotateMinus90();
    CImg1* rotate180();
    CImg1* rotateGeneric(double degrees);
    CImg1* rotateShearX(int* table);
    CImg1* rotateShearY(int* table);
    // transform/rasop.cpp
    ImgErr rasOpAnd(CImg1* dest, RasOpXfmAttr& attr, const CImg1& other);
    ImgErr rasOpOr(CImg1* dest, RasOpXfmAttr& attr, const CImg1& other);
    ImgErr rasOpSet(CImg1* dest, RasOpXfmAttr& attr, const CImg1& other);
    ImgErr rasOpSet(CImg1* dest, bool onlyOthers, ImgULong keepValue, ImgULong value);

    // The layout is part of the interface: add nothing, move nothing.
    unsigned char* pixels;
    ImgULong padBits;
    ImgAlignmentEnum alignment;
    ImgULong foregroundInterpretation;
    ImgULong backgroundInterpretation;
};

#endif
