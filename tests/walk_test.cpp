#include "support/g4_images.h"
#include "support/raised.h"
#include "tilepress/ccitt.h"

using namespace support;

namespace {

Owned<CImg1> expand(CImg1G4& image, const ImgRect& r) {
    auto result = blank<CImg1>(r.getWidth(), r.getHeight());
    result->setBackgroundColor(1);
    EXPECT_TRUE(image.uncompress(result.get(), r));
    return result;
}
Owned<CImg1> expand(CImg1G4& image) { return expand(image, image.getRect()); }

}  // namespace

TEST(Uncompress, RunsThatEndLeftOfTheImagePaintNothing) {
    std::vector<Bytes> tiles{hex("AB 26 01 50 10 00")};
    const G4Image damaged = makeG4(8, 2, 8, 2, tiles);
    damaged->setBackgroundColor(0);
    EXPECT_EQ(bytesOf(*expand(*damaged))[1], 0);
}

TEST(Uncompress, AnyRectangleOfAnyTiling) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        const auto [picture, image, r] = RandomG4(random, random() % 100);
        image->setBackgroundColor(0);
        EXPECT_EQ(bytesOf(*expand(*image, r)), bytesOf(*imageOf<CImg1>(cut(picture, r))));
        EXPECT_EQ(result<CImg1>(image->getSubImage(r)), cut(picture, r));
    }
}

TEST(Uncompress, FiftyFivePercentBlackTurnsTheImageOver) {
    Picture exactly(20, 20);
    for (std::size_t i = 0; i < 400; ++i) exactly.pixels[i] = i % 20 < 11;
    Picture above = exactly;
    above.at(11, 19) = 1;
    for (const Picture& picture : {exactly, above}) {
        const bool over = picture == above;
        const G4Image asked = compressed(picture, 8, 8), image = compressed(picture, 8, 8);
        EXPECT_EQ(asked->getBackgroundColor(), over ? 1u : 0u) << "by a walk of its own";
        EXPECT_TRUE(asked->isBackgroundKnown());
        const auto expanded = expand(*image);
        EXPECT_EQ(pictureOf(expanded), over ? complement(picture) : picture);
        EXPECT_TRUE(image->isBackgroundKnown());
        EXPECT_EQ(bytesOf(*expanded)[2] & 15, over ? 15 : 0) << "pad bits turn over too";
    }
}

TEST(Uncompress, KeptAKnownBlackBackgroundPaintsWhiteRunsWithTheirOffset) {
    const auto twice = [](const char* row, const Bytes& first, const Bytes& second) {
        const G4Image image = compressed(row, 8, 1);
        EXPECT_EQ(bytesOf(*expand(*image)), first);
        EXPECT_EQ(bytesOf(*expand(*image)), second);
    };
    twice("0011111111111111", {0xC0, 0}, {0, 0});
    twice("1111111101111111", {0, 0x80}, {1, 0x80});
    const G4Image empty(CImg1G4::create(16, 1, 8, 1, 0, 0, ImgAlignNone));
    empty->setBackgroundColor(1);
    EXPECT_EQ(bytesOf(*expand(*empty)), (Bytes{1, 0xFF})) << "tiles without data are white";
}

TEST(Uncompress, RefusesRectanglesAndDestinations) {
    const G4Image image = compressed(Picture(100, 50), 64, 32);
    const auto whole = blank<CImg1>(100, 50), narrow = blank<CImg1>(96, 100), low = blank<CImg1>(100, 49),
               emptied = blank<CImg1>(100, 50);
    std::free(emptied->ownData());
    const ImgRect all(100, 50), lower(0, 0, 100, 49), unordered(50, 0, 20, 9);
    struct Case {
        const char* name;
        CImg1* destination;
        const ImgRect& rect;
    };
    for (const Case& c : {Case{"beyond the image", whole.get(), lower}, Case{"unordered", whole.get(), unordered},
                          Case{"no destination", nullptr, all}, Case{"narrow", narrow.get(), all},
                          Case{"low", low.get(), all}, Case{"without pixels", emptied.get(), all}})
        EXPECT_EQ(raisedBy([&] { EXPECT_FALSE(image->uncompress(c.destination, c.rect)); }),
                  (Raised{1, ImgErrBadArgument}))
            << c.name;
    EXPECT_EQ(raisedBy([&] { EXPECT_EQ(image->getSubImage(lower), nullptr); }), (Raised{1, ImgErrBadArgument}));
}

TEST(Uncompress, ACorruptTileEndsTheWalkWhereItStands) {
    std::vector<Bytes> tiles = tilesOf(Picture(24, 4, 1), 8, 4);
    tiles[1] = exchanged(bits(rowText("11111111") + rowText("11111111")));  // ends after two rows
    const G4Image image = makeG4(24, 4, 8, 4, tiles);
    const auto target = blank<CImg1>(24, 4);
    EXPECT_EQ(raisedBy([&] { EXPECT_TRUE(image->uncompress(target.get(), image->getRect())); }),
              (Raised{1, ImgErrDecode}));
    EXPECT_FALSE(image->isBackgroundKnown());
    EXPECT_EQ(bytesOf(*target), (Bytes{255, 255, 255, 255, 255, 255, 255, 0, 0, 0, 0, 0}));
    // The tables are still there; scaling ends them, also after a corrupt tile.
    std::int32_t reference[] = {0, 9, 9, 9}, coding[12], byte = 0, bit = 1, count = 0;
    std::uint16_t word[] = {0x8000};
    const auto decodes = [&] {
        byte = 0, bit = 1;
        return CCITT_G4Decode(reference, 4, 8, word, &byte, &bit, nullptr, coding, &count, 2) == 0;
    };
    EXPECT_TRUE(decodes());
    ImgScaleAttr attr{1};
    EXPECT_TRUE(Owned<>(image->scale(image->getRect(), 12, 2, attr)));
    EXPECT_EQ(CImgErr::get(), ImgErrDecode);
    EXPECT_FALSE(decodes());
    EXPECT_EQ(image->getBackgroundColor(), 0u) << "not computed";
    EXPECT_FALSE(image->isBackgroundKnown());
    CCITT_DisableG4Decode();
}

TEST(Turning, ExpandsTheWholePictureOnce) {
    std::mt19937 random(2);
    const Picture picture = randomPicture(random, 37, 21, 30);
    const G4Image image = compressed(picture, 16, 8, ImgAlignDword);
    EXPECT_EQ(image->mirror(static_cast<ImgMirT>(3)), image.get());
    const auto whole = imageOf<CImg1>(picture, ImgAlignDword);
    for (double angle : {90.0, 180.0, 270.0, 7.5, 360.0, 90.00099, 90.00101})
        EXPECT_EQ(result<CImg1>(image->rotate(angle)), result<CImg1>(whole->rotate(angle))) << angle;
    for (double angle : {0., 0.00099, 359.9995}) EXPECT_EQ(result<CImg1>(image->rotate(angle)), picture) << "no clone";
    for (ImgMirT direction : {ImgMirX, ImgMirY})
        EXPECT_EQ(result<CImg1>(image->mirror(direction)), result<CImg1>(whole->mirror(direction)));
}

TEST(Results, HaveTheirAlignmentColoursAndBackground) {
    constexpr ImgULong back = 0x0A, fore = 0x0B;
    static ImgScaleAttr ink{1};
    struct Case {
        const char* name;
        IImg* (*make)(CImg1G4&);
        ImgAlignmentEnum alignment;
        ImgULong background, foreground;
    };
    const Case cases[] = {
        {"enlarged", [](CImg1G4& i) { return i.scale(i.getRect(), 20, 20, ink); }, ImgAlignNone, back, fore},
        {"reduced", [](CImg1G4& i) { return i.scale(i.getRect(), 5, 5, ink); }, ImgAlignNone, back, fore},
        {"of the same size", [](CImg1G4& i) { return i.scale(ImgRect(5, 5, 14, 14), 10, 10, ink); }, ImgAlignNone,
         0xFFFFFF, 0xFF000000},
        {"wider and lower", [](CImg1G4& i) { return i.scale(i.getRect(), 20, 5, ink); }, ImgAlignNone, 0, 0xFF000000},
        {"narrower and higher", [](CImg1G4& i) { return i.scale(i.getRect(), 5, 20, ink); }, ImgAlignNone, 0,
         0xFF000000},
        {"cut", [](CImg1G4& i) { return i.getSubImage(ImgRect(2, 2, 7, 7)); }, ImgAlignDword, back, fore},
        {"mirrored", [](CImg1G4& i) { return i.mirror(ImgMirX); }, ImgAlignDword, back, fore},
        {"reversed", [](CImg1G4& i) { return i.mirror(ImgMirY); }, ImgAlignDword, back, fore},
        {"not turned", [](CImg1G4& i) { return i.rotate(0); }, ImgAlignDword, back, fore},
        {"turned", [](CImg1G4& i) { return i.rotate(90); }, ImgAlignDword, back, fore},
        {"upside down", [](CImg1G4& i) { return i.rotate(180); }, ImgAlignDword, back, fore},
        {"turned back", [](CImg1G4& i) { return i.rotate(270); }, ImgAlignDword, back, fore},
        {"by any angle", [](CImg1G4& i) { return i.rotate(7.5); }, ImgAlignNone, 0, 0xFF000000},
    };
    for (const Case& c : cases)
        for (int known : {-1, 0, 1}) {
            const G4Image image = compressed(Picture(10, 10, 1), 4, 4, ImgAlignDword);
            image->setBackgroundInterpretation(back);
            image->setForegroundInterpretation(fore);
            if (known >= 0) image->setBackgroundColor(static_cast<ImgULong>(known));
            const auto made = owned<CImg1>(c.make(*image));
            ASSERT_TRUE(made) << c.name;
            EXPECT_EQ(made->getAlignment(), c.alignment) << c.name;
            EXPECT_EQ(made->getBackgroundInterpretation(), c.background) << c.name;
            EXPECT_EQ(made->getForegroundInterpretation(), c.foreground) << c.name;
            EXPECT_TRUE(made->isBackgroundKnown()) << c.name;
            EXPECT_EQ(made->getBackgroundColor(), 0u) << c.name;
        }
    const G4Image image = compressed(Picture(10, 10), 4, 4);
    for (int known : {0, 1}) {
        image->setBackgroundColor(static_cast<ImgULong>(known));
        EXPECT_EQ(expand(*image)->getBackgroundColor(), 0u) << "whatever the destination's was";
    }
}
