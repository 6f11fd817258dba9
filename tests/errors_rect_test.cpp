#include "support/pictures.h"
#include "support/raised.h"

#include <array>
#include <climits>
#include <functional>
#include <new>

using namespace support;

TEST(ErrorCell, KeepsTheLastCodeOfTheProcessAndCountsSuccessesToo) {
    EXPECT_EQ(raisedBy([&] { EXPECT_EQ(imgRaise(ImgErrDecode), ImgErrDecode); }), (Raised{1, ImgErrDecode}));
    EXPECT_EQ((blank<CImg32>(1, 1)->getLastError()), ImgErrDecode);
}

TEST(ErrorCell, StepsOfTheOperations) {
    unsigned char bytes[32] = {}, *data = nullptr;
    ImgULong words[4] = {}, *wordData = nullptr;
    const auto bilevel = blank<CImg1>(8, 4), aligned = blank<CImg1>(8, 4, ImgAlignByte), large = blank<CImg1>(9, 4);
    const auto palette = blank<CImg8>(2, 2), wide = blank<CImg8>(3, 1);
    const auto rgb = blank<CImg32>(2, 2), broad = blank<CImg32>(3, 1);
    const Owned<CImg8> bare(CImg8::create());
    RasOpXfmAttr place{};
    struct Case {
        const char* name;
        std::function<void()> call;
        Raised raised;
    };
    const Raised good{1, ImgErrNone}, failed{1, ImgErrCreate}, refused{1, ImgErrBadArgument},
        twice{2, ImgErrBadArgument};
    const Case cases[] = {
        {"bits copied", [&] { bilevel->dupData(bytes, 4); }, good},
        {"too few bits copied", [&] { bilevel->dupData(bytes, 3); }, failed},
        {"too few bits handed over", [&] { bilevel->transferData(&(data = bytes), 3); }, failed},
        {"bits handed over", [&] { bilevel->transferData(&(data = bilevel->peekData()), 4); }, good},
        {"indices copied", [&] { palette->dupData(bytes, 4); }, good},
        {"too few indices copied", [&] { palette->dupData(bytes, 3); }, failed},
        {"too few indices handed over", [&] { palette->transferData(&(data = bytes), 3); }, failed},
        {"no indices handed over", [&] { palette->transferData(&(data = nullptr), 4); }, failed},
        {"indices handed over", [&] { palette->transferData(&(data = bytes), 4); }, good},
        {"pixels copied", [&] { rgb->dupData(words, 16); }, good},
        {"too few pixels copied", [&] { rgb->dupData(words, 15); }, failed},
        {"too few pixels handed over", [&] { rgb->transferData(&(wordData = words), 15); }, failed},
        {"no pixels handed over", [&] { rgb->transferData(&(wordData = nullptr), 16); }, failed},
        {"pixels handed over", [&] { rgb->transferData(&(wordData = words), 16); }, good},
        {"clone", [&] { Owned<>(bilevel->clone()); }, good},
        {"clone whose conversion is refused", [&] { Owned<>(aligned->clone()); }, good},
        {"clone of RGB", [&] { Owned<>(rgb->clone()); }, kQuiet},
        {"failed create", [] { CImg1::create(8, 0, 0, 0, ImgAlignNone); }, kQuiet},
        {"refused conversion", [&] { CImg8::create(*palette, nullptr, ImgAlignNone); }, kQuiet},
        {"bits combined", [&] { bilevel->doRasOpInPlace(RasOpCopy, place, *aligned); }, good},
        {"bits too large", [&] { bilevel->doRasOpInPlace(RasOpCopy, place, *large); }, twice},
        {"copy combined", [&] { Owned<>(bilevel->doRasOp(RasOpAnd, place, *bilevel)); }, {2, ImgErrNone}},
        {"copy too small", [&] { Owned<>(bilevel->doRasOp(RasOpAnd, place, *large)); }, {3, ImgErrBadArgument}},
        {"bits of another kind", [&] { bilevel->doRasOp(RasOpCopy, place, *rgb); }, refused},
        {"indices too wide", [&] { palette->doRasOpInPlace(RasOpCopy, place, *wide); }, twice},
        {"palette copy", [&] { Owned<>(palette->doRasOp(RasOpCopy, place, *palette)); }, failed},
        {"palette filled", [&] { wide->doRasOpInPlace(RasOpFill, false, 0, 1); }, {2, ImgErrNone}},
        {"palette others filled", [&] { wide->doRasOpInPlace(RasOpFill, true, 0, 1); }, {2, ImgErrNone}},
        {"a bare palette image filled", [&] { bare->doRasOpInPlace(RasOpFill, true, 0, 1); }, twice},
        {"pixels combined", [&] { broad->doRasOpInPlace(RasOpCopy, place, *rgb); }, twice},
        {"RGB filled", [&] { rgb->doRasOpInPlace(RasOpFill, false, 0, 1); }, {2, ImgErrNone}},
        {"bits cut", [&] { Owned<>(bilevel->getSubImage(ImgRect(1, 1, 2, 2))); }, good},
        {"indices cut", [&] { Owned<>(wide->getSubImage(ImgRect(1, 0, 2, 0))); }, kQuiet},
        {"pixels cut", [&] { Owned<>(rgb->getSubImage(ImgRect(0, 0, 0, 0))); }, kQuiet},
        {"a part outside", [&] { bilevel->getSubImage(ImgRect(5, 1, 8, 2)); }, refused},
    };
    for (const Case& c : cases) EXPECT_EQ(raisedBy(c.call), c.raised) << c.name;
}

using Fields = std::array<ImgULong, 4>;
static Fields fieldsOf(const ImgRect& r) { return {r.getLeft(), r.getTop(), r.getRight(), r.getBottom()}; }

TEST(Rectangle, SizesAreInclusiveAndDoNotDependOnOrder) {
    EXPECT_EQ(ImgRect().getWidth(), 1u);
    EXPECT_EQ(fieldsOf(ImgRect(10, 5)), (Fields{0, 0, 9, 4}));
    EXPECT_EQ(ImgRect(5, 9, 2, 3).getWidth(), 4u);
    EXPECT_EQ(ImgRect(5, 9, 2, 3).getHeight(), 7u);
    EXPECT_EQ(fieldsOf(ImgRect(INT_MIN, 0)), (Fields{0, 0, INT_MAX, UINT_MAX}));
    ImgRect empty;
    empty.setRect(0, 5);
    EXPECT_EQ(fieldsOf(empty), (Fields{0, 0, 4294967295u, 4}));
    EXPECT_EQ(empty.getWidth(), 0u);
}

TEST(Rectangle, ReorderingTouchesRowsOnlyKept) {
    ImgRect r(7, 2, 3, 4);
    const Fields low{7, 2, 3, 4}, high{7, 4, 3, 2};
    struct {
        void (ImgRect::*change)();
        const Fields& then;
    } const steps[] = {{&ImgRect::reorderTopLeftMin, low},
                       {&ImgRect::reorderBottomLeftMin, high},
                       {&ImgRect::reorderBottomLeftMin, high},
                       {&ImgRect::reorderTopLeftMin, low},
                       {&ImgRect::invertY, high},
                       {&ImgRect::invertY, low}};
    for (const auto& step : steps) {
        (r.*step.change)();
        EXPECT_EQ(fieldsOf(r), step.then) << &step - steps;
    }
}

TEST(Rectangle, ContainsComparesFields) {
    struct Case {
        ImgRect outer, inner;
        bool contains;
    };
    const ImgRect r(0, 0, 9, 9);
    for (const Case& c :
         {Case{r, r, true}, Case{r, ImgRect(2, 2, 9, 9), true}, Case{r, ImgRect(2, 2, 10, 9), false},
          Case{r, ImgRect(2, 2, 9, 10), false}, Case{ImgRect(1, 0, 9, 9), r, false},
          Case{ImgRect(0, 1, 9, 9), r, false}, Case{r, ImgRect(5, 0, 2, 9), true}})  // the last one unordered
        EXPECT_EQ(c.outer.contains(c.inner), c.contains) << c.inner.getLeft() << ' ' << c.inner.getRight();
}

TEST(Rectangle, AssignmentFromTheOtherRecordReadsFourWords) {
    ImgRect r;
    r = IntRectT{-1, -2, 3, 4, -5, -6, 7, 8};
    ImgRect& self = r;
    r = self;
    EXPECT_EQ(fieldsOf(r), (Fields{3, 4, 7, 8}));
}

TEST(Rectangle, ReadsZeroOnceDestroyed) {
    alignas(ImgRect) unsigned char place[sizeof(ImgRect)];
    ImgRect* r = new (place) ImgRect(7, 7, 7, 7);
    r->~ImgRect();
    for (volatile unsigned char& byte : place) EXPECT_EQ(byte, 0);
}
