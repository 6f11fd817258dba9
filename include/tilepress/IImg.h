#ifndef TILEPRESS_IIMG_H
#define TILEPRESS_IIMG_H

/// \file
/// The interface through which every image is used, and the enumerations and
/// records that its operations take.

#include "tilepress/ImgErr.h"
#include "tilepress/ImgRect.h"

/// Kind of an image.
enum ImageType : uint32_t {
    ImageTypeBilevel = 1,    ///< CImg1
    ImageTypeBilevelG4 = 4,  ///< CImg1G4
    ImageTypePalette = 8,    ///< CImg8
    ImageTypeRGB = 32        ///< CImg32
};

/// Row padding of one-bit and one-byte images: 32 pads to 32 bits, every other
/// value to a whole byte.
enum ImgAlignmentEnum : uint32_t { ImgAlignNone = 0, ImgAlignByte = 8, ImgAlignDword = 32 };

/// Which colour sits in the low byte of a 32-bit pixel.
enum RGBOrder : uint32_t { RGBOrderRGB = 0, RGBOrderBGR = 1 };

/// How a scaling request changes the two dimensions.
enum ImageScaleType : uint32_t {
    ImageScaleSame = 0,
    ImageScaleEnlarge = 1,
    ImageScaleReduce = 2,
    ImageScaleReduceXEnlargeY = 3,
    ImageScaleEnlargeXReduceY = 4
};

/// Scaling attributes.
struct ImgScaleAttr {
    uint32_t depth;  ///< 32: reductions of bilevel images give a grey CImg32
};

/// Mirror direction; any other value means none.
enum ImgMirT : uint32_t {
    ImgMirX = 1,  ///< row order reversed
    ImgMirY = 2   ///< column order reversed
};

/// Code of a raster operation; 0 to 4 are accepted.
enum RasOpT : int32_t {
    RasOpAnd = 0,  ///< bilevel images: AND in the copying form, copy in place
    RasOpCopy = 1,
    RasOpCopy2 = 2,
    RasOpCopy3 = 3,  ///< bilevel images: does nothing in place
    RasOpFill = 4
};

/// Where and how a second image is combined into an image.
class RasOpXfmAttr {
public:
    uint32_t reserved1;         ///< not read
    uint32_t rowOffset;         ///< row that takes the second image's top row
    uint32_t columnOffset;      ///< column that takes its left column
    uint32_t reserved4;         ///< not read
    bool transparent;           ///< pixels equal to transparentValue are left out
    uint32_t transparentValue;  ///< a pixel value; the low byte for palette images
};

/// An image in memory.
///
/// Images are made by the static `create` operations of their classes and ended
/// by the virtual destructor. A transform never changes its source: it returns a
/// new image, which the caller owns, or null. Where an operation says "the image
/// itself", the result is the very object and must not be deleted as another.
class TILEPRESS_API IImg {
public:
    // The order is the binary interface; the number before each is its slot.
    // clang-format off
    /* 0*/ virtual ~IImg();
    /* 1*/ virtual ImgULong getBitsPerSample() const = 0;    ///< 1 or 8
    /* 2*/ virtual ImgULong getSamplesPerPixel() const = 0;  ///< 1; of RGB images 4
    /* 3*/ virtual ImgULong getBytesPerLine() const = 0;     ///< of the rows as they lie in memory
    /* 4*/ virtual ImgErr getLastError() = 0;  ///< the process's last error, not this image's
    /* 5*/ virtual ImgULong getHeight() const = 0;           ///< in pixels
    /* 6*/ virtual ImgULong getHeightInTiles() const = 0;    ///< tiles from top to bottom, 1 for an image that is not in tiles
    /* 7*/ virtual ImgULong getTotalBytes() const = 0;       ///< bytes of all pixels, or of all coded tiles
    /* 8*/ virtual ImgULong getNumberOfTiles() const = 0;    ///< tiles across times tiles down
    /* 9*/ virtual const ImgRect& getRect() const = 0;       ///< from (0, 0) to the last column and row; the image's own
    /*10*/ virtual ImgULong getTileHeight() const = 0;       ///< in pixels; the image's for one that is not in tiles
    /*11*/ virtual ImgULong getTileWidth() const = 0;        ///< as getTileHeight
    /*12*/ virtual ImageType getType() = 0;              ///< the image's class
    /*13*/ virtual ImgULong getWidth() const = 0;            ///< in pixels
    /*14*/ virtual ImgULong getWidthInTiles() const = 0;     ///< tiles from left to right
    /*15*/ virtual ImgULong getTop() const = 0;              ///< first row of the rectangle
    /*16*/ virtual ImgULong getLeft() const = 0;             ///< first column
    /*17*/ virtual ImgULong getBottom() const = 0;           ///< last row
    /*18*/ virtual ImgULong getRight() const = 0;            ///< last column
    /// The background in the pixel encoding of the image's kind; bilevel kinds compute it on first use.
    /*19*/ virtual ImgULong getBackgroundColor() = 0;
    /// The rectangle's pixels as a new image; null and ImgErrBadArgument when the rectangle is refused.
    /*20*/ virtual IImg* getSubImage(const ImgRect& rect) = 0;
    /*21*/ virtual IImg* applyFilter() = 0;  ///< the image itself
    /// Complements a CImg1 in place; the image itself.
    /*22*/ virtual IImg* invert() = 0;
    TILEPRESS_SLOTS_2(
        /// A copy in which every pixel, or every pixel that is not `keepValue`, is `value`.
        /*23*/ virtual IImg* doRasOp(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) = 0;,
        /// A copy into which `other`, of the same kind, is combined.
        /*24*/ virtual IImg* doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) = 0;)
    TILEPRESS_SLOTS_2(
        /// Every pixel, or every pixel that is not `keepValue`, becomes `value`.
        /*25*/ virtual void doRasOpInPlace(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) = 0;,
        /// `other`, of the same kind, is combined into the image.
        /*26*/ virtual void doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) = 0;)
    /// A copy with the kind's default parameters; see each class for what it does not keep.
    /*27*/ virtual IImg* clone() const = 0;
    /*28*/ virtual void drawArc() = 0;      ///< nothing is drawn
    /*29*/ virtual void drawCircle() = 0;   ///< nothing is drawn
    /*30*/ virtual void drawElipse() = 0;   ///< nothing is drawn
    /// One segment, both ends included, set or cleared; only CImg1 draws.
    /*31*/ virtual void drawLines(IntPtT* from, IntPtT* to, bool clear) = 0;
    /*32*/ virtual void drawPolyLine() = 0;   ///< nothing is drawn
    /*33*/ virtual void drawPolygon() = 0;    ///< nothing is drawn
    /*34*/ virtual void drawRectangle() = 0;  ///< nothing is drawn
    /*35*/ virtual void drawSpline() = 0;     ///< nothing is drawn
    /// A mirrored copy; the image itself for a direction that is neither ImgMirX nor ImgMirY.
    /*36*/ virtual IImg* mirror(ImgMirT direction) = 0;
    /// A copy turned counter-clockwise by `angle` degrees; snaps to right angles within 0.001 degrees.
    /*37*/ virtual IImg* rotate(double angle) = 0;
    TILEPRESS_SLOTS_3(
        /// The whole image, both dimensions times `factor`, rounded up.
        /*38*/ virtual IImg* scale(double factor, ImgScaleAttr& attr) = 0;,
        /// The source rectangle at the size of the destination rectangle.
        /*39*/ virtual IImg* scale(const ImgRect& source, const ImgRect& destination, ImgScaleAttr& attr) = 0;,
        /// The source rectangle at `width` by `height` pixels.
        /*40*/ virtual IImg* scale(const ImgRect& source, ImgULong width, ImgULong height, ImgScaleAttr& attr) = 0;)
    /*41*/ virtual bool stream(void* target) = 0;  ///< false
    /*42*/ virtual IImg* sxfm() = 0;               ///< the image itself
    /*43*/ virtual bool writeTIFF() = 0;           ///< false
    // clang-format on
};

#endif
