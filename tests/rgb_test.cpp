#include "tilepress/CImg32.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

using Image = std::unique_ptr<CImg32>;
using Pixels = std::vector<ImgULong>;

static Pixels pixelsOf(const CImg32& image) {
    return Pixels(image.peekData(), image.peekData() + image.getTotalBytes() / 4);
}

TEST(Rgb, HeaderOfANewImage) {
    const Image image(CImg32::create(3, 2, RGBOrderBGR));
    EXPECT_EQ(image->getType(), ImageTypeRGB);
    EXPECT_EQ(image->getBitsPerSample(), 8u);
    EXPECT_EQ(image->getSamplesPerPixel(), 4u);
    EXPECT_EQ(image->getBytesPerLine(), 12u);
    EXPECT_EQ(image->getTotalBytes(), 24u);
    EXPECT_EQ(image->peekDataArray()[1], image->peekData() + 3);
    EXPECT_EQ(pixelsOf(*image), Pixels(6));
    EXPECT_FALSE(image->isBackgroundKnown());
    EXPECT_EQ(image->getBackgroundColor(), 0u);
    EXPECT_TRUE(image->isBackgroundKnown());
}

TEST(Rgb, CreateRefusesBadSizes) {
    ImgULong pixels[4] = {};
    EXPECT_EQ(CImg32::create(0, 1, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::create(32768, 32768, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::create(0x40000000, 1, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::create(2, 2, pixels, 15, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::create(2, 2, nullptr, 16, RGBOrderRGB), nullptr);
}

TEST(Rgb, LongerDataAreAcceptedAndCutKept) {
    ImgULong pixels[] = {1, 2, 3, 4, 5, 6}, *data = pixels;
    const Image image(CImg32::create(2, 2, pixels, 24, RGBOrderRGB));
    EXPECT_EQ(pixelsOf(*image), (Pixels{1, 2, 3, 4}));
    EXPECT_EQ(image->dupData(pixels + 1, 20), ImgErrNone);
    EXPECT_EQ(pixelsOf(*image), (Pixels{2, 3, 4, 5}));
    EXPECT_EQ(image->transferData(&data, 15), ImgErrCreate);
    EXPECT_EQ(data, pixels);
    EXPECT_EQ(image->transferData(nullptr, 24), ImgErrCreate);
    EXPECT_EQ(image->dupData(nullptr, 24), ImgErrCreate);
    EXPECT_EQ(image->transferData(&data, 24), ImgErrNone);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(pixelsOf(*image), (Pixels{1, 2, 3, 4}));
    data = image->peekData();  // its own block
    EXPECT_EQ(image->transferData(&data, 16), ImgErrNone);
    EXPECT_EQ(pixelsOf(*image), (Pixels{1, 2, 3, 4}));
    ImgULong* block = image->ownData();
    EXPECT_EQ(image->peekDataArray(), nullptr);
    EXPECT_EQ(image->dupData(block, 16), ImgErrNone);
    EXPECT_EQ(pixelsOf(*image), (Pixels{1, 2, 3, 4}));
    std::free(block);
}

TEST(Rgb, CloneIsInTheOrderRedFirst) {
    ImgULong pixels[] = {0x44332211, 0x88776655};
    for (RGBOrder order : {RGBOrderRGB, RGBOrderBGR}) {
        const Image image(CImg32::create(2, 1, pixels, 8, order)), copy(static_cast<CImg32*>(image->clone()));
        EXPECT_EQ(copy->getRGBOrder(), RGBOrderRGB);
        EXPECT_EQ(pixelsOf(*copy),
                  order == RGBOrderRGB ? (Pixels{0x44332211, 0x88776655}) : (Pixels{0x44112233, 0x88556677}));
    }
}

static std::vector<unsigned char> numbered(std::size_t count) {
    std::vector<unsigned char> bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

TEST(Rgb, WideningMovesNoComponentWhateverTheOrdersKept) {
    auto bytes = numbered(9);
    for (RGBOrder from : {RGBOrderRGB, RGBOrderBGR})
        for (RGBOrder to : {RGBOrderRGB, RGBOrderBGR}) {
            const Image image(CImg32::createFrom24(3, 1, bytes.data(), 9, ImgAlignNone, from, to));
            EXPECT_EQ(pixelsOf(*image), (Pixels{0x030201, 0x060504, 0x090807}));
            EXPECT_EQ(image->getRGBOrder(), to);
        }
}

TEST(Rgb, WideningSkipsThePaddingOfRows) {
    auto bytes = numbered(21);  // rows of 9 bytes and 3 of padding, the last one without
    const Image padded(CImg32::createFrom24(3, 2, bytes.data(), 21, ImgAlignDword, RGBOrderRGB, RGBOrderRGB));
    EXPECT_EQ(pixelsOf(*padded), (Pixels{0x030201, 0x060504, 0x090807, 0x0F0E0D, 0x121110, 0x151413}));
    const Image unpadded(CImg32::createFrom24(4, 2, numbered(24).data(), 24, ImgAlignDword, RGBOrderRGB, RGBOrderRGB));
    EXPECT_EQ(unpadded->peekDataArray()[1][0], 0x0F0E0Du);
    EXPECT_EQ(CImg32::createFrom24(3, 2, bytes.data(), 20, ImgAlignDword, RGBOrderRGB, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::createFrom24(3, 2, bytes.data(), 17, ImgAlignNone, RGBOrderRGB, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::createFrom24(1, 1, bytes.data(), 2, ImgAlignNone, RGBOrderRGB, RGBOrderRGB), nullptr);
    EXPECT_EQ(CImg32::createFrom24(1, 1, nullptr, 3, ImgAlignNone, RGBOrderRGB, RGBOrderRGB), nullptr);
}

TEST(Rgb, WideningTakesEveryLengthOfWholePixels) {
    auto bytes = numbered(3 * 600);
    for (ImgULong longer : {0xC0000000u, 0xFFFFFFFFu})
        EXPECT_TRUE(Image(CImg32::createFrom24(1, 1, bytes.data(), longer, ImgAlignNone, RGBOrderRGB, RGBOrderRGB)));
    for (ImgULong width = 1; width <= 600; ++width) {
        const Image image(
            CImg32::createFrom24(width, 1, bytes.data(), 3 * width, ImgAlignNone, RGBOrderRGB, RGBOrderRGB));
        ASSERT_NE(image, nullptr) << width;
    }
}
