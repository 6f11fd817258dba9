#include "support/g4_images.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

using namespace support;

namespace {

using Bilevel = std::unique_ptr<CImg1>;

Bilevel blank(ImgULong width, ImgULong height) {
    return Bilevel(CImg1::create(width, height, 0x00FFFFFF, 0xFF000000, ImgAlignNone));
}

Bilevel expand(CImg1G4& image, const ImgRect& r) {
    Bilevel result = blank(r.getWidth(), r.getHeight());
    EXPECT_TRUE(image.uncompress(result.get(), r));
    return result;
}

std::string bytesOf(const CImg1& image, ImgULong row = 0) { return rowOf(image, row, image.getBytesPerLine() * 8); }

}  // namespace

TEST(Uncompress, PaintsExactlyTheRectangle) {
    struct Case {
        const char* row;
        ImgULong tile;
        int left, right;
        const char* painted;
    };
    const Case cases[] = {
        {"1111111111111111", 16, 0, 15, "1111111111111111"}, {"1111111111111111", 16, 0, 9, "1111111111000000"},
        {"1111111111111111", 16, 0, 7, "11111111"},          {"1111111111111111", 8, 3, 8, "11111100"},
        {"0000000000000001", 16, 0, 15, "0000000000000001"}, {"0000000000000001", 8, 0, 15, "0000000000000001"},
        {"0000000110000000", 8, 0, 15, "0000000110000000"},  {"0000000110000000", 16, 0, 7, "00000001"},
    };
    for (const Case& c : cases) {
        G4Image image = compressed({c.row}, c.tile, 1);
        image->setBackgroundColor(0);
        EXPECT_EQ(bytesOf(*expand(*image, ImgRect(c.left, 0, c.right, 0))), c.painted) << c.row << " tile " << c.tile;
    }
}

TEST(Uncompress, AnyRectangleOfAnyTiling) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        const auto width = static_cast<ImgULong>(1 + random() % 150), height = static_cast<ImgULong>(1 + random() % 40);
        const Picture picture = randomPicture(random, width, height, random() % 100);
        G4Image image =
            compressed(picture, static_cast<ImgULong>(1 + random() % (width + 10)),
                       static_cast<ImgULong>(1 + random() % (height + 5)), random() % 2 ? ImgAlignDword : ImgAlignNone);
        image->setBackgroundColor(0);
        const int left = static_cast<int>(random() % width), top = static_cast<int>(random() % height);
        const ImgRect r(left, top, left + static_cast<int>(random() % (width - left)),
                        top + static_cast<int>(random() % (height - top)));
        EXPECT_EQ(pictureOf(*expand(*image, r)), cut(picture, r));
        std::unique_ptr<IImg> part(image->getSubImage(r));
        ASSERT_TRUE(part);
        EXPECT_EQ(pictureOf(static_cast<CImg1&>(*part)), cut(picture, r));
    }
}

TEST(Uncompress, FiftyFivePercentBlackTurnsTheImageOver) {
    Picture exactly(20, std::string(11, '1') + std::string(9, '0'));
    Picture above = exactly;
    above[19][11] = '1';
    for (const Picture& picture : {exactly, above}) {
        const bool over = picture == above;
        G4Image image = compressed(picture, 8, 8);
        const Bilevel result = expand(*image, image->getRect());
        EXPECT_EQ(pictureOf(*result), over ? complement(picture) : picture);
        EXPECT_TRUE(image->isBackgroundKnown());
        EXPECT_EQ(image->getBackgroundColor(), over ? 1u : 0u);
        EXPECT_TRUE(result->isBackgroundKnown());
        EXPECT_EQ(result->getBackgroundColor(), 0u);
        // Pad bits: inversion complements them.
        EXPECT_EQ(bytesOf(*result).substr(20), over ? "1111" : "0000");
    }
}

TEST(Uncompress, KeptAKnownBlackBackgroundPaintsWhiteRunsWithTheirOffset) {
    const auto twice = [](const char* row, const char* first, const char* second) {
        G4Image image = compressed({row}, 8, 1);
        EXPECT_EQ(bytesOf(*expand(*image, image->getRect())), first);
        EXPECT_EQ(bytesOf(*expand(*image, image->getRect())), second);
    };
    twice("0011111111111111", "1100000000000000", "0000000000000000");
    twice("1111111101111111", "0000000010000000", "0000000110000000");
    G4Image empty(CImg1G4::create(16, 1, 8, 1, 0, 0, ImgAlignNone));
    empty->setBackgroundColor(1);
    EXPECT_EQ(bytesOf(*expand(*empty, empty->getRect())), "0000000111111111") << "tiles without data are white";
}

TEST(Uncompress, RefusesRectanglesAndDestinations) {
    G4Image image = compressed(Picture(50, std::string(100, '0')), 64, 32);
    const Bilevel result = blank(100, 50), narrow = blank(96, 100), low = blank(100, 49);
    const auto refused = [&](CImg1* dest, const ImgRect& r) {
        CImgErr::sm_errcode = ImgErrNone;
        return !image->uncompress(dest, r) && CImgErr::get() == ImgErrBadArgument;
    };
    EXPECT_TRUE(refused(result.get(), ImgRect(0, 0, 100, 49)));
    EXPECT_TRUE(refused(result.get(), ImgRect(50, 0, 20, 9))) << "unordered";
    EXPECT_TRUE(refused(nullptr, image->getRect()));
    EXPECT_TRUE(refused(narrow.get(), ImgRect(100, 50)));
    EXPECT_TRUE(refused(low.get(), ImgRect(100, 50)));
    std::free(result->ownData());
    EXPECT_TRUE(refused(result.get(), image->getRect()));
    G4Image bare(CImg1G4::create());
    EXPECT_FALSE(bare->uncompress(low.get(), ImgRect(1, 1)));
    EXPECT_EQ(bare->getBackgroundColor(), 0u);
}

TEST(Uncompress, ACorruptTileEndsTheWalkWhereItStands) {
    const Picture black(4, std::string(24, '1'));
    std::vector<Bytes> tiles = tilesOf(black, 8, 4);
    std::string rows;
    for (int i = 0; i < 2; ++i) rows += rowText("11111111");
    tiles[1] = exchanged(bits(rows));  // ends after two rows
    G4Image image = makeG4(24, 4, 8, 4, tiles);
    const Bilevel result = blank(24, 4);
    EXPECT_TRUE(image->uncompress(result.get(), image->getRect()));
    EXPECT_EQ(CImgErr::get(), ImgErrDecode);
    EXPECT_FALSE(image->isBackgroundKnown());
    const std::string all(24, '1'), first = "11111111" + std::string(16, '0');
    EXPECT_EQ(pictureOf(*result), (Picture{all, all, first, std::string(24, '0')}));
    // The tables are still there; scaling ends them, also after a corrupt tile.
    std::int32_t reference[] = {0, 9, 9, 9}, coding[12], byte = 0, bit = 1, count = 0;
    std::uint16_t word[] = {0x8000};
    const auto decodes = [&] {
        byte = 0, bit = 1;
        return CCITT_G4Decode(reference, 4, 8, word, &byte, &bit, nullptr, coding, &count, 2) == 0;
    };
    EXPECT_TRUE(decodes());
    ImgScaleAttr attr{1};
    std::unique_ptr<IImg> scaled(image->scale(image->getRect(), 12, 2, attr));
    ASSERT_TRUE(scaled);
    EXPECT_EQ(CImgErr::get(), ImgErrDecode);
    EXPECT_FALSE(decodes());
    EXPECT_EQ(image->getBackgroundColor(), 0u) << "not computed";
    EXPECT_FALSE(image->isBackgroundKnown());
    CCITT_DisableG4Decode();
}

TEST(Background, ComputedByDecoding) {
    G4Image white = compressed(Picture(10, std::string(10, '0')), 4, 4);
    EXPECT_EQ(white->getBackgroundColor(), 0u);
    G4Image black = compressed(Picture(10, std::string(10, '1')), 4, 4);
    EXPECT_EQ(black->getBackgroundColor(), 1u);
    EXPECT_TRUE(black->isBackgroundKnown());
}

TEST(Turning, KeepsThePlaceholderAndTheWholePicture) {
    std::mt19937 random(2);
    const Picture picture = randomPicture(random, 37, 21, 30);
    G4Image image = compressed(picture, 16, 8, ImgAlignDword);
    EXPECT_EQ(image->mirror(static_cast<ImgMirT>(3)), image.get());
    for (double angle : {0.0, 90.0, 180.0, 270.0, 7.5, 360.0}) {
        G4Image fresh = compressed(picture, 16, 8, ImgAlignDword);
        const Bilevel whole = expand(*fresh, fresh->getRect());
        const Bilevel aligned(CImg1::create(37, 21, 0x00FFFFFF, 0xFF000000, ImgAlignDword));
        fresh->uncompress(aligned.get(), fresh->getRect());
        std::unique_ptr<IImg> turned(image->rotate(angle)), expected(angle == 0 ? nullptr : aligned->rotate(angle));
        ASSERT_TRUE(turned);
        EXPECT_EQ(turned->getBackgroundColor(), 0u);
        EXPECT_EQ(pictureOf(static_cast<CImg1&>(*turned)),
                  pictureOf(angle == 0 ? *whole : static_cast<CImg1&>(*expected)));
    }
    for (ImgMirT direction : {ImgMirX, ImgMirY}) {
        const Bilevel whole = expand(*image, image->getRect());
        std::unique_ptr<IImg> mirrored(image->mirror(direction)), expected(whole->mirror(direction));
        EXPECT_EQ(pictureOf(static_cast<CImg1&>(*mirrored)), pictureOf(static_cast<CImg1&>(*expected)));
    }
}
