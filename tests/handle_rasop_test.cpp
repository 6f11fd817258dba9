// Raster operations of handles.

#include "support/handles.h"

namespace tilepress::test {
namespace {

ImgRasOp1Desc fillDesc(std::uint32_t op, bool keepA = false, std::uint32_t colorA = 0, bool keepB = false,
                       std::uint32_t colorB = 0) {
    return {op, 1, keepA, keepB, colorB, colorA};
}
ImgRasOp2Desc combineDesc(std::uint32_t op, const std::int32_t* position = nullptr, bool placed = false) {
    ImgRasOp2Desc desc{};
    desc.op = op;
    desc.inPlace = 1;
    desc.placed = placed;
    desc.position = position;
    return desc;
}

/// What an operation in place makes of a picture; an empty one for null.
template <class Kind>
Picture after(const Picture& picture, const ImgRasOp1Desc& desc, std::uint32_t value) {
    const Handle image = handleOf<Kind>(picture);
    return pictureOf(image->rasOp1(image.get(), &desc, value));
}
template <class Kind>
Picture after(const Picture& source, ImgRasOp2Desc desc, const Picture& destination) {
    const Handle from = handleOf<Kind>(source), to = handleOf<Kind>(destination);
    const Picture result = pictureOf(to->rasOp2(from.get(), &desc, to.get()));
    if (result.width == 0) {
        EXPECT_EQ(pictureOf(to), destination) << "null changes nothing";
    }
    return result;
}

const Picture kNone(0, 0);

TEST(HandleRasOp1, Bilevel) {
    const Picture p(3, {1, 0, 1}), black(3, {1, 1, 1}), white(3, {0, 0, 0});
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasClear), 1), p);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasClear), 0), white);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasClear, true, 5), 0), p);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasSet), 0), p);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasSet), 9), black);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasFill), 0), white);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasFill, true, 7), 1), black);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasFill, false, 0, true, 0), 1), p);
    EXPECT_EQ(after<Bits>(p, fillDesc(ImgRasFill, true, 1, true, 1), 1), p);
    EXPECT_EQ(after<Bits>(p, fillDesc(4), 1), kNone);
    const Handle image = handleOf<Bits>(p);
    ImgRasOp1Desc desc = fillDesc(ImgRasInvert);
    desc.inPlace = 0;
    EXPECT_EQ(image->rasOp1(image.get(), &desc, 0), image.get());
    EXPECT_EQ(pictureOf(image), Picture(3, {0, 1, 0}));
    EXPECT_EQ(rowOf(*image, 0)[1], 0xFF) << "with its padding";
    desc.op = ImgRasFill;
    const Handle copy(image->rasOp1(image.get(), &desc, 1));
    EXPECT_NE(copy, image);
    EXPECT_EQ(pictureOf(copy), black);
    EXPECT_EQ(pictureOf(image), Picture(3, {0, 1, 0}));
}

TEST(HandleRasOp1, Colours) {
    const Picture p(3, {1, 2, 3});
    for (std::uint32_t op : {ImgRasClear, ImgRasSet, ImgRasFill}) {
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op), 0x109), Picture(3, {9, 9, 9}));
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op, true, 0x202), 9), Picture(3, {9, 2, 9}));
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op, false, 0, true, 3), 9), Picture(3, {9, 9, 3}));
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op, true, 1, true, 3), 9), p);
    }
    EXPECT_EQ(after<Bytes8>(p, fillDesc(ImgRasInvert), 9), p);
    for (std::uint32_t op : {ImgRasClear, ImgRasSet}) {
        EXPECT_EQ(after<Bytes24>(p, fillDesc(op), 0), kNone);
        EXPECT_EQ(after<Words32>(p, fillDesc(op), 0), kNone);
    }
    EXPECT_EQ(after<Bytes24>(p, fillDesc(ImgRasFill, true, 0x020000), 0x112233), Picture(3, {0x332211, 2, 0x332211}));
    EXPECT_EQ(after<Words32>(Picture(2, {0x77000002, 1}), fillDesc(ImgRasFill, false, 0, true, 0x020000), 0x112233),
              Picture(2, {0x77000002, 0x332211}));
    EXPECT_EQ(after<Words32>(p, fillDesc(ImgRasInvert), 0), p);
    const Handle image = handleOf<Bytes24>(p);
    ImgRasOp1Desc desc = fillDesc(ImgRasInvert);
    desc.inPlace = 0;
    EXPECT_EQ(image->rasOp1(image.get(), &desc, 0), image.get());
    EXPECT_EQ(pictureOf(image), Picture(3, {0xFFFFFE, 0xFFFFFD, 0xFFFFFC}));
    EXPECT_EQ(rowOf(*image, 0)[9], 0) << "padding stays";
}

template <class Kind>
class HandleRasOp2 : public ::testing::Test {};
TYPED_TEST_SUITE(HandleRasOp2, HandleKinds);

TYPED_TEST(HandleRasOp2, CombinesWholeImages) {
    const Picture a = randomPixels<TypeParam>(37, 5), b = randomPixels<TypeParam>(37, 5);
    Picture both = a, either = a;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) both.pixels[i] &= b.pixels[i], either.pixels[i] |= b.pixels[i];
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasAnd), b), both);
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasOr), b), either);
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasCopy), b), TypeParam::type == ImgTypeBilevel ? either : a);
    for (std::uint32_t op : {4u, 8u, 3u}) EXPECT_EQ(after<TypeParam>(a, combineDesc(op), b), kNone);
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasOr), randomPixels<TypeParam>(36, 5)), kNone);
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasOr), randomPixels<TypeParam>(37, 6)), kNone);
}

TYPED_TEST(HandleRasOp2, ScalesTheSourceFirst) {
    const Picture small = randomPixels<TypeParam>(7, 5), large(14, 10);
    const Handle source = handleOf<TypeParam>(small), destination = handleOf<TypeParam>(large);
    ImgRasOp2Desc desc = combineDesc(ImgRasOr, nullptr, true);
    desc.scaleFirst = 1;
    desc.inPlace = 0;
    const Handle result(destination->rasOp2(source.get(), &desc, destination.get()));
    EXPECT_EQ(pictureOf(result), pictureOf(Handle(source->render(source.get(), 14, 10, nullptr, 0, 0, 32))));
    EXPECT_EQ(desc.placed, 0u);
    EXPECT_EQ(pictureOf(destination), large);
    desc.op = 9;
    EXPECT_FALSE(destination->rasOp2(source.get(), &desc, destination.get()));
}

TYPED_TEST(HandleRasOp2, PastesAtAPosition) {
    const Picture whole = randomPixels<TypeParam>(40, 6), part = randomPixels<TypeParam>(16, 2);
    const auto at = [](std::int32_t x, std::int32_t y) {
        return std::vector<std::int32_t>{x, y, x, y + 1, x + 15, y + 1, x + 15, y};
    };
    Picture pasted = whole;
    for (std::size_t y = 0; y < 2; ++y)
        for (std::size_t x = 0; x < 16; ++x) pasted.at(24 + x, 4 + y) = part.at(x, y);
    for (std::uint32_t op : {ImgRasAnd, ImgRasOr, ImgRasCopy})
        EXPECT_EQ(after<TypeParam>(part, combineDesc(op, at(24, 4).data(), true), whole), pasted);
    for (auto [x, y] : {std::pair(25, 4), {24, 5}, {-1, 0}, {0, -1}, {INT32_MAX - 15, 0}})
        EXPECT_EQ(after<TypeParam>(part, combineDesc(ImgRasOr, at(x, y).data(), true), whole), kNone) << x << ' ' << y;
    EXPECT_EQ(after<TypeParam>(whole, combineDesc(ImgRasOr, at(0, 0).data(), true), part), kNone)
        << "larger than its place";
    for (auto [x, y] : {std::pair(39, 0), {0, 5}})
        EXPECT_EQ(
            after<TypeParam>(part, combineDesc(ImgRasOr, std::vector{x, y, x, y, x, y, x, y}.data(), true), whole),
            kNone)
            << "a place of one pixel";
    const Handle source = handleOf<TypeParam>(part), destination = handleOf<TypeParam>(whole);
    ImgSetDstRect(source.get(), at(24, 4).data());
    ImgRasOp2Desc desc = combineDesc(ImgRasCopy, nullptr, true);
    EXPECT_EQ(pictureOf(destination->rasOp2(source.get(), &desc, destination.get())), pasted)
        << "the source's own position";
}

TEST(HandleRasOp2Bits, PasteMovedBitsByBytes) {
    const auto paste = [](std::vector<int> source, std::vector<int> destination, std::int32_t x) {
        const Handle from(ImgNew(ImgTypeBilevel)), to(ImgNew(ImgTypeBilevel));
        const auto width = static_cast<std::uint32_t>(8 * destination.size());
        ImgCreateBilevel(from.get(), 13, 1, 16, nullptr);
        ImgCreateBilevel(to.get(), width, 1, 8, nullptr);
        for (std::size_t i = 0; i < source.size(); ++i) rowOf(*from, 0)[i] = static_cast<std::uint8_t>(source[i]);
        for (std::size_t i = 0; i < destination.size(); ++i)
            rowOf(*to, 0)[i] = static_cast<std::uint8_t>(destination[i]);
        const std::int32_t position[8] = {x, 0, x, 0, x + 12, 0, x + 12, 0};
        ImgRasOp2Desc desc = combineDesc(ImgRasAnd, position, true);
        EXPECT_TRUE(to->rasOp2(from.get(), &desc, to.get()));
        return std::vector<int>(rowOf(*to, 0), rowOf(*to, 0) + destination.size());
    };
    EXPECT_EQ(paste({0xA5, 0x3C}, {0x80, 0x00, 0x01}, 3), (std::vector<int>{0x94, 0xA7, 0x01}));
    EXPECT_EQ(paste({0x00, 0x00}, {0xFF, 0xFF, 0xFF}, 3), (std::vector<int>{0xFF, 0x00, 0xFF}));
    EXPECT_EQ(paste({0xA5, 0x3C}, {0x80, 0x00, 0x01}, 8), (std::vector<int>{0x80, 0xA5, 0x3C}));
    EXPECT_EQ(paste({0xA5, 0x3C}, {0x00, 0x00}, 3), (std::vector<int>{0x14, 0xA7})) << "nothing past the block";
    for (auto [alignFrom, alignTo] : {std::pair(0u, 8u), {8u, 0u}}) {
        const Handle from(ImgNew(ImgTypeBilevel)), to(ImgNew(ImgTypeBilevel));
        EXPECT_TRUE(ImgCreateBilevel(from.get(), 8, 1, alignFrom, nullptr) &&
                    ImgCreateBilevel(to.get(), 8, 1, alignTo, nullptr));
        ImgRasOp2Desc desc = combineDesc(ImgRasOr, nullptr, true);
        EXPECT_FALSE(to->rasOp2(from.get(), &desc, to.get())) << "rows without a length";
    }
}

}  // namespace
}  // namespace tilepress::test
