// Raster operations of handles.

#include "support/handles.h"

using namespace support;

namespace {

ImgRasOp1Desc fillDesc(std::uint32_t op, bool keepA = false, std::uint32_t colorA = 0, bool keepB = false,
                       std::uint32_t colorB = 0) {
    return {op, 1, keepA, keepB, colorB, colorA};
}
ImgRasOp2Desc combineDesc(std::uint32_t op, const std::int32_t* position = nullptr) {
    ImgRasOp2Desc desc{};
    desc.op = op;
    desc.inPlace = 1;
    desc.placed = position != nullptr;
    desc.position = position;
    return desc;
}

/// What an operation makes of a picture, in place and in a copy; an empty one for null.
template <class Kind>
Picture after(const Picture& picture, ImgRasOp1Desc desc, std::uint32_t value) {
    const Handle image = handleOf<Kind>(picture);
    desc.inPlace = 0;
    const Picture before = pictureOf(image);
    ImgHandle* const result = image->rasOp1(image.get(), &desc, value);
    const Picture copied = pictureOf(result);
    if (result != image.get()) {
        Handle copy(result);
        EXPECT_EQ(pictureOf(image), before) << "the original of a copy";
        desc.inPlace = 1;
        ImgHandle* const same = image->rasOp1(image.get(), &desc, value);
        EXPECT_EQ(same, result ? image.get() : nullptr);
        EXPECT_EQ(pictureOf(same), copied);
    }
    return copied;
}
template <class Kind>
Picture after(const Picture& source, ImgRasOp2Desc desc, const Picture& destination) {
    const Handle from = handleOf<Kind>(source), to = handleOf<Kind>(destination);
    desc.inPlace = 0;
    const Handle copy(to->rasOp2(from.get(), &desc, to.get()));
    EXPECT_EQ(pictureOf(to), destination) << "the original of a copy, and where there is none";
    desc.inPlace = 1;
    EXPECT_EQ(to->rasOp2(from.get(), &desc, to.get()), copy ? to.get() : nullptr);
    EXPECT_EQ(pictureOf(to), copy ? pictureOf(copy) : destination);
    return pictureOf(copy);
}

TEST(HandleRasOp1, Bilevel) {
    const Picture p("101"), black("111"), white("000");
    struct Case {
        ImgRasOp1Desc desc;
        std::uint32_t value;
        Picture expected;
    };
    const Case cases[] = {
        {fillDesc(ImgRasClear), 1, p},
        {fillDesc(ImgRasClear), 0, white},
        {fillDesc(ImgRasClear, true, 5), 0, p},
        {fillDesc(ImgRasSet), 0, p},
        {fillDesc(ImgRasSet), 9, black},
        {fillDesc(ImgRasFill), 0, white},
        {fillDesc(ImgRasFill), 1, black},
        {fillDesc(ImgRasFill, true, 7), 1, black},
        {fillDesc(ImgRasFill, false, 0, true, 0), 1, p},
        {fillDesc(ImgRasFill, true, 1, true, 1), 1, p},
        {fillDesc(4), 1, kNone},
        {fillDesc(ImgRasInvert), 0, "010"},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(after<Bits>(p, cases[i].desc, cases[i].value), cases[i].expected) << i;
    for (std::uint32_t align : {16u, 0u}) {  // in place whatever is asked, with the padding, rows of a length or not
        const Handle image(ImgNew(ImgTypeBilevel));
        ASSERT_TRUE(ImgCreateBilevel(image.get(), 9, 1, align, nullptr));
        ImgRasOp1Desc desc = fillDesc(ImgRasInvert);
        desc.inPlace = 0;
        EXPECT_EQ(image->rasOp1(image.get(), &desc, 0), image.get());
        const std::uint32_t bytes = static_cast<Img1Header*>(image->header)->dataSize;
        for (std::uint32_t i = 0; i < bytes; ++i) EXPECT_EQ(static_cast<std::uint8_t*>(image->data)[i], 0xFF) << align;
    }
}

TEST(HandleRasOp1, Colours) {
    const Picture p(3, {1, 2, 3});
    for (std::uint32_t op : {ImgRasClear, ImgRasSet, ImgRasFill}) {
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op), 0x109), Picture(3, {9, 9, 9}));
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op, true, 0x202), 9), Picture(3, {9, 2, 9}));
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op, false, 0, true, 3), 9), Picture(3, {9, 9, 3}));
        EXPECT_EQ(after<Bytes8>(p, fillDesc(op, true, 1, true, 3), 9), p);
        if (op == ImgRasFill) continue;
        EXPECT_EQ(after<Bytes24>(p, fillDesc(op), 0), kNone);
        EXPECT_EQ(after<Words32>(p, fillDesc(op), 0), kNone);
    }
    EXPECT_EQ(after<Bytes8>(p, fillDesc(ImgRasInvert), 9), p);
    EXPECT_EQ(after<Bytes24>(p, fillDesc(ImgRasFill, true, 0x020000), 0x112233), Picture(3, {0x332211, 2, 0x332211}));
    EXPECT_EQ(after<Words32>(Picture(2, {0x77000002, 1}), fillDesc(ImgRasFill, false, 0, true, 0x020000), 0x112233),
              Picture(2, {0x77000002, 0x332211}));
    EXPECT_EQ(after<Words32>(p, fillDesc(ImgRasInvert), 0), p);
    EXPECT_EQ(after<Bytes24>(p, fillDesc(ImgRasInvert), 0), Picture(3, {0xFFFFFE, 0xFFFFFD, 0xFFFFFC}));
}

TEST(HandleRasOp, PaddingOfRgbRowsStays) {
    const Handle image = handleOf<Bytes24>(Picture(3, {1, 2, 3})), other = handleOf<Bytes24>(Picture(3, {4, 5, 6}));
    std::memset(rowOf(*other, 0) + 9, 0xAA, 3);
    ImgRasOp1Desc one = fillDesc(ImgRasInvert);
    const auto padding = [&] { return Bytes(rowOf(*image, 0) + 9, rowOf(*image, 0) + 12); };
    for (std::uint32_t op : {ImgRasInvert, ImgRasFill}) {
        one.op = op;
        EXPECT_TRUE(image->rasOp1(image.get(), &one, 0xFFFFFF));
        EXPECT_EQ(padding(), Bytes(3)) << op;
    }
    for (std::uint32_t op : {ImgRasAnd, ImgRasOr, ImgRasCopy}) {
        ImgRasOp2Desc two = combineDesc(op);
        EXPECT_TRUE(image->rasOp2(other.get(), &two, image.get()));
        EXPECT_EQ(padding(), Bytes(3)) << op;
    }
    const std::int32_t here[8] = {0, 0, 0, 0, 2, 0, 2, 0};
    ImgRasOp2Desc paste = combineDesc(ImgRasCopy, here);
    EXPECT_TRUE(image->rasOp2(other.get(), &paste, image.get()));
    EXPECT_EQ(padding(), Bytes(3));
}

SUITE_FOR(HandleRasOp2, HandleKinds);

TYPED_TEST(HandleRasOp2, CombinesWholeImages) {
    const Picture a = randomPixels<TypeParam>(37, 5), b = randomPixels<TypeParam>(37, 5);
    Picture both = a, either = a;
    for (std::size_t i = 0; i < a.pixels.size(); ++i) both.pixels[i] &= b.pixels[i], either.pixels[i] |= b.pixels[i];
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasAnd), b), both);
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasOr), b), either);
    EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasCopy), b), TypeParam::type == ImgTypeBilevel ? either : a);
    for (std::uint32_t op : {4u, 8u, 3u}) EXPECT_EQ(after<TypeParam>(a, combineDesc(op), b), kNone);
    for (auto [w, h] : {std::pair(36, 5), {37, 6}})
        EXPECT_EQ(after<TypeParam>(a, combineDesc(ImgRasOr), randomPixels<TypeParam>(w, h)), kNone) << w;
    // Rows of as many bytes, padded to another unit.
    const Handle narrow = handleOf<TypeParam>(Picture(32, 1), 8), wide = handleOf<TypeParam>(Picture(32, 1), 32);
    ImgRasOp2Desc desc = combineDesc(ImgRasOr);
    EXPECT_EQ(wide->rasOp2(narrow.get(), &desc, wide.get()), alignmentOf(*narrow) == 32 ? wide.get() : nullptr);
}

TYPED_TEST(HandleRasOp2, ScalesTheSourceFirst) {
    const Picture small = randomPixels<TypeParam>(7, 5), large(14, 10);
    const Handle source = handleOf<TypeParam>(small), destination = handleOf<TypeParam>(large);
    const std::int32_t ignored[8] = {};
    ImgRasOp2Desc desc = combineDesc(ImgRasOr, ignored);
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
    using Corners = std::vector<std::int32_t>;
    const auto at = [](std::int32_t x, std::int32_t y) { return Corners{x, y, x, y + 1, x + 15, y + 1, x + 15, y}; };
    const auto pasted = [&](const Picture& source, const Corners& place, const Picture& destination) {
        return after<TypeParam>(source, combineDesc(ImgRasOr, place.data()), destination);
    };
    Picture expected = whole;
    for (std::size_t y = 0; y < 2; ++y)
        for (std::size_t x = 0; x < 16; ++x) expected.at(24 + x, 4 + y) = part.at(x, y);
    for (std::uint32_t op : {ImgRasAnd, ImgRasOr, ImgRasCopy})
        EXPECT_EQ(after<TypeParam>(part, combineDesc(op, at(24, 4).data()), whole), expected);
    for (auto [x, y] : {std::pair(25, 4), {24, 5}, {-1, 0}, {0, -1}, {INT32_MAX - 15, 0}, {39, 0}, {0, 5}})
        EXPECT_EQ(pasted(part, at(x, y), whole), kNone) << x << ' ' << y;
    EXPECT_EQ(pasted(whole, at(0, 0), part), kNone) << "larger than its place";
    // Of the corner across only its place counts, and it must be inside.
    EXPECT_EQ(pasted(part, {24, 4, 24, 5, 39, 5, 40, 4}, whole), kNone);
    EXPECT_EQ(pasted(part, {24, 4, 24, 5, 39, 6, 39, 4}, whole), kNone);
    EXPECT_EQ(pasted(part, {24, 4, 24, 5, 99, 5, 39, 99}, whole), expected);
    for (const Corners& small : {Corners{30, 4, 30, 5, 39, 5, 39, 4}, {24, 5, 24, 5, 39, 5, 39, 5}})
        EXPECT_EQ(pasted(part, small, whole), kNone) << "a place smaller than what is pasted";
    const Handle source = handleOf<TypeParam>(part), destination = handleOf<TypeParam>(whole);
    ImgSetDstRect(source.get(), at(24, 4).data());
    ImgRasOp2Desc desc = combineDesc(ImgRasCopy);
    desc.placed = 1;
    EXPECT_EQ(pictureOf(destination->rasOp2(source.get(), &desc, destination.get())), expected)
        << "the source's own position";
}

TEST(HandleRasOp2Bits, PasteMovedBitsByBytes) {
    struct Case {
        Bytes source, destination;
        std::int32_t x;
        Bytes expected;
    };
    for (const Case& c : {Case{{0xA5, 0x3C}, {0x80, 0x00, 0x01}, 3, {0x94, 0xA7, 0x01}},
                          Case{{0x00, 0x00}, {0xFF, 0xFF, 0xFF}, 3, {0xFF, 0x00, 0xFF}},
                          Case{{0xA5, 0x3C}, {0x80, 0x00, 0x01}, 8, {0x80, 0xA5, 0x3C}},
                          Case{{0xA5, 0x3C}, {0x00, 0x00}, 3, {0x14, 0xA7}}}) {  // nothing past the block
        const Handle from(ImgNew(ImgTypeBilevel)), to(ImgNew(ImgTypeBilevel));
        ImgCreateBilevel(from.get(), 13, 1, 16, nullptr);
        ImgCreateBilevel(to.get(), static_cast<std::uint32_t>(8 * c.destination.size()), 1, 8, nullptr);
        std::copy(c.source.begin(), c.source.end(), rowOf(*from, 0));
        std::copy(c.destination.begin(), c.destination.end(), rowOf(*to, 0));
        const std::int32_t position[8] = {c.x, 0, c.x, 0, c.x + 12, 0, c.x + 12, 0};
        ImgRasOp2Desc desc = combineDesc(ImgRasAnd, position);
        EXPECT_TRUE(to->rasOp2(from.get(), &desc, to.get()));
        EXPECT_EQ(Bytes(rowOf(*to, 0), rowOf(*to, 0) + c.destination.size()), c.expected) << c.x;
    }
    for (auto [alignFrom, alignTo] : {std::pair(0u, 8u), {8u, 0u}}) {
        const Handle from(ImgNew(ImgTypeBilevel)), to(ImgNew(ImgTypeBilevel));
        ImgCreateBilevel(from.get(), 8, 1, alignFrom, nullptr);
        ImgCreateBilevel(to.get(), 8, 1, alignTo, nullptr);
        const std::int32_t here[8] = {0, 0, 0, 0, 7, 0, 7, 0};
        ImgRasOp2Desc desc = combineDesc(ImgRasOr, here);
        EXPECT_FALSE(to->rasOp2(from.get(), &desc, to.get())) << "rows without a length";
    }
}

}  // namespace
