// Palette and RGB images: headers, rows, blocks that change hands.

#include "support/pictures.h"

#include <numeric>
#include <utility>

using namespace support;

namespace {

/// `bytes` as the pixels of a palette image or of one in RGB.
Owned<CImg8> made(CImg8*, ImgULong w, ImgULong h, unsigned char* data, ImgULong bytes) {
    return Owned<CImg8>(CImg8::create(w, h, data, bytes, nullptr, ImgAlignNone));
}
Owned<CImg32> made(CImg32*, ImgULong w, ImgULong h, ImgULong* data, ImgULong bytes) {
    return Owned<CImg32>(CImg32::create(w, h, data, bytes, RGBOrderRGB));
}

template <class Image>
class ColourImages : public ::testing::Test {
protected:
    using Pixel = std::remove_pointer_t<decltype(std::declval<Image>().peekData())>;
    static constexpr ImgULong size = sizeof(Pixel);

    static Owned<Image> of(ImgULong w, ImgULong h, Pixel* data, ImgULong bytes) {
        return made(static_cast<Image*>(nullptr), w, h, data, bytes);
    }
};
TYPED_TEST_SUITE(ColourImages, ColourKinds);

TYPED_TEST(ColourImages, CreateRefusesBadSizes) {
    for (auto [w, h] : {std::pair(0u, 1u), {1u, 0u}, {65536u, 65536u}, {65537u, 65536u}, {4294967295u, 2u}})
        EXPECT_EQ(blank<TypeParam>(w, h, ImgAlignDword), nullptr) << w << ' ' << h;
    typename TestFixture::Pixel pixels[9] = {};
    EXPECT_EQ(this->of(3, 3, pixels, 9 * this->size - 1), nullptr);
    EXPECT_EQ(this->of(2, 2, nullptr, 4 * this->size), nullptr);
}

TYPED_TEST(ColourImages, BlocksAreCopiedAndTheCallersPointerLostKept) {
    typename TestFixture::Pixel pixels[] = {1, 2, 3, 4}, others[] = {5, 6, 7, 8}, *data = pixels;
    const Picture first(2, {1, 2, 3, 4}), second(2, {5, 6, 7, 8});
    const ImgULong bytes = 4 * this->size;
    const auto image = this->of(2, 2, pixels, bytes);
    EXPECT_EQ(pictureOf(image), first);
    EXPECT_EQ(image->dupData(others, bytes), ImgErrNone);
    EXPECT_EQ(pictureOf(image), second);
    EXPECT_EQ(image->transferData(&data, bytes - 1), ImgErrCreate);
    EXPECT_EQ(data, pixels);
    EXPECT_EQ(pictureOf(image), second);
    EXPECT_EQ(image->transferData(nullptr, bytes), ImgErrCreate);
    EXPECT_EQ(image->dupData(nullptr, bytes), ImgErrCreate);
    EXPECT_EQ(image->transferData(&data, bytes), ImgErrNone);
    EXPECT_EQ(data, nullptr);
    EXPECT_NE(image->peekData(), pixels);
    data = image->peekData();  // its own block
    EXPECT_EQ(image->transferData(&data, bytes), ImgErrNone);
    EXPECT_EQ(pictureOf(image), first);
    auto* const block = image->ownData();
    EXPECT_EQ(image->peekData(), nullptr);
    EXPECT_EQ(image->peekDataArray(), nullptr);
    EXPECT_EQ(image->ownData(), nullptr);
    EXPECT_EQ(image->dupData(block, bytes), ImgErrNone);
    EXPECT_EQ(pictureOf(image), first);
    std::free(block);
}

TYPED_TEST(ColourImages, BackgroundsAreKeptOnceSet) {
    const auto image = blank<TypeParam>(2, 2);
    EXPECT_FALSE(image->isBackgroundKnown());
    EXPECT_EQ(image->getBackgroundColor(), 0u);
    EXPECT_EQ(image->isBackgroundKnown(), image->getType() == ImageTypeRGB) << "Kept: not of palette images";
    image->setBackgroundColor(7);
    EXPECT_TRUE(image->isBackgroundKnown());
    EXPECT_EQ(image->getBackgroundColor(), 7u);
}

// --- palette ---

TEST(Palette, RowsArePaddedButAWidthApartKept) {
    for (auto [width, alignment, pad] :
         {std::tuple(10u, ImgAlignDword, 2u), {10u, ImgAlignByte, 0u}, {12u, ImgAlignDword, 0u}}) {
        const auto image = blank<CImg8>(width, 3, alignment);
        EXPECT_EQ(image->getPadBytes(), pad);
        EXPECT_EQ(image->getBytesPerLine(), width + pad);
        EXPECT_EQ(image->getTotalBytes(), 3 * (width + pad));
        EXPECT_EQ(image->peekDataArray()[1], image->peekData() + width);
    }
    unsigned char bytes[10] = {};
    EXPECT_EQ(CImg8::create(3, 3, bytes, 10, nullptr, ImgAlignNone), nullptr) << "longer, unlike RGB";
    EXPECT_EQ(CImg8::create(nullptr, ImgAlignNone), nullptr);
}

TEST(Palette, FewerThanFourBytesCannotBeHandedOverKept) {
    unsigned char bytes[] = {1, 2, 3}, *data = bytes;
    EXPECT_EQ(CImg8::create(1, 3, bytes, 3, nullptr, ImgAlignNone), nullptr);
    const auto image = blank<CImg8>(1, 3);
    EXPECT_EQ(image->dupData(bytes, 3), ImgErrNone);
    EXPECT_EQ(pictureOf(image), Picture(1, {1, 2, 3}));
    EXPECT_EQ(image->transferData(&data, 3), ImgErrCreate);
    EXPECT_EQ(data, bytes);
    EXPECT_EQ(image->peekData(), nullptr);
    EXPECT_EQ(image->dupData(bytes, 3), ImgErrNone);
    EXPECT_EQ(pictureOf(image), Picture(1, {1, 2, 3}));
}

TEST(Palette, HoldsACopyOfTheUsedPartOfAMap) {
    ColorMap map(4, 100);
    map.entries[1] = {1, 2, 3};
    for (auto [count, given, copied] :
         {std::tuple(2, true, 2), {0, true, 0}, {-3, true, 0}, {9, true, 4}, {4, false, 0}}) {
        map.count = count;
        ColorMapEntry* const entries = std::exchange(map.entries, given ? map.entries : nullptr);
        CImg8* const image = CImg8::create(1, 1, &map, ImgAlignNone);
        map.entries = entries;
        ColorMap* const copy = image->getColorMap();
        ASSERT_NE(copy, &map);
        EXPECT_EQ(copy->maximum, 100);
        EXPECT_EQ(copy->count, copied) << count;
        EXPECT_EQ(copy->entries[1].blue, copied ? 3 : 0) << count;
        delete image;
        EXPECT_EQ(copy->capacity, 4) << "Kept: the map outlives the image";
        delete copy;
    }
    const auto plain = blank<CImg8>(1, 1);
    EXPECT_EQ(plain->getColorMap()->capacity, 256);
    EXPECT_EQ(plain->getColorMap()->count, 256);
    EXPECT_EQ(plain->getColorMap()->maximum, 255);
}

TEST(Palette, CannotBeCopiedKept) {
    const auto image = blank<CImg8>(2, 2);
    EXPECT_EQ(image->clone(), nullptr);
    EXPECT_EQ(CImg8::create(*image, nullptr, ImgAlignNone), nullptr);
}

TEST(Palette, SettersChangeTheirFieldOnly) {
    unsigned char bytes[16] = {};
    const auto image = blank<CImg8>(10, 1);
    image->setAlignment(ImgAlignDword);
    EXPECT_EQ(image->getBytesPerLine(), 10u);
    EXPECT_EQ(image->dupData(bytes, 10), ImgErrCreate);
    EXPECT_FALSE(image->setExtents(0, 1));
    EXPECT_TRUE(image->setExtents(3, 2));
    EXPECT_EQ(image->getTotalBytes(), 10u);
}

// --- RGB ---

TEST(Rgb, LongerDataAreAcceptedAndCutKept) {
    ImgULong pixels[] = {1, 2, 3, 4, 5, 6}, *data = pixels;
    const Owned<CImg32> image(CImg32::create(2, 2, pixels, 24, RGBOrderRGB));
    EXPECT_EQ(CImg32::create(0x40000000, 1, RGBOrderRGB), nullptr) << "rows of 2^32 bytes";
    EXPECT_EQ(image->getBytesPerLine(), 8u);
    EXPECT_EQ(image->peekDataArray()[1], image->peekData() + 2);
    EXPECT_EQ(pictureOf(image), Picture(2, {1, 2, 3, 4}));
    EXPECT_EQ(image->dupData(pixels + 1, 20), ImgErrNone);
    EXPECT_EQ(pictureOf(image), Picture(2, {2, 3, 4, 5}));
    EXPECT_EQ(image->transferData(&data, 24), ImgErrNone);
    EXPECT_EQ(pictureOf(image), Picture(2, {1, 2, 3, 4}));
}

TEST(Rgb, CloneIsInTheOrderRedFirst) {
    ImgULong pixels[] = {0x44332211, 0x88776655};
    for (auto [order, copied] : {std::pair(RGBOrderRGB, Picture(2, {0x44332211, 0x88776655})),
                                 {RGBOrderBGR, Picture(2, {0x44112233, 0x88556677})}}) {
        const Owned<CImg32> image(CImg32::create(2, 1, pixels, 8, order));
        const auto copy = owned<CImg32>(image->clone());
        EXPECT_EQ(copy->getRGBOrder(), RGBOrderRGB);
        EXPECT_EQ(pictureOf(copy), copied);
    }
}

std::vector<unsigned char> numbered(std::size_t count) {
    std::vector<unsigned char> bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(1));
    return bytes;
}

Owned<CImg32> widened(ImgULong width, ImgULong height, Bytes bytes, ImgAlignmentEnum alignment,
                      RGBOrder from = RGBOrderRGB, RGBOrder to = RGBOrderRGB) {
    return Owned<CImg32>(
        CImg32::createFrom24(width, height, bytes.data(), static_cast<ImgULong>(bytes.size()), alignment, from, to));
}

TEST(Rgb, WideningMovesNoComponentWhateverTheOrdersKept) {
    for (RGBOrder from : {RGBOrderRGB, RGBOrderBGR})
        for (RGBOrder to : {RGBOrderRGB, RGBOrderBGR}) {
            const auto image = widened(3, 1, numbered(9), ImgAlignNone, from, to);
            EXPECT_EQ(pictureOf(image), Picture(3, {0x030201, 0x060504, 0x090807}));
            EXPECT_EQ(image->getRGBOrder(), to);
        }
}

TEST(Rgb, WideningSkipsThePaddingOfRows) {
    // Rows of 9 bytes and 3 of padding, the last one without.
    EXPECT_EQ(pictureOf(widened(3, 2, numbered(21), ImgAlignDword)),
              Picture(3, {0x030201, 0x060504, 0x090807, 0x0F0E0D, 0x121110, 0x151413}));
    EXPECT_EQ(pictureOf(widened(4, 2, numbered(24), ImgAlignDword)).at(0, 1), 0x0F0E0Du);
    EXPECT_EQ(widened(3, 2, numbered(20), ImgAlignDword), nullptr);
    EXPECT_EQ(pictureOf(widened(3, 2, numbered(18), ImgAlignByte)).at(2, 1), 0x121110u) << "rows without padding";
    EXPECT_EQ(widened(3, 2, numbered(17), ImgAlignNone), nullptr);
    EXPECT_EQ(widened(1, 1, numbered(2), ImgAlignNone), nullptr);
    EXPECT_EQ(CImg32::createFrom24(1, 1, nullptr, 3, ImgAlignNone, RGBOrderRGB, RGBOrderRGB), nullptr);
    auto bytes = numbered(3);
    for (ImgULong longer : {0xC0000000u, 0xFFFFFFFFu})
        EXPECT_TRUE(Owned<>(CImg32::createFrom24(1, 1, bytes.data(), longer, ImgAlignNone, RGBOrderRGB, RGBOrderRGB)));
    for (ImgULong width = 1; width <= 600; ++width)
        ASSERT_TRUE(widened(width, 1, numbered(3 * width), ImgAlignNone)) << "every length of whole pixels " << width;
}

}  // namespace
