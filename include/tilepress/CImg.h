#ifndef TILEPRESS_CIMG_H
#define TILEPRESS_CIMG_H

/// \file
/// The base of every image: the common header and its accessors.

#include "tilepress/IImg.h"

/// Common header of the four kinds of image.
class TILEPRESS_API CImg : public IImg {
public:
    ~CImg() override;

    ImgULong getBitsPerSample() const override;
    ImgULong getSamplesPerPixel() const override;
    ImgULong getBytesPerLine() const override;
    ImgErr getLastError() override;
    ImgULong getHeight() const override;
    ImgULong getHeightInTiles() const override;
    ImgULong getTotalBytes() const override;
    ImgULong getNumberOfTiles() const override;
    const ImgRect& getRect() const override;
    ImgULong getTileHeight() const override;
    ImgULong getTileWidth() const override;
    ImageType getType() override;
    ImgULong getWidth() const override;
    ImgULong getWidthInTiles() const override;
    ImgULong getTop() const override;
    ImgULong getLeft() const override;
    ImgULong getBottom() const override;
    ImgULong getRight() const override;

    // Placeholders: they carry no behaviour of their own.
    IImg* applyFilter() override;
    IImg* invert() override;
    IImg* doRasOp(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) override;
    IImg* doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) override;
    void doRasOpInPlace(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) override;
    void doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) override;
    void drawArc() override;
    void drawCircle() override;
    void drawElipse() override;
    void drawLines(IntPtT* from, IntPtT* to, bool clear) override;
    void drawPolyLine() override;
    void drawPolygon() override;
    void drawRectangle() override;
    void drawSpline() override;
    bool stream(void* target) override;
    IImg* sxfm() override;
    bool writeTIFF() override;

    // Written once for every kind (transform/scale.cpp).
    using IImg::scale;
    IImg* scale(double factor, ImgScaleAttr& attr) override;
    IImg* scale(const ImgRect& source, const ImgRect& destination, ImgScaleAttr& attr) override;

    /// Slot 44: whether the background has been set or computed.
    virtual bool isBackgroundKnown() const;

    /// How a change of size changes each dimension.
    static ImageScaleType ScaleHow(ImgULong srcWidth, ImgULong srcHeight, ImgULong dstWidth, ImgULong dstHeight);

    /// Horizontal shifts of a shear rotation by `angle` radians, for an image of this size; the caller
    /// frees the table. At least max(width, height) entries; null when memory runs out.
    int* makeRotationXShearRoth(double angle);
    /// The vertical shifts; as makeRotationXShearRoth.
    int* makeRotationYShearRoth(double angle);

protected:
    /// Every field but the kind reads `unset`, until a header is set up.
    CImg(ImageType kind, ImgULong unset);
    CImg(const CImg&) = default;             ///< field by field
    CImg& operator=(const CImg&) = default;  ///< field by field

    /// Whether the image divides into whole tiles, to within a ten-thousandth of a tile.
    static bool areTileExtentsValid(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight);
    /// Brings an angle within `tolerance` of a right angle onto it (transform/rotate.cpp).
    static void snap90(double& angle, double tolerance);

    /// Sets rectangle, tile size and tile count; false when a size is 0 or the count passes 32 bits.
    bool setExtentsAndTiles(ImgULong width, ImgULong height, ImgULong tileW, ImgULong tileH);

    // The layout is part of the interface: add nothing, move nothing.
    ImageType type;            ///< getType
    ImgULong bitsPerSample;    ///< getBitsPerSample
    ImgULong samplesPerPixel;  ///< getSamplesPerPixel
    ImgULong bytesPerLine;     ///< getBytesPerLine of all but palette images
    ImgULong totalBytes;       ///< getTotalBytes
    ImgRect rect;              ///< getRect
    ImgULong tileWidth;        ///< getTileWidth
    ImgULong tileHeight;       ///< getTileHeight
    ImgULong backgroundColor;  ///< getBackgroundColor, once it is known
    bool backgroundKnown;      ///< isBackgroundKnown
    ImgULong numberOfTiles;    ///< getNumberOfTiles
};

#endif
