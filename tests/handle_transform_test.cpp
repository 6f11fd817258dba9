// Handles turned, scaled, cut and converted: as image classes do it with the same pixels.

#include "support/g4_images.h"
#include "support/handles.h"

#include <functional>

namespace tilepress::test {
namespace {

template <class Kind>
class HandleTransforms : public ::testing::Test {};
TYPED_TEST_SUITE(HandleTransforms, HandleKinds);

TYPED_TEST(HandleTransforms, AreThoseOfTheClasses) {
    using Image = typename TypeParam::Image;
    for (auto [w, h] : {std::pair(2, 2), {5, 70}, {67, 33}, {130, 40}}) {
        const Picture picture = randomPixels<TypeParam>(w, h);
        const auto image = imageOf<Image>(picture, ImgAlignByte);
        image->setBackgroundColor(0);
        const Handle handle = handleOf<TypeParam>(picture);
        for (double degrees : {90., 180., 270., 360., 33.5, 200., -20., 450., 1000., 3.6e14 + 90})
            EXPECT_TRUE(pictureOf(Handle(handle->rotate(handle.get(), degrees))) ==
                        pictureOf(owned<Image>(image->rotate(degrees)).get()))
                << degrees << ' ' << w;
        EXPECT_EQ(pictureOf(Handle(handle->mirror(handle.get(), 1))),
                  pictureOf(owned<Image>(image->mirror(ImgMirX)).get()));
        EXPECT_EQ(pictureOf(Handle(handle->mirror(handle.get(), 2))),
                  pictureOf(owned<Image>(image->mirror(ImgMirY)).get()));
        EXPECT_EQ(handle->mirror(handle.get(), 3), handle.get());
        EXPECT_EQ(pictureOf(Handle(handle->rotate(handle.get(), 0))), picture);
        ImgScaleAttr attr{};
        for (auto [dw, dh] : {std::pair(w, h),
                              {w * 2, h * 2},
                              {w * 3 - 1, h + 5},
                              {w / 2 + 1, h / 3 + 1},
                              {w * 2, h / 2 + 1},
                              {w / 3 + 1, h * 2}})
            EXPECT_TRUE(pictureOf(Handle(handle->render(handle.get(), dw, dh, nullptr, 0, 0, 32))) ==
                        pictureOf(owned<Image>(image->scale(ImgRect(0, 0, w - 1, h - 1), dw, dh, attr)).get()))
                << dw << ' ' << dh;
        EXPECT_EQ(pictureOf(handle), picture);
    }
}

TYPED_TEST(HandleTransforms, RenderAsTheHeaderSays) {
    const Picture picture = randomPixels<TypeParam>(21, 13);
    const Handle handle = handleOf<TypeParam>(picture);
    ImgSetMirFlag(handle.get(), 2);
    ImgSetRotation(handle.get(), 90);
    const std::int32_t size[8] = {100, 100, 100, 105, 104, 105, 104, 100};
    ImgSetDstRect(handle.get(), size);
    const Handle mirrored(handle->mirror(handle.get(), 2)), turned(mirrored->rotate(mirrored.get(), 90));
    const Handle wanted(turned->render(turned.get(), 5, 6, nullptr, 0, 0, 8));
    EXPECT_EQ(pictureOf(Handle(handle->render(handle.get(), 0, 0, nullptr, 0, 0, 8))), pictureOf(wanted));
    EXPECT_EQ(pictureOf(Handle(handle->render(handle.get(), 21, 13, mirrored->header, 0, 0, 8))), picture)
        << "another's header";
    const std::int32_t endless[8] = {INT32_MIN, INT32_MIN, 0, 0, INT32_MAX, INT32_MAX, 0, 0};
    ImgSetDstRect(handle.get(), endless);
    EXPECT_FALSE(handle->render(handle.get(), 0, 1, nullptr, 0, 0, 8) ||
                 handle->render(handle.get(), 1, 0, nullptr, 0, 0, 8));
}

TYPED_TEST(HandleTransforms, CutRegions) {
    const Picture picture = randomPixels<TypeParam>(30, 9);
    const Handle handle = handleOf<TypeParam>(picture);
    const auto cut = [&](std::vector<std::int32_t> corners) {
        return pictureOf(Handle(handle->subImage(handle.get(), corners.data())));
    };
    EXPECT_EQ(cut({0, 8, 0, 0, 29, 0, 29, 8}), picture);
    Picture part(11, 3);
    for (std::size_t y = 0; y < 3; ++y)
        for (std::size_t x = 0; x < 11; ++x) part.at(x, y) = picture.at(x + 13, y + 4);
    EXPECT_EQ(cut({13, 6, 13, 4, 23, 4, 23, 6}), part);
    const Picture none(0, 0);
    EXPECT_EQ(cut({0, 0, 0, 8, 29, 8, 29, 0}), none) << "corners in the header's order";
    EXPECT_EQ(cut({-1, 8, -1, 0, 29, 0, 29, 8}), none);
    EXPECT_EQ(cut({0, 9, 0, 0, 29, 0, 29, 9}), none);
    EXPECT_EQ(cut({20, 8, 20, 0, 30, 0, 30, 8}), none);
    EXPECT_EQ(cut({0, 7, 0, -1, 29, -1, 29, 7}), none);
    EXPECT_EQ(cut({INT32_MIN, INT32_MAX, INT32_MIN, INT32_MIN, INT32_MAX, INT32_MIN, INT32_MAX, INT32_MAX}), none);
}

Handle converted(const Handle& from, std::uint32_t flags, std::uint32_t sense = 1, const ColorTable* table = nullptr) {
    const ImgConvertDesc target{flags, sense, table};
    return Handle(from->convert(from.get(), &target));
}

TEST(HandleConversion, BetweenTypes) {
    const Handle bits = handleOf<Bits>(Picture(2, {1, 0, 0, 1}));
    EXPECT_EQ(pictureOf(converted(bits, 0)), pictureOf(bits));
    const Handle inverted = converted(bits, 1, 0);
    EXPECT_EQ(pictureOf(inverted), Picture(2, {0, 1, 1, 0}));
    EXPECT_EQ(static_cast<Img1Header*>(inverted->header)->bitSense, 0u);
    const Handle grey = converted(bits, 2 | 4);
    EXPECT_EQ(pictureOf(grey), Picture(2, {0, 255, 255, 0}));
    EXPECT_EQ(static_cast<Img8Header*>(grey->header)->colorTable->entries[77].green, 77);
    EXPECT_EQ(pictureOf(converted(bits, 4)), Picture(2, {0, 0xFFFFFF, 0xFFFFFF, 0}));
    EXPECT_EQ(converted(bits, 16 | 32)->type, ImgTypeRGBA32 + 0u) << "32 is asked before 16";

    ColorMapEntry colours[] = {{255, 0, 0}, {0, 300, -5}, {10, 20, 30}};
    ColorTable table = {3, 3, 255, colours};
    const Handle palette(ImgNew(ImgTypePalette8));
    ASSERT_TRUE(ImgCreatePalette8(palette.get(), 4, 1, 8, &table, nullptr));
    std::memcpy(rowOf(*palette, 0), "\0\1\2\x63", 4);
    static_cast<Img8Header*>(palette->header)->colorTable->count = 200;  // beyond its capacity
    for (std::uint32_t type : {4u, 16u, 32u})
        EXPECT_EQ(pictureOf(converted(palette, type)), Picture(4, {0xFF, 0xFF00, 0x1E140A, 0}));
    EXPECT_EQ(pictureOf(converted(palette, 1)), Picture(4, {1, 0, 1, 1}));
    ColorMapEntry others[] = {{0, 250, 0}, {200, 0, 0}};
    ColorTable other = {2, 2, 255, others};
    for (int again = 0; again < 2; ++again)
        EXPECT_EQ(pictureOf(converted(palette, 2, 1, &other)), Picture(4, {1, 0, 1, 0})) << again;
    EXPECT_EQ(pictureOf(converted(palette, 0)), pictureOf(palette));

    const Handle rgb = handleOf<Words32>(Picture(3, {0xAA0000FF, 0xFF808080, 0x007F7F7F}));
    EXPECT_EQ(pictureOf(converted(rgb, 4)), Picture(3, {0x0000FF, 0x808080, 0x7F7F7F}));
    EXPECT_EQ(pictureOf(converted(rgb, 1)), Picture(3, {1, 0, 1}));
    EXPECT_EQ(pictureOf(converted(rgb, 16)), pictureOf(rgb));
    EXPECT_EQ(converted(rgb, 16)->type, ImgTypeRGB32 + 0u);
    EXPECT_FALSE(converted(rgb, 2));
    EXPECT_EQ(pictureOf(converted(handleOf<Bytes24>(Picture(1, {0x123456})), 32)), Picture(1, {0x123456}));
}

}  // namespace
}  // namespace tilepress::test
