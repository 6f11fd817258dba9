#include "kernels/paste_rows.h"
#include "support/pictures.h"

#include <string>

namespace tilepress::test {
namespace {

using Bytes = std::vector<unsigned char>;

RasOpXfmAttr at(std::uint32_t column, std::uint32_t row) { return {0, row, column, 0, false, 0}; }

// --- packed rows --------------------------------------------------------------------

/// The walk byte by byte: `rule` joins, a source byte's second part overwrites the following byte.
template <class Rule>
void pasteModel(Bytes& dst, std::size_t start, const Bytes& src, unsigned s, Rule rule) {
    for (std::size_t i = 0; i < src.size(); ++i) {
        unsigned char& d = dst[start + i];
        d = static_cast<unsigned char>(rule(d, src[i] >> s, s));
        if (s > 0 && i + 1 < src.size()) dst[start + i + 1] = static_cast<unsigned char>(src[i] << (8 - s));
    }
}

int joinSet(int d, int b, unsigned s) {
    const int m = s ? 0xFF << s & 0xFF : 0;
    return ((m | b) & d) | b;
}
int joinAnd(int d, int b, unsigned) { return d & b; }
int joinOr(int d, int b, unsigned) { return d | b; }

template <class Rule>
void comparePaste(int (*join)(int, int, unsigned)) {
    std::mt19937 random(7);
    for (unsigned column = 0; column < 24; ++column)
        for (std::size_t count = 1; count < 70; ++count) {
            Bytes src(count), dst(count + 8);
            for (auto& byte : src) byte = static_cast<unsigned char>(random());
            for (auto& byte : dst) byte = static_cast<unsigned char>(random());
            Bytes expected = dst;
            pasteModel(expected, column / 8, src, column % 8, join);
            pasteRows<Rule>({dst.data(), dst.size(), dst.size()}, column, 0, src.data(), count, 1);
            ASSERT_EQ(dst, expected) << column << ' ' << count;
        }
}

TEST(PastedRows, SetIsTheWalkByBytes) { comparePaste<PasteSet>(joinSet); }
TEST(PastedRows, AndIsTheWalkByBytes) { comparePaste<PasteAnd>(joinAnd); }
TEST(PastedRows, OrIsTheWalkByBytes) { comparePaste<PasteOr>(joinOr); }

template <class Rule>
Bytes pasted(Bytes dst, std::size_t column, const Bytes& src) {
    pasteRows<Rule>({dst.data(), dst.size(), dst.size()}, column, 0, src.data(), src.size(), 1);
    return dst;
}

TEST(PastedRows, KeptShiftedCopiesProtectTheLowBitsOfABytes) {
    EXPECT_EQ(pasted<PasteSet>({0xFF, 0xFF, 0xFF}, 3, {0xA5}), (Bytes{0xFC, 0xFF, 0xFF}));
    EXPECT_EQ(pasted<PasteSet>({0xFF, 0xFF, 0xFF}, 3, {0xA5, 0x3C}), (Bytes{0xFC, 0xA7, 0xFF}));
    EXPECT_EQ(pasted<PasteSet>({0, 0, 0}, 3, {0xA5}), (Bytes{0x14, 0, 0}));
    EXPECT_EQ(pasted<PasteSet>({0, 0, 0}, 6, {0xFF, 0xFF}), (Bytes{0x03, 0xC3, 0}));
    EXPECT_EQ(pasted<PasteSet>({0, 0, 0}, 5, {0xFF, 0}), (Bytes{0x07, 0xE0, 0}));
    EXPECT_EQ(pasted<PasteSet>({0xFF, 0xFF, 0xFF}, 6, {0, 0}), (Bytes{0xC0, 0, 0xFF}));
}

TEST(PastedRows, KeptFollowingBytesAreOverwritten) {
    EXPECT_EQ(pasted<PasteAnd>({0xFF, 0xFF, 0xFF}, 3, {0xA5, 0x3C}), (Bytes{0x14, 0, 0xFF}));
    EXPECT_EQ(pasted<PasteOr>({0x80, 0, 0x01}, 3, {0xA5, 0x3C}), (Bytes{0x94, 0xA7, 0x01}));
    EXPECT_EQ(pasted<PasteOr>({0xFF, 0xFF, 0xFF}, 3, {0, 0}), (Bytes{0xFF, 0, 0xFF}));
}

// --- bilevel images -------------------------------------------------------------------

Owned<CImg1> bilevel(std::size_t width, std::size_t height, ImgAlignmentEnum alignment, int fill) {
    auto image = blank(static_cast<CImg1*>(nullptr), width, height, alignment);
    std::memset(image->peekData(), fill, image->getTotalBytes());
    return image;
}

Bytes bytesOf(const CImg1& image) { return Bytes(image.peekData(), image.peekData() + image.getTotalBytes()); }

TEST(BilevelRasOp, AlignedCopiesTakeThePadBitsAlong) {
    const auto image = bilevel(24, 1, ImgAlignNone, 0xFF), second = bilevel(3, 1, ImgAlignNone, 0xE0);
    RasOpXfmAttr attr = at(8, 0);
    image->doRasOpInPlace(RasOpCopy, attr, *second);
    EXPECT_EQ(bytesOf(*image), (Bytes{0xFF, 0xE0, 0xFF}));
}

TEST(BilevelRasOp, KeptRowsPaddedFurtherSpillIntoTheNextAndEndWithTheBlock) {
    const auto image = bilevel(64, 2, ImgAlignDword, 0), second = bilevel(24, 2, ImgAlignDword, 0xFF);
    RasOpXfmAttr attr = at(40, 0);
    image->doRasOpInPlace(RasOpCopy, attr, *second);
    EXPECT_EQ(bytesOf(*image), (Bytes{0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF}));
}

TEST(BilevelRasOp, KeptCode0IsAndInCopiesAndCopiesInPlace) {
    const auto image = bilevel(16, 1, ImgAlignNone, 0xF0), second = bilevel(16, 1, ImgAlignNone, 0x3C);
    RasOpXfmAttr attr = at(0, 0);
    attr.transparent = true;  // ignored by AND
    const auto copy = owned<CImg1>(image->doRasOp(RasOpAnd, attr, *second));
    EXPECT_EQ(bytesOf(*copy), (Bytes{0x30, 0x30}));
    EXPECT_EQ(bytesOf(*image), (Bytes{0xF0, 0xF0}));
    attr.transparent = false;
    image->doRasOpInPlace(RasOpAnd, attr, *second);
    EXPECT_EQ(bytesOf(*image), (Bytes{0x3C, 0x3C}));
}

TEST(BilevelRasOp, OtherCodesCopyAndTransparentOnesOr) {
    const auto image = bilevel(16, 1, ImgAlignNone, 0xF0), second = bilevel(16, 1, ImgAlignNone, 0x3C);
    RasOpXfmAttr attr = at(0, 0);
    for (RasOpT op : {RasOpCopy, RasOpCopy2, RasOpCopy3, RasOpFill}) {
        attr.transparent = false;
        EXPECT_EQ(bytesOf(*owned<CImg1>(image->doRasOp(op, attr, *second))), (Bytes{0x3C, 0x3C}));
        attr.transparent = true;
        EXPECT_EQ(bytesOf(*owned<CImg1>(image->doRasOp(op, attr, *second))), (Bytes{0xFC, 0xFC}));
    }
}

TEST(BilevelRasOp, KeptCode3DoesNothingInPlace) {
    const auto image = bilevel(16, 1, ImgAlignNone, 0xF0), second = bilevel(16, 1, ImgAlignNone, 0x3C);
    RasOpXfmAttr attr = at(0, 0);
    imgRaise(ImgErrDecode);
    image->doRasOpInPlace(RasOpCopy3, attr, *second);
    EXPECT_EQ(bytesOf(*image), (Bytes{0xF0, 0xF0}));
    EXPECT_EQ(CImgErr::get(), ImgErrNone);
}

TEST(BilevelRasOp, KeptColourOperationsDoNothing) {
    const auto image = bilevel(16, 1, ImgAlignNone, 0xF0);
    imgRaise(ImgErrDecode);
    EXPECT_EQ(image->doRasOp(RasOpFill, false, 0, 1), image.get());
    image->doRasOpInPlace(RasOpFill, false, 0, 1);
    EXPECT_EQ(bytesOf(*image), (Bytes{0xF0, 0xF0}));
    EXPECT_EQ(CImgErr::get(), ImgErrDecode);
}

// --- any kind -------------------------------------------------------------------------

template <class Image>
class RasOp : public ::testing::Test {};
TYPED_TEST_SUITE(RasOp, PixelKinds);

TYPED_TEST(RasOp, PlacesMustLieInsideWithoutWrapping) {
    const Picture zeros(16, 4), ones(8, 2, kWhole<TypeParam>);
    auto second = imageOf<TypeParam>(ones, ImgAlignNone);
    const auto resultAt = [&](std::uint32_t column, std::uint32_t row, ImgErr expected) {
        const auto image = imageOf<TypeParam>(zeros, ImgAlignNone);
        RasOpXfmAttr attr = at(column, row);
        image->doRasOpInPlace(RasOpCopy, attr, *second);
        EXPECT_EQ(CImgErr::get(), expected) << column << ' ' << row;
        return pictureOf(image.get());
    };
    Picture corner = zeros;
    for (std::size_t y = 2; y < 4; ++y)
        for (std::size_t x = 8; x < 16; ++x) corner.at(x, y) = kWhole<TypeParam>;
    EXPECT_EQ(resultAt(8, 2, ImgErrNone), corner);
    EXPECT_EQ(resultAt(9, 2, ImgErrBadArgument), zeros);
    EXPECT_EQ(resultAt(8, 3, ImgErrBadArgument), zeros);
    EXPECT_EQ(resultAt(0xFFFFFFFF, 0, ImgErrBadArgument), zeros);
    EXPECT_EQ(resultAt(0, 0xFFFFFFFF, ImgErrBadArgument), zeros);
    second = imageOf<TypeParam>(Picture(17, 1), ImgAlignNone);
    EXPECT_EQ(resultAt(0, 0, ImgErrBadArgument), zeros) << "wider than its place";
    second = imageOf<TypeParam>(Picture(1, 5), ImgAlignNone);
    EXPECT_EQ(resultAt(0, 0, ImgErrBadArgument), zeros) << "higher";
}

TYPED_TEST(RasOp, OtherCodesChangeNothing) {
    const Picture picture = randomPicture<TypeParam>(9, 3);
    const auto image = imageOf<TypeParam>(picture, ImgAlignNone),
               second = imageOf<TypeParam>(Picture(9, 3), ImgAlignNone);
    RasOpXfmAttr attr = at(0, 0);
    for (int code : {-1, 5}) {
        imgRaise(ImgErrDecode);
        image->doRasOpInPlace(static_cast<RasOpT>(code), attr, *second);
        EXPECT_EQ(pictureOf(image.get()), picture);
        EXPECT_EQ(CImgErr::get(), ImgErrNone);
    }
}

TYPED_TEST(RasOp, OtherKindsAndImagesWithoutPixelsAreRefused) {
    const Picture picture = randomPicture<TypeParam>(9, 3);
    const auto image = imageOf<TypeParam>(picture, ImgAlignNone),
               second = imageOf<TypeParam>(Picture(9, 3), ImgAlignNone);
    const auto one = imageOf<CImg1>(Picture(1, 1), ImgAlignNone);
    const auto word = imageOf<CImg32>(Picture(1, 1), ImgAlignNone);
    const IImg& other = image->getType() == ImageTypeBilevel ? static_cast<IImg&>(*word) : *one;
    RasOpXfmAttr attr = at(0, 0);
    EXPECT_EQ(image->doRasOp(RasOpCopy, attr, other), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
    std::free(second->ownData());
    imgRaise(ImgErrNone);
    image->doRasOpInPlace(RasOpCopy, attr, *second);
    EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
    second->doRasOpInPlace(RasOpCopy, attr, *image);
    second->doRasOpInPlace(RasOpFill, false, 0, 1);
    second->doRasOpInPlace(RasOpFill, true, 0, 1);
    EXPECT_EQ(pictureOf(image.get()), picture);
}

TYPED_TEST(RasOp, AnImageOverItselfStaysAsItIs) {
    const Picture picture = randomPicture<TypeParam>(9, 3);
    const auto image = imageOf<TypeParam>(picture, ImgAlignNone);
    RasOpXfmAttr attr = at(0, 0);
    image->doRasOpInPlace(RasOpCopy, attr, *image);
    EXPECT_EQ(pictureOf(image.get()), picture);
}

// --- palette and RGB ------------------------------------------------------------------

template <class Image>
class PixelRasOp : public ::testing::Test {};
using WidePixelKinds = ::testing::Types<CImg8, CImg32>;
TYPED_TEST_SUITE(PixelRasOp, WidePixelKinds);

TYPED_TEST(PixelRasOp, TransparentPixelsAreLeftOut) {
    const auto image = imageOf<TypeParam>(Picture(3, {1, 2, 3, 4, 5, 6}), ImgAlignNone);
    const auto second = imageOf<TypeParam>(Picture(2, {9, 7}), ImgAlignNone);
    RasOpXfmAttr attr = at(1, 1);
    attr.transparent = true;
    attr.transparentValue = 9;
    image->doRasOpInPlace(RasOpAnd, attr, *second);
    EXPECT_EQ(pictureOf(image.get()), Picture(3, {1, 2, 3, 4, 5, 7}));
}

TYPED_TEST(PixelRasOp, ColoursFillEveryPixelOrAllOthers) {
    const auto image = imageOf<TypeParam>(Picture(3, {1, 2, 3, 2, 5, 6}), ImgAlignDword);
    image->doRasOpInPlace(RasOpAnd, true, 2, 8);
    EXPECT_EQ(pictureOf(image.get()), Picture(3, {8, 2, 8, 2, 8, 8}));
    image->doRasOpInPlace(static_cast<RasOpT>(5), false, 0, 9);
    EXPECT_EQ(pictureOf(image.get()), Picture(3, {8, 2, 8, 2, 8, 8}));
    image->doRasOpInPlace(RasOpFill, false, 2, 9);
    EXPECT_EQ(pictureOf(image.get()), Picture(3, 2, 9));
    EXPECT_EQ(CImgErr::get(), ImgErrNone);
}

TEST(PaletteRasOp, ValuesCountByTheirLowByteAndFillsReachThePadding) {
    const auto image = imageOf<CImg8>(Picture(3, {1, 2, 3}), ImgAlignDword);
    image->doRasOpInPlace(RasOpFill, true, 0xAB02, 0xCD07);
    EXPECT_EQ(pictureOf(image.get()), Picture(3, {7, 2, 7}));
    EXPECT_EQ(image->peekData()[3], 0);
    image->doRasOpInPlace(RasOpFill, false, 0, 0xCD07);
    EXPECT_EQ(image->peekData()[3], 7);
}

TEST(PaletteRasOp, KeptCopyingFormsAlwaysFail) {
    const auto image = imageOf<CImg8>(Picture(3, {1, 2, 3}), ImgAlignNone);
    RasOpXfmAttr attr = at(0, 0);
    EXPECT_EQ(image->doRasOp(RasOpCopy, attr, *image), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrCreate);
    imgRaise(ImgErrNone);
    EXPECT_EQ(image->doRasOp(RasOpFill, false, 0, 1), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrCreate);
}

TEST(RgbRasOp, KeptCopiesAreInOrder0WhileTheSecondImageGoesInUnexchanged) {
    const auto image = imageOf<CImg32>(Picture(2, {0x010203, 0x010203}), ImgAlignNone);
    const auto second = imageOf<CImg32>(Picture(1, {0x0A0B0C}), ImgAlignNone);
    RasOpXfmAttr attr = at(1, 0);
    const auto copy = owned<CImg32>(image->doRasOp(RasOpCopy, attr, *second));
    EXPECT_EQ(copy->getRGBOrder(), RGBOrderRGB);
    EXPECT_EQ(pictureOf(copy.get()), Picture(2, {0x030201, 0x0A0B0C}));
    const auto filled = owned<CImg32>(image->doRasOp(RasOpFill, true, 0x030201, 5));
    EXPECT_EQ(pictureOf(filled.get()), Picture(2, {0x030201, 0x030201}));
}

TEST(RgbRasOp, CopiesAreReturnedAlsoWhenTheSecondImageDoesNotFit) {
    const auto image = imageOf<CImg32>(Picture(1, 1, 0x050005), ImgAlignNone);
    const auto second = imageOf<CImg32>(Picture(2, 1), ImgAlignNone);
    RasOpXfmAttr attr = at(0, 0);
    const auto copy = owned<CImg32>(image->doRasOp(RasOpCopy, attr, *second));
    EXPECT_EQ(pictureOf(copy.get()), Picture(1, 1, 0x050005));
    EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
}

}  // namespace
}  // namespace tilepress::test
