// Handles: types, rows, parameters, beginning and end.

#include "support/handles.h"

#include <cmath>
#include <functional>
#include <limits>

using namespace support;

namespace {

TEST(Handles, TypesAndTheirOperations) {
    for (std::uint32_t type : {3u, 5u, 12u, 33u, 64u, 0x80000001u}) EXPECT_EQ(ImgNew(type), nullptr) << type;
    const auto slots = [](const ImgHandle& h) {  // which of the operations in question there are
        const void* const all[] = {reinterpret_cast<void*>(h.create),   reinterpret_cast<void*>(h.free),
                                   reinterpret_cast<void*>(h.render),   reinterpret_cast<void*>(h.rotate),
                                   reinterpret_cast<void*>(h.getWidth), reinterpret_cast<void*>(h.clone),
                                   reinterpret_cast<void*>(h.rasOp1),   reinterpret_cast<void*>(h.rasOp2)};
        std::string text;
        for (const void* slot : all) text += slot ? '1' : '0';
        return text;
    };
    const Handle none(ImgNew(ImgTypeNone)), g4(ImgNew(ImgTypeTiffG4));
    EXPECT_EQ(slots(*none), "00000000");
    EXPECT_EQ(ImgGetWidth(none.get()), 0u);
    EXPECT_EQ(slots(*g4), "11111000");
    EXPECT_EQ(g4->rotate(g4.get(), 90), nullptr);
    EXPECT_EQ(g4->mirror(g4.get(), 1), nullptr);
    EXPECT_EQ(g4->subImage(g4.get(), nullptr), nullptr);
    for (std::uint32_t type : {1u, 2u, 4u, 16u, 32u}) {
        const Handle image(ImgNew(type));
        EXPECT_EQ(slots(*image), "11111111") << type;
        EXPECT_EQ(image->reserved(image.get()), 0u);
        EXPECT_EQ(image->serialize(image.get(), nullptr, nullptr), 0u);
        EXPECT_EQ(image->deserialize(nullptr), nullptr);
    }
    for (auto [flag, type] : {std::pair(7, ImgTypeRGBA32 + 0u), {0, ImgTypeRGB32 + 0u}}) {
        const Handle colour(ImgNew(flag ? ImgTypeRGB32 : ImgTypeRGBA32));
        EXPECT_TRUE(ImgCreateRGB32(colour.get(), 2, 2, static_cast<std::uint16_t>(flag), nullptr));
        EXPECT_EQ(colour->type, type);
        EXPECT_FALSE(ImgCreateRGB32(colour.get(), 2, 2, 0, nullptr)) << "has pixels already";
    }
}

TEST(Handles, BilevelRows) {
    struct Case {
        std::uint32_t width, height, align, padBits, bytesPerLine, dataSize;
    };
    for (const Case& c :
         {Case{17, 3, 16, 15, 4, 12}, Case{17, 3, 8, 7, 3, 9}, Case{32, 2, 32, 0, 4, 8}, Case{1, 1, 32, 31, 4, 4},
          Case{8, 1, 0, 0, 0, 2}, Case{3, 3, 5, 0, 0, 1}, Case{16, 1, 0, 0, 0, 3}}) {
        const Handle image(ImgNew(ImgTypeBilevel));
        ASSERT_TRUE(ImgCreateBilevel(image.get(), c.width, c.height, c.align, nullptr));
        const auto& header = *static_cast<Img1Header*>(image->header);
        EXPECT_EQ(header.padBits, c.padBits) << c.width << ' ' << c.align;
        EXPECT_EQ(header.bytesPerLine, c.bytesPerLine);
        EXPECT_EQ(header.dataSize, c.dataSize);
        EXPECT_EQ(header.alignBits, c.align == 5 ? 0 : c.align);
        EXPECT_EQ(header.bitSense, 1u);
        const Handle copy(image->clone(image.get()));
        EXPECT_EQ(static_cast<Img1Header*>(copy->header)->dataSize, c.dataSize);
        if (c.bytesPerLine == 0) {
            EXPECT_FALSE(image->rotate(image.get(), 90));
            EXPECT_FALSE(image->render(image.get(), 2, 2, nullptr, 0, 0, 8));
        }
    }
    ImgHandle* own = handleOf<Bits>(Picture(9, 9)).release();
    EXPECT_EQ(own->free(&own, nullptr), nullptr);
    const Handle none(ImgNew(ImgTypeBilevel));
    EXPECT_FALSE(ImgCreateBilevel(none.get(), 1 << 20, 1 << 15, 0, nullptr)) << "2^32 bytes";
}

TEST(Handles, PixelRows) {
    ColorMapEntry entries[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    for (auto [count, given, copied] : {std::tuple(3, true, 2), {1, true, 1}, {-1, true, 0}, {3, false, 0}}) {
        const ColorTable table = {2, count, 0, given ? entries : nullptr};
        const Handle palette(ImgNew(ImgTypePalette8));
        ASSERT_TRUE(ImgCreatePalette8(palette.get(), 5, 2, 16, &table, nullptr));
        const auto& header = *static_cast<Img8Header*>(palette->header);
        EXPECT_EQ(header.bytesPerLine, 6u);
        EXPECT_EQ(header.padBytes, 1u);
        EXPECT_EQ(header.colorTable->capacity, 2);
        EXPECT_EQ(header.colorTable->count, copied);
        EXPECT_EQ(header.colorTable->entries[1].blue, copied > 1 ? 6 : 0);
    }
    for (auto [align, pad, stride] : {std::tuple(32u, 1u, 16), {16u, 0u, 15}}) {
        const Handle rgb(ImgNew(ImgTypeRGB24));
        ASSERT_TRUE(ImgCreateRGB24(rgb.get(), 5, 2, align, nullptr));
        EXPECT_EQ(static_cast<Img24Header*>(rgb->header)->padBytes, pad);
        EXPECT_EQ(rowOf(*rgb, 1) - rowOf(*rgb, 0), stride);
        EXPECT_EQ(alignmentOf(*rgb), align == 32 ? 32u : 8u);
    }
}

SUITE_FOR(EveryHandle, HandleKinds);

TYPED_TEST(EveryHandle, TakesAndGivesBackTheCallersBlock) {
    void* block = nullptr;
    ASSERT_EQ(MemAllocate(0, 64, 0, &block), 0);
    ImgHandle* image = ImgNew(TypeParam::type);
    ASSERT_TRUE(TypeParam::create(image, 4, 4, block));
    EXPECT_EQ(rowOf(*image, 0), block);
    if (TypeParam::type == ImgTypePalette8) {
        ColorTable* table = static_cast<Img8Header*>(image->header)->colorTable;
        MemFree(0, table->entries);
        MemFree(0, table);
    }
    EXPECT_EQ(image->free(&image, block), block);
    EXPECT_EQ(image, nullptr);
    std::memset(block, 1, 64);
    MemFree(0, block);
}

TYPED_TEST(EveryHandle, RefusesWhatCannotBe) {
    const Handle image(ImgNew(TypeParam::type));
    const ImgHandle ops = *image;
    ImgRasOp1Desc fill{ImgRasFill, 1, 0, 0, 0, 0}, invert{ImgRasInvert, 1, 0, 0, 0, 0};
    ImgRasOp2Desc plain{}, scaling{};
    plain.op = scaling.op = ImgRasOr;
    plain.inPlace = scaling.inPlace = scaling.scaleFirst = 1;
    const ImgConvertDesc target{1, 1, nullptr};
    const std::int32_t corners[8] = {};
    struct Operation {
        const char* name;
        std::function<ImgHandle*(ImgHandle*)> call;
    };
    const Operation operations[] = {
        {"clone", [&](ImgHandle* h) { return ops.clone(h); }},
        {"rotate", [&](ImgHandle* h) { return ops.rotate(h, 90); }},
        {"mirror", [&](ImgHandle* h) { return ops.mirror(h, 1); }},
        {"subImage", [&](ImgHandle* h) { return ops.subImage(h, corners); }},
        {"render", [&](ImgHandle* h) { return ops.render(h, 1, 1, nullptr, 0, 0, 8); }},
        {"convert", [&](ImgHandle* h) { return ops.convert(h, &target); }},
        {"fill", [&](ImgHandle* h) { return ops.rasOp1(h, &fill, 0); }},
        {"invert", [&](ImgHandle* h) { return ops.rasOp1(h, &invert, 0); }},
        {"combine", [&](ImgHandle* h) { return ops.rasOp2(h, &plain, h); }},
        {"scale and combine", [&](ImgHandle* h) { return ops.rasOp2(h, &scaling, h); }},
    };
    const auto refused = [&](ImgHandle* handle, const char* why) {
        for (const Operation& operation : operations)
            EXPECT_EQ(operation.call(handle), nullptr) << operation.name << ' ' << why;
    };
    EXPECT_FALSE(TypeParam::create(nullptr, 4, 4));
    for (auto [w, h] : {std::pair(0u, 4u), {4u, 0u}, {0x80000000u, 1u}, {0x7FFFFFFFu, 0x7FFFFFFFu}})
        EXPECT_FALSE(TypeParam::create(image.get(), w, h)) << w << ' ' << h;
    for (ImgHandle* handle : {image.get(), static_cast<ImgHandle*>(nullptr)}) {
        refused(handle, handle ? "before create" : "of nothing");
        EXPECT_EQ(ops.getWidth(handle) + ops.getHeight(handle) + ImgGetWidth(handle) + ImgGetHeight(handle), 0u);
        EXPECT_EQ(ImgSetDstRect(handle, corners), handle);
        EXPECT_EQ(ImgSetRotation(handle, 1), handle);
        EXPECT_EQ(ImgSetMirFlag(handle, 1), handle);
    }
    ImgHandle* null = nullptr;
    for (ImgHandle** where : {static_cast<ImgHandle**>(nullptr), &null}) EXPECT_EQ(ops.free(where, nullptr), nullptr);

    ASSERT_TRUE(TypeParam::create(image.get(), 4, 4));
    ImgHandle* const i = image.get();
    EXPECT_EQ(i->subImage(i, nullptr), nullptr);
    EXPECT_EQ(i->convert(i, nullptr), nullptr);
    EXPECT_EQ(i->rasOp1(i, nullptr, 0), nullptr);
    EXPECT_EQ(i->rasOp2(i, nullptr, i), nullptr);
    EXPECT_EQ(i->rasOp2(i, &scaling, nullptr), nullptr);
    EXPECT_EQ(i->rotate(i, NAN), nullptr);
    const Handle other = handleOf<TypeParam>(Picture(4, 4));
    const ImgHandle whole = *image;
    for (const char* missing : {"without data", "without header", "of another type"}) {
        if (missing[8] == 'd') image->data = nullptr;
        else if (missing[8] == 'h') image->header = nullptr;
        else image->type = ImgTypeTiffG4;
        refused(i, missing);
        EXPECT_EQ(other->rasOp2(i, &plain, other.get()), nullptr) << missing;
        EXPECT_EQ(other->rasOp2(other.get(), &plain, i), nullptr) << missing;
        *image = whole;
    }
    image->render = nullptr;
    EXPECT_EQ(image->rasOp2(i, &scaling, i), nullptr) << "nothing scales it";
    auto& quad = static_cast<ImgQuads*>(image->header)->srcQuad;
    quad.y0 = INT32_MIN, quad.y2 = INT32_MAX;
    if (pixelBytes(*image) >= 3 && TypeParam::type != ImgTypeBilevel) {
        EXPECT_EQ(i->rasOp1(i, &fill, 0), nullptr) << "of 2^32 rows";
    }
}

TYPED_TEST(EveryHandle, StoresParameters) {
    const Handle image(ImgNew(TypeParam::type));
    ASSERT_TRUE(TypeParam::create(image.get(), 4, 3));
    auto& quads = *static_cast<ImgQuads*>(image->header);
    const std::int32_t own[8] = {0, 0, 0, 2, 3, 2, 3, 0}, other[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(ImgSetDstRect(image.get(), nullptr), image.get());
    EXPECT_EQ(std::memcmp(&quads.dstQuad, own, sizeof own), 0);
    ImgSetDstRect(image.get(), other);
    EXPECT_EQ(std::memcmp(&quads.dstQuad, other, sizeof other), 0);
    EXPECT_EQ(std::memcmp(&quads.srcQuad, own, sizeof own), 0);
    std::swap(quads.srcQuad.x0, quads.srcQuad.x2);
    EXPECT_EQ(ImgGetWidth(image.get()), 4u);
    const auto rotation = [&] {
        switch (image->type) {
        case ImgTypeBilevel: return static_cast<Img1Header*>(image->header)->rotation;
        case ImgTypePalette8: return static_cast<Img8Header*>(image->header)->rotation;
        case ImgTypeRGB24: return static_cast<Img24Header*>(image->header)->rotation;
        default: return static_cast<Img32Header*>(image->header)->rotation;
        }
    };
    const double huge = std::numeric_limits<double>::infinity();
    for (auto [set, stored] :
         {std::pair(89.9, 89), {-0.5, 0}, {-90.9, -90}, {double(NAN), 0}, {huge, INT32_MAX}, {-huge, INT32_MIN}}) {
        ImgSetRotation(image.get(), set);
        EXPECT_EQ(rotation(), stored);
    }
    if (image->type == ImgTypeRGBA32) {
        ImgSetMirFlag(image.get(), 1);
        EXPECT_EQ(static_cast<Img32Header*>(image->header)->mirror, 1);
        EXPECT_EQ(static_cast<Img32Header*>(image->header)->dataSize, 1u);
        EXPECT_TRUE(Handle(image->clone(image.get()))) << "sizes come from the rows";
    }
}

TEST(Handles, SmallServices) {
    std::uint8_t pixel[4] = {9, 9, 9, 9};
    EXPECT_EQ(Img24BitColorToPixRGB(pixel, 0xAA123456), pixel);
    EXPECT_EQ(Bytes(pixel, pixel + 4), (Bytes{0x12, 0x34, 0x56, 9}));
    std::uint8_t* table = create_reverse_byte_table();
    EXPECT_EQ(table[0x01], 0x80);
    EXPECT_EQ(table[0xD2], 0x4B);
    MemFree(0, table);
}

}  // namespace
