#include "support/expose.h"
#include "support/g4_images.h"
#include "support/raised.h"
#include "tilepress/ccitt.h"

namespace support {

EXPOSE(Reduce1G4, CImg1G4, Reduce, CImg1* (CImg1G4::*)(ImgULong, ImgULong, const ImgRect&));

}  // namespace support

using namespace support;

namespace {

enum Known { kUnknown, kWhiteKnown, kBlackKnown };

Owned<> scaled(IImg& image, const ImgRect& r, ImgULong width, ImgULong height, ImgULong depth) {
    ImgScaleAttr attr{depth};
    return Owned<>(image.scale(r, width, height, attr));
}

/// The rectangle as a bilevel image whose foreground is ink, as a first expansion gives it.
Owned<CImg1> inkOf(const Picture& picture, const ImgRect& r, Known known) {
    Picture part = cut(picture, r);
    const std::size_t black = inked(part);
    if (known == kBlackKnown || (known == kUnknown && 100 * black > 55 * part.pixels.size())) part = complement(part);
    auto image = imageOf<CImg1>(part);
    image->setBackgroundColor(0);
    return image;
}

/// Tiles with a few bits turned over.
std::vector<Bytes> damagedTiles(std::mt19937& random, const Picture& picture, ImgULong tileWidth, ImgULong tileHeight) {
    std::vector<Bytes> tiles = tilesOf(picture, tileWidth, tileHeight);
    Bytes& tile = tiles[random() % tiles.size()];
    tile[random() % tile.size()] ^= static_cast<unsigned char>(1 << random() % 8);
    return tiles;
}

}  // namespace

// Every request, of every polarity, must be what expanding and then scaling gives.
TEST(ScaleWhileDecoding, EqualsExpandingAndThenScaling) {
    std::mt19937 random(3);
    for (int round = 0; round < 800; ++round) {
        const auto [picture, image, r] = RandomG4(random, round % 4 == 0 ? 85 : random() % 50, 120);
        const ImgULong w = r.getWidth(), h = r.getHeight();
        const bool wider = round % 3 == 0, taller = round % 12 == 1 ? !wider : wider;
        const ImgULong newWidth = wider ? w - 1 + upTo(random, 2 * w + 1) : upTo(random, w);
        const ImgULong newHeight = taller ? h - 1 + upTo(random, 2 * h + 1) : upTo(random, h);
        if (newWidth == w && newHeight == h) continue;
        const ImgULong depth = round % 2 ? 32 : 1;
        // An enlargement judges an unknown background by a rule of its own, and white runs are offset.
        const Known known = wider || taller ? kWhiteKnown : static_cast<Known>(round % 5 % 3);
        if (known != kUnknown) image->setBackgroundColor(known == kBlackKnown);
        const auto result = scaled(*image, r, newWidth, newHeight, depth);
        const auto expected = scaled(*inkOf(picture, r, known), ImgRect(static_cast<int>(w), static_cast<int>(h)),
                                     newWidth, newHeight, depth);
        ASSERT_TRUE(result && expected);
        ASSERT_EQ(result->getType(), expected->getType());
        ASSERT_EQ(pictureOf(result), pictureOf(expected))
            << w << "x" << h << " to " << newWidth << "x" << newHeight << " known " << known;
        EXPECT_TRUE(image->isBackgroundKnown());
        if (depth == 32 && result->getType() == ImageTypeRGB) {
            EXPECT_EQ(static_cast<CImg32&>(*result).getRGBOrder(), RGBOrderRGB);
        }
    }
}

TEST(ScaleWhileDecoding, KeptAnUnchangedSizeCopiesTheWholeImage) {
    const Picture picture("0110 0001 1000");
    const G4Image image = compressed(picture, 2, 2);
    for (const ImgRect& r : {ImgRect(1, 1, 2, 2), ImgRect(7, 7, 8, 8), ImgRect(1, 2, 0, 1)})
        EXPECT_EQ(pictureOf(scaled(*image, r, 2, 2, 1)), picture) << r.getLeft();
}

// Of a smaller page the sampled bytes hold too little black.
TEST(ScaleWhileDecoding, KeptAnEnlargementJudgesTheBackgroundByItsOwnRule) {
    for (ImgULong size : {10, 32}) {
        const G4Image image = compressed(Picture(size, size, 1), size, size);
        const auto result = scaled(*image, image->getRect(), 2 * size, 2 * size, 1);
        EXPECT_EQ(pictureOf(result), Picture(2 * size, 2 * size, size == 10)) << size;
    }
}

TEST(ScaleWhileDecoding, RefusalsAndCorruptTiles) {
    const G4Image image = compressed(Picture(8, 8, 1), 4, 4);
    for (const ImgRect& r : {ImgRect(0, 0, 8, 7), ImgRect(4, 4, 8, 8), ImgRect(7, 0, 0, 7)})
        for (ImgULong size : {3, 0})
            EXPECT_EQ(raisedBy([&] { EXPECT_EQ(scaled(*image, r, size, 3, 1), nullptr); }),
                      (Raised{1, ImgErrBadArgument}))
                << size;
    EXPECT_EQ(scaled(*image, image->getRect(), 0, 4, 32), nullptr);
    std::vector<Bytes> tiles(4, exchanged(hex("02 00")));
    const G4Image corrupt = makeG4(8, 8, 4, 4, tiles);
    for (const auto& [size, depth] : {std::pair(4u, 1u), {16u, 1u}, {4u, 32u}}) {
        Owned<> result;
        EXPECT_EQ(raisedBy([&, s = size, d = depth] { result = scaled(*corrupt, corrupt->getRect(), s, s, d); }),
                  (Raised{1, ImgErrDecode}));
        // The row that failed holds no count either.
        EXPECT_EQ(pictureOf(result), Picture(size, size, depth == 32 ? 0x00FFFFFF : 0));
    }
    // Seven black pixels, and from left of their end three more: ten of eight.
    tiles.assign(1, exchanged(bits("001 00110101 00011 0000010 1")));
    const G4Image overlapping = makeG4(8, 1, 8, 1, tiles);
    overlapping->setBackgroundColor(0);
    EXPECT_EQ(pictureOf(scaled(*overlapping, ImgRect(8, 1), 1, 1, 32)), Picture(1, 1));
}

// Whether the background is known before the walk or found by it, also where a damaged tile's runs come in any order.
TEST(ScaleWhileDecoding, DarkPagesComeOutTheSameHoweverTheirBackgroundIsFound) {
    std::mt19937 random(7);
    int damaged = 0;
    for (int round = 0; round < 2000; ++round) {
        const ImgULong width = 7 + upTo(random, 90), height = 1 + upTo(random, 20), tileWidth = 7 + upTo(random, 64),
                       tileHeight = upTo(random, 16);
        const Picture picture = randomPicture(random, width, height, 75 + random() % 25);
        std::vector<Bytes> tiles = round % 4 > 0 ? damagedTiles(random, picture, tileWidth, tileHeight)
                                                 : tilesOf(picture, tileWidth, tileHeight);
        const ImgULong newWidth = upTo(random, width / 2), newHeight = upTo(random, height);
        const G4Image found = makeG4(width, height, tileWidth, tileHeight, tiles),
                      known = makeG4(width, height, tileWidth, tileHeight, tiles);
        known->setBackgroundColor(1);
        Owned<> result;
        const Raised raised = raisedBy([&] { result = scaled(*found, found->getRect(), newWidth, newHeight, 1); });
        if (raised.last == ImgErrDecode || found->getBackgroundColor() == 0) continue;
        damaged += round % 4 > 0;
        ASSERT_EQ(pictureOf(result), pictureOf(scaled(*known, known->getRect(), newWidth, newHeight, 1))) << round;
    }
    EXPECT_GT(damaged, 100);

    // Tiles of eight pixels of which ten are counted: beside two white pixels, and below a white row.
    const Bytes ten = exchanged(bits("001 00110101 00011 0000010 1"));
    const auto ink = [](std::vector<Bytes> tiles, ImgULong width, ImgULong height, ImgULong newWidth) {
        const G4Image image = makeG4(width, height, 8, 1, tiles);
        const auto result = scaled(*image, image->getRect(), newWidth, height, 1);
        EXPECT_EQ(image->getBackgroundColor(), 1u);
        return pictureOf(result);
    };
    EXPECT_EQ(ink({ten, tilesOf("11111100", 8, 1)[0]}, 16, 1, 1), Picture("0"));
    std::vector<Bytes> tiles(20, tilesOf("00000000", 8, 1)[0]);
    std::fill(tiles.begin() + 10, tiles.end() - 1, ten);
    EXPECT_EQ(ink(tiles, 80, 2, 10), Picture("1111111111 0000000001"));
}

// The worker that no request reaches: cell k of n begins at ceil(k * size / n), and its first pixel is taken as it is.
TEST(ScaleWhileDecoding, PlainReductionsTakeBitsAsTheyAre) {
    std::mt19937 random(6);
    for (int round = 0; round < 300; ++round) {
        const auto [picture, image, r] = RandomG4(random, random() % 100);
        if (round % 3 > 0) image->setBackgroundColor(round % 3 - 1);
        const ImgULong w = r.getWidth(), h = r.getHeight(), newWidth = upTo(random, w), newHeight = upTo(random, h);
        Picture expected(newWidth, newHeight);
        for (ImgULong y = 0; y < newHeight; ++y)
            for (ImgULong x = 0; x < newWidth; ++x)
                expected.at(x, y) = picture.at(r.getLeft() + (x * w + newWidth - 1) / newWidth,
                                               r.getTop() + (y * h + newHeight - 1) / newHeight);
        const Owned<CImg1> result((image.get()->*workerOf(Reduce1G4{}))(newWidth, newHeight, r));
        CCITT_DisableG4Decode();
        ASSERT_EQ(pictureOf(result), expected) << w << "x" << h << " to " << newWidth << "x" << newHeight;
        const unsigned char lastByte = result->peekData()[result->getBytesPerLine() - 1];
        EXPECT_EQ(lastByte & (result->getPadBits() > 0), image->getBackgroundColor() && result->getPadBits() > 0)
            << "padding";
    }
    const G4Image image = compressed("0110 0110", 4, 4);
    EXPECT_EQ((image.get()->*workerOf(Reduce1G4{}))(5, 2, image->getRect()), nullptr);
    EXPECT_EQ(CImgErr::get(), ImgErrBadArgument);
}
