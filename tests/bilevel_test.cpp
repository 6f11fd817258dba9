#include "tilepress/CImg1.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

using Image = std::unique_ptr<CImg1>;
using Bytes = std::vector<unsigned char>;

static Image blank(ImgULong width, ImgULong height, ImgAlignmentEnum alignment = ImgAlignNone) {
    return Image(CImg1::create(width, height, 0x00FFFFFF, 0xFF000000, alignment));
}
static Image filled(ImgULong width, ImgULong height, Bytes bytes) {
    return Image(CImg1::create(width, height, bytes.data(), static_cast<ImgULong>(bytes.size()), 0x00FFFFFF, 0xFF000000,
                               ImgAlignNone));
}
static Bytes bytesOf(const CImg1& image) { return Bytes(image.peekData(), image.peekData() + image.getTotalBytes()); }

TEST(Bilevel, RowLengths) {
    struct {
        ImgULong width;
        ImgAlignmentEnum alignment;
        ImgULong padBits, bytes;
    } const rows[] = {{10, ImgAlignNone, 6, 2},   {10, ImgAlignByte, 6, 2},
                      {10, ImgAlignDword, 22, 4}, {32, ImgAlignDword, 0, 4},
                      {8, ImgAlignByte, 0, 1},    {33, ImgAlignDword, 31, 8},
                      {1, ImgAlignNone, 7, 1},    {4294967295u, ImgAlignNone, 1, 536870912u}};
    for (const auto& row : rows) {
        const Image image = blank(row.width, 1, row.alignment);
        if (!image && row.width > 1000000) continue;  // memory may not do
        EXPECT_EQ(image->getPadBits(), row.padBits) << row.width;
        EXPECT_EQ(image->getBytesPerLine(), row.bytes) << row.width;
        EXPECT_EQ(image->getTotalBytes(), row.bytes) << row.width;
    }
}

TEST(Bilevel, CreateRefusesBadSizes) {
    EXPECT_EQ(blank(0, 5), nullptr);
    EXPECT_EQ(blank(5, 0), nullptr);
    EXPECT_EQ(blank(4294967295u, 8), nullptr);  // 2^32 bytes
    EXPECT_EQ(filled(10, 3, Bytes(5)), nullptr);
    EXPECT_EQ(filled(10, 3, Bytes(7)), nullptr);
    EXPECT_EQ(CImg1::create(8, 1, nullptr, 1, 0, 0, ImgAlignNone), nullptr);
    EXPECT_EQ(CImg1::create(nullptr, 8, 8, ImgAlignNone), nullptr);
}

TEST(Bilevel, TransferAdoptsTheBlock) {
    const Image image = blank(10, 2);
    unsigned char* block = static_cast<unsigned char*>(std::malloc(4));
    std::memcpy(block, "abcd", 4);
    unsigned char* data = block;
    EXPECT_EQ(image->transferData(&data, 3), ImgErrCreate);
    EXPECT_EQ(data, block);
    EXPECT_EQ(image->transferData(&data, 4), ImgErrNone);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(image->peekData(), block);
    data = block;  // the image's own block handed in again stays alive
    EXPECT_EQ(image->transferData(&data, 4), ImgErrNone);
    EXPECT_EQ(bytesOf(*image), (Bytes{'a', 'b', 'c', 'd'}));
    EXPECT_EQ(image->transferData(nullptr, 4), ImgErrCreate);
}

TEST(Bilevel, BlocksChangeHands) {
    const Image image = filled(8, 2, {1, 2});
    unsigned char* block = image->ownData();
    EXPECT_EQ(image->peekData(), nullptr);
    EXPECT_EQ(image->ownData(), nullptr);
    EXPECT_EQ(image->dupData(nullptr, 2), ImgErrCreate);
    EXPECT_EQ(image->dupData(block, 2), ImgErrNone);
    EXPECT_NE(image->peekData(), block);
    EXPECT_EQ(bytesOf(*image), (Bytes{1, 2}));
    std::free(block);
}

TEST(Bilevel, CopiesOfTheObjectShareThePixels) {
    const Image image = blank(8, 8);
    CImg1 copy(*image);
    EXPECT_EQ(copy.peekData(), image->peekData());
    copy.ownData();
}

TEST(Bilevel, ChangedHeaderFieldsFailTheNextCopyKept) {
    Bytes bytes(8);
    Image image = blank(10, 3);
    image->setAlignment(ImgAlignDword);
    EXPECT_EQ(image->getBytesPerLine(), 2u);
    EXPECT_EQ(image->dupData(bytes.data(), 6), ImgErrCreate);
    image = blank(10, 3);
    EXPECT_FALSE(image->setExtents(10, 0));
    EXPECT_TRUE(image->setExtents(10, 4));
    EXPECT_EQ(image->getHeight(), 4u);
    EXPECT_EQ(image->getTotalBytes(), 6u);
    EXPECT_EQ(image->dupData(bytes.data(), 8), ImgErrCreate);
    EXPECT_EQ(image->dupData(bytes.data(), 6), ImgErrCreate);
    EXPECT_TRUE(image->setExtents(12, 3));  // rows of as many bytes, but other padding
    EXPECT_EQ(image->dupData(bytes.data(), 6), ImgErrCreate);
}

TEST(Bilevel, CloneKeepsPixelsOfAlignmentNoneOnlyKept) {
    for (ImgAlignmentEnum alignment : {ImgAlignNone, ImgAlignByte, ImgAlignDword}) {
        Image image(CImg1::create(32, 2, 5, 6, alignment));
        std::memset(image->peekData(), 0xA5, 8);
        const Image copy(static_cast<CImg1*>(image->clone()));
        EXPECT_EQ(bytesOf(*copy), Bytes(8, alignment == ImgAlignNone ? 0xA5 : 0)) << alignment;
        EXPECT_EQ(copy->getAlignment(), ImgAlignNone);
        EXPECT_EQ(copy->getBackgroundInterpretation(), 0x00FFFFFFu);
        EXPECT_EQ(copy->getForegroundInterpretation(), 0xFF000000u);
    }
    Image image = blank(8, 1, ImgAlignByte);
    image->peekData()[0] = 0x81;
    image->setAlignment(ImgAlignNone);
    EXPECT_EQ(bytesOf(*Image(static_cast<CImg1*>(image->clone()))), Bytes{0x81});
}

// --- background ---

static ImgULong backgroundOf(ImgULong bytesPerLine, ImgULong height, const Bytes& bytes) {
    const Image image = filled(8 * bytesPerLine, height, bytes);
    EXPECT_FALSE(image->isBackgroundKnown());
    const ImgULong background = image->getBackgroundColor();
    EXPECT_TRUE(image->isBackgroundKnown());
    return background;
}

TEST(Bilevel, BackgroundSampleIsAChequerboardThatDriftsKept) {
    struct {
        ImgULong bytesPerLine;
        std::vector<std::size_t> sampled;
    } const grids[] = {{1, {0, 3, 6}}, {2, {0, 3, 5, 8, 10}}, {3, {0, 2, 5, 7, 9, 12, 14, 16}}};
    for (const auto& grid : grids) {
        Bytes sampled(grid.bytesPerLine * 8), others(sampled.size(), 0xFF);
        for (std::size_t i : grid.sampled) sampled[i] = 0xFF, others[i] = 0;
        EXPECT_EQ(backgroundOf(grid.bytesPerLine, 8, sampled), 1u) << grid.bytesPerLine;
        EXPECT_EQ(backgroundOf(grid.bytesPerLine, 8, others), 0u) << grid.bytesPerLine;
    }
}

TEST(Bilevel, LowBlackImagesHaveWhiteBackgroundKept) {
    for (ImgULong bytes = 1; bytes <= 6; ++bytes)
        for (ImgULong height = 1; height <= 12; ++height) {
            const bool white = height == 1 || height == 4 || height == 5 ||
                               ((height == 2 || height == 6) && bytes % 2 == 0) ||
                               ((height == 3 || height == 7) && bytes != 1);
            EXPECT_EQ(backgroundOf(bytes, height, Bytes(bytes * height, 0xFF)), white ? 0u : 1u)
                << bytes << " x " << height;
        }
    EXPECT_EQ(backgroundOf(2, 16, Bytes(32, 0xEE)), 0u);  // 75 % of the bits
}

/// The sampled set bits, byte by byte.
static bool modelBackground(std::size_t bytesPerLine, std::size_t height, const Bytes& bytes) {
    std::size_t p = 0, total = 0;
    for (std::size_t r = 0; r < height / 8 + height / 2; ++r) {
        std::size_t s = r % 2;
        p += s;
        for (; s < bytesPerLine; s += 2, p += 2) total += static_cast<std::size_t>(std::popcount(bytes.at(p)));
    }
    return total > 2 * bytes.size();
}

TEST(Bilevel, BackgroundIsThatOfTheSampledBytes) {
    std::mt19937 random(1);
    int black = 0;
    for (int n = 0; n < 2000; ++n) {
        const ImgULong bytesPerLine = random() % 40 + 1, height = random() % 40 + 1;
        Bytes bytes(bytesPerLine * height);
        for (auto& byte : bytes) byte = random() % 5 ? 0xFF : static_cast<unsigned char>(random());
        const bool expected = modelBackground(bytesPerLine, height, bytes);
        black += expected;
        EXPECT_EQ(backgroundOf(bytesPerLine, height, bytes), expected) << bytesPerLine << " x " << height;
    }
    EXPECT_GT(black, 100);
    EXPECT_LT(black, 1900);
}

TEST(Bilevel, BackgroundStaysAsFirstSeen) {
    const Image image = blank(8, 16);
    EXPECT_EQ(image->getBackgroundColor(), 0u);
    Bytes black(16, 0xFF);
    image->dupData(black.data(), 16);
    EXPECT_EQ(image->getBackgroundColor(), 0u);
    image->setBackgroundColor(1);
    EXPECT_EQ(image->getBackgroundColor(), 1u);
}

TEST(Bilevel, BackgroundReadsOnlyWhatIsThere) {
    for (ImgULong bytes = 1; bytes <= 40; ++bytes)
        for (ImgULong height = 1; height <= 12; ++height) {
            const Image image = filled(8 * bytes, height, Bytes(height * bytes, 0xFF));
            image->setExtents(8 * bytes, 80);
            EXPECT_EQ(image->getBackgroundColor(), 1u) << bytes << " x " << height;
        }
    const Image empty = filled(16, 8, Bytes(16, 0xFF));
    std::free(empty->ownData());
    EXPECT_EQ(empty->getBackgroundColor(), 0u);
}
