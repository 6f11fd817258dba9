#include "support/pictures.h"

#include <limits>

using namespace support;

namespace {

// --- sub-images -----------------------------------------------------------------------

SUITE_FOR(SubImages, PixelKinds);

TYPED_TEST(SubImages, PixelsAreThoseOfTheRectangle) {
    for (ImgAlignmentEnum alignment : kAlignments)
        for (int width = 3; width <= 70; ++width) {
            const Picture picture = randomPicture<TypeParam>(static_cast<std::size_t>(width), 4);
            const auto image = imageOf<TypeParam>(picture, alignment);
            for (int left = 0; left < 10 && left < width - 1; ++left)
                for (int right : {left + 1, left + 8, left + 17, width - 1}) {
                    if (right >= width) continue;
                    const ImgRect rect(left, 1, right, 3);
                    ASSERT_EQ(result<TypeParam>(image->getSubImage(rect)), cut(picture, rect))
                        << width << ": " << left << " to " << right;
                }
        }
}

TYPED_TEST(SubImages, RectanglesNotInsideAreRefused) {
    const auto image = imageOf<TypeParam>(Picture(20, 10));
    for (const ImgRect& rect : {ImgRect(15, 0, 20, 3), ImgRect(0, 8, 5, 10), ImgRect(5, 5, 2, 7), ImgRect(2, 7, 5, 5),
                                ImgRect(30, 2, 35, 4), ImgRect(0, 0, 20, 9), ImgRect(-1, 0, 3, 3)}) {
        imgRaise(ImgErrNone);
        EXPECT_EQ(image->getSubImage(rect), nullptr) << rect.getLeft() << ' ' << rect.getTop();
        EXPECT_EQ(image->getLastError(), ImgErrBadArgument);
    }
    std::free(image->ownData());
    EXPECT_EQ(image->getSubImage(ImgRect(1, 1, 3, 3)), nullptr);
}

TEST(BilevelSubImages, KeptRectanglesThatTouchAnEdgeByOneLineAreRefused) {
    const auto image = imageOf<CImg1>(Picture(10, 10, 1));
    for (const ImgRect& rect : {ImgRect(0, 0, 9, 0), ImgRect(0, 0, 0, 9), ImgRect(0, 9, 9, 9), ImgRect(9, 0, 9, 9)}) {
        imgRaise(ImgErrNone);
        EXPECT_EQ(image->getSubImage(rect), nullptr) << rect.getLeft() << ' ' << rect.getTop();
        EXPECT_EQ(image->getLastError(), ImgErrBadArgument);
    }
    EXPECT_EQ(result<CImg1>(image->getSubImage(ImgRect(0, 0, 9, 1))), Picture(10, 2, 1));
    EXPECT_EQ(imageOf<CImg1>(Picture(10, 1, 1))->getSubImage(ImgRect(10, 1)), nullptr);
    EXPECT_EQ(result<CImg8>(imageOf<CImg8>(Picture(10, 1, 5))->getSubImage(ImgRect(10, 1))), Picture(10, 1, 5));
}

TEST(BilevelSubImages, KeptFullSizesCopyTheWholeBlockWhereverTheyLie) {
    const auto image = imageOf<CImg1>(randomPicture<CImg1>(10, 10), ImgAlignDword);
    image->peekData()[3] = 0x5A;  // padding
    for (const ImgRect& rect : {ImgRect(0, 0, 9, 9), ImgRect(1, 1, 10, 10)}) {
        const auto part = owned<CImg1>(image->getSubImage(rect));
        ASSERT_TRUE(part);
        EXPECT_EQ(std::memcmp(part->peekData(), image->peekData(), image->getTotalBytes()), 0);
    }
    EXPECT_EQ(image->getLastError(), ImgErrNone);
    const auto changed = imageOf<CImg1>(Picture(10, 10, 1));
    changed->setAlignment(ImgAlignDword);
    const auto longer = owned<CImg1>(changed->getSubImage(ImgRect(0, 0, 9, 9)));
    ASSERT_EQ(longer->getTotalBytes(), 40u);
    for (std::size_t i = 20; i < 40; ++i) EXPECT_EQ(longer->peekData()[i], 0) << "past the source's block " << i;
}

TEST(BilevelSubImages, KeptPadBitsCarryThePixelsThatFollow) {
    const auto image = imageOf<CImg1>(Picture(16, 3, 1));
    const auto part = owned<CImg1>(image->getSubImage(ImgRect(11, 1, 15, 2)));
    EXPECT_EQ(bytesOf(*part), (Bytes{0xFF, 0xF8})) << "the next row's first pixels, and past the block";
    EXPECT_EQ(part->getBackgroundInterpretation(), 0x112233u);
}

TEST(PaletteSubImages, KeptOnlyTheLastRowShowsPaddingAndItHoldsWhatFollows) {
    const auto image = imageOf<CImg8>(Picture(6, {1, 2, 3, 4, 5, 6, 11, 12, 13, 14, 15, 16}), ImgAlignDword);
    image->peekData()[12] = 21;  // past the last row as the table steps
    const auto part = owned<CImg8>(image->getSubImage(ImgRect(1, 0, 5, 1)));
    EXPECT_EQ(bytesOf(*part), (Bytes{2, 3, 4, 5, 6, 12, 13, 14, 15, 16, 21, 0, 0, 0, 0, 0}));
}

// --- inversion ------------------------------------------------------------------------

TEST(Inversion, ComplementsEveryByteInPlace) {
    for (std::size_t width : {1, 13, 127, 300}) {
        const auto image = imageOf<CImg1>(randomPicture<CImg1>(width, 3), ImgAlignDword);
        image->setBackgroundColor(0);
        const Bytes before = bytesOf(*image);
        EXPECT_EQ(image->invert(), image.get());
        for (std::size_t i = 0; i < before.size(); ++i) ASSERT_EQ(image->peekData()[i], before[i] ^ 0xFF) << i;
        EXPECT_EQ(image->getBackgroundColor(), 0u);
        std::free(image->ownData());
        EXPECT_EQ(image->invert(), image.get()) << "without pixels too";
        EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
    }
}

// --- lines ----------------------------------------------------------------------------

/// The line step by step with its two error terms; pixels outside are skipped.
void lineModel(Picture& picture, IntPtT from, IntPtT to) {
    const bool inOrder = from.x < to.x;
    const IntPtT a = inOrder ? from : to, b = inOrder ? to : from;
    const int sx = b.x < a.x ? -1 : 1, sy = b.y < a.y ? -1 : 1;
    const int dx = std::abs(b.x - a.x), dy = std::abs(b.y - a.y);
    int x = a.x, y = a.y;
    const auto plot = [&] {
        if (x >= 0 && y >= 0 && x < static_cast<int>(picture.width) && y < static_cast<int>(picture.height))
            picture.at(static_cast<std::size_t>(x), static_cast<std::size_t>(y)) ^= 1;
    };
    if (dy < dx) {
        for (int e = 2 * dy - dx;; x += sx, e += 2 * dy) {
            plot();
            if (x == b.x) return;
            if (e > 0) y += sy, e -= 2 * dx;
        }
    }
    for (int e = -(dy / 2);; y += sy) {
        e += dx;
        plot();
        if (y == b.y) return;
        if (e > 0) x += sx, e -= dy;
    }
}

TEST(Lines, EveryLineIsTheStepByStepOneAlsoWhereItLeavesTheImage) {
    const Picture empty(13, 11);
    for (int x0 = -9; x0 <= 22; x0 += 3)
        for (int y0 = -8; y0 <= 20; y0 += 2)
            for (int x1 = -7; x1 <= 22; ++x1)
                for (int y1 = -9; y1 <= 19; y1 += 4) {
                    IntPtT from{x0, y0}, to{x1, y1};
                    Picture expected = empty;
                    lineModel(expected, from, to);
                    const auto image = imageOf<CImg1>(empty);
                    image->drawLines(&from, &to, false);
                    ASSERT_EQ(pictureOf(image), expected) << x0 << ',' << y0 << " to " << x1 << ',' << y1;
                    image->drawLines(&to, &from, true);
                    ASSERT_EQ(pictureOf(image), empty) << x0 << ',' << y0 << " to " << x1 << ',' << y1;
                }
}

TEST(Lines, FarEndsAndMissingOnesAreHarmless) {
    const auto image = imageOf<CImg1>(Picture(9, 9));
    constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
    IntPtT from{least, least}, to{most, most};
    image->drawLines(&from, &to, false);
    for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(getPixel(*image, i, i), 1u);
    image->drawLines(nullptr, &to, false);
    image->drawLines(&from, nullptr, false);
    std::free(image->ownData());
    image->drawLines(&from, &to, false);
}

}  // namespace
