#include "ccitt/padded_line.h"
#include "support/g4_images.h"
#include "support/layout.h"
#include "support/raised.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg1G4.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using Image = support::G4Image;

static Image grid(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight) {
    return Image(CImg1G4::create(width, height, tileWidth, tileHeight, 0x00FFFFFF, 0xFF000000, ImgAlignNone));
}
static layout::Compressed recordOf(const CImg1G4& image) { return layout::read<layout::Compressed>(image); }

namespace {

/// 100 x 50 in tiles of 64 x 32 with tiles of 4, 0, 3 and 40 bytes.
struct Loaded {
    unsigned char bytes[40];
    unsigned char* tiles[4] = {bytes, bytes, bytes, bytes};
    ImgULong lengths[4] = {4, 0, 3, 40};
    Image image;

    Loaded() {
        for (unsigned char i = 0; i < 40; ++i) bytes[i] = static_cast<unsigned char>(i + 1);
        image.reset(CImg1G4::create(100, 50, 64, 32, tiles, lengths, 0x00FFFFFF, 0xFF000000, ImgAlignDword));
    }
};

}  // namespace

TEST(Compressed, GridOfTiles) {
    const Loaded loaded;
    const CImg1G4& image = *loaded.image;
    EXPECT_EQ(image.getWidthInTiles(), 2u);
    EXPECT_EQ(image.getHeightInTiles(), 2u);
    EXPECT_EQ(image.getNumberOfTiles(), 4u);
    EXPECT_EQ(image.getTotalBytes(), 47u);
    EXPECT_EQ(image.getBytesPerLine(), 16u);
    EXPECT_EQ(image.getPadBits(), 28u);
    const auto record = recordOf(image);
    EXPECT_EQ(record.tileRows[1], record.tileRows[0] + 2);
    for (ImgULong k = 0; k < 4; ++k) {
        const layout::Tile& tile = record.tileRows[0][k];
        EXPECT_EQ(tile.xOrigin, k % 2 * 64) << k;
        EXPECT_EQ(tile.yOrigin, k / 2 * 32) << k;
        EXPECT_EQ(tile.bytePosition, 0) << k;
        EXPECT_EQ(tile.bitPosition, 1) << k;
        EXPECT_EQ(record.tileLengths[k], loaded.lengths[k]) << k;
    }
}

TEST(Compressed, TilesAreCopiedInCodedOrderWithZerosBehind) {
    const Loaded loaded;
    const layout::Tile* tiles = recordOf(*loaded.image).tileRows[0];
    EXPECT_EQ(tiles[1].data, nullptr);
    const std::vector<unsigned char> even{2, 1, 4, 3}, odd{2, 1, 0, 3};
    for (const auto& [data, expected] : {std::pair{tiles[0].data, even}, {tiles[2].data, odd}}) {
        EXPECT_EQ(std::vector<unsigned char>(data, data + 4), expected);
        EXPECT_EQ(std::vector<unsigned char>(data + 4, data + 36), std::vector<unsigned char>(32));
    }
}

TEST(Compressed, EveryTileColumnHasTwoLinesWithRoomAround) {
    const Loaded loaded;
    const auto record = recordOf(*loaded.image);
    for (int32_t** lines : {record.lineBufferA, record.lineBufferB})
        for (int column = 0; column < 2; ++column) {
            int32_t* const line = lines[column];
            EXPECT_EQ(line[-1], INT32_MIN);
            EXPECT_EQ(line[0], 0);
            line[64 + 6 + tilepress::kLineBack - 1] = 1;  // within the block
        }
    EXPECT_NE(record.lineBufferA[0], record.lineBufferB[0]);
}

TEST(Compressed, LoadingAgainReplacesTheTiles) {
    Loaded loaded;
    loaded.bytes[0] = 99;
    loaded.tiles[3] = nullptr;  // a white tile whose length counts all the same
    EXPECT_TRUE(loaded.image->initData(loaded.tiles, loaded.lengths));
    const layout::Tile* tiles = recordOf(*loaded.image).tileRows[0];
    EXPECT_EQ(tiles[0].data[1], 99);
    EXPECT_EQ(tiles[3].data, nullptr);
    EXPECT_EQ(loaded.image->getTotalBytes(), 47u);
    EXPECT_TRUE(loaded.image->initData(nullptr, loaded.lengths));
    EXPECT_TRUE(loaded.image->initData(loaded.tiles, nullptr));
    EXPECT_EQ(recordOf(*loaded.image).tileRows[0][0].data[1], 99);
}

TEST(Compressed, CreateRefusesBadSizes) {
    for (const auto& [w, h, tw, th] :
         {std::tuple{0u, 8u, 8u, 8u}, {8u, 0u, 8u, 8u}, {8u, 8u, 0u, 8u}, {8u, 8u, 8u, 0u}, {65536u, 65536u, 1u, 1u}})
        EXPECT_EQ(CImg1G4::create(w, h, tw, th, 0, 1, ImgAlignNone), nullptr);
    EXPECT_EQ(CImg1G4::create(nullptr, 8, 8, ImgAlignNone), nullptr);
}

TEST(Compressed, TheDestructorLeavesTheTilesToShallowCopiesKept) {
    Loaded loaded;
    const Image copy(new CImg1G4(*loaded.image));
    delete loaded.image.release();
    EXPECT_EQ(recordOf(*copy).tileRows[0][0].data[0], 2);
}

TEST(Compressed, ReleaseLeavesABareObject) {
    const Loaded loaded;
    loaded.image->setBackgroundColor(1);
    loaded.image->releaseData();
    const auto released = recordOf(*loaded.image);
    EXPECT_EQ(released.type, 4u);
    EXPECT_EQ(released.alignment, 0u);
    for (uint32_t field : {released.bytesPerLine, released.totalBytes, released.right, released.tileWidth,
                           released.backgroundColor, released.numberOfTiles, released.background, released.state[6]})
        EXPECT_EQ(field, 0xDEADBEEFu);
    EXPECT_EQ(released.lineBufferA, nullptr);
    EXPECT_EQ(released.tileRows, nullptr);
    EXPECT_EQ(released.tileLengths, nullptr);
    EXPECT_FALSE(released.backgroundKnown);
    loaded.image->releaseData();
    EXPECT_TRUE(
        loaded.image->initData(const_cast<unsigned char**>(loaded.tiles), const_cast<ImgULong*>(loaded.lengths)));
}

TEST(Compressed, SetExtentsMakesAnEmptyGridAndLeavesTheOldOneKept) {
    const Loaded loaded;
    loaded.image->setBackgroundColor(1);
    EXPECT_FALSE(loaded.image->setExtents(100, 64, 64, 64));
    EXPECT_FALSE(loaded.image->setExtents(0, 64, 64, 64));
    const Image before(new CImg1G4(*loaded.image));
    EXPECT_TRUE(loaded.image->setExtents(128, 64, 64, 64));
    EXPECT_EQ(loaded.image->getNumberOfTiles(), 2u);
    EXPECT_EQ(loaded.image->getTotalBytes(), 47u);
    EXPECT_FALSE(loaded.image->isBackgroundKnown());
    EXPECT_EQ(recordOf(*loaded.image).tileRows[0][0].data, nullptr);
    EXPECT_EQ(recordOf(*before).tileRows[0][0].data[0], 2);
}

TEST(Compressed, SetExtentsNeedsBothColoursKept) {
    const Image image(CImg1G4::create());
    for (const auto& [background, foreground] :
         {std::pair{0xDEADBEEF, 0xDEADBEEF}, {0u, 0xDEADBEEF}, {0xDEADBEEF, 1u}}) {
        image->setBackgroundInterpretation(background);
        image->setForegroundInterpretation(foreground);
        EXPECT_TRUE(image->setExtents(128, 64, 64, 64));
        EXPECT_EQ(image->getWidth(), 1u);
    }
    image->setBackgroundInterpretation(0);
    EXPECT_TRUE(image->setExtents(128, 64, 64, 64));
    EXPECT_EQ(image->getWidth(), 128u);
    EXPECT_EQ(image->getTotalBytes(), 0xDEADBEEFu);
    const Image marked = grid(8, 8, 8, 8);
    marked->setForegroundInterpretation(0xDEADBEEF);
    EXPECT_TRUE(marked->setExtents(16, 8, 8, 8));
    EXPECT_EQ(marked->getWidth(), 8u);
}

TEST(Compressed, CloneIsAGridOfSinglePixelsWithoutDataKept) {
    const Image image = grid(10, 10, 10, 10);
    const Image copy(static_cast<CImg1G4*>(image->clone()));
    EXPECT_EQ(copy->getNumberOfTiles(), 100u);
    EXPECT_EQ(copy->getTileWidth(), 1u);
    EXPECT_EQ(copy->getTotalBytes(), 0xDEADBEEFu);
    EXPECT_EQ(recordOf(*copy).tileRows[9][9].data, nullptr);
}

TEST(Compressed, NothingConvertsIntoThisKind) {
    std::unique_ptr<CImg1> source(CImg1::create(8, 8, 0, 1, ImgAlignNone));
    source->peekData()[0] = 0xFF;
    const support::Raised raised;
    const Image image(CImg1G4::create(*source, 4, 4, 5, 6, ImgAlignNone));
    EXPECT_EQ(raised.times(), 0u);
    EXPECT_EQ(image->getNumberOfTiles(), 4u);
    EXPECT_EQ(image->getForegroundInterpretation(), 6u);
    EXPECT_EQ(recordOf(*image).tileRows[0][0].data, nullptr);
}

TEST(Compressed, ReservedOperationsGiveNull) {
    const Image image = grid(8, 8, 8, 8);
    EXPECT_EQ(image->ownData(), nullptr);
    EXPECT_EQ(image->getTileIterator(), nullptr);
    unsigned char byte = 1;
    EXPECT_EQ(Img1G4Tile(&byte, 1, 1).getData(), nullptr);
}
