#ifndef TILEPRESS_TILEITERATORS_H
#define TILEPRESS_TILEITERATORS_H

/// \file
/// Handing images out in tiles of a fixed size.

#include "tilepress/CImg1.h"
#include "tilepress/CImg1G4.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

/// Placeholder: only RGB images are handed out in tiles.
class TILEPRESS_API Img1TileIterator {
public:
    bool getNextTile(void*, ImgULong, ImgULong, ImgULong, ImgULong, ImgULong, bool&);  ///< true, nothing written

private:
    Img1TileIterator();
    explicit Img1TileIterator(CImg1 image);
    Img1TileIterator(CImg1 image, ImgULong, ImgULong);
    Img1TileIterator(CImg1 image, ImgULong, ImgULong, ImageType);
};

/// Placeholder: only RGB images are handed out in tiles.
class TILEPRESS_API Img8TileIterator {
public:
    bool getNextTile(void*, ImgULong, ImgULong, ImgULong, ImgULong, ImgULong, bool&);  ///< true, nothing written

private:
    Img8TileIterator();
    explicit Img8TileIterator(CImg8 image);
    Img8TileIterator(CImg8 image, ImgULong, ImgULong);
    Img8TileIterator(CImg8 image, ImgULong, ImgULong, ImageType);
};

/// Placeholder: only RGB images are handed out in tiles.
class TILEPRESS_API Img1G4TileIterator {
public:
    bool getNextTile(void*, ImgULong, ImgULong, ImgULong, ImgULong, ImgULong, bool&);  ///< true, nothing written

private:
    Img1G4TileIterator();
    explicit Img1G4TileIterator(CImg1G4 image);
    Img1G4TileIterator(CImg1G4 image, ImgULong, ImgULong);
    Img1G4TileIterator(CImg1G4 image, ImgULong, ImgULong, ImageType);
};

/// Tiles of a CImg32, left to right and top to bottom. The image must outlive it.
class TILEPRESS_API Img32TileIterator {
public:
    ~Img32TileIterator();
    Img32TileIterator(const Img32TileIterator&) = delete;
    Img32TileIterator& operator=(const Img32TileIterator&) = delete;

    /// Produces the next tile; false, outputs untouched, when there is none.
    ///
    /// `data` is the iterator's buffer of tileWidth by tileHeight pixels, overwritten by the next
    /// call; pixels past the image are 0. `length` is 0 and `color` the background for a tile
    /// reported as empty, else `length` is the tile's bytes. x and y are its top left
    /// pixel, the valid sizes the part inside the image.
    bool getNextTile(unsigned char*& data, ImgULong& length, ImgULong& color, ImgULong& x, ImgULong& y,
                     ImgULong& tileWidth, ImgULong& tileHeight, ImgULong& validWidth, ImgULong& validHeight);
    ImgULong getWidthInTiles();   ///< tiles across, the last perhaps reaching past the image
    ImgULong getHeightInTiles();  ///< tiles down
    ImgULong getRowPadding();     ///< pixels by which the last tile column passes the image

private:
    friend class CImg32;
    Img32TileIterator();
    static Img32TileIterator* createIterator(CImg32* image, ImgULong tileWidth, ImgULong tileHeight,
                                             CImg32::TileFormat format);
    void copyTile(bool& allBackground);
    void tileUNCOMPRESSED();
    void tileUNCOMPRESSED_NULL();

    // The layout is part of the interface: add nothing, move nothing.
    CImg32* image = nullptr;
    CImg32::TileFormat format{};
    ImgULong tileWidth = 0, tileHeight = 0;
    ImgULong tilesAcross = 0, tilesDown = 0;
    ImgULong rightPadding = 0, rightPaddingBytes = 0, bottomPadding = 0;
    ImgULong tileCount = 0;
    ImgULong tileRowBytes = 0, tileBytes = 0;
    ImgULong currentTileRow = 0, currentTileColumn = 0;
    bool lastRow = false, lastColumn = false;
    unsigned char* tileBuffer = nullptr;
    ImgULong tileLength = 0, tileColor = 0;
    ImgULong tileX = 0, tileY = 0;
    ImgULong* backgroundRow = nullptr;
};

#endif
