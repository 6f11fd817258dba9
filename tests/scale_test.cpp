#include "kernels/cells.h"
#include "support/expose.h"
#include "support/pictures.h"
#include "tilepress/Rothstein.h"

#include <cstdlib>
#include <functional>
#include <limits>

namespace support {

EXPOSE(Reduce1, CImg1, Reduce, CImg1* (CImg1::*)(ImgULong, ImgULong, const ImgRect&));
EXPOSE(ReduceInk8, CImg8, Reduce_bkg, CImg8* (CImg8::*)(ImgULong, ImgULong, const ImgRect&));
EXPOSE(ReduceInk32, CImg32, Reduce_bkg, CImg32* (CImg32::*)(ImgULong, ImgULong, const ImgRect&));
EXPOSE(QuickReduce1, CImg1, QuickReduce_bkg, CImg1* (CImg1::*)(ImgULong, ImgULong, ImgRect&, ImgULong));

}  // namespace support

using namespace support;

namespace {

ImgScaleAttr bilevel{1}, grey{32};

// --- models: cell k of n has the source pixels from ceil(k * size / n) on -----------

std::size_t startOf(std::size_t k, std::size_t size, std::size_t n) { return (k * size + n - 1) / n; }

Picture enlarged(const Picture& picture, std::size_t width, std::size_t height) {
    Picture result(width, height);
    for (std::size_t j = 0; j < picture.height; ++j)
        for (std::size_t i = 0; i < picture.width; ++i)
            for (std::size_t y = startOf(j, height, picture.height); y < startOf(j + 1, height, picture.height); ++y)
                for (std::size_t x = startOf(i, width, picture.width); x < startOf(i + 1, width, picture.width); ++x)
                    result.at(x, y) = picture.at(i, j);
    return result;
}

using Cell = std::vector<std::uint32_t>;  // row by row

Picture reduced(const Picture& picture, std::size_t width, std::size_t height,
                const std::function<std::uint32_t(const Cell&)>& merge) {
    Picture result(width, height);
    for (std::size_t j = 0; j < height; ++j)
        for (std::size_t i = 0; i < width; ++i) {
            Cell cell;
            for (std::size_t y = startOf(j, picture.height, height); y < startOf(j + 1, picture.height, height); ++y)
                for (std::size_t x = startOf(i, picture.width, width); x < startOf(i + 1, picture.width, width); ++x)
                    cell.push_back(picture.at(x, y));
            result.at(i, j) = merge(cell);
        }
    return result;
}

std::uint32_t firstOf(const Cell& cell) { return cell[0]; }
std::uint32_t inkOf(const Cell& cell) { return std::count(cell.begin(), cell.end(), 1) > 0; }
std::uint32_t greyOf(const Cell& cell) {
    unsigned char* map = nullptr;
    CreateGreyMapping(static_cast<ImgULong>(cell.size() + 1), &map, 0);
    const std::uint32_t level = map[std::count(cell.begin(), cell.end(), 1)];
    std::free(map);
    return level * 0x010101;
}

// --- cases ----------------------------------------------------------------------------

std::mt19937 randomly(97);
std::size_t from(std::size_t low, std::size_t high) { return low + randomly() % (high - low + 1); }

/// Pixels at random, most of them 0.
template <class Image>
Picture sparse(std::size_t width, std::size_t height, std::size_t oneOf) {
    Picture picture = randomPicture<Image>(width, height);
    for (auto& pixel : picture.pixels)
        if (randomly() % oneOf) pixel = 0;
    return picture;
}

struct Case {
    ImgRect r;
    std::size_t width, height;  // of the whole picture
    std::size_t smallWidth, smallHeight, largeWidth, largeHeight;
};

/// Every width from 1 to 70 at every place in a byte, with sizes to scale to.
const std::vector<Case>& cases() {
    static const std::vector<Case> all = [] {
        std::vector<Case> list;
        for (std::size_t w = 1; w <= 70; ++w)
            for (std::size_t left = 0; left < 8; ++left) {
                const std::size_t h = from(1, 9), top = from(0, 2);
                list.push_back({ImgRect(left, top, left + w - 1, top + h - 1), left + w + from(0, 9),
                                top + h + from(0, 1), from(1, w), from(1, h), w + from(0, 2 * w), h + from(0, h)});
            }
        // Cells wider than a word and bands of more rows than are added up at once.
        list.push_back({ImgRect(3, 1, 999, 40), 1003, 42, 7, 2, 2311, 45});
        list.push_back({ImgRect(0, 0, 402, 61), 403, 62, 31, 3, 403, 200});
        list.push_back({ImgRect(130, 0, 320, 30), 321, 31, 1, 1, 1000, 31});
        list.push_back({ImgRect(0, 0, 104, 104), 105, 105, 1, 1, 106, 106});
        return list;
    }();
    return all;
}

SUITE_FOR(ScalePixels, ColourKinds);

/// Scales a rectangle to a size and compares, the bits that pad the result's rows included.
void expectScaled(IImg& image, const ImgRect& r, std::size_t width, std::size_t height, ImgScaleAttr& attr,
                  const Picture& expected) {
    const Owned<> result(image.scale(r, static_cast<ImgULong>(width), static_cast<ImgULong>(height), attr));
    ASSERT_EQ(pictureOf(result), expected)
        << r.getWidth() << " x " << r.getHeight() << " at " << r.getLeft() << " to " << width << " x " << height;
    if (result->getType() == ImageTypeBilevel) {
        ASSERT_EQ(bytesOf(static_cast<CImg1&>(*result)), bytesOf(*imageOf<CImg1>(expected)));
    }
}

/// A case's sizes in all combinations: what grows grows first, then the rest is merged.
void expectScalings(IImg& image, const Case& c, const Picture& source, ImgScaleAttr& attr,
                    const std::function<std::uint32_t(const Cell&)>& merge) {
    for (const std::size_t width : {c.smallWidth, source.width, c.largeWidth})
        for (const std::size_t height : {c.smallHeight, source.height, c.largeHeight}) {
            const bool same = width == source.width && height == source.height;
            if (same && image.getType() == ImageTypeBilevel) continue;  // a sub-image, of which some are refused
            const Picture grown = enlarged(source, std::max(width, source.width), std::max(height, source.height));
            const bool merges = width < source.width || height < source.height;
            expectScaled(image, c.r, width, height, attr, merges ? reduced(grown, width, height, merge) : grown);
            if (::testing::Test::HasFatalFailure()) return;
        }
}

TYPED_TEST(ScalePixels, CellsAreRepeatedAndPicked) {
    for (const Case& c : cases()) {
        const Picture whole = randomPicture<TypeParam>(c.width, c.height);
        expectScalings(*imageOf<TypeParam>(whole, kAlignments[c.width % 3]), c, cut(whole, c.r), bilevel, firstOf);
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(ScalePixels, EveryFactorRepeatsInPlace) {
    for (std::size_t w : {1, 2, 15, 16, 17, 33, 64})
        for (std::size_t factor = 1; factor <= 20; ++factor) {
            const Picture source = randomPicture<TypeParam>(w, 2);
            const auto image = imageOf<TypeParam>(source);
            for (std::size_t wide : {w * factor, w * factor + w / 2})
                expectScaled(*image, image->getRect(), wide, 3, bilevel, enlarged(source, wide, 3));
            if (this->HasFatalFailure()) return;
        }
}

TEST(ScalePixels, ResultsHaveTheColoursOfTheirSource) {
    const auto palette = imageOf<CImg8>(randomPicture<CImg8>(4, 4), ImgAlignDword);
    palette->getColorMap()->entries[7].green = 99;
    const auto rgb = imageOf<CImg32>(randomPicture<CImg32>(4, 4));
    for (ImgULong size : {3, 5}) {
        const auto a = owned<CImg8>(palette->scale(ImgRect(4, 4), size, size, bilevel));
        EXPECT_EQ(a->getColorMap()->entries[7].green, 99);
        EXPECT_EQ(a->getAlignment(), ImgAlignDword);
        EXPECT_EQ(owned<CImg32>(rgb->scale(ImgRect(4, 4), size, size, bilevel))->getRGBOrder(), RGBOrderBGR);
    }
}

// The picture as ink, and its complement on background 1.
TEST(ScaleBilevel, KeepsInkOrShowsItsShare) {
    for (const Case& c : cases())
        for (const bool inverted : {false, true})
            for (const auto& [attr, merge] : {std::pair(&bilevel, &inkOf), {&grey, &greyOf}}) {
                const Picture whole = sparse<CImg1>(c.width, c.height, from(1, 12));
                const auto image = imageOf<CImg1>(inverted ? complement(whole) : whole, kAlignments[c.width % 3]);
                image->setBackgroundColor(inverted);
                expectScalings(*image, c, cut(whole, c.r), *attr, merge);
                if (::testing::Test::HasFatalFailure()) return;
            }
}

// A row is too low for a sample: its background counts as 0, though the enlargement's sample would say 1.
TEST(ScaleBilevel, BlackStaysBlackInTwoSteps) {
    const auto image = imageOf<CImg1>(Picture(100, 1, 1));
    const auto result = owned<CImg1>(image->scale(ImgRect(100, 1), 50, 10, bilevel));
    EXPECT_EQ(pictureOf(result), Picture(50, 10, 1));
}

TEST(ScaleBilevel, KeptTheAlignmentBecomesADisplayColour) {
    for (ImgAlignmentEnum alignment : kAlignments)
        for (ImgULong size : {5, 10, 15}) {
            const auto image = imageOf<CImg1>(Picture(10, 10, 1), alignment);
            image->setBackgroundColor(1);
            const auto result = owned<CImg1>(image->scale(ImgRect(10, 10), size, size, bilevel));
            const bool same = size == 10;
            EXPECT_EQ(pictureOf(result), Picture(size, size)) << size;
            EXPECT_EQ(result->getBackgroundInterpretation(), same ? 0x112233 : static_cast<ImgULong>(alignment))
                << size;
            EXPECT_EQ(result->getForegroundInterpretation(), same ? 0x445566 : 0xFF000000) << size;
            EXPECT_EQ(result->getAlignment(), same ? alignment : ImgAlignNone) << size;
            EXPECT_TRUE(result->isBackgroundKnown()) << size;
            EXPECT_EQ(result->getBackgroundColor(), 0u) << size;
            const auto levels = owned<CImg32>(image->scale(ImgRect(10, 10), 5, size, grey));
            EXPECT_EQ(levels->getRGBOrder(), RGBOrderRGB) << size;
        }
}

TEST(ScaleGrey, CellsTooLargeToCountAreRefused) {
    const std::unique_ptr<CImg1> image(CImg1::create(65536, 65536, 0, 0, ImgAlignNone));
    if (!image) GTEST_SKIP() << "no memory";
    image->setBackgroundColor(0);
    EXPECT_EQ(image->scale(ImgRect(65536, 65536), 1, 1, grey), nullptr);
}

// --- requests ---------------------------------------------------------------------------

TEST(Scale, HowSizesChange) {
    struct Request {
        ImgULong width, height;
        ImageScaleType how;
    };
    for (const Request& c :
         {Request{100, 100, ImageScaleSame}, Request{100, 150, ImageScaleEnlarge}, Request{150, 100, ImageScaleEnlarge},
          Request{101, 101, ImageScaleEnlarge}, Request{50, 100, ImageScaleReduce}, Request{100, 99, ImageScaleReduce},
          Request{99, 99, ImageScaleReduce}, Request{50, 150, ImageScaleReduceXEnlargeY},
          Request{150, 50, ImageScaleEnlargeXReduceY}})
        EXPECT_EQ(CImg::ScaleHow(100, 100, c.width, c.height), c.how) << c.width << ' ' << c.height;
}

SUITE_FOR(Scale, PixelKinds);

TYPED_TEST(Scale, FactorsRoundUp) {
    const auto size = [](std::size_t w, std::size_t h, double factor) {
        const auto image = imageOf<TypeParam>(Picture(w, h));
        const auto result = owned<TypeParam>(image->scale(factor, bilevel));
        return result ? std::pair(result->getWidth(), result->getHeight()) : std::pair<ImgULong, ImgULong>(0, 0);
    };
    using Size = std::pair<ImgULong, ImgULong>;
    EXPECT_EQ(size(101, 101, 0.5), Size(51, 51));
    EXPECT_EQ(size(10, 10, 0.1), Size(1, 1));
    EXPECT_EQ(size(100, 50, 1.1), Size(111, 56));  // the products are a little more than 110 and 55
    for (double factor : {0.0, -0.0, -1.0, -429496729.5, 1e10, std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(size(10, 10, factor), Size(0, 0)) << factor;
    for (std::size_t width : {1, 10})
        EXPECT_EQ(size(width, 11 - width, 429496729.7), Size(0, 0)) << "2^32 + 1 pixels one way";
}

TYPED_TEST(Scale, RectanglesGiveTheirSizes) {
    const Picture picture = randomPicture<TypeParam>(30, 20);
    const auto image = imageOf<TypeParam>(picture);
    image->setBackgroundColor(0);
    const auto result = owned<TypeParam>(image->scale(ImgRect(3, 4, 12, 9), ImgRect(100, 100, 118, 110), bilevel));
    EXPECT_EQ(pictureOf(result), enlarged(cut(picture, ImgRect(3, 4, 12, 9)), 19, 11));
}

TYPED_TEST(Scale, WhatCannotBeReadIsRefused) {
    const auto image = imageOf<TypeParam>(Picture(40, 30));
    struct {
        ImgULong width, height;
    } sizes[] = {{50, 50}, {2, 2}, {2, 50}, {50, 2}};
    for (const auto& size : sizes) {
        for (const ImgRect& r :
             {ImgRect(30, 20, 40, 29), ImgRect(0, 20, 10, 30), ImgRect(10, 5, 2, 9), ImgRect(0, 9)}) {
            CImgErr::sm_errcode = ImgErrNone;
            EXPECT_EQ(image->scale(r, size.width, size.height, bilevel), nullptr);
            EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
        }
        const auto emptied = imageOf<TypeParam>(Picture(40, 30));
        if constexpr (requires { emptied->setExtents(400, 300); }) {
            emptied->setExtents(400, 300);
            EXPECT_EQ(emptied->scale(ImgRect(100, 100), size.width * 3, size.height, bilevel), nullptr);
            emptied->setExtents(40, 30);
        }
        std::free(emptied->ownData());
        EXPECT_EQ(emptied->scale(ImgRect(20, 20), size.width, size.height, bilevel), nullptr);
    }
    CImgErr::sm_errcode = ImgErrNone;
    for (auto [width, height] : {std::pair(0, 10), {10, 0}, {0, 30}, {30, 0}})
        for (ImgScaleAttr* attr : {&bilevel, &grey})
            for (const ImgRect& r : {ImgRect(20, 20), ImgRect(30, 20, 40, 29)})
                EXPECT_EQ(image->scale(r, width, height, *attr), nullptr) << width << ' ' << height;
    EXPECT_EQ(CImgErr::get(), ImgErrNone) << "no size is refused before anything else";
}

// --- workers that no request reaches ----------------------------------------------------

TEST(ScaleWorkers, KeptQuickReductionsOnAnotherBackgroundAreBlank) {
    for (const Case& c : cases()) {
        const Picture whole = sparse<CImg1>(c.width, c.height, 3), source = cut(whole, c.r);
        const auto image = imageOf<CImg1>(whole, kAlignments[c.width % 3]);
        image->setBackgroundColor(c.width % 2);
        ImgRect r = c.r;
        const auto plain = owned<CImg1>((image.get()->*workerOf(Reduce1{}))(c.smallWidth, c.smallHeight, r));
        ASSERT_EQ(pictureOf(plain.get()), reduced(source, c.smallWidth, c.smallHeight, firstOf));
        const auto quick = [&](ImgULong background) {
            return owned<CImg1>((image.get()->*workerOf(QuickReduce1{}))(c.smallWidth, c.smallHeight, r, background));
        };
        ASSERT_EQ(pictureOf(quick(0).get()), reduced(source, c.smallWidth, c.smallHeight, inkOf));
        ASSERT_EQ(pictureOf(quick(1).get()), Picture(c.smallWidth, c.smallHeight))
            << "Kept: blank on another background";
    }
}

template <class Image, class Name>
void compareOthers(Name name, bool sourceSize) {
    for (const Case& c : cases()) {
        Picture whole = sparse<Image>(c.width, c.height, 5);
        for (auto& pixel : whole.pixels) pixel = pixel ? pixel & 0xFF : 9;
        const Picture source = cut(whole, c.r);
        const auto image = imageOf<Image>(whole, ImgAlignDword);
        image->setBackgroundColor(9);
        const Picture small = reduced(source, c.smallWidth, c.smallHeight, [](const Cell& cell) {
            const auto other = std::find_if(cell.begin(), cell.end(), [](std::uint32_t p) { return p != 9; });
            return other == cell.end() ? 9 : *other;
        });
        Picture expected = sourceSize ? Picture(source.width, source.height) : small;
        for (std::size_t y = 0; y < small.height; ++y)
            for (std::size_t x = 0; x < small.width; ++x) expected.at(x, y) = small.at(x, y);
        ASSERT_EQ(pictureOf(owned<Image>((image.get()->*workerOf(name))(c.smallWidth, c.smallHeight, c.r)).get()),
                  expected);
    }
}

TEST(ScaleWorkers, PaletteReductionsPreferOtherPixels) { compareOthers<CImg8>(ReduceInk8{}, false); }
TEST(ScaleWorkers, KeptRgbReductionsKeepTheSourcesSize) { compareOthers<CImg32>(ReduceInk32{}, true); }

}  // namespace
