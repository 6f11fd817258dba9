#include "support/raised.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <new>

using support::Raised;

TEST(ErrorCell, KeepsTheLastCodeAndCountsSuccessesToo) {
    const Raised raised;
    EXPECT_EQ(imgRaise(ImgErrDecode), ImgErrDecode);
    EXPECT_EQ(CImgErr::sm_errcode, ImgErrDecode);
    imgRaise(ImgErrNone);
    EXPECT_EQ(raised.last(), ImgErrNone);
    EXPECT_EQ(raised.times(), 2u);
}

TEST(ErrorCell, BelongsToTheProcess) {
    std::unique_ptr<CImg32> one(CImg32::create(1, 1, RGBOrderRGB)), other(CImg32::create(1, 1, RGBOrderRGB));
    EXPECT_EQ(one->dupData(one->peekData(), 3), ImgErrCreate);
    EXPECT_EQ(other->getLastError(), ImgErrCreate);
}

template <class Operation>
static void expectRaised(Operation operation, ImgULong times, ImgErr last, const char* what) {
    const Raised raised;
    operation();
    EXPECT_EQ(raised.times(), times) << what;
    EXPECT_EQ(raised.last(), times ? last : Raised::kNothing) << what;
}

TEST(ErrorCell, StepsOfTheOperations) {
    unsigned char bytes[4] = {};
    std::unique_ptr<CImg1> bilevel(CImg1::create(8, 4, 0, 1, ImgAlignNone));
    std::unique_ptr<CImg8> palette(CImg8::create(2, 2, nullptr, ImgAlignNone));
    std::unique_ptr<CImg32> rgb(CImg32::create(8, 4, RGBOrderRGB));
    expectRaised([&] { bilevel->dupData(bytes, 4); }, 1, ImgErrNone, "copying");
    expectRaised([&] { bilevel->dupData(bytes, 3); }, 1, ImgErrCreate, "copying too little");
    expectRaised([&] { palette->dupData(bytes, 4); }, 1, ImgErrNone, "copying into a palette image");
    expectRaised([&] { delete bilevel->clone(); }, 1, ImgErrNone, "clone");
    expectRaised([&] { delete rgb->clone(); }, 0, ImgErrNone, "clone of an RGB image");
    expectRaised([&] { delete CImg1::create(8, 0, 0, 0, ImgAlignNone); }, 0, ImgErrNone, "failed create");
    expectRaised([&] { delete CImg8::create(*palette, nullptr, ImgAlignNone); }, 0, ImgErrNone, "refused conversion");
    bilevel->setAlignment(ImgAlignByte);
    expectRaised([&] { delete bilevel->clone(); }, 1, ImgErrNone, "clone whose conversion is refused");
}

static void expectRect(const ImgRect& r, ImgULong left, ImgULong top, ImgULong right, ImgULong bottom) {
    EXPECT_EQ(r.getLeft(), left);
    EXPECT_EQ(r.getTop(), top);
    EXPECT_EQ(r.getRight(), right);
    EXPECT_EQ(r.getBottom(), bottom);
}

TEST(Rectangle, SizesAreInclusiveAndDoNotDependOnOrder) {
    EXPECT_EQ(ImgRect().getWidth(), 1u);
    expectRect(ImgRect(10, 5), 0, 0, 9, 4);
    EXPECT_EQ(ImgRect(5, 9, 2, 3).getWidth(), 4u);
    EXPECT_EQ(ImgRect(5, 9, 2, 3).getHeight(), 7u);
    expectRect(ImgRect(INT_MIN, 0), 0, 0, INT_MAX, UINT_MAX);
    ImgRect empty;
    empty.setRect(0, 5);
    expectRect(empty, 0, 0, 4294967295u, 4);
    EXPECT_EQ(empty.getWidth(), 0u);
}

TEST(Rectangle, ReorderingTouchesRowsOnlyKept) {
    ImgRect r(7, 2, 3, 4);
    r.reorderTopLeftMin();
    expectRect(r, 7, 2, 3, 4);
    r.reorderBottomLeftMin();
    expectRect(r, 7, 4, 3, 2);
    r.reorderBottomLeftMin();
    expectRect(r, 7, 4, 3, 2);
    r.reorderTopLeftMin();
    expectRect(r, 7, 2, 3, 4);
    r.invertY();
    expectRect(r, 7, 4, 3, 2);
}

TEST(Rectangle, ContainsComparesFields) {
    const ImgRect r(0, 0, 9, 9);
    EXPECT_TRUE(r.contains(r));
    EXPECT_TRUE(r.contains(ImgRect(2, 2, 9, 9)));
    EXPECT_FALSE(r.contains(ImgRect(2, 2, 10, 9)));
    EXPECT_FALSE(r.contains(ImgRect(2, 2, 9, 10)));
    EXPECT_FALSE(ImgRect(1, 0, 9, 9).contains(r));
    EXPECT_FALSE(ImgRect(0, 1, 9, 9).contains(r));
    EXPECT_TRUE(r.contains(ImgRect(5, 0, 2, 9)));  // unordered
}

TEST(Rectangle, AssignmentFromTheOtherRecordReadsFourWords) {
    ImgRect r;
    r = IntRectT{-1, -2, 3, 4, -5, -6, 7, 8};
    expectRect(r, 3, 4, 7, 8);
    ImgRect& self = r;
    r = self;
    expectRect(r, 3, 4, 7, 8);
}

TEST(Rectangle, ReadsZeroOnceDestroyed) {
    alignas(ImgRect) unsigned char place[sizeof(ImgRect)];
    ImgRect* r = new (place) ImgRect(7, 7, 7, 7);
    r->~ImgRect();
    for (volatile unsigned char& byte : place) EXPECT_EQ(byte, 0);
}
