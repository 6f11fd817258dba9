#include "tilepress/CImg8.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

using Image = std::unique_ptr<CImg8>;

static Image blank(ImgULong width, ImgULong height, ImgAlignmentEnum alignment = ImgAlignNone) {
    return Image(CImg8::create(width, height, nullptr, alignment));
}

TEST(Palette, RowsArePaddedButAWidthApartKept) {
    Image image = blank(10, 3, ImgAlignDword);
    EXPECT_EQ(image->getPadBytes(), 2u);
    EXPECT_EQ(image->getBytesPerLine(), 12u);
    EXPECT_EQ(image->getTotalBytes(), 36u);
    EXPECT_EQ(image->peekDataArray()[1], image->peekData() + 10);
    image = blank(10, 3, ImgAlignByte);
    EXPECT_EQ(image->getPadBytes(), 0u);
    EXPECT_EQ(image->getBytesPerLine(), 10u);
    EXPECT_EQ(blank(12, 3, ImgAlignDword)->getPadBytes(), 0u);
}

TEST(Palette, CreateRefusesBadSizes) {
    unsigned char bytes[12] = {};
    EXPECT_EQ(blank(0, 1), nullptr);
    EXPECT_EQ(blank(65536, 65536), nullptr);
    EXPECT_EQ(blank(65537, 65536), nullptr);
    EXPECT_EQ(blank(4294967295u, 1, ImgAlignDword), nullptr);
    EXPECT_EQ(CImg8::create(3, 3, bytes, 8, nullptr, ImgAlignNone), nullptr);
    EXPECT_EQ(CImg8::create(3, 3, bytes, 10, nullptr, ImgAlignNone), nullptr);
    EXPECT_EQ(CImg8::create(2, 2, nullptr, 4, nullptr, ImgAlignNone), nullptr);
    EXPECT_EQ(CImg8::create(nullptr, ImgAlignNone), nullptr);
}

TEST(Palette, FewerThanFourBytesCannotBeHandedOverKept) {
    unsigned char bytes[] = {1, 2, 3}, *data = bytes;
    EXPECT_EQ(CImg8::create(1, 3, bytes, 3, nullptr, ImgAlignNone), nullptr);
    const Image image = blank(1, 3);
    EXPECT_EQ(image->dupData(bytes, 3), ImgErrNone);
    EXPECT_EQ(image->peekData()[2], 3);
    EXPECT_EQ(image->transferData(&data, 3), ImgErrCreate);
    EXPECT_EQ(data, bytes);
    EXPECT_EQ(image->peekData(), nullptr);
    EXPECT_EQ(image->dupData(bytes, 3), ImgErrNone);
    EXPECT_EQ(image->peekDataArray()[1][0], 2);
}

TEST(Palette, TransferCopiesAndForgetsTheCallersBlockKept) {
    const Image image = blank(2, 2);
    unsigned char bytes[] = {1, 2, 3, 4}, *data = bytes;
    EXPECT_EQ(image->transferData(&data, 5), ImgErrCreate);
    EXPECT_NE(image->peekData(), nullptr);
    EXPECT_EQ(image->transferData(&data, 4), ImgErrNone);
    EXPECT_EQ(data, nullptr);
    EXPECT_NE(image->peekData(), bytes);
    EXPECT_EQ(std::memcmp(image->peekData(), bytes, 4), 0);
    data = image->peekData();  // its own block
    EXPECT_EQ(image->transferData(&data, 4), ImgErrNone);
    EXPECT_EQ(std::memcmp(image->peekData(), bytes, 4), 0);
    EXPECT_EQ(image->transferData(nullptr, 4), ImgErrCreate);
    EXPECT_EQ(image->dupData(nullptr, 4), ImgErrCreate);
}

TEST(Palette, OwnDataLeavesNoRows) {
    const Image image = blank(3, 3);
    unsigned char* block = image->ownData();
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(image->peekData(), nullptr);
    EXPECT_EQ(image->peekDataArray(), nullptr);
    EXPECT_EQ(image->ownData(), nullptr);
    std::free(block);
}

TEST(Palette, HoldsACopyOfTheUsedPartOfAMap) {
    ColorMap map(4, 100);
    map.entries[1] = {1, 2, 3};
    struct {
        int32_t count, copied;
    } const cases[] = {{2, 2}, {0, 0}, {-3, 0}, {9, 4}};
    for (const auto& c : cases) {
        map.count = c.count;
        Image image(CImg8::create(1, 1, &map, ImgAlignNone));
        ColorMap* const copy = image->getColorMap();
        ASSERT_NE(copy, &map);
        EXPECT_EQ(copy->capacity, 4);
        EXPECT_EQ(copy->maximum, 100);
        EXPECT_EQ(copy->count, c.copied) << c.count;
        EXPECT_EQ(copy->entries[1].blue, c.copied ? 3 : 0) << c.count;
        image.reset();
        EXPECT_EQ(copy->capacity, 4) << "Kept: the map outlives the image";
        delete copy;
    }
    ColorMapEntry* const entries = std::exchange(map.entries, nullptr);
    const Image image(CImg8::create(1, 1, &map, ImgAlignNone));
    EXPECT_EQ(image->getColorMap()->count, 0);
    map.entries = entries;
    delete image->getColorMap();
}

TEST(Palette, BackgroundIsNotKnownByAskingKept) {
    const Image image = blank(2, 2);
    EXPECT_EQ(image->getBackgroundColor(), 0u);
    EXPECT_FALSE(image->isBackgroundKnown());
    image->setBackgroundColor(7);
    EXPECT_TRUE(image->isBackgroundKnown());
    EXPECT_EQ(image->getBackgroundColor(), 7u);
}

TEST(Palette, CannotBeCopiedKept) {
    const Image image = blank(2, 2);
    EXPECT_EQ(image->clone(), nullptr);
    EXPECT_EQ(CImg8::create(*image, nullptr, ImgAlignNone), nullptr);
}

TEST(Palette, SettersChangeTheirFieldOnly) {
    unsigned char bytes[16] = {};
    const Image image = blank(10, 1);
    image->setAlignment(ImgAlignDword);
    EXPECT_EQ(image->getBytesPerLine(), 10u);
    EXPECT_EQ(image->dupData(bytes, 10), ImgErrCreate);
    EXPECT_FALSE(image->setExtents(0, 1));
    EXPECT_TRUE(image->setExtents(3, 2));
    EXPECT_EQ(image->getTotalBytes(), 10u);
}
