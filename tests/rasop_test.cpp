#include "kernels/paste_rows.h"
#include "support/pictures.h"

using namespace support;
using tilepress::PasteAnd, tilepress::PasteOr, tilepress::PasteSet;

namespace {

RasOpXfmAttr at(std::uint32_t column, std::uint32_t row, bool transparent = false, std::uint32_t value = 0) {
    RasOpXfmAttr attr{0, row, column, 0, false, 0};
    attr.transparent = transparent;
    attr.transparentValue = value;
    return attr;
}

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
Bytes pasted(Bytes dst, std::size_t column, const Bytes& src) {
    tilepress::pasteRows<Rule>({dst.data(), dst.size(), dst.size()}, column, 0, src.data(), src.size(), 1);
    return dst;
}

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
            ASSERT_EQ(pasted<Rule>(dst, column, src), expected) << column << ' ' << count;
        }
}

TEST(PastedRows, AreTheWalkByBytes) {
    comparePaste<PasteSet>(joinSet);
    comparePaste<PasteAnd>(joinAnd);
    comparePaste<PasteOr>(joinOr);
}

TEST(PastedRows, KeptShiftedCopiesProtectTheLowBitsOfABytes) {
    EXPECT_EQ(pasted<PasteSet>({0xFF, 0xFF, 0xFF}, 3, {0xA5}), (Bytes{0xFC, 0xFF, 0xFF}));
    EXPECT_EQ(pasted<PasteSet>({0xFF, 0xFF, 0xFF}, 3, {0xA5, 0x3C}), (Bytes{0xFC, 0xA7, 0xFF}));
    EXPECT_EQ(pasted<PasteSet>({0, 0, 0}, 6, {0xFF, 0xFF}), (Bytes{0x03, 0xC3, 0}));
}

// --- bilevel images -------------------------------------------------------------------

Owned<CImg1> bilevel(std::size_t width, std::size_t height, ImgAlignmentEnum alignment, int fill) {
    auto image = blank<CImg1>(width, height, alignment);
    std::memset(image->peekData(), fill, image->getTotalBytes());
    return image;
}

TEST(BilevelRasOp, KeptRowsPaddedFurtherSpillIntoTheNextAndEndWithTheBlock) {
    const auto image = bilevel(64, 2, ImgAlignDword, 0), second = bilevel(24, 2, ImgAlignDword, 0xFF);
    RasOpXfmAttr attr = at(40, 0);
    image->doRasOpInPlace(RasOpCopy, attr, *second);
    EXPECT_EQ(bytesOf(*image), (Bytes{0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF}));
    Bytes guarded(17);
    tilepress::pasteRows<PasteSet>({guarded.data(), 16, 8}, 40, 0, second->peekData(), 4, 2);
    EXPECT_EQ(guarded[16], 0);
}

// Code 0 is AND in copies and copies in place, code 3 does nothing in place; transparent ones OR.
TEST(BilevelRasOp, KeptCodesDifferInCopiesAndInPlace) {
    struct Case {
        RasOpT op;
        bool transparent;
        unsigned char copied, inPlace;
    };
    for (const Case& c :
         {Case{RasOpAnd, false, 0x30, 0x3C}, Case{RasOpAnd, true, 0x30, 0xFC}, Case{RasOpCopy, false, 0x3C, 0x3C},
          Case{RasOpCopy, true, 0xFC, 0xFC}, Case{RasOpCopy2, false, 0x3C, 0x3C}, Case{RasOpCopy3, false, 0x3C, 0xF0},
          Case{RasOpCopy3, true, 0xFC, 0xF0}, Case{RasOpFill, false, 0x3C, 0x3C}, Case{RasOpFill, true, 0xFC, 0xFC}}) {
        const auto image = bilevel(16, 1, ImgAlignDword, 0xF0), second = bilevel(16, 1, ImgAlignNone, 0x3C);
        RasOpXfmAttr attr = at(0, 0, c.transparent);
        const auto copy = owned<CImg1>(image->doRasOp(c.op, attr, *second));
        EXPECT_EQ(copy->peekData()[1], c.copied) << c.op;
        EXPECT_EQ(copy->getBackgroundInterpretation(), 0x112233u);
        EXPECT_EQ(copy->getForegroundInterpretation(), 0x445566u);
        EXPECT_EQ(copy->getAlignment(), ImgAlignDword);
        EXPECT_EQ(image->peekData()[1], 0xF0);
        image->doRasOpInPlace(c.op, attr, *second);
        EXPECT_EQ(image->peekData()[1], c.inPlace) << c.op;
        EXPECT_EQ(CImgErr::get(), ImgErrNone);
    }
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

SUITE_FOR(RasOp, PixelKinds);

TYPED_TEST(RasOp, PlacesMustLieInsideWithoutWrapping) {
    const Picture zeros(16, 4), ones(8, 2, kWhole<TypeParam>);
    Picture corner = zeros;
    for (std::size_t y = 2; y < 4; ++y)
        for (std::size_t x = 8; x < 16; ++x) corner.at(x, y) = kWhole<TypeParam>;
    struct Case {
        Picture second;
        std::uint32_t column, row;
        bool fits;
    };
    for (const Case& c :
         {Case{ones, 8, 2, true}, Case{ones, 9, 2, false}, Case{ones, 8, 3, false}, Case{ones, 0xFFFFFFFF, 0, false},
          Case{ones, 0, 0xFFFFFFFF, false}, Case{Picture(17, 1), 0, 0, false}, Case{Picture(1, 5), 0, 0, false}}) {
        const auto image = imageOf<TypeParam>(zeros), second = imageOf<TypeParam>(c.second);
        RasOpXfmAttr attr = at(c.column, c.row);
        image->doRasOpInPlace(RasOpCopy, attr, *second);
        EXPECT_EQ(CImgErr::get(), c.fits ? ImgErrNone : ImgErrBadArgument) << c.column << ' ' << c.row;
        EXPECT_EQ(pictureOf(image), c.fits ? corner : zeros) << c.column << ' ' << c.row;
    }
}

TYPED_TEST(RasOp, OtherCodesAndImagesOverThemselvesChangeNothing) {
    const Picture picture = randomPicture<TypeParam>(9, 3);
    const auto image = imageOf<TypeParam>(picture), second = imageOf<TypeParam>(Picture(9, 3));
    RasOpXfmAttr attr = at(0, 0);
    for (int code : {-1, 5}) {
        imgRaise(ImgErrDecode);
        image->doRasOpInPlace(static_cast<RasOpT>(code), attr, *second);
        EXPECT_EQ(pictureOf(image), picture);
        EXPECT_EQ(CImgErr::get(), ImgErrNone);
    }
    image->doRasOpInPlace(RasOpCopy, attr, *image);
    EXPECT_EQ(pictureOf(image), picture);
}

TYPED_TEST(RasOp, OtherKindsAndImagesWithoutPixelsAreRefused) {
    const Picture picture = randomPicture<TypeParam>(9, 3);
    const auto image = imageOf<TypeParam>(picture), second = imageOf<TypeParam>(Picture(9, 3));
    const auto one = blank<CImg1>(1, 1);
    const auto word = blank<CImg32>(1, 1);
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
    EXPECT_EQ(pictureOf(image), picture);
}

// --- palette and RGB ------------------------------------------------------------------

SUITE_FOR(PixelRasOp, ColourKinds);

TYPED_TEST(PixelRasOp, TransparentPixelsAreLeftOut) {
    const auto image = imageOf<TypeParam>(Picture(3, {1, 2, 3, 4, 5, 6}));
    const auto second = imageOf<TypeParam>(Picture(2, {9, 7}));
    RasOpXfmAttr attr = at(1, 1, true, 9);
    image->doRasOpInPlace(RasOpAnd, attr, *second);
    EXPECT_EQ(pictureOf(image), Picture(3, {1, 2, 3, 4, 5, 7}));
}

TYPED_TEST(PixelRasOp, ColoursFillEveryPixelOrAllOthers) {
    const auto image = imageOf<TypeParam>(Picture(3, {1, 2, 3, 2, 5, 6}), ImgAlignDword);
    image->doRasOpInPlace(RasOpAnd, true, 2, 8);
    EXPECT_EQ(pictureOf(image), Picture(3, {8, 2, 8, 2, 8, 8}));
    image->doRasOpInPlace(static_cast<RasOpT>(5), false, 0, 9);
    EXPECT_EQ(pictureOf(image), Picture(3, {8, 2, 8, 2, 8, 8}));
    image->doRasOpInPlace(RasOpFill, false, 2, 9);
    EXPECT_EQ(pictureOf(image), Picture(3, 2, 9));
    EXPECT_EQ(CImgErr::get(), ImgErrNone);
}

TEST(PaletteRasOp, ValuesCountByTheirLowByteAndFillsReachThePadding) {
    const auto image = imageOf<CImg8>(Picture(3, {1, 2, 3}), ImgAlignDword);
    image->doRasOpInPlace(RasOpFill, true, 0xAB02, 0xCD07);
    EXPECT_EQ(bytesOf(*image), (Bytes{7, 2, 7, 0}));
    image->doRasOpInPlace(RasOpFill, false, 0, 0xCD07);
    EXPECT_EQ(bytesOf(*image), (Bytes{7, 7, 7, 7}));
}

TEST(PaletteRasOp, KeptCopyingFormsAlwaysFail) {
    const auto image = imageOf<CImg8>(Picture(3, {1, 2, 3}));
    RasOpXfmAttr attr = at(0, 0);
    EXPECT_EQ(image->doRasOp(RasOpCopy, attr, *image), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrCreate);
    imgRaise(ImgErrNone);
    EXPECT_EQ(image->doRasOp(RasOpFill, false, 0, 1), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrCreate);
}

TEST(RgbRasOp, KeptCopiesAreInOrder0WhileTheSecondImageGoesInUnexchanged) {
    const auto image = imageOf<CImg32>(Picture(2, {0x010203, 0x010203}));
    const auto second = imageOf<CImg32>(Picture(1, {0x0A0B0C})), wide = blank<CImg32>(3, 1);
    RasOpXfmAttr attr = at(1, 0);
    const auto copy = owned<CImg32>(image->doRasOp(RasOpCopy, attr, *second));
    EXPECT_EQ(copy->getRGBOrder(), RGBOrderRGB);
    EXPECT_EQ(pictureOf(copy), Picture(2, {0x030201, 0x0A0B0C}));
    EXPECT_EQ(result<CImg32>(image->doRasOp(RasOpFill, true, 0x030201, 5)), Picture(2, {0x030201, 0x030201}));
    EXPECT_EQ(result<CImg32>(image->doRasOp(RasOpCopy, attr, *wide)), Picture(2, {0x030201, 0x030201}));
    EXPECT_EQ(CImgErr::get(), ImgErrBadArgument) << "a copy all the same";
}

}  // namespace
