#include "support/pictures.h"
#include "tilepress/TileIterators.h"

#include <numeric>

using namespace support;

using Iterator = std::unique_ptr<Img32TileIterator>;

namespace {

/// What getNextTile reports.
struct Tile {
    unsigned char* data = nullptr;
    ImgULong length = 77, color = 77, x = 77, y = 77, width = 77, height = 77, validWidth = 77, validHeight = 77;

    bool next(Img32TileIterator& it) {
        return it.getNextTile(data, length, color, x, y, width, height, validWidth, validHeight);
    }
    ImgULong pixel(ImgULong column, ImgULong row) const {
        ImgULong value;
        std::memcpy(&value, data + 4 * (row * width + column), 4);
        return value;
    }
};

}  // namespace

static Owned<CImg32> numbered(ImgULong width, ImgULong height) {
    Owned<CImg32> image(CImg32::create(width, height, RGBOrderRGB));
    std::iota(image->peekData(), image->peekData() + width * height, 1u);
    return image;
}

TEST(TileIterator, TilesCoverTheImageAndPaddingIsZero) {
    for (const auto& [width, height, tileWidth, tileHeight] :
         {std::tuple{100, 50, 64, 64}, {10, 10, 4, 3}, {8, 8, 4, 4}, {5, 7, -1, 2}, {3, 3, 1, 1}}) {
        auto image = numbered(width, height);
        image->setBackgroundColor(0xFFFFFF);  // never seen in the padding
        const Iterator it(image->getTileIterator(tileWidth, tileHeight, CImg32::UNCOMPRESSED));
        ImgULong covered = 0, tiles = 0;
        for (Tile tile; tile.next(*it); ++tiles) {
            EXPECT_EQ(tile.x, tiles % it->getWidthInTiles() * tile.width);
            EXPECT_EQ(tile.y, tiles / it->getWidthInTiles() * tile.height);
            EXPECT_EQ(tile.height, std::min<ImgULong>(tileHeight, height));
            EXPECT_EQ(tile.length, 4 * tile.width * tile.height);
            EXPECT_EQ(tile.color, 0u);
            covered += tile.validWidth * tile.validHeight;
            for (ImgULong row = 0; row < tile.height; ++row)
                for (ImgULong column = 0; column < tile.width; ++column) {
                    const bool valid = column < tile.validWidth && row < tile.validHeight;
                    ASSERT_EQ(tile.pixel(column, row),
                              valid ? image->peekDataArray()[tile.y + row][tile.x + column] : 0);
                }
        }
        EXPECT_EQ(covered, static_cast<ImgULong>(width * height));
        EXPECT_EQ(tiles, it->getWidthInTiles() * it->getHeightInTiles());
        EXPECT_EQ(it->getRowPadding(), width % tileWidth ? tileWidth - width % tileWidth : 0) << width;
        Tile none;
        EXPECT_FALSE(none.next(*it));
        EXPECT_EQ(none.length + none.x + none.validHeight, 3 * 77u) << "outputs are left alone at the end";
    }
}

TEST(TileIterator, BackgroundTilesAreReportedEmpty) {
    Owned<CImg32> image(CImg32::create(4, 2, RGBOrderRGB));
    image->setBackgroundColor(5);
    std::fill_n(image->peekData(), 8, 5u);
    image->peekDataArray()[0][3] = 6;
    const Iterator it(image->getTileIterator(2, 2, CImg32::UNCOMPRESSED_NULL));
    Tile tile;
    image->setBackgroundColor(9);  // Kept: compared with the one at creation, reported as it is now
    EXPECT_TRUE(tile.next(*it));
    EXPECT_EQ(tile.length, 0u);
    EXPECT_EQ(tile.color, 9u);
    EXPECT_EQ(tile.pixel(1, 1), 5u);
    EXPECT_TRUE(tile.next(*it));
    EXPECT_EQ(tile.length, 16u);
    EXPECT_EQ(tile.color, 0u);
}

TEST(TileIterator, TheReservedFormatCountsOnlyKept) {
    auto image = numbered(4, 2);
    const Iterator it(image->getTileIterator(2, 2, CImg32::RESERVED));
    Tile tile;
    EXPECT_TRUE(tile.next(*it));
    EXPECT_EQ(tile.length, 0u);
    EXPECT_EQ(tile.pixel(0, 0), 0u);
    EXPECT_TRUE(tile.next(*it));
    EXPECT_EQ(tile.x, 2u);
    EXPECT_FALSE(tile.next(*it));
}

TEST(TileIterator, RefusesFormatsAndEmptyTiles) {
    auto image = numbered(4, 2);
    for (uint32_t format : {0u, 3u, 5u})
        EXPECT_EQ(image->getTileIterator(2, 2, static_cast<CImg32::TileFormat>(format)), nullptr) << format;
    EXPECT_EQ(image->getTileIterator(0, 2, CImg32::UNCOMPRESSED), nullptr);
    EXPECT_EQ(image->getTileIterator(2, 0, CImg32::UNCOMPRESSED), nullptr);
}

TEST(TileIterator, EndsWhenThePixelsAreTaken) {
    auto image = numbered(4, 2);
    const Iterator it(image->getTileIterator(2, 2, CImg32::UNCOMPRESSED));
    Tile tile;
    EXPECT_TRUE(tile.next(*it));
    std::free(image->ownData());
    EXPECT_FALSE(tile.next(*it));
    EXPECT_EQ(tile.x, 0u);
    EXPECT_EQ(blank<CImg1>(8, 8)->getTileIterator(), nullptr);
    EXPECT_EQ(blank<CImg8>(8, 8)->getTileIterator(), nullptr);
}
