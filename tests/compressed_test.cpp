#include "support/g4_images.h"
#include "support/layout.h"
#include "support/raised.h"

using namespace support;

namespace {

G4Image grid(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight) {
    return G4Image(CImg1G4::create(width, height, tileWidth, tileHeight, 0x00FFFFFF, 0xFF000000, ImgAlignNone));
}
layout::Compressed recordOf(const CImg1G4& image) { return layout::read<layout::Compressed>(image); }

/// 100 x 50 in tiles of 64 x 32 with tiles of 4, 0, 3 and 40 bytes.
struct Loaded {
    unsigned char bytes[40];
    unsigned char* tiles[4] = {bytes, bytes, bytes, bytes};
    ImgULong lengths[4] = {4, 0, 3, 40};
    G4Image image;

    Loaded() {
        for (unsigned char i = 0; i < 40; ++i) bytes[i] = static_cast<unsigned char>(i + 1);
        image.reset(CImg1G4::create(100, 50, 64, 32, tiles, lengths, 0x00FFFFFF, 0xFF000000, ImgAlignDword));
    }
};

}  // namespace

TEST(Compressed, AGridOfTileCopiesWithZerosBehindAndTwoLinesAColumn) {
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
    EXPECT_EQ(record.tileRows[0][1].data, nullptr);
    for (const auto& [k, expected] : {std::pair(0, Bytes{2, 1, 4, 3}), {2, {2, 1, 0, 3}}}) {
        const unsigned char* const data = record.tileRows[0][k].data;
        EXPECT_EQ(Bytes(data, data + 4), expected);
        EXPECT_EQ(Bytes(data + 4, data + 36), Bytes(32));
    }
    for (int32_t* line : {record.lineBufferA[0], record.lineBufferA[1], record.lineBufferB[0], record.lineBufferB[1]}) {
        EXPECT_EQ(std::vector<int32_t>(line, line + 64 + 6), std::vector<int32_t>(64 + 6));
        std::fill_n(line, 64 + 6, 1);  // no other line's
    }
    EXPECT_EQ(grid(100, 50, 40, 30)->getNumberOfTiles(), 6u);
}

TEST(Compressed, LoadingAgainReplacesTheTiles) {
    Loaded loaded;
    loaded.bytes[0] = 99;
    loaded.tiles[3] = nullptr;  // a white tile whose length counts all the same
    EXPECT_TRUE(loaded.image->initData(loaded.tiles, loaded.lengths));
    const layout::Tile* tiles = recordOf(*loaded.image).tileRows[0];
    EXPECT_EQ(tiles[0].data[1], 99);
    EXPECT_EQ(tiles[3].data, nullptr);
    EXPECT_EQ(recordOf(*loaded.image).tileLengths[3], 40u);
    EXPECT_EQ(loaded.image->getTotalBytes(), 47u);
    EXPECT_TRUE(loaded.image->initData(nullptr, loaded.lengths));
    EXPECT_TRUE(loaded.image->initData(loaded.tiles, nullptr));
    EXPECT_EQ(recordOf(*loaded.image).tileRows[0][0].data[1], 99);
}

TEST(Compressed, CreateRefusesBadSizes) {
    for (const auto& [w, h, tw, th] :
         {std::tuple{0u, 8u, 8u, 8u}, {8u, 0u, 8u, 8u}, {8u, 8u, 0u, 8u}, {8u, 8u, 8u, 0u}, {65536u, 65536u, 1u, 1u}})
        EXPECT_EQ(grid(w, h, tw, th), nullptr) << w << ' ' << h << ' ' << tw << ' ' << th;
    EXPECT_EQ(CImg1G4::create(nullptr, 8, 8, ImgAlignNone), nullptr);
}

TEST(Compressed, TheDestructorLeavesTheTilesToShallowCopiesKept) {
    Loaded loaded;
    const G4Image copy(new CImg1G4(*loaded.image));
    delete loaded.image.release();
    EXPECT_EQ(recordOf(*copy).tileRows[0][0].data[0], 2);
}

TEST(Compressed, ReleaseLeavesABareObject) {
    Loaded loaded;
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
    EXPECT_TRUE(loaded.image->initData(loaded.tiles, loaded.lengths));
}

TEST(Compressed, NoWalkMakesAnythingOfABareObject) {
    const G4Image bare(CImg1G4::create());
    const auto target = blank<CImg1>(8, 8);
    EXPECT_EQ(raisedBy([&] { EXPECT_FALSE(bare->uncompress(target.get(), ImgRect(1, 1))); }),
              (Raised{1, ImgErrDecode}));
    ImgScaleAttr grey{32}, ink{1};
    for (const auto& [width, height] : {std::pair(1u, 1u), {2u, 2u}, {1u, 3u}})
        for (ImgScaleAttr* attr : {&grey, &ink})
            EXPECT_EQ(
                raisedBy([&, w = width, h = height] { EXPECT_EQ(bare->scale(ImgRect(1, 1), w, h, *attr), nullptr); }),
                (Raised{1, ImgErrDecode}))
                << width << " x " << height;
    for (double degrees : {0., 10., 90., 180., 270.}) EXPECT_EQ(bare->rotate(degrees), nullptr) << degrees;
    EXPECT_EQ(bare->mirror(ImgMirX), nullptr);
    EXPECT_EQ(bare->getSubImage(bare->getRect()), nullptr);
    EXPECT_EQ(bare->getBackgroundColor(), 0u);
    EXPECT_FALSE(bare->isBackgroundKnown());
}

TEST(Compressed, SetExtentsMakesAnEmptyGridAndLeavesTheOldOneKept) {
    const Loaded loaded;
    loaded.image->setBackgroundColor(1);
    EXPECT_FALSE(loaded.image->setExtents(100, 64, 64, 64));
    EXPECT_FALSE(loaded.image->setExtents(0, 64, 64, 64));
    const G4Image before(new CImg1G4(*loaded.image));
    EXPECT_TRUE(loaded.image->setExtents(128, 64, 64, 64));
    EXPECT_EQ(loaded.image->getNumberOfTiles(), 2u);
    EXPECT_EQ(loaded.image->getTotalBytes(), 47u);
    EXPECT_FALSE(loaded.image->isBackgroundKnown());
    EXPECT_EQ(recordOf(*loaded.image).tileRows[0][0].data, nullptr);
    EXPECT_EQ(recordOf(*before).tileRows[0][0].data[0], 2);
}

TEST(Compressed, SetExtentsNeedsBothColoursKept) {
    const G4Image image(CImg1G4::create());
    for (const auto& [background, foreground, width] :
         {std::tuple{0xDEADBEEF, 0xDEADBEEF, 1u}, {0u, 0xDEADBEEF, 1u}, {0xDEADBEEF, 1u, 1u}, {0u, 1u, 128u}}) {
        image->setBackgroundInterpretation(background);
        image->setForegroundInterpretation(foreground);
        EXPECT_TRUE(image->setExtents(128, 64, 64, 64));
        EXPECT_EQ(image->getWidth(), width) << std::hex << background << ' ' << foreground;
    }
    EXPECT_EQ(image->getTotalBytes(), 0xDEADBEEFu);
    image->setForegroundInterpretation(0xDEADBEEF);
    EXPECT_TRUE(image->setExtents(16, 8, 8, 8));
    EXPECT_EQ(image->getWidth(), 128u);
}

TEST(Compressed, CloneIsAGridOfSinglePixelsWithoutDataKept) {
    const G4Image copy(static_cast<CImg1G4*>(grid(10, 10, 10, 10)->clone()));
    EXPECT_EQ(copy->getNumberOfTiles(), 100u);
    EXPECT_EQ(copy->getTileWidth(), 1u);
    EXPECT_EQ(copy->getTotalBytes(), 0xDEADBEEFu);
    EXPECT_EQ(recordOf(*copy).tileRows[9][9].data, nullptr);
}

TEST(Compressed, NothingConvertsIntoThisKind) {
    const auto source = imageOf<CImg1>(Picture(8, 8, 1));
    G4Image image;
    EXPECT_EQ(raisedBy([&] { image.reset(CImg1G4::create(*source, 4, 4, 5, 6, ImgAlignNone)); }), kQuiet);
    EXPECT_EQ(image->getNumberOfTiles(), 4u);
    EXPECT_EQ(image->getForegroundInterpretation(), 6u);
    EXPECT_EQ(recordOf(*image).tileRows[0][0].data, nullptr);
}

TEST(Compressed, ReservedOperationsGiveNull) {
    EXPECT_EQ(grid(8, 8, 8, 8)->ownData(), nullptr);
    EXPECT_EQ(grid(8, 8, 8, 8)->getTileIterator(), nullptr);
    unsigned char byte = 1;
    EXPECT_EQ(Img1G4Tile(&byte, 1, 1).getData(), nullptr);
}
