#include "support/expose.h"
#include "support/g4_images.h"
#include "tilepress/CImg32.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

namespace support {

struct Reduce1G4 {
    using Type = CImg1* (CImg1G4::*)(ImgULong, ImgULong, const ImgRect&);
    friend Type workerOf(Reduce1G4);
};
template struct Expose<Reduce1G4, &CImg1G4::Reduce>;

}  // namespace support

using namespace support;

namespace {

enum Known { kUnknown, kWhiteKnown, kBlackKnown };

std::unique_ptr<IImg> scaled(IImg& image, const ImgRect& r, ImgULong width, ImgULong height, ImgULong depth) {
    ImgScaleAttr attr{depth};
    return std::unique_ptr<IImg>(image.scale(r, width, height, attr));
}

std::vector<ImgULong> pixelsOf(const CImg32& image) {
    return {image.peekData(), image.peekData() + image.getTotalBytes() / 4};
}

/// The rectangle as a bilevel image whose foreground is ink, as a first expansion gives it.
std::unique_ptr<CImg1> inkOf(const Picture& picture, const ImgRect& r, Known known) {
    Picture part = cut(picture, r);
    std::size_t black = 0, all = 0;
    for (const std::string& row : part) {
        all += row.size();
        for (char c : row) black += c == '1';
    }
    if (known == kBlackKnown || (known == kUnknown && 100 * black > 55 * all)) part = complement(part);
    std::unique_ptr<CImg1> image(CImg1::create(r.getWidth(), r.getHeight(), 0xFFFFFF, 0xFF000000, ImgAlignNone));
    for (ImgULong y = 0; y < r.getHeight(); ++y)
        for (ImgULong x = 0; x < r.getWidth(); ++x)
            if (part[y][x] == '1')
                image->peekData()[y * image->getBytesPerLine() + x / 8] |= static_cast<unsigned char>(0x80 >> x % 8);
    image->setBackgroundColor(0);
    return image;
}

}  // namespace

// Every request, of every polarity, must be what expanding and then scaling gives.
TEST(ScaleWhileDecoding, EqualsExpandingAndThenScaling) {
    std::mt19937 random(3);
    for (int round = 0; round < 600; ++round) {
        const auto width = static_cast<ImgULong>(1 + random() % 120), height = static_cast<ImgULong>(1 + random() % 50);
        const Picture picture = randomPicture(random, width, height, round % 4 == 0 ? 85 : random() % 50);
        G4Image image = compressed(picture, static_cast<ImgULong>(1 + random() % (width + 10)),
                                   static_cast<ImgULong>(1 + random() % (height + 5)));
        const int left = static_cast<int>(random() % width), top = static_cast<int>(random() % height);
        const ImgRect r(left, top, left + static_cast<int>(random() % (width - left)),
                        top + static_cast<int>(random() % (height - top)));
        const ImgULong w = r.getWidth(), h = r.getHeight();
        const bool enlarge = round % 3 == 0;
        const auto newWidth = static_cast<ImgULong>(enlarge ? w + random() % (2 * w + 1) : 1 + random() % w);
        const auto newHeight = static_cast<ImgULong>(enlarge ? h + random() % (2 * h + 1) : 1 + random() % h);
        if (newWidth == w && newHeight == h) continue;
        const ImgULong depth = round % 2 ? 32 : 1;
        // An enlargement judges an unknown background by a rule of its own, and white runs are offset.
        const Known known = enlarge ? kWhiteKnown : static_cast<Known>(round % 5 % 3);
        if (known != kUnknown) image->setBackgroundColor(known == kBlackKnown);
        const auto result = scaled(*image, r, newWidth, newHeight, depth);
        const auto expected =
            scaled(*inkOf(picture, r, known), ImgRect(0, 0, static_cast<int>(w) - 1, static_cast<int>(h) - 1), newWidth,
                   newHeight, depth);
        ASSERT_TRUE(result);
        ASSERT_TRUE(expected);
        ASSERT_EQ(result->getType(), expected->getType());
        if (result->getType() == ImageTypeRGB) {
            EXPECT_EQ(pixelsOf(static_cast<CImg32&>(*result)), pixelsOf(static_cast<CImg32&>(*expected)));
        } else {
            EXPECT_EQ(pictureOf(static_cast<CImg1&>(*result)), pictureOf(static_cast<CImg1&>(*expected)))
                << width << "x" << height << " to " << newWidth << "x" << newHeight << " known " << known;
            EXPECT_TRUE(static_cast<CImg1&>(*result).isBackgroundKnown());
            EXPECT_EQ(result->getBackgroundColor(), 0u);
        }
        EXPECT_EQ(image->isBackgroundKnown(), true);
    }
}

TEST(ScaleWhileDecoding, OneDimensionUpTheOtherDown) {
    std::mt19937 random(4);
    const Picture picture = randomPicture(random, 40, 30, 20);
    for (ImgULong depth : {1, 32}) {
        for (auto [w, h] : {std::pair<ImgULong, ImgULong>{20, 60}, {60, 20}}) {
            G4Image image = compressed(picture, 16, 16);
            image->setBackgroundColor(0);
            const auto result = scaled(*image, image->getRect(), w, h, depth);
            const auto expected = scaled(*inkOf(picture, image->getRect(), kWhiteKnown), image->getRect(), w, h, depth);
            ASSERT_TRUE(result);
            EXPECT_EQ(result->getWidth(), w);
            EXPECT_EQ(result->getHeight(), h);
            ASSERT_EQ(result->getType(), expected->getType());
            if (depth == 32) {
                EXPECT_EQ(pixelsOf(static_cast<CImg32&>(*result)), pixelsOf(static_cast<CImg32&>(*expected)));
            } else {
                EXPECT_EQ(pictureOf(static_cast<CImg1&>(*result)), pictureOf(static_cast<CImg1&>(*expected)));
            }
        }
    }
}

TEST(ScaleWhileDecoding, EnlargesRunsAndRepeatsRows) {
    const auto twice = [](const char* row) {
        G4Image image = compressed({row}, 4, 1);
        image->setBackgroundColor(0);
        const auto result = scaled(*image, image->getRect(), 8, 2, 1);
        return pictureOf(static_cast<CImg1&>(*result));
    };
    EXPECT_EQ(twice("1100"), Picture(2, "11110000"));
    EXPECT_EQ(twice("0001"), Picture(2, "00000011"));
    EXPECT_EQ(twice("0111"), Picture(2, "00111111"));
}

TEST(ScaleWhileDecoding, KeptAnUnchangedSizeCopiesTheWholeImage) {
    const Picture picture{"0110", "0001", "1000"};
    G4Image image = compressed(picture, 2, 2);
    const auto result = scaled(*image, ImgRect(1, 1, 2, 2), 2, 2, 1);
    ASSERT_TRUE(result);
    EXPECT_EQ(pictureOf(static_cast<CImg1&>(*result)), picture);
}

TEST(ScaleWhileDecoding, RefusalsAndCorruptTiles) {
    G4Image image = compressed(Picture(8, "00110000"), 4, 4);
    for (const ImgRect& r : {ImgRect(0, 0, 8, 7), ImgRect(4, 4, 8, 8), ImgRect(7, 0, 0, 7)}) {
        CImgErr::sm_errcode = ImgErrNone;
        EXPECT_EQ(scaled(*image, r, 3, 3, 1), nullptr);
        EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
    }
    EXPECT_EQ(scaled(*image, image->getRect(), 0, 4, 32), nullptr);
    std::vector<Bytes> tiles(4, exchanged(hex("02 00")));
    G4Image corrupt = makeG4(8, 8, 4, 4, tiles);
    for (ImgULong depth : {1, 32}) {
        const auto result = scaled(*corrupt, corrupt->getRect(), 4, 4, depth);
        ASSERT_TRUE(result);
        EXPECT_EQ(CImgErr::get(), ImgErrDecode);
        if (depth != 32) continue;
        // The row that failed holds no count either.
        EXPECT_EQ(pixelsOf(static_cast<CImg32&>(*result)), std::vector<ImgULong>(16, 0x00FFFFFF));
    }
    EXPECT_TRUE(scaled(*corrupt, corrupt->getRect(), 16, 16, 1));
    // Seven black pixels, and from left of their end three more: ten of eight.
    tiles.assign(1, exchanged(bits("001 00110101 00011 0000010 1")));
    G4Image overlapping = makeG4(8, 1, 8, 1, tiles);
    overlapping->setBackgroundColor(0);
    EXPECT_EQ(pixelsOf(static_cast<CImg32&>(*scaled(*overlapping, ImgRect(8, 1), 1, 1, 32))), std::vector<ImgULong>{0});
}

// Whether the background is known before the walk or found by it, also where a damaged tile's runs come in any order.
TEST(ScaleWhileDecoding, DarkPagesComeOutTheSameHoweverTheirBackgroundIsFound) {
    std::mt19937 random(7);
    int damaged = 0;
    for (int round = 0; round < 2000; ++round) {
        const auto width = static_cast<ImgULong>(8 + random() % 90), height = static_cast<ImgULong>(2 + random() % 20);
        const auto tileWidth = static_cast<ImgULong>(8 + random() % 64),
                   tileHeight = static_cast<ImgULong>(1 + random() % 16);
        std::vector<Bytes> tiles =
            tilesOf(randomPicture(random, width, height, 75 + random() % 25), tileWidth, tileHeight);
        Bytes& tile = tiles[random() % tiles.size()];
        const bool spoilt = round % 4 > 0;
        if (spoilt) tile[random() % tile.size()] ^= static_cast<unsigned char>(1 << random() % 8);
        const auto newWidth = static_cast<ImgULong>(1 + random() % (width / 2)),
                   newHeight = static_cast<ImgULong>(1 + random() % height);
        G4Image found = makeG4(width, height, tileWidth, tileHeight, tiles),
                known = makeG4(width, height, tileWidth, tileHeight, tiles);
        known->setBackgroundColor(1);
        CImgErr::sm_errcode = ImgErrNone;
        const auto result = scaled(*found, found->getRect(), newWidth, newHeight, 1);
        if (CImgErr::get() != ImgErrNone || found->getBackgroundColor() == 0) continue;
        damaged += spoilt;
        const auto expected = scaled(*known, known->getRect(), newWidth, newHeight, 1);
        ASSERT_EQ(pictureOf(static_cast<CImg1&>(*result)), pictureOf(static_cast<CImg1&>(*expected))) << round;
    }
    EXPECT_GT(damaged, 100);

    // Tiles of eight pixels of which ten are counted: beside two white pixels, and below a white row.
    const Bytes ten = exchanged(bits("001 00110101 00011 0000010 1"));
    const auto ink = [](std::vector<Bytes> tiles, ImgULong width, ImgULong height, ImgULong newWidth) {
        G4Image image = makeG4(width, height, 8, 1, tiles);
        const auto result = scaled(*image, image->getRect(), newWidth, height, 1);
        EXPECT_EQ(image->getBackgroundColor(), 1u);
        return pictureOf(static_cast<CImg1&>(*result));
    };
    EXPECT_EQ(ink({ten, tilesOf({"11111100"}, 8, 1)[0]}, 16, 1, 1), Picture{"0"});
    std::vector<Bytes> tiles(20, tilesOf({"00000000"}, 8, 1)[0]);
    std::fill(tiles.begin() + 10, tiles.end() - 1, ten);
    EXPECT_EQ(ink(tiles, 80, 2, 10), (Picture{"1111111111", "0000000001"}));
}

// --- the worker that no request reaches -------------------------------------------------

// Cell k of n begins at ceil(k * size / n), and its first pixel is taken as it stands.
TEST(ScaleWhileDecoding, PlainReductionsTakeBitsAsTheyAre) {
    std::mt19937 random(6);
    for (int round = 0; round < 300; ++round) {
        const auto width = static_cast<ImgULong>(1 + random() % 150), height = static_cast<ImgULong>(1 + random() % 40);
        const Picture picture = randomPicture(random, width, height, random() % 100);
        G4Image image = compressed(picture, static_cast<ImgULong>(1 + random() % (width + 10)),
                                   static_cast<ImgULong>(1 + random() % (height + 5)));
        if (round % 3 > 0) image->setBackgroundColor(round % 3 - 1);
        const int left = static_cast<int>(random() % width), top = static_cast<int>(random() % height);
        const ImgRect r(left, top, static_cast<int>(width) - 1, static_cast<int>(height) - 1);
        const ImgULong w = r.getWidth(), h = r.getHeight();
        const auto newWidth = static_cast<ImgULong>(1 + random() % w),
                   newHeight = static_cast<ImgULong>(1 + random() % h);
        Picture expected(newHeight, std::string(newWidth, '0'));
        for (ImgULong y = 0; y < newHeight; ++y)
            for (ImgULong x = 0; x < newWidth; ++x)
                expected[y][x] =
                    picture[top + (y * h + newHeight - 1) / newHeight][left + (x * w + newWidth - 1) / newWidth];
        const std::unique_ptr<CImg1> result((image.get()->*workerOf(Reduce1G4{}))(newWidth, newHeight, r));
        CCITT_DisableG4Decode();
        ASSERT_TRUE(result);
        ASSERT_EQ(pictureOf(*result), expected) << width << "x" << height << " to " << newWidth << "x" << newHeight;
        const unsigned char lastByte = result->peekData()[result->getBytesPerLine() - 1];
        EXPECT_EQ(lastByte & (result->getPadBits() > 0), image->getBackgroundColor() && result->getPadBits() > 0)
            << "padding";
    }
    G4Image image = compressed(Picture(4, "0110"), 4, 4);
    EXPECT_EQ((image.get()->*workerOf(Reduce1G4{}))(5, 4, image->getRect()), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
}

// Nothing that a tile holds may read or write outside a buffer, or hang.
TEST(ScaleWhileDecoding, DamagedTilesEndInAStatus) {
    std::mt19937 random(5);
    int damaged = 0;
    while (damaged < 10000) {
        const auto width = static_cast<ImgULong>(1 + random() % 90), height = static_cast<ImgULong>(1 + random() % 20);
        const auto tileWidth = static_cast<ImgULong>(1 + random() % 64),
                   tileHeight = static_cast<ImgULong>(1 + random() % 16);
        std::vector<Bytes> tiles = tilesOf(randomPicture(random, width, height, random() % 60), tileWidth, tileHeight);
        for (Bytes& tile : tiles) {
            ++damaged;
            for (unsigned n = 1 + random() % 3; n > 0; --n)
                tile[random() % tile.size()] ^= static_cast<unsigned char>(1 << random() % 8);
            if (random() % 4 == 0) tile.resize(random() % tile.size());
        }
        G4Image image = makeG4(width, height, tileWidth, tileHeight, tiles);
        ASSERT_TRUE(image);
        if (random() % 2) image->setBackgroundColor(random() % 2);
        scaled(*image, image->getRect(), static_cast<ImgULong>(1 + random() % (2 * width)),
               static_cast<ImgULong>(1 + random() % (2 * height)), random() % 2 ? 32 : 1);
        std::unique_ptr<CImg1> whole(CImg1::create(width, height, 0, 0, ImgAlignNone));
        image->uncompress(whole.get(), image->getRect());
        EXPECT_TRUE(CImgErr::get() == ImgErrNone || CImgErr::get() == ImgErrDecode || CImgErr::get() == ImgErrCreate);
    }
}
