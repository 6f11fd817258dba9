// The slots of the image interface, called as another compiler's program calls
// them: through the object's table, by number.
#include <tilepress/tilepress.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <type_traits>
#include <utility>

#if defined(_WIN32)
#  define TEST_THISCALL __attribute__((thiscall))
#  pragma GCC diagnostic ignored "-Wattributes"  // mingw: "used for non-class method"
#else
#  define TEST_THISCALL
#endif

namespace {

// Slot 0 is the destructor; outside Microsoft's layout it takes two entries.
#if defined(TILEPRESS_MSVC_ABI)
constexpr int kDestructorEntries = 1;
#else
constexpr int kDestructorEntries = 2;
#endif

template <class Result, class... Args>
Result callSlot(IImg* image, int slot, Args... args) {
    void** entries = *reinterpret_cast<void***>(image);
    using Function = Result(TEST_THISCALL*)(IImg*, Args...);
    return reinterpret_cast<Function>(entries[slot - 1 + kDestructorEntries])(image, args...);
}

template <int number>
using Number = std::integral_constant<int, number>;

/// Stands for every argument and result: zeros.
alignas(8) unsigned char nothing[64];
template <class T>
T none() {
    if constexpr (!std::is_void_v<T>) return static_cast<T>(*reinterpret_cast<std::remove_reference_t<T>*>(nothing));
}

template <class Function>
struct Call;
template <class Result, class... Args>
struct Call<Result(Args...)> {
    static void by(IImg* image, int slot) { callSlot<Result, Args...>(image, slot, none<Args>()...); }
};
template <class Result, class... Args>
struct Call<Result(Args...) const> : Call<Result(Args...)> {};

/// An operation, and what calls its slot and says which operation was reached.
#define SLOT(number, Result, name, arguments)                                 \
  Result name arguments override { return reached = number, none<Result>(); } \
  int call(Number<number>) {                                                  \
    reached = 0;                                                              \
    Call<Result arguments>::by(this, number);                                 \
    return reached;                                                           \
  }

struct Probe : IImg {
    SLOT(1, ImgULong, getBitsPerSample, () const)
    SLOT(2, ImgULong, getSamplesPerPixel, () const)
    SLOT(3, ImgULong, getBytesPerLine, () const)
    SLOT(4, ImgErr, getLastError, ())
    SLOT(5, ImgULong, getHeight, () const)
    SLOT(6, ImgULong, getHeightInTiles, () const)
    SLOT(7, ImgULong, getTotalBytes, () const)
    SLOT(8, ImgULong, getNumberOfTiles, () const)
    SLOT(9, const ImgRect&, getRect, () const)
    SLOT(10, ImgULong, getTileHeight, () const)
    SLOT(11, ImgULong, getTileWidth, () const)
    SLOT(12, ImageType, getType, ())
    SLOT(13, ImgULong, getWidth, () const)
    SLOT(14, ImgULong, getWidthInTiles, () const)
    SLOT(15, ImgULong, getTop, () const)
    SLOT(16, ImgULong, getLeft, () const)
    SLOT(17, ImgULong, getBottom, () const)
    SLOT(18, ImgULong, getRight, () const)
    SLOT(19, ImgULong, getBackgroundColor, ())
    SLOT(20, IImg*, getSubImage, (const ImgRect&))
    SLOT(21, IImg*, applyFilter, ())
    SLOT(22, IImg*, invert, ())
    SLOT(23, IImg*, doRasOp, (RasOpT, bool, ImgULong, ImgULong))
    SLOT(24, IImg*, doRasOp, (RasOpT, RasOpXfmAttr&, const IImg&))
    SLOT(25, void, doRasOpInPlace, (RasOpT, bool, ImgULong, ImgULong))
    SLOT(26, void, doRasOpInPlace, (RasOpT, RasOpXfmAttr&, const IImg&))
    SLOT(27, IImg*, clone, () const)
    SLOT(28, void, drawArc, ())
    SLOT(29, void, drawCircle, ())
    SLOT(30, void, drawElipse, ())
    SLOT(31, void, drawLines, (IntPtT*, IntPtT*, bool))
    SLOT(32, void, drawPolyLine, ())
    SLOT(33, void, drawPolygon, ())
    SLOT(34, void, drawRectangle, ())
    SLOT(35, void, drawSpline, ())
    SLOT(36, IImg*, mirror, (ImgMirT))
    SLOT(37, IImg*, rotate, (double))
    SLOT(38, IImg*, scale, (double, ImgScaleAttr&))
    SLOT(39, IImg*, scale, (const ImgRect&, const ImgRect&, ImgScaleAttr&))
    SLOT(40, IImg*, scale, (const ImgRect&, ImgULong, ImgULong, ImgScaleAttr&))
    SLOT(41, bool, stream, (void*))
    SLOT(42, IImg*, sxfm, ())
    SLOT(43, bool, writeTIFF, ())

    mutable int reached = 0;
};

template <int... numbers>
void expectInOrder(std::integer_sequence<int, numbers...>) {
    Probe probe;
    for (const auto& [reached, number] : {std::pair(probe.call(Number<numbers + 1>()), numbers + 1)...})
        EXPECT_EQ(reached, number);
}

}  // namespace

TEST(Slots, AreInOrder) { expectInOrder(std::make_integer_sequence<int, 43>()); }

// What the library itself made, not only what a class of ours inherits.
TEST(Slots, ImagesOfTheLibraryHaveThem) {
    IImg* image = CImg1::create(70, 30, 0, 1, ImgAlignByte);
    ASSERT_TRUE(image);
    EXPECT_EQ(callSlot<ImgULong>(image, 5), 30u);
    EXPECT_EQ(callSlot<ImgULong>(image, 13), 70u);
    const ImgRect part(2, 3, 11, 7);
    IImg* cut = (callSlot<IImg*, const ImgRect&>(image, 20, part));
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->getWidth(), 10u);
    EXPECT_EQ(cut->getHeight(), 5u);
    delete cut;
    EXPECT_FALSE(callSlot<bool>(image, 44));  // isBackgroundKnown
    delete image;
}

#if defined(TILEPRESS_MSVC_ABI)
TEST(Slots, DestructorFreesWhenAsked) {
    IImg* image = CImg1::create(2, 2, 0, 1, ImgAlignByte);
    void** entries = *reinterpret_cast<void***>(image);
    using Delete = void*(TEST_THISCALL*)(IImg*, unsigned);
    EXPECT_EQ(reinterpret_cast<Delete>(entries[0])(image, 1), static_cast<void*>(image));
}
#endif
