#include "support/pictures.h"
#include "support/raised.h"

#include <cmath>
#include <limits>

using namespace support;

namespace {

constexpr double kRadians = 0.017453292522222223;

/// A table of shifts, mark by mark.
std::vector<long long> tableModel(long long total, long long positions, std::size_t entries, bool downwards) {
    const long long n = total == 0 ? 1 : std::abs(total), half = n / 2;
    std::vector<bool> marked(static_cast<std::size_t>(positions), n >= positions);
    for (long long k = 0; n < positions && k < n; ++k)
        marked[static_cast<std::size_t>((k * positions + n - 1) / n)] = true;
    std::vector<long long> table{-half};
    long long down = half, up = -half;
    for (std::size_t i = 1; i < entries; ++i) {
        if (marked[i % marked.size()]) --down, ++up;
        table.push_back(downwards ? down : up);
    }
    return table;
}

/// Moves rows to the right, or columns up.
Picture sheared(const Picture& source, bool rows, const std::vector<long long>& table, std::uint32_t background) {
    Picture result(source.width, source.height, background);
    for (std::size_t y = 0; y < source.height; ++y)
        for (std::size_t x = 0; x < source.width; ++x) {
            const long long nx = static_cast<long long>(x) + (rows ? table[source.height - 1 - y] : 0),
                            ny = static_cast<long long>(y) - (rows ? 0 : table[x]);
            if (nx >= 0 && nx < static_cast<long long>(source.width) && ny >= 0 &&
                ny < static_cast<long long>(source.height))
                result.at(static_cast<std::size_t>(nx), static_cast<std::size_t>(ny)) = source.at(x, y);
        }
    return result;
}

Picture rotateModel(Picture source, double degrees, std::uint32_t background) {
    if (degrees > 270) {
        degrees -= 360;
    } else if (degrees > 90) {
        std::reverse(source.pixels.begin(), source.pixels.end());
        degrees -= 180;
    }
    const double w = static_cast<double>(source.width), h = static_cast<double>(source.height);
    const double radians = degrees * kRadians;
    const auto sx = static_cast<long long>(h * std::tan(radians / 2)),
               sy = static_cast<long long>(w * std::sin(radians));
    const auto x = tableModel(sx, static_cast<long long>(h), source.height, sx >= 0);
    const auto y = tableModel(sy, static_cast<long long>(w), source.width, sy < 0);
    return sheared(sheared(sheared(source, true, x, background), false, y, background), true, x, background);
}

SUITE_FOR(Shears, PixelKinds);

TYPED_TEST(Shears, ThreeShearsMoveEveryPixelAsTheTablesSay) {
    int n = 0;
    const auto expectTurned = [&](std::size_t w, std::size_t h, double degrees) {
        const Picture picture = randomPicture<TypeParam>(w, h);
        const auto image = imageOf<TypeParam>(picture, kAlignments[++n % 3]);
        image->setBackgroundColor(0);
        ASSERT_EQ(result<TypeParam>(image->rotate(degrees)), rotateModel(picture, degrees, 0))
            << degrees << " degrees, " << w << " x " << h;
    };
    for (std::size_t w = 1; w <= 70; ++w)
        for (std::size_t h : {1, 5, 33, 70, 131}) expectTurned(w, h, std::fmod(7.3 * (n + 1), 370) - 10);
    for (double degrees : {2.0, 45.0, 88.0, 123.0, 200.0, 300.0, -5.0, -100.0}) expectTurned(700, 150, degrees);
}

TYPED_TEST(Shears, PicturesTurnCounterClockwiseAboutTheirCentre) {
    for (double degrees : {10.0, 45.0, 80.0, 100.0, 170.0, 190.0, 260.0, 300.0, 350.0}) {
        Picture picture(101, 101);
        picture.at(75, 50) = 1;
        const auto image = imageOf<TypeParam>(picture);
        image->setBackgroundColor(0);
        const Picture turned = result<TypeParam>(image->rotate(degrees));
        const auto found = std::find(turned.pixels.begin(), turned.pixels.end(), 1u) - turned.pixels.begin();
        ASSERT_LT(found, 101 * 101);
        EXPECT_NEAR(static_cast<double>(found % 101), 50 + 25 * std::cos(degrees * kRadians), 2.3) << degrees;
        EXPECT_NEAR(static_cast<double>(found / 101), 50 - 25 * std::sin(degrees * kRadians), 2.3) << degrees;
    }
}

TYPED_TEST(Shears, AnglesWithoutAShiftOrWithTooLargeOnes) {
    const Picture picture = randomPicture<TypeParam>(100, 100);
    const auto image = imageOf<TypeParam>(picture, ImgAlignByte);
    image->setBackgroundColor(0);
    for (double degrees : {0.5, 360.0, -0.0004})
        EXPECT_EQ(result<TypeParam>(image->rotate(degrees)), picture) << degrees;
    EXPECT_EQ(result<TypeParam>(image->rotate(-180)), Picture(100, 100)) << "only background";
}

TYPED_TEST(Shears, ImagesWithoutPixelsAreRefused) {
    const auto image = imageOf<TypeParam>(Picture(20, 20));
    std::free(image->ownData());
    // Extents without pixels, for which no tables can be had.
    if constexpr (requires { image->setExtents(1, 1); }) image->setExtents(0xFFFFFFFF, 1);
    for (double degrees : {10.0, 100.0})
        EXPECT_EQ(raisedBy([&] { EXPECT_EQ(image->rotate(degrees), nullptr); }), (Raised{1, ImgErrBadArgument}));
}

TEST(Shears, UncoveredPlacesTakeTheBackground) {
    const auto palette = imageOf<CImg8>(Picture(20, 20, 3), ImgAlignDword);
    palette->setBackgroundColor(7);
    const auto turned = owned<CImg8>(palette->rotate(145));
    EXPECT_EQ(pictureOf(turned), rotateModel(Picture(20, 20, 3), 145, 7));
    EXPECT_EQ(turned->getBackgroundColor(), 7u);
}

TEST(Shears, KeptBilevelImagesStayClearWhereNothingCovers) {
    const auto image = imageOf<CImg1>(Picture(45, 45), ImgAlignDword);
    std::memset(image->peekData(), 0xFF, image->getTotalBytes());
    image->setBackgroundColor(1);
    const auto turned = owned<CImg1>(image->rotate(30));
    EXPECT_EQ(bytesOf(*turned), bytesOf(*imageOf<CImg1>(rotateModel(Picture(45, 45, 1), 30, 0))))
        << "the source's padding is no pixels";
    EXPECT_EQ(turned->getBackgroundColor(), 1u);
    EXPECT_EQ(turned->getBackgroundInterpretation(), 0u);
    EXPECT_EQ(turned->getForegroundInterpretation(), 0xFF000000u);
    EXPECT_EQ(turned->getAlignment(), ImgAlignNone);
}

// --- public tables --------------------------------------------------------------------

std::vector<int> tableOf(int* table, std::size_t count) {
    std::vector<int> entries;
    if (table) entries.assign(table, table + count);
    std::free(table);
    return entries;
}

TEST(ShearTables, KeptTheFirstEntryIsAtTheLowEnd) {
    const auto image = imageOf<CImg32>(Picture(10, 10));
    const double r = 45 * kRadians;
    EXPECT_EQ(tableOf(image->makeRotationXShearRoth(r), 10), (std::vector{-2, 2, 2, 1, 1, 0, 0, 0, -1, -1}));
    EXPECT_EQ(tableOf(image->makeRotationYShearRoth(r), 10), (std::vector{-3, -3, -2, -1, -1, 0, 1, 1, 2, 3}));
    EXPECT_EQ(tableOf(image->makeRotationXShearRoth(-r), 10), (std::vector{-2, -2, -2, -1, -1, 0, 0, 0, 1, 1}));
    EXPECT_EQ(tableOf(image->makeRotationYShearRoth(-r), 10), (std::vector{-3, 3, 2, 1, 1, 0, -1, -1, -2, -3}));
}

TEST(ShearTables, KeptTheFactorIsSlightlyMoreThanADegree) {
    const auto image = imageOf<CImg32>(Picture(100, 100));
    EXPECT_EQ(tableOf(image->makeRotationYShearRoth(30 * kRadians), 1), std::vector{-25});
    EXPECT_EQ(tableOf(image->makeRotationXShearRoth(-180 * kRadians), 1), std::vector{-1073741823})
        << "held within 32 bits";
}

TEST(ShearTables, KeptOblongImagesRepeatTheCodeOfTheOtherDimension) {
    for (auto [w, h] : {std::pair{30, 100}, {100, 30}, {7, 90}}) {
        const auto image = imageOf<CImg32>(Picture(static_cast<std::size_t>(w), static_cast<std::size_t>(h)));
        const double r = 0.7;
        const std::size_t entries = static_cast<std::size_t>(std::max(w, h));
        const auto same = [&, w = w, h = h](int* table, const std::vector<long long>& model) {
            const auto real = tableOf(table, entries);
            EXPECT_EQ(std::vector<long long>(real.begin(), real.end()), model) << w << " x " << h;
        };
        same(image->makeRotationXShearRoth(r),
             tableModel(static_cast<long long>(h * std::tan(r / 2)), w, entries, true));
        same(image->makeRotationYShearRoth(r), tableModel(static_cast<long long>(w * std::sin(r)), h, entries, false));
    }
}

TEST(ShearTables, AnglesThatAreNoneGiveNull) {
    const auto image = imageOf<CImg32>(Picture(10, 10));
    EXPECT_EQ(image->makeRotationXShearRoth(std::nan("")), nullptr);
    EXPECT_EQ(image->makeRotationYShearRoth(std::numeric_limits<double>::infinity()), nullptr);
}

}  // namespace
