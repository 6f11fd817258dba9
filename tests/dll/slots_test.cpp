// The slots of the image interface, called as another compiler's program calls
// them: through the object's table, by number.
#include <tilepress/tilepress.h>

#include <gtest/gtest.h>

#include <initializer_list>

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

/// Says which operation was reached.
class Probe : public IImg {
public:
    ImgULong getBitsPerSample() const override { return reach(1); }
    ImgULong getSamplesPerPixel() const override { return reach(2); }
    ImgULong getBytesPerLine() const override { return reach(3); }
    ImgErr getLastError() override { return reach(4), ImgErrNone; }
    ImgULong getHeight() const override { return reach(5); }
    ImgULong getHeightInTiles() const override { return reach(6); }
    ImgULong getTotalBytes() const override { return reach(7); }
    ImgULong getNumberOfTiles() const override { return reach(8); }
    const ImgRect& getRect() const override { return reach(9), rect; }
    ImgULong getTileHeight() const override { return reach(10); }
    ImgULong getTileWidth() const override { return reach(11); }
    ImageType getType() override { return reach(12), ImageTypeBilevel; }
    ImgULong getWidth() const override { return reach(13); }
    ImgULong getWidthInTiles() const override { return reach(14); }
    ImgULong getTop() const override { return reach(15); }
    ImgULong getLeft() const override { return reach(16); }
    ImgULong getBottom() const override { return reach(17); }
    ImgULong getRight() const override { return reach(18); }
    ImgULong getBackgroundColor() override { return reach(19); }
    IImg* getSubImage(const ImgRect&) override { return reach(20), this; }
    IImg* applyFilter() override { return reach(21), this; }
    IImg* invert() override { return reach(22), this; }
    IImg* doRasOp(RasOpT, bool, ImgULong, ImgULong) override { return reach(23), this; }
    IImg* doRasOp(RasOpT, RasOpXfmAttr&, const IImg&) override { return reach(24), this; }
    void doRasOpInPlace(RasOpT, bool, ImgULong, ImgULong) override { reach(25); }
    void doRasOpInPlace(RasOpT, RasOpXfmAttr&, const IImg&) override { reach(26); }
    IImg* clone() const override { return reach(27), nullptr; }
    void drawArc() override { reach(28); }
    void drawCircle() override { reach(29); }
    void drawElipse() override { reach(30); }
    void drawLines(IntPtT*, IntPtT*, bool) override { reach(31); }
    void drawPolyLine() override { reach(32); }
    void drawPolygon() override { reach(33); }
    void drawRectangle() override { reach(34); }
    void drawSpline() override { reach(35); }
    IImg* mirror(ImgMirT) override { return reach(36), this; }
    IImg* rotate(double) override { return reach(37), this; }
    IImg* scale(double, ImgScaleAttr&) override { return reach(38), this; }
    IImg* scale(const ImgRect&, const ImgRect&, ImgScaleAttr&) override { return reach(39), this; }
    IImg* scale(const ImgRect&, ImgULong, ImgULong, ImgScaleAttr&) override { return reach(40), this; }
    bool stream(void*) override { return reach(41), false; }
    IImg* sxfm() override { return reach(42), this; }
    bool writeTIFF() override { return reach(43), false; }

    /// The number of the operation that the slot led to.
    template <class Result, class... Args>
    int at(int slot, Args... args) {
        reached = 0;
        callSlot<Result, Args...>(this, slot, args...);
        return reached;
    }

private:
    ImgULong reach(int number) const { return static_cast<ImgULong>(reached = number); }

    mutable int reached = 0;
    ImgRect rect;
};

}  // namespace

TEST(Slots, QueriesAreInOrder) {
    Probe probe;
    for (int slot : {1, 2, 3, 5, 6, 7, 8, 10, 11, 13, 14, 15, 16, 17, 18, 19})
        EXPECT_EQ(probe.at<ImgULong>(slot), slot);
    EXPECT_EQ(probe.at<ImgErr>(4), 4);
    EXPECT_EQ(probe.at<const ImgRect&>(9), 9);
    EXPECT_EQ(probe.at<ImageType>(12), 12);
}

TEST(Slots, OperationsAreInOrder) {
    Probe probe;
    ImgRect rect;
    EXPECT_EQ((probe.at<IImg*, const ImgRect&>(20, rect)), 20);
    for (int slot : {21, 22, 27, 42}) EXPECT_EQ(probe.at<IImg*>(slot), slot);
    for (int slot : {28, 29, 30, 32, 33, 34, 35}) EXPECT_EQ(probe.at<void>(slot), slot);
    EXPECT_EQ((probe.at<void, IntPtT*, IntPtT*, bool>(31, nullptr, nullptr, false)), 31);
    EXPECT_EQ(probe.at<IImg*>(36, ImgMirX), 36);
    EXPECT_EQ(probe.at<IImg*>(37, 90.0), 37);
    EXPECT_EQ((probe.at<bool, void*>(41, nullptr)), 41);
    EXPECT_EQ(probe.at<bool>(43), 43);
}

TEST(Slots, OverloadsAreInOrder) {
    Probe probe;
    const ImgRect rect;
    RasOpXfmAttr paste{};
    ImgScaleAttr attr{};
    const ImgULong one = 1;
    EXPECT_EQ(probe.at<IImg*>(23, RasOpFill, false, one, one), 23);
    EXPECT_EQ((probe.at<IImg*, RasOpT, RasOpXfmAttr&, const IImg&>(24, RasOpFill, paste, probe)), 24);
    EXPECT_EQ(probe.at<void>(25, RasOpFill, false, one, one), 25);
    EXPECT_EQ((probe.at<void, RasOpT, RasOpXfmAttr&, const IImg&>(26, RasOpFill, paste, probe)), 26);
    EXPECT_EQ((probe.at<IImg*, double, ImgScaleAttr&>(38, 0.5, attr)), 38);
    EXPECT_EQ((probe.at<IImg*, const ImgRect&, const ImgRect&, ImgScaleAttr&>(39, rect, rect, attr)), 39);
    EXPECT_EQ((probe.at<IImg*, const ImgRect&, ImgULong, ImgULong, ImgScaleAttr&>(40, rect, one, one, attr)), 40);
}

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
