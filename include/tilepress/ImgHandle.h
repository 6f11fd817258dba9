#ifndef TILEPRESS_IMGHANDLE_H
#define TILEPRESS_IMGHANDLE_H

/** \file
 * Images as handles: the interface for programs that want no classes.
 *
 * ImgNew makes a handle of a type, its `create` operation gives it pixels, the others work on it, `free` ends it. Each
 * handle carries the operations of its type, so callers need not switch on types. All of them check nothing but what
 * keeps memory safe; failures are a null handle or a zero result, and no error is recorded.
 *
 *     ImgHandle* page = ImgNew(ImgTypeBilevel);
 *     if (ImgCreateBilevel(page, 2480, 3508, 32, NULL)) {
 *         ImgHandle* turned = page->rotate(page, 90);
 *         if (turned) turned->free(&turned, NULL);
 *     }
 *     if (page) page->free(&page, NULL);
 *
 * A handle is for one thread at a time. Pixel blocks come from MemAllocate; one that the caller hands over must come
 * from there too, or from malloc of the same C run-time library. The header and the data of a handle are open to
 * callers, who keep them consistent.
 */

#include "tilepress/api.h"
#include "tilepress/support.h"

/** Type codes: what a handle holds. They are not the ImageType values of the classes. */
enum {
    ImgTypeNone = 0,     /**< nothing; the handle has no operations */
    ImgTypeBilevel = 1,  /**< 1 bit a pixel, the leftmost in the highest bit; Img1Header, `data` is the block */
    ImgTypePalette8 = 2, /**< 1 byte a pixel, an index into a colour table; Img8Header, `data` are row pointers */
    ImgTypeRGB24 = 4,    /**< 3 bytes a pixel, red first; Img24Header, `data` are row pointers */
    ImgTypeTiffG4 = 8,   /**< bilevel as Group 4 tiles; ImgG4Header, `data` are tile pointers */
    ImgTypeRGB32 = 16,   /**< 4 bytes a pixel, red first; Img32Header, `data` are row pointers */
    ImgTypeRGBA32 = 32   /**< the same with the fourth byte in use */
};

/** Codes of the raster operations. */
enum { ImgRasClear = 0, ImgRasSet = 1, ImgRasInvert = 2, ImgRasFill = 3, ImgRasAnd = 5, ImgRasOr = 6, ImgRasCopy = 7 };

/** Four corners: top left, bottom left, bottom right, top right. */
typedef struct ImgQuad {
    /** \{
     * Columns and rows of the corners. */
    int32_t x0, y0, x1, y1, x2, y2, x3, y3;
    /** \} */
} ImgQuad;

/** What every header begins with. Width and height of an image are those between corners 0 and 2 of `srcQuad`. */
typedef struct ImgQuads {
    ImgQuad srcQuad;  /**< the image's own corners */
    ImgQuad workQuad; /**< set with srcQuad, then not used */
    ImgQuad dstQuad;  /**< where to paste or how large to render; ImgSetDstRect */
} ImgQuads;

/** Header of a bilevel image. */
typedef struct Img1Header {
    ImgQuads quads;        /**< its corners */
    uint32_t padBits;      /**< bits after each row's pixels */
    uint32_t bytesPerLine; /**< 0 for unaligned rows, which follow each other bit by bit */
    uint32_t alignBits;    /**< 8, 16 or 32; 0 unaligned */
    uint32_t bitSense;     /**< 1 when made; `convert` to another sense inverts */
    int32_t rotation;      /**< degrees, for `render` */
    uint32_t dataSize;     /**< bytes of the block */
    int32_t mirror;        /**< for `render`: 1 rows reversed, 2 columns reversed */
    uint32_t reserved;     /**< 0 */
} Img1Header;

/** Header of a palette image. */
typedef struct Img8Header {
    ImgQuads quads;         /**< its corners */
    uint32_t padBytes;      /**< bytes after each row's pixels */
    uint32_t bytesPerLine;  /**< width and padding */
    ColorTable* colorTable; /**< the image's own; `free` leaves it to whoever knows it */
    ColorXfm* transform;    /**< kept between conversions to other tables */
    uint32_t alignBits;     /**< 8, 16 or 32 */
    int32_t rotation;       /**< degrees, for `render` */
    uint32_t dataSize;      /**< bytes of the block */
    int32_t mirror;         /**< for `render` */
} Img8Header;

/** Header of an image of 3 bytes a pixel. */
typedef struct Img24Header {
    ImgQuads quads;        /**< its corners */
    uint32_t padBytes;     /**< bytes after each row's pixels */
    uint32_t bytesPerLine; /**< 3 times width and padding */
    uint32_t alignBits;    /**< 8 or 32 */
    int32_t rotation;      /**< degrees, for `render` */
    uint32_t dataSize;     /**< bytes of the block */
    int32_t mirror;        /**< for `render` */
} Img24Header;

/** Header of an image of 4 bytes a pixel. */
typedef struct Img32Header {
    ImgQuads quads;        /**< its corners */
    uint32_t bytesPerLine; /**< 4 times width */
    uint32_t channelFlag;  /**< not 0: the fourth byte is in use, and the type ImgTypeRGBA32 */
    int32_t rotation;      /**< degrees, for `render` */
    uint32_t dataSize;     /**< bytes of the block, until ImgSetMirFlag */
    int32_t mirror;        /**< for `render` */
} Img32Header;

/** A tile of a compressed image. */
typedef struct ImgG4TileRec {
    void* tileData;       /**< the tile's coded bytes */
    uint32_t state[4];    /**< not used */
    uint32_t decodeState; /**< 0 */
    uint32_t decodeFlag;  /**< 1 */
    uint32_t originX;     /**< the tile's left column */
    uint32_t originY;     /**< the tile's top row */
} ImgG4TileRec;

/** Header of a compressed image. Tiles are counted in rows from the top left. */
typedef struct ImgG4Header {
    ImgQuads quads;          /**< its corners */
    uint32_t bytesPerLine;   /**< of the expanded rows: width / 8 rounded up */
    int32_t rotation;        /**< degrees, for `render` */
    uint32_t totalBytes;     /**< of all tiles */
    int32_t mirror;          /**< for `render` */
    ImgG4TileRec** tileRows; /**< the first record of each row of tiles */
    void** columnBufA;       /**< a work buffer for each column of tiles: 4 bytes a column and 24 */
    void** columnBufB;       /**< another set */
    uint32_t* byteCounts;    /**< of each tile */
    uint32_t tileWidth;      /**< in pixels */
    uint32_t tileHeight;     /**< in pixels */
    uint32_t reserved[8];    /**< 0 */
} ImgG4Header;

/** What `convert` makes. */
typedef struct ImgConvertDesc {
    uint32_t flags;               /**< 1, 2, 4, 32, 16, tested in this order, name the type; none of them keeps it */
    uint32_t bitSense;            /**< bilevel to bilevel: another sense than the source's inverts */
    const ColorTable* colorTable; /**< palette to palette: the table to map to, null for the source's own */
} ImgConvertDesc;

/** Changes the pixels of one image. */
typedef struct ImgRasOp1Desc {
    uint32_t op;         /**< ImgRasClear, ImgRasSet, ImgRasInvert or ImgRasFill */
    uint32_t inPlace;    /**< 1: the image itself; else a clone, which is returned */
    uint32_t keepColorA; /**< not 0: pixels of colorA stay */
    uint32_t keepColorB; /**< not 0: pixels of colorB stay; with both nothing changes */
    uint32_t colorB;     /**< bilevel 0 or not; palette index; RGB 0xRRGGBB */
    uint32_t colorA;     /**< as colorB */
} ImgRasOp1Desc;

/** Combines an image into another. */
typedef struct ImgRasOp2Desc {
    uint32_t op;             /**< ImgRasAnd, ImgRasOr or ImgRasCopy */
    uint32_t inPlace;        /**< 1: into the destination; else into a clone of it, which is returned */
    uint32_t scaleFirst;     /**< 1: the source is rendered to the destination's size, and `placed` cleared */
    uint32_t renderArg1;     /**< not used */
    uint32_t placed;         /**< 1: the source is pasted at a position, whatever the operation */
    const int32_t* position; /**< four corners as in ImgQuad; null: the source's dstQuad */
    uint32_t reserved[4];    /**< not used */
    uint32_t renderArg2;     /**< not used */
} ImgRasOp2Desc;

/** An image in memory: see the record below. */
typedef struct ImgHandle ImgHandle;

/* Operations, by the place where they stand in a handle. */

/** Has the arguments of its type: the ImgCreate functions below call it. */
typedef void(TILEPRESS_CALL* ImgCreateOp)(void);
/** \{
 * An operation: see the member of ImgHandle that holds it. */
typedef uint32_t(TILEPRESS_CALL* Img1CreateOp)(ImgHandle* image, uint32_t width, uint32_t height, uint32_t alignBits,
                                               void* data);
typedef uint32_t(TILEPRESS_CALL* Img8CreateOp)(ImgHandle* image, uint32_t width, uint32_t height, uint32_t alignBits,
                                               const ColorTable* palette, void* data);
typedef Img1CreateOp Img24CreateOp;
typedef uint32_t(TILEPRESS_CALL* Img32CreateOp)(ImgHandle* image, uint32_t width, uint32_t height, uint16_t channelFlag,
                                                void* data);
typedef uint32_t(TILEPRESS_CALL* ImgTIFFG4CreateOp)(ImgHandle* image, uint32_t width, uint32_t height,
                                                    uint32_t tileWidth, uint32_t tileHeight, uint32_t ignored,
                                                    const uint32_t* byteCounts, void** tileData);
typedef void*(TILEPRESS_CALL* ImgFreeOp)(ImgHandle** where, void* keep);
typedef ImgHandle*(TILEPRESS_CALL* ImgRenderOp)(ImgHandle* image, uint32_t width, uint32_t height, const void* header,
                                                uint32_t arg1, uint32_t arg2, uint32_t alignBits);
typedef ImgHandle*(TILEPRESS_CALL* ImgRotateOp)(ImgHandle* image, double degrees);
typedef ImgHandle*(TILEPRESS_CALL* ImgMirrorOp)(ImgHandle* image, int direction);
typedef ImgHandle*(TILEPRESS_CALL* ImgSubImageOp)(ImgHandle* image, const int32_t* corners);
typedef uint32_t(TILEPRESS_CALL* ImgReservedOp)(ImgHandle* image);
typedef ImgHandle*(TILEPRESS_CALL* ImgConvertOp)(ImgHandle* image, const ImgConvertDesc* target);
typedef uint32_t(TILEPRESS_CALL* ImgSizeOp)(ImgHandle* image);
typedef uint32_t(TILEPRESS_CALL* ImgSerializeOp)(ImgHandle* image, void** buffer, uint32_t* size);
typedef ImgHandle*(TILEPRESS_CALL* ImgDeserializeOp)(void* buffer);
typedef ImgHandle*(TILEPRESS_CALL* ImgCloneOp)(ImgHandle* image);
typedef ImgHandle*(TILEPRESS_CALL* ImgRasOp1Op)(ImgHandle* image, const ImgRasOp1Desc* desc, uint32_t value);
typedef ImgHandle*(TILEPRESS_CALL* ImgRasOp2Op)(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination);
/** \} */

/**
 * An image. Operations that return a handle give it to the caller, who ends it with its `free`.
 *
 * Bilevel images with unaligned rows can be made, cloned and filled, and no more.
 */
struct ImgHandle {
    uint32_t type; /**< a type code */
    void* header;  /**< the header of that type; null before `create` */
    void* data;    /**< pixels: see the type codes; null before `create` */
    /** Makes the image: 1, or 0. Called once, before any other. */
    ImgCreateOp create;
    /** Ends the image and clears `*where`. The pixel block that is `keep` (of a compressed image, the array of tile
     *  pointers) is not released but returned; else null. A palette image leaves its colour table behind. */
    ImgFreeOp free;
    /** A new image of that very size: the image mirrored and rotated as `header` says (null: its own header), then
     *  scaled. A size of 0 takes that of the header's dstQuad. A reduced bilevel pixel is set when any of its cell is.
     *  Compressed images render to bilevel ones; null for a damaged one. arg1 and arg2 are not used. */
    ImgRenderOp render;
    /** A new image turned counter-clockwise, of the same size but for odd multiples of 90 degrees, which are
     *  recognised only when exact; what it does not cover is 0. Compressed images: null. */
    ImgRotateOp rotate;
    /** A new image with its rows (1) or its columns (2) in reverse order; any other direction gives the image itself.
     *  Compressed images: null. */
    ImgMirrorOp mirror;
    /** A new image of a region that lies in the image, else null. Corners are (x, y) four times: bottom left,
     *  top left, top right, bottom right. Compressed images: null. */
    ImgSubImageOp subImage;
    ImgReservedOp reserved; /**< 0 */
    /** A new image of another type. Bilevel to palette: 0 where set, 255 where clear, in a grey table; to RGB: black
     *  and white. Colours to bilevel: set where dark. Nothing but palette images becomes palette images; null. */
    ImgConvertOp convert;
    ImgSizeOp getWidth;  /**< from srcQuad, whatever the type code */
    ImgSizeOp getHeight; /**< from srcQuad, whatever the type code */
    /** Compressed images: see TiffG4Serialize. Others: 0. */
    ImgSerializeOp serialize;
    /** Compressed images: see TiffG4Deserialize. Others: null. */
    ImgDeserializeOp deserialize;
    /** A copy with the same rows. Null slot in compressed images. */
    ImgCloneOp clone;
    ImgRasOp1Op rasOp1; /**< See Img1RasOp1. Null slot in compressed images. */
    ImgRasOp2Op rasOp2; /**< See Img1RasOp2. Null slot in compressed images. */
};

#if defined(__cplusplus)
static_assert(sizeof(void*) != 4 ||
                  (sizeof(ImgHandle) == 72 && sizeof(ImgG4Header) == 168 && sizeof(ImgG4TileRec) == 36 &&
                   sizeof(Img1Header) == 128 && sizeof(Img8Header) == 128 && sizeof(Img24Header) == 120 &&
                   sizeof(Img32Header) == 116 && sizeof(ImgRasOp2Desc) == 44),
              "the records are part of the binary interface");
#endif

TILEPRESS_C_BEGIN

/** A handle without pixels. Type 0 gives one without operations, which MemFree releases. Null for other codes than the
 *  type codes, and when memory runs out. */
TILEPRESS_API ImgHandle* TILEPRESS_CALL ImgNew(uint32_t type);
/** In pixels; 0 for a type code that is none, without a header, or for null. */
TILEPRESS_API uint32_t TILEPRESS_CALL ImgGetWidth(ImgHandle* image);
/** In pixels; 0 for a type code that is none, without a header, or for null. */
TILEPRESS_API uint32_t TILEPRESS_CALL ImgGetHeight(ImgHandle* image);

/* Setters store what `render` and pasting read; they return the handle, and leave one without a header as it is. */

/** Copies four corners into dstQuad. */
TILEPRESS_API ImgHandle* TILEPRESS_CALL ImgSetDstRect(ImgHandle* image, const int32_t* corners);
/** Stores whole degrees, rounded toward 0. */
TILEPRESS_API ImgHandle* TILEPRESS_CALL ImgSetRotation(ImgHandle* image, double degrees);
/** Stores the mirror flag; of images of 4 bytes a pixel it replaces the data size too. */
TILEPRESS_API ImgHandle* TILEPRESS_CALL ImgSetMirFlag(ImgHandle* image, int32_t flag);

/** The `free` of compressed images that `create` made. Leaves a revived one as it is: that ends with its block. */
TILEPRESS_API void* TILEPRESS_CALL ImgTIFFG4Free(ImgHandle** where, void* keep);

/**
 * Writes a compressed image into one block, which can be stored and revived at any address.
 *
 * \param buffer  receives the block, which the caller releases with free or MemFree; null when it cannot be made
 * \param size    receives its bytes, or 0
 * \return 1 in every case; for images of other types nothing is stored
 */
TILEPRESS_API uint32_t TILEPRESS_CALL TiffG4Serialize(ImgHandle* image, void** buffer, uint32_t* size);
/**
 * Revives a block in place, also one written on a machine of the other byte order. `*out` receives the block as a
 * handle, or null when its header is no header of a compressed image; the block may then have been changed.
 *
 * The block must lie as malloc aligns and come whole from TiffG4Serialize of a library with pointers of the same size:
 * its length is not known here, so what it says of itself is believed.
 *
 * \return 1 in every case
 */
TILEPRESS_API uint32_t TILEPRESS_CALL TiffG4Deserialize(ImgHandle** out, void* buffer);

/** \{
 * Changes the pixels of one image. \return the image or its clone; null for an unknown operation or no memory.
 *
 * Bilevel: clear acts for value 0 only, set for another only, fill for any. Palette: all three store `value`, invert
 * changes nothing. RGB: only fill acts, with the colour 0xRRGGBB; clear and set give null. Invert works in place
 * whatever `inPlace` says, on bilevel and 24-bit images.
 */
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img1RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, uint32_t value);
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img8RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, uint32_t value);
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img24RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, uint32_t value);
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img32RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, uint32_t value);
/** \} */
/** \{
 * Combines an image into another of the same type. \return the destination or its clone; null, with no pixel changed,
 * when sizes or alignments differ, the position lies beyond the destination or memory runs out.
 *
 * Not placed, whole rows are combined with their padding; of bilevel images copy does the same as or. Placed, every
 * operation pastes; bilevel rows overwrite whole bytes from the second on.
 */
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img1RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination);
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img8RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination);
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img24RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination);
TILEPRESS_API ImgHandle* TILEPRESS_CALL Img32RasOp2(ImgHandle* source, ImgRasOp2Desc* desc, ImgHandle* destination);
/** \} */

/** Stores the bytes of a colour 0xRRGGBB, red first, and returns `pixel`. */
TILEPRESS_API uint8_t* TILEPRESS_CALL Img24BitColorToPixRGB(uint8_t* pixel, uint32_t color);
/** 256 entries, each its index with the bits in reverse order, which the caller releases with free; or null. */
TILEPRESS_API uint8_t* TILEPRESS_CALL create_reverse_byte_table(void);

TILEPRESS_C_END

/* The create operation of each type: 1, or 0 also for a null handle or one without the operation. */

/** `alignBits` 8, 16, 32, or any other for unaligned rows. Null `data` gives clear pixels; else the image takes it. */
static inline uint32_t ImgCreateBilevel(ImgHandle* image, uint32_t width, uint32_t height, uint32_t alignBits,
                                        void* data) {
    return image && image->create ? ((Img1CreateOp)image->create)(image, width, height, alignBits, data) : 0;
}
/** `alignBits` 16 or 32, or any other for 8. `palette` is copied; null gives 256 black entries. */
static inline uint32_t ImgCreatePalette8(ImgHandle* image, uint32_t width, uint32_t height, uint32_t alignBits,
                                         const ColorTable* palette, void* data) {
    return image && image->create ? ((Img8CreateOp)image->create)(image, width, height, alignBits, palette, data) : 0;
}
/** `alignBits` 32, or any other for 8. */
static inline uint32_t ImgCreateRGB24(ImgHandle* image, uint32_t width, uint32_t height, uint32_t alignBits,
                                      void* data) {
    return image && image->create ? ((Img24CreateOp)image->create)(image, width, height, alignBits, data) : 0;
}
/** `channelFlag` decides the type: not 0 gives ImgTypeRGBA32. */
static inline uint32_t ImgCreateRGB32(ImgHandle* image, uint32_t width, uint32_t height, uint16_t channelFlag,
                                      void* data) {
    return image && image->create ? ((Img32CreateOp)image->create)(image, width, height, channelFlag, data) : 0;
}
/** Takes the array of tile pointers and the tiles, coded as the decoder of ccitt.h reads them. Byte counts are copied.
 *  A handle whose create failed is released with MemFree. */
static inline uint32_t ImgCreateTiffG4(ImgHandle* image, uint32_t width, uint32_t height, uint32_t tileWidth,
                                       uint32_t tileHeight, const uint32_t* byteCounts, void** tileData) {
    return image && image->create ? ((ImgTIFFG4CreateOp)image->create)(image, width, height, tileWidth, tileHeight, 0,
                                                                       byteCounts, tileData)
                                  : 0;
}

#endif
