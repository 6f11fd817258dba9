// Handles: types, rows, parameters, beginning and end.

#include "support/handles.h"

#include <cmath>
#include <limits>

namespace tilepress::test {
namespace {

TEST(Handles, TypesAndTheirOperations) {
    for (std::uint32_t type : {3u, 5u, 12u, 33u, 64u, 0x80000001u}) EXPECT_EQ(ImgNew(type), nullptr) << type;
    Handle none(ImgNew(ImgTypeNone));
    ASSERT_TRUE(none);
    EXPECT_TRUE(!none->create && !none->free && !none->render && !none->getWidth && !none->rasOp2);
    EXPECT_EQ(ImgGetWidth(none.get()), 0u);
    for (std::uint32_t type : {1u, 2u, 4u, 16u, 32u}) {
        const Handle image(ImgNew(type));
        EXPECT_TRUE(image->create && image->free && image->rotate && image->clone && image->rasOp1 && image->rasOp2);
        EXPECT_EQ(image->reserved(image.get()), 0u);
        EXPECT_EQ(image->serialize(image.get(), nullptr, nullptr), 0u);
        EXPECT_EQ(image->deserialize(nullptr), nullptr);
    }
    const Handle g4(ImgNew(ImgTypeTiffG4));
    EXPECT_TRUE(!g4->clone && !g4->rasOp1 && !g4->rasOp2 && g4->render && g4->serialize);
    EXPECT_TRUE(!g4->rotate(g4.get(), 90) && !g4->mirror(g4.get(), 1) && !g4->subImage(g4.get(), nullptr));

    Handle colour(ImgNew(ImgTypeRGB32));
    EXPECT_TRUE(ImgCreateRGB32(colour.get(), 2, 2, 7, nullptr));
    EXPECT_EQ(colour->type, ImgTypeRGBA32 + 0u);
    colour.reset(ImgNew(ImgTypeRGBA32));
    EXPECT_TRUE(ImgCreateRGB32(colour.get(), 2, 2, 0, nullptr));
    EXPECT_EQ(colour->type, ImgTypeRGB32 + 0u);
    EXPECT_FALSE(ImgCreateRGB32(colour.get(), 2, 2, 0, nullptr)) << "has pixels already";
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
    const Handle none(ImgNew(ImgTypeBilevel));
    EXPECT_FALSE(ImgCreateBilevel(none.get(), 1 << 20, 1 << 15, 0, nullptr)) << "2^32 bytes";
    EXPECT_FALSE(ImgCreateBilevel(none.get(), 1, 0x80000000u, 8, nullptr));
}

TEST(Handles, PixelRows) {
    const Handle palette(ImgNew(ImgTypePalette8)), rgb(ImgNew(ImgTypeRGB24)), narrow(ImgNew(ImgTypeRGB24));
    ColorMapEntry entries[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    ColorTable table = {2, 3, 0, entries};
    ASSERT_TRUE(ImgCreatePalette8(palette.get(), 5, 2, 16, &table, nullptr));
    for (auto [count, given] : {std::pair(-1, true), {3, false}}) {
        const ColorTable odd = {2, count, 0, given ? entries : nullptr};
        const Handle empty(ImgNew(ImgTypePalette8));
        ASSERT_TRUE(ImgCreatePalette8(empty.get(), 5, 2, 16, &odd, nullptr));
        EXPECT_EQ(static_cast<Img8Header*>(empty->header)->colorTable->count, 0);
    }
    const auto& header = *static_cast<Img8Header*>(palette->header);
    EXPECT_EQ(header.bytesPerLine, 6u);
    EXPECT_EQ(header.padBytes, 1u);
    EXPECT_EQ(header.colorTable->capacity, 2);
    EXPECT_EQ(header.colorTable->count, 2) << "no more than there is room for";
    EXPECT_EQ(header.colorTable->entries[1].blue, 6);
    ASSERT_TRUE(ImgCreateRGB24(rgb.get(), 5, 2, 32, nullptr));
    EXPECT_EQ(static_cast<Img24Header*>(rgb->header)->padBytes, 1u);
    EXPECT_EQ(rowOf(*rgb, 1) - rowOf(*rgb, 0), 16);
    ASSERT_TRUE(ImgCreateRGB24(narrow.get(), 5, 2, 16, nullptr));
    EXPECT_EQ(static_cast<Img24Header*>(narrow->header)->alignBits, 8u);
}

template <class Kind>
class EveryHandle : public ::testing::Test {};
TYPED_TEST_SUITE(EveryHandle, HandleKinds);

TYPED_TEST(EveryHandle, TakesAndGivesBackTheCallersBlock) {
    void* block = nullptr;
    ASSERT_EQ(MemAllocate(0, 64, 0, &block), 0);
    ImgHandle* image = ImgNew(TypeParam::type);
    ASSERT_TRUE(TypeParam::create(image, 4, 4, block));
    EXPECT_EQ(rowOf(*image, 0), block);
    Handle(image->clone(image));
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
    EXPECT_FALSE(TypeParam::create(nullptr, 4, 4));
    for (auto [w, h] : {std::pair(0u, 4u), {4u, 0u}, {0x80000000u, 1u}, {0x7FFFFFFFu, 0x7FFFFFFFu}})
        EXPECT_FALSE(TypeParam::create(image.get(), w, h)) << w << ' ' << h;
    // Before create, and of nothing.
    ImgRasOp1Desc op1{};
    ImgRasOp2Desc op2{}, unscaled{};
    op2.op = unscaled.op = ImgRasOr;
    op2.scaleFirst = op1.inPlace = unscaled.inPlace = 1;
    const ImgConvertDesc target{1, 1, nullptr};
    const std::int32_t corners[8] = {};
    const ImgHandle ops = *image;
    const auto refused = [&](ImgHandle* handle) {
        EXPECT_FALSE(ops.clone(handle) || ops.rotate(handle, 90) || ops.mirror(handle, 1) ||
                     ops.subImage(handle, corners));
        EXPECT_FALSE(ops.render(handle, 1, 1, nullptr, 0, 0, 8) || ops.convert(handle, &target));
        for (std::uint32_t op : {ImgRasFill, ImgRasInvert})
            EXPECT_FALSE(ops.rasOp1(handle, &(op1 = {op, 1, 0, 0, 0, 0}), 0));
        for (ImgRasOp2Desc desc : {op2, unscaled}) EXPECT_FALSE(ops.rasOp2(handle, &desc, handle));
    };
    for (ImgHandle* handle : {image.get(), static_cast<ImgHandle*>(nullptr)}) {
        refused(handle);
        EXPECT_EQ(ops.getWidth(handle) + ops.getHeight(handle) + ImgGetWidth(handle) + ImgGetHeight(handle), 0u);
        EXPECT_EQ(ImgSetDstRect(handle, corners), handle);
        EXPECT_EQ(ImgSetRotation(handle, 1), handle);
        EXPECT_EQ(ImgSetMirFlag(handle, 1), handle);
    }
    EXPECT_EQ(image->free(nullptr, nullptr), nullptr);
    ImgHandle* null = nullptr;
    EXPECT_EQ(image->free(&null, nullptr), nullptr);
    ASSERT_TRUE(TypeParam::create(image.get(), 4, 4));
    EXPECT_FALSE(image->subImage(image.get(), nullptr) || image->convert(image.get(), nullptr));
    EXPECT_FALSE(image->rasOp1(image.get(), nullptr, 0) || image->rasOp2(image.get(), nullptr, image.get()));
    EXPECT_FALSE(image->rasOp2(image.get(), &op2, nullptr) || image->rotate(image.get(), NAN));
    // One part missing, or of another type.
    const ImgHandle whole = *image;
    for (int missing = 0; missing < 3; ++missing) {
        const Handle other = handleOf<TypeParam>(Picture(4, 4));
        if (missing == 0) image->data = nullptr;
        else if (missing == 1) image->header = nullptr;
        else image->type = ImgTypeTiffG4;
        refused(image.get());
        EXPECT_FALSE(other->rasOp2(image.get(), &unscaled, other.get()) ||
                     other->rasOp2(other.get(), &unscaled, image.get()))
            << missing;
        *image = whole;
    }
    image->render = nullptr;
    EXPECT_FALSE(image->rasOp2(image.get(), &op2, image.get())) << "nothing scales it";
}

TYPED_TEST(EveryHandle, StoresParameters) {
    const Handle image(ImgNew(TypeParam::type));
    ASSERT_TRUE(TypeParam::create(image.get(), 4, 3));
    auto& quads = *static_cast<ImgQuads*>(image->header);
    const std::int32_t own[8] = {0, 0, 0, 2, 3, 2, 3, 0}, other[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(std::memcmp(&quads.dstQuad, own, sizeof own), 0);
    EXPECT_EQ(ImgSetDstRect(image.get(), nullptr), image.get());
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
    EXPECT_EQ((std::vector<int>(pixel, pixel + 4)), (std::vector<int>{0x12, 0x34, 0x56, 9}));
    std::uint8_t* table = create_reverse_byte_table();
    EXPECT_EQ(table[0x01], 0x80);
    EXPECT_EQ(table[0xD2], 0x4B);
    MemFree(0, table);
}

}  // namespace
}  // namespace tilepress::test
