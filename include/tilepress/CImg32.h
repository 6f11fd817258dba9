#ifndef TILEPRESS_CIMG32_H
#define TILEPRESS_CIMG32_H

/// \file
/// The RGB image.

#include "tilepress/CImg.h"

class Img32TileIterator;
namespace tilepress {
struct RowStorage;
}

/// Four bytes a pixel: three colour components in the image's RGBOrder and a
/// byte that is none. Rows have no padding. The background colour is a pixel
/// value, 0 until it is set.
class TILEPRESS_API CImg32 : public CImg {
public:
    /// What a tile iterator delivers.
    enum TileFormat : uint32_t {
        UNCOMPRESSED = 1,       ///< every tile's pixels
        UNCOMPRESSED_NULL = 2,  ///< tiles that are all background are reported as empty
        RESERVED = 4            ///< tiles are counted, nothing is produced
    };

    // Making: null on any failure, no error recorded.
    /// A bare object whose header is not set up.
    static CImg32* create();
    /// All pixels 0.
    static CImg32* create(ImgULong width, ImgULong height, RGBOrder order);
    /// Copies the image's size from `data`; `length` is in bytes, at least that size. The caller keeps `data`.
    static CImg32* create(ImgULong width, ImgULong height, ImgULong* data, ImgULong length, RGBOrder order);
    /// Converts `source`. A refused conversion gives a blank image of its size.
    static CImg32* create(const IImg& source, RGBOrder order);
    /// Widens three-byte pixels; the orders are recorded, no component is moved. Source rows are padded to
    /// 32 bits with ImgAlignDword, else not at all.
    static CImg32* createFrom24(ImgULong width, ImgULong height, unsigned char* data, ImgULong length,
                                ImgAlignmentEnum alignment, RGBOrder sourceOrder, RGBOrder imageOrder);

    /// Frees the pixels.
    ~CImg32() override;
    IImg* clone() const override;  ///< a copy in RGBOrderRGB

    ImgULong getBackgroundColor() override;
    void setBackgroundColor(ImgULong pixel);  ///< four bytes as they lie in memory
    RGBOrder getRGBOrder() const;             ///< as the image was made

    // Pixels, and who owns the block afterwards; blocks come from malloc.
    ImgULong* peekData() const;        ///< the image
    ImgULong** peekDataArray() const;  ///< the image: one pointer a row
    ImgULong* ownData();               ///< the caller, who frees it
    /// Copies *data and nulls the pointer; the caller's block is neither adopted nor freed.
    ImgErr transferData(ImgULong** data, ImgULong length);
    /// The caller: copies the image's size; `length` is in bytes. ImgErrCreate when it is too short.
    ImgErr dupData(ImgULong* data, ImgULong length);
    /// Hands the image out in tiles; the caller deletes the iterator. Null for another format.
    Img32TileIterator* getTileIterator(ImgLong tileWidth, ImgLong tileHeight, TileFormat format);

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

    CImg32();
    bool initHeader(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight, RGBOrder order);
    bool initData();
    bool initData(ImgULong* data, ImgULong length);
    bool initDataFrom24(unsigned char* data, ImgULong length, ImgAlignmentEnum alignment, RGBOrder sourceOrder);
    bool verifyHeader(ImgULong length) const;
    ImgULong calculateBackground();

    // transform/scale_colour.cpp
    CImg32* Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg32* Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    CImg32* Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src);
    // transform/rotate.cpp
    CImg32* mirrorX();
    CImg32* mirrorY();
    CImg32* rotate90();
    CImg32* rotateMinus90();
    CImg32* rotate180();
    CImg32* rotateGeneric(double degrees);
    CImg32* rotateShearX(int* table);
    CImg32* rotateShearY(int* table);
    // transform/rasop.cpp
    ImgErr rasOpSet(CImg32* dest, RasOpXfmAttr& attr, const CImg32& other);
    ImgErr rasOpSet(CImg32* dest, bool onlyOthers, ImgULong keepValue, ImgULong value);

    // The layout is part of the interface: add nothing, move nothing.
    ImgULong** rows;
    RGBOrder rgbOrder;
};

#endif
