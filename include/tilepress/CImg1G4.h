#ifndef TILEPRESS_CIMG1G4_H
#define TILEPRESS_CIMG1G4_H

/// \file
/// The compressed bilevel image: a grid of Group 4 tiles.

#include "tilepress/CImg.h"

class CImg1;
class CImg32;
class G4ScaleInfo;
class Img1G4TileIterator;

/// One tile and its compressed bytes.
class TILEPRESS_API Img1G4Tile {
public:
    Img1G4Tile(unsigned char*, ImgULong, ImgULong);  ///< reserved: stores nothing
    virtual ~Img1G4Tile();
    unsigned char* getData();  ///< reserved: null

private:
    friend class CImg1G4;
    friend class G4ScaleInfo;
    Img1G4Tile();

    unsigned char* data;
    int32_t* codingLine;
    int32_t codingCount;
    int32_t* referenceLine;
    int32_t referenceCount;
    int32_t bytePosition;
    int32_t bitPosition;
    ImgULong xOrigin;
    ImgULong yOrigin;
};

/// A bilevel image held as tiles, each compressed on its own with CCITT Group 4
/// (ITU-T T.6). Tiles are numbered row by row; edge tiles may extend beyond the
/// image. The compressed bytes are read as 16-bit little-endian words, bit 15
/// first: a plain byte stream has the bytes of every pair exchanged, and tiles
/// are given in whole words.
///
/// Decoding walks the image row by row and never expands a tile. One image is one
/// thread's at a time; walks over different images, shallow copies among them, may
/// run at once in any threads.
class TILEPRESS_API CImg1G4 : public CImg {
public:
    // Making: null on any failure, no error recorded.
    /// A bare object whose header is not set up.
    static CImg1G4* create();
    /// A grid without data: all white.
    static CImg1G4* create(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight,
                           ImgULong backgroundInterpretation, ImgULong foregroundInterpretation,
                           ImgAlignmentEnum alignment);
    /// Copies every tile: tile k has lengths[k] bytes at tiles[k]; the caller keeps both. A length of 0 is a white
    /// tile.
    static CImg1G4* create(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight,
                           unsigned char** tiles, ImgULong* lengths, ImgULong backgroundInterpretation,
                           ImgULong foregroundInterpretation, ImgAlignmentEnum alignment);
    /// A grid of the source's size without data: nothing converts into this kind.
    static CImg1G4* create(const IImg& source, ImgULong tileWidth, ImgULong tileHeight,
                           ImgULong backgroundInterpretation, ImgULong foregroundInterpretation,
                           ImgAlignmentEnum alignment);
    static CImg1G4* create(void*, ImgULong, ImgULong, ImgAlignmentEnum);  ///< reserved: null

    /// Frees no tile data: shallow copies may share them. See releaseData.
    ~CImg1G4() override;
    IImg* clone() const override;  ///< a grid of 1 by 1 tiles without data

    /// Loads compressed tiles, as the second create; always true.
    bool initData(unsigned char** tiles, ImgULong* lengths);
    /// Frees tile copies, records and line buffers and leaves a bare object. Only for the one holder
    /// of the data: a shallow copy of this image must not be used afterwards.
    void releaseData();

    // Background and display colours.
    ImgULong getBackgroundColor() override;            ///< computed by decoding on first use
    void setBackgroundColor(ImgULong color);           ///< ends the estimate: this is the background
    ImgULong getBackgroundInterpretation() const;      ///< the colour that 0 is shown in
    void setBackgroundInterpretation(ImgULong color);  ///< the colour that 0 is shown in
    ImgULong getForegroundInterpretation() const;      ///< the colour that 1 is shown in
    void setForegroundInterpretation(ImgULong color);  ///< the colour that 1 is shown in

    // Header.
    ImgAlignmentEnum getAlignment();                ///< padding of rows, or of those of expanded images
    void setAlignment(ImgAlignmentEnum alignment);  ///< pixels are not moved
    ImgULong getPadBits() const;                    ///< bits after a row's pixels
    /// A fresh, empty grid; false when a size is 0 or the image does not divide into whole tiles.
    bool setExtents(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight);

    unsigned char** ownData();                    ///< reserved: null
    Img1G4TileIterator* getTileIterator() const;  ///< reserved: null

    /// Expands `rect` into `dest`, which must be clear and hold the rectangle. False when the rectangle or `dest` is
    /// refused (ImgErrBadArgument) or memory runs out. True with ImgErrDecode recorded when a tile is corrupt: the rows
    /// before it are in `dest`.
    bool uncompress(CImg1* dest, const ImgRect& rect);

    IImg* getSubImage(const ImgRect& rect) override;  ///< a CImg1
    IImg* mirror(ImgMirT direction) override;         ///< a CImg1
    IImg* rotate(double angle) override;              ///< a CImg1
    using CImg::scale;
    /// Scales while decoding, never expanding the image. At an unchanged size the whole image is
    /// copied, whatever the rectangle. A corrupt tile gives a partly painted result and ImgErrDecode.
    IImg* scale(const ImgRect& source, ImgULong width, ImgULong height, ImgScaleAttr& attr) override;

private:
    CImg1G4();
    bool initHeader(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight,
                    ImgULong backgroundInterpretation, ImgULong foregroundInterpretation, ImgAlignmentEnum alignment);
    bool verifyHeader(ImgULong length) const;
    // g4image/scale_info.cpp
    friend class G4ScaleInfo;
    void SendIncompleteStatus(int row);
    // g4image/uncompress.cpp
    ImgErr decode_copy_scanline(unsigned char* row, G4ScaleInfo* info);
    ImgULong calculateBackground();
    // g4image/enlarge.cpp, reduce_ink.cpp, reduce_grey.cpp
    CImg1* Enlarge(ImgULong newWidth, ImgULong newHeight, const ImgRect& rect);
    CImg1* Reduce(ImgULong newWidth, ImgULong newHeight, const ImgRect& rect);
    CImg1* Reduce_bkg(ImgULong newWidth, ImgULong newHeight, const ImgRect& rect);
    CImg32* Reduce_greyscale(ImgULong newWidth, ImgULong newHeight, const ImgRect& rect);
    ImgErr decode_enlarge_scanline(unsigned char* row, G4ScaleInfo* info);
    ImgErr decode_reduce_scanline(unsigned char* row, G4ScaleInfo* info);
    ImgErr decode_reduce_scanline_grey(ImgULong* row, G4ScaleInfo* info, ImgULong* sums);
    // g4image/turn.cpp
    CImg1* mirrorX();
    CImg1* mirrorY();
    CImg1* rotate90();
    CImg1* rotateMinus90();
    CImg1* rotate180();

    // The layout is part of the interface: add nothing, move nothing.
    ImgULong padBits;
    ImgAlignmentEnum alignment;
    ImgULong foregroundInterpretation;
    ImgULong backgroundInterpretation;
    Img1G4Tile** tileRows;
    int32_t** lineBufferA;
    int32_t** lineBufferB;
    ImgULong* tileLengths;
    ImgULong currentRow, rowInTileRow, currentTileRow;
    ImgULong firstTileColumn, firstTileRow, lastTileColumn, lastTileRow;
};

#endif
