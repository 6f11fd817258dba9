#include "support/pictures.h"

#include <cmath>
#include <functional>
#include <limits>

using namespace support;

namespace {

SUITE_FOR(RightAngles, PixelKinds);

struct Turn {
    const char* name;
    bool turned;
    std::function<std::pair<std::size_t, std::size_t>(std::size_t w, std::size_t h, std::size_t i, std::size_t j)>
        source;
    std::function<IImg*(IImg&)> apply;
};

const std::vector<Turn>& turns() {
    static const std::vector<Turn> all = {
        {"mirrorX", false, [](auto, auto h, auto i, auto j) { return std::pair(i, h - 1 - j); },
         [](IImg& image) { return image.mirror(ImgMirX); }},
        {"mirrorY", false, [](auto w, auto, auto i, auto j) { return std::pair(w - 1 - i, j); },
         [](IImg& image) { return image.mirror(ImgMirY); }},
        {"90", true, [](auto w, auto, auto i, auto j) { return std::pair(w - 1 - j, i); },
         [](IImg& image) { return image.rotate(90); }},
        {"180", false, [](auto w, auto h, auto i, auto j) { return std::pair(w - 1 - i, h - 1 - j); },
         [](IImg& image) { return image.rotate(180); }},
        {"270", true, [](auto, auto h, auto i, auto j) { return std::pair(j, h - 1 - i); },
         [](IImg& image) { return image.rotate(270); }},
    };
    return all;
}

Picture model(const Turn& turn, const Picture& source) {
    const std::size_t w = source.width, h = source.height;
    Picture result(turn.turned ? h : w, turn.turned ? w : h);
    for (std::size_t j = 0; j < result.height; ++j)
        for (std::size_t i = 0; i < result.width; ++i) {
            const auto [x, y] = turn.source(w, h, i, j);
            result.at(i, j) = source.at(x, y);
        }
    return result;
}

TYPED_TEST(RightAngles, PixelsComeFromTheirPlaces) {
    for (std::size_t w : {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 33, 63, 64, 65, 70, 127, 129, 140})
        for (std::size_t h : {1, 2, 7, 8, 9, 16, 17, 33, 66})
            for (ImgAlignmentEnum alignment : kAlignments) {
                const Picture picture = randomPicture<TypeParam>(w, h);
                const auto image = imageOf<TypeParam>(picture, alignment);
                for (const Turn& turn : turns()) {
                    const auto result = owned<TypeParam>(turn.apply(*image));
                    ASSERT_TRUE(result) << turn.name;
                    ASSERT_EQ(bytesOf(*result), bytesOf(*imageOf<TypeParam>(model(turn, picture), alignment)))
                        << turn.name << ' ' << w << " x " << h;
                }
                ASSERT_EQ(pictureOf(image), picture);
            }
}

// Of more than 4 MB where a pixel takes a byte or more, whose rows are written past the caches.
TYPED_TEST(RightAngles, LargePicturesToo) {
    const std::size_t w = std::is_same_v<TypeParam, CImg32> ? 1027 : 2051, h = w + 2;
    const Picture picture = randomPicture<TypeParam>(w, h);
    const auto image = imageOf<TypeParam>(picture);
    for (const Turn& turn : turns()) {
        if (!turn.turned) continue;
        const auto result = owned<TypeParam>(turn.apply(*image));
        ASSERT_TRUE(pictureOf(result) == model(turn, picture)) << turn.name;
    }
}

TYPED_TEST(RightAngles, NearlyRightAnglesAreRight) {
    const auto image = imageOf<TypeParam>(randomPicture<TypeParam>(9, 5));
    const auto turned = [&](double angle) { return result<TypeParam>(image->rotate(angle)); };
    for (double right : {90, 180, 270})
        for (double off : {0.00099, -0.00099}) EXPECT_EQ(turned(right + off), turned(right)) << right + off;
    for (double off : {0.00101, -0.00101}) EXPECT_EQ(turned(90 + off).width, 9u) << "sheared";
    EXPECT_EQ(turned(450), turned(90));
}

TYPED_TEST(RightAngles, NoTurnIsAClone) {
    const auto image = imageOf<TypeParam>(randomPicture<TypeParam>(9, 5));
    const auto clone = owned<TypeParam>(image->clone());
    for (double angle : {0.0, -0.0, 0.0004, 359.9995, 720.0})
        EXPECT_EQ(result<TypeParam>(image->rotate(angle)), pictureOf(clone)) << angle;
}

TYPED_TEST(RightAngles, KeptOtherDirectionsGiveTheImageItself) {
    const auto image = imageOf<TypeParam>(Picture(2, 2));
    for (int direction : {0, 3}) EXPECT_EQ(image->mirror(static_cast<ImgMirT>(direction)), image.get());
    for (double none : {std::nan(""), std::numeric_limits<double>::infinity()}) EXPECT_EQ(image->rotate(none), nullptr);
    std::free(image->ownData());
    for (const Turn& turn : turns()) {
        imgRaise(ImgErrNone);
        EXPECT_EQ(turn.apply(*image), nullptr) << turn.name << " without pixels";
        EXPECT_EQ(image->getLastError(), ImgErrBadArgument) << turn.name;
    }
}

TEST(BilevelRightAngles, ResultsAreLikeTheirSourceWithClearPadding) {
    for (const Turn& turn : turns()) {
        const auto image = blank<CImg1>(13, 5, ImgAlignDword);
        std::memset(image->peekData(), 0xFF, image->getTotalBytes());
        const auto result = owned<CImg1>(turn.apply(*image));
        const auto expected = imageOf<CImg1>(Picture(turn.turned ? 5 : 13, turn.turned ? 13 : 5, 1), ImgAlignDword);
        EXPECT_EQ(bytesOf(*result), bytesOf(*expected)) << turn.name;
        EXPECT_EQ(result->getBackgroundInterpretation(), 0x112233u) << turn.name;
        EXPECT_EQ(result->getForegroundInterpretation(), 0x445566u) << turn.name;
        EXPECT_EQ(result->getAlignment(), ImgAlignDword) << turn.name;
        EXPECT_FALSE(result->isBackgroundKnown()) << turn.name;
        EXPECT_EQ(owned<CImg32>(turn.apply(*blank<CImg32>(2, 2)))->getRGBOrder(), RGBOrderBGR) << turn.name;
    }
}

struct Snapping : CImg {
    static double snap(double angle) {
        snap90(angle, 0.001);
        return angle;
    }
};

TEST(Snap90, BringsAnglesNearRightOnesOntoThem) {
    for (auto [angle, snapped] : {std::pair(0.0004, 0.),
                                  {0.001, 0.001},
                                  {1e-20, 360.},
                                  {90.0005, 90.},
                                  {89.9995, 90.},
                                  {90.002, 90.002},
                                  {359.9995, 0.},
                                  {359.999, 359.999},
                                  {360.0005, 0.},
                                  {450., 90.},
                                  {809.9999, 90.},
                                  {720., 0.},
                                  {-720., 0.}})
        EXPECT_EQ(Snapping::snap(angle), snapped) << angle;
}

TEST(Snap90, KeptNegativeAnglesAnd360Stay) {
    for (auto [angle, snapped] :
         {std::pair(-90., -90.), {-450., -90.}, {-0.0005, -0.0005}, {-360., -360.}, {360., 360.}})
        EXPECT_EQ(Snapping::snap(angle), snapped) << angle;
    EXPECT_NEAR(Snapping::snap(-360.0005), -0.0005, 1e-9);
}

}  // namespace
