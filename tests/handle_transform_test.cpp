// Handles turned, scaled, cut and converted: as image classes do it with the same pixels.

#include "support/handles.h"

#include <numeric>

using namespace support;

namespace {

SUITE_FOR(HandleTransforms, HandleKinds);

TYPED_TEST(HandleTransforms, AreThoseOfTheClasses) {
    using Image = typename TypeParam::Image;
    for (auto [w, h] : {std::pair(2, 2), {5, 70}, {67, 33}, {130, 40}}) {
        const Picture picture = randomPixels<TypeParam>(w, h);
        const auto image = imageOf<Image>(picture, ImgAlignByte);
        image->setBackgroundColor(0);
        const Handle handle = handleOf<TypeParam>(picture);
        for (double degrees : {90., 180., 270., 360., 33.5, 200., -20., -3.6e14 - 90, 450., 1000., 3.6e14 + 90})
            EXPECT_EQ(pictureOf(Handle(handle->rotate(handle.get(), degrees))), result<Image>(image->rotate(degrees)))
                << degrees << ' ' << w;
        for (auto [flag, direction] : {std::pair(1, ImgMirX), {2, ImgMirY}})
            EXPECT_EQ(pictureOf(Handle(handle->mirror(handle.get(), flag))), result<Image>(image->mirror(direction)));
        EXPECT_EQ(handle->mirror(handle.get(), 3), handle.get());
        EXPECT_EQ(pictureOf(Handle(handle->rotate(handle.get(), 0))), picture);
        ImgScaleAttr attr{};
        for (auto [dw, dh] : {std::pair(w, h),
                              {w * 2, h * 2},
                              {w * 3 - 1, h + 5},
                              {w / 2 + 1, h / 3 + 1},
                              {w * 2, h / 2 + 1},
                              {w / 3 + 1, h * 2}})
            EXPECT_EQ(pictureOf(Handle(handle->render(handle.get(), dw, dh, nullptr, 0, 0, 32))),
                      result<Image>(image->scale(ImgRect(0, 0, w - 1, h - 1), dw, dh, attr)))
                << dw << ' ' << dh;
        EXPECT_EQ(pictureOf(handle), picture);
    }
}

TYPED_TEST(HandleTransforms, ResultsAreLikeTheirSource) {
    const std::int32_t corners[8] = {2, 6, 2, 1, 9, 1, 9, 6};
    const ImgConvertDesc same{0, 1, nullptr};
    for (std::uint32_t align : {8u, 16u, 32u}) {
        const Handle image = handleOf<TypeParam>(randomPixels<TypeParam>(13, 9), align);
        const auto palette = [](const Handle& handle) {
            return handle->type == ImgTypePalette8 ? static_cast<Img8Header*>(handle->header)->colorTable : nullptr;
        };
        if (palette(image)) palette(image)->entries[7].green = 99, palette(image)->count = 9;
        const auto expectLike = [&](ImgHandle* made, std::uint32_t alignment, const char* name) {
            const Handle result(made);
            ASSERT_TRUE(result) << name;
            EXPECT_EQ(result->type, image->type) << name;
            EXPECT_EQ(alignmentOf(*result), alignment) << name;
            if (image->type == ImgTypeRGBA32) {
                EXPECT_EQ(static_cast<Img32Header*>(result->header)->channelFlag, 1u) << name;
            }
            if (!palette(image)) return;
            EXPECT_EQ(palette(result)->entries[7].green, 99) << name;
            EXPECT_EQ(palette(result)->count, 9) << name;
        };
        ImgHandle* const i = image.get();
        const std::uint32_t own = alignmentOf(*image);
        expectLike(i->clone(i), own, "clone");
        expectLike(i->convert(i, &same), own, "convert");
        expectLike(i->subImage(i, corners), own, "subImage");
        for (int direction : {1, 2}) expectLike(i->mirror(i, direction), own, "mirror");
        for (double degrees : {0, 33, 90, 180, 200, 270}) expectLike(i->rotate(i, degrees), own, "rotate");
        for (auto [w, h] : {std::pair(13, 9), {30, 20}, {5, 3}, {30, 3}, {5, 20}})
            for (std::uint32_t asked : {8u, 16u, 32u})
                expectLike(i->render(i, w, h, nullptr, 0, 0, asked),
                           alignmentOf(*handleOf<TypeParam>(Picture(1, 1), asked)), "render");
    }
}

TYPED_TEST(HandleTransforms, RenderAsTheHeaderSays) {
    const Picture picture = randomPixels<TypeParam>(21, 13);
    const Handle handle = handleOf<TypeParam>(picture), plain = handleOf<TypeParam>(picture);
    const std::int32_t size[8] = {100, 100, 100, 105, 104, 105, 104, 100};
    ImgSetDstRect(handle.get(), size);
    for (auto [mirror, degrees] : {std::pair(2, 90), {0, 90}, {2, 0}}) {
        ImgSetRotation(ImgSetMirFlag(handle.get(), mirror), degrees);
        const Handle mirrored(mirror ? plain->mirror(plain.get(), mirror) : plain->clone(plain.get())),
            turned(mirrored->rotate(mirrored.get(), degrees));
        EXPECT_EQ(pictureOf(Handle(handle->render(handle.get(), 0, 0, nullptr, 0, 0, 8))),
                  pictureOf(Handle(turned->render(turned.get(), 5, 6, nullptr, 0, 0, 8))))
            << mirror << ' ' << degrees;
        EXPECT_EQ(pictureOf(Handle(handle->render(handle.get(), 21, 13, plain->header, 0, 0, 8))), picture)
            << "another's header";
    }
    const std::int32_t endless[8] = {INT32_MIN, INT32_MIN, 0, 0, INT32_MAX, INT32_MAX, 0, 0};
    ImgSetDstRect(handle.get(), endless);
    for (auto [w, h] : {std::pair(0, 1), {1, 0}})
        EXPECT_EQ(handle->render(handle.get(), w, h, nullptr, 0, 0, 8), nullptr) << w;
}

TYPED_TEST(HandleTransforms, CutRegions) {
    const auto cornersOf = [](std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
        return std::vector{left, bottom, left, top, right, top, right, bottom};
    };
    for (std::uint32_t align : {8u, 32u}) {
        const Picture picture = randomPixels<TypeParam>(32, 5);
        const Handle handle = handleOf<TypeParam>(picture, align);
        const auto cutTo = [&](const std::vector<std::int32_t>& corners) {
            const Handle part(handle->subImage(handle.get(), corners.data()));
            const std::uint32_t width = ImgGetWidth(part.get());
            if (TypeParam::type == ImgTypeBilevel && width % 8) {
                EXPECT_EQ(rowOf(*part, 0)[width / 8] & 0xFF >> width % 8, 0) << "padding";
            }
            return pictureOf(part);
        };
        // Up to the last byte of the block, from every place in a byte on.
        for (int left = 0; left < 32; ++left)
            for (int right : {left, 31})
                EXPECT_EQ(cutTo(cornersOf(left, 3, right, 4)), cut(picture, ImgRect(left, 3, right, 4)))
                    << left << ' ' << right;
        EXPECT_EQ(cutTo(cornersOf(0, 0, 31, 4)), picture);
        EXPECT_EQ(cutTo({0, 0, 0, 4, 31, 4, 31, 0}), kNone) << "corners in the header's order";
        for (const auto& beyond : {cornersOf(-1, 0, 31, 4), cornersOf(0, 0, 31, 5), cornersOf(20, 0, 32, 4),
                                   cornersOf(0, -1, 31, 4), cornersOf(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX)})
            EXPECT_EQ(cutTo(beyond), kNone) << beyond[0] << ' ' << beyond[3];
    }
}

Handle converted(const Handle& from, std::uint32_t flags, std::uint32_t sense = 1, const ColorTable* table = nullptr) {
    const ImgConvertDesc target{flags, sense, table};
    return Handle(from->convert(from.get(), &target));
}

Handle paletteOf(std::initializer_list<std::uint8_t> pixels, std::vector<ColorMapEntry> colours) {
    const auto count = static_cast<std::int32_t>(colours.size());
    const ColorTable table = {count, count, 255, colours.data()};
    Handle palette(ImgNew(ImgTypePalette8));
    EXPECT_TRUE(ImgCreatePalette8(palette.get(), static_cast<std::uint32_t>(pixels.size()), 1, 8, &table, nullptr));
    std::copy(pixels.begin(), pixels.end(), rowOf(*palette, 0));
    return palette;
}

TEST(HandleConversion, OfBits) {
    const Handle bits = handleOf<Bits>("10 01", 32);
    EXPECT_EQ(pictureOf(converted(bits, 0)), pictureOf(bits));
    const Handle inverted = converted(bits, 1, 0);
    EXPECT_EQ(pictureOf(inverted), Picture("01 10"));
    EXPECT_EQ(static_cast<Img1Header*>(inverted->header)->bitSense, 0u);
    const Handle grey = converted(bits, 2 | 4);
    EXPECT_EQ(pictureOf(grey), Picture(2, {0, 255, 255, 0}));
    EXPECT_EQ(static_cast<Img8Header*>(grey->header)->colorTable->entries[77].green, 77);
    EXPECT_EQ(alignmentOf(*grey), 32u);
    EXPECT_EQ(pictureOf(converted(bits, 4)), Picture(2, {0, 0xFFFFFF, 0xFFFFFF, 0}));
    EXPECT_EQ(alignmentOf(*converted(bits, 4)), 32u);
    EXPECT_EQ(converted(bits, 16 | 32)->type, ImgTypeRGBA32 + 0u) << "32 is asked before 16";
}

TEST(HandleConversion, OfPalettePixels) {
    const Handle palette = paletteOf({0, 1, 2, 0x63}, {{255, 0, 0}, {0, 300, -5}, {10, 20, 30}});
    static_cast<Img8Header*>(palette->header)->colorTable->count = 200;  // beyond its capacity
    for (std::uint32_t type : {4u, 16u, 32u})
        EXPECT_EQ(pictureOf(converted(palette, type)), Picture(4, {0xFF, 0xFF00, 0x1E140A, 0}));
    EXPECT_EQ(pictureOf(converted(palette, 1)), Picture("1011"));
    ColorMapEntry others[] = {{0, 250, 0}, {200, 0, 0}};
    ColorTable other = {2, 2, 255, others};
    for (int again = 0; again < 2; ++again)
        EXPECT_EQ(pictureOf(converted(palette, 2, 1, &other)), Picture(4, {1, 0, 1, 0})) << again;
    EXPECT_EQ(pictureOf(converted(palette, 0)), pictureOf(palette));
}

TEST(HandleConversion, OnlyEntriesThatAByteNamesAreFound) {
    std::vector<ColorMapEntry> entries(600, ColorMapEntry{255, 255, 255});
    entries[255] = {10, 190, 30};
    entries[256] = entries[300] = {10, 200, 30};
    const ColorTable large = {600, 600, 255, entries.data()};
    const Handle mapped = converted(paletteOf({0}, {{10, 200, 30}}), 2, 1, &large);
    EXPECT_EQ(pictureOf(mapped), Picture(1, {255}));
    EXPECT_EQ(static_cast<Img8Header*>(mapped->header)->colorTable->count, 600) << "the table is taken whole";
}

TEST(HandleConversion, OfRgbPixels) {
    const Handle rgb = handleOf<Words32>(Picture(3, {0xAA0000FF, 0xFF808080, 0x007F7F7F}));
    EXPECT_EQ(pictureOf(converted(rgb, 4)), Picture(3, {0x0000FF, 0x808080, 0x7F7F7F}));
    EXPECT_EQ(pictureOf(converted(rgb, 1)), Picture("101"));
    EXPECT_EQ(pictureOf(converted(rgb, 16)), pictureOf(rgb));
    EXPECT_EQ(converted(rgb, 16)->type, ImgTypeRGB32 + 0u);
    EXPECT_FALSE(converted(rgb, 2));
    EXPECT_EQ(pictureOf(converted(handleOf<Bytes24>(Picture(1, {0x123456})), 32)), Picture(1, {0x123456}));
}

}  // namespace
