#include "tilepress/Export.h"
#include "kernels/dither.h"
#include "support/g4_images.h"

#include <utility>

using namespace support;

namespace {

Owned<CImg8> palette(ImgULong width, ImgULong height, ColorMap* map = nullptr) {
    return Owned<CImg8>(CImg8::create(width, height, map, ImgAlignNone));
}
Owned<CImg32> rgb(ImgULong width, ImgULong height, RGBOrder order = RGBOrderRGB) {
    return Owned<CImg32>(CImg32::create(width, height, order));
}

}  // namespace

// --- what is converted at all ---

TEST(Export, RefusedPairsChangeNothing) {
    const auto one = blank<CImg1>(8, 8), low = blank<CImg1>(8, 7), stretched = blank<CImg1>(8, 8),
               aligned = blank<CImg1>(8, 8, ImgAlignByte);
    const auto eight = palette(8, 8), nines = palette(8, 8), narrow = palette(7, 8), large = palette(100, 100);
    const auto thirtyTwo = rgb(8, 8), small = rgb(7, 8), emptied = rgb(8, 8);
    const Owned<CImg1G4> compressed(CImg1G4::create(8, 8, 8, 8, 0, 1, ImgAlignNone));
    std::memset(nines->peekData(), 9, 64);
    stretched->setExtents(100, 100);
    std::free(emptied->ownData());
    struct Case {
        const char* name;
        IImg *to, *from;
    };
    const Case cases[] = {
        {"palette to palette", eight.get(), nines.get()},
        {"RGB to palette", eight.get(), thirtyTwo.get()},
        {"compressed to palette", eight.get(), compressed.get()},
        {"compressed to RGB", thirtyTwo.get(), compressed.get()},
        {"bits to compressed", compressed.get(), one.get()},
        {"palette to compressed", compressed.get(), eight.get()},
        {"RGB to compressed", compressed.get(), thirtyTwo.get()},
        {"compressed to compressed", compressed.get(), compressed.get()},
        {"to none", nullptr, one.get()},
        {"from none", one.get(), nullptr},
        {"lower bits", one.get(), low.get()},
        {"bits to a narrower palette image", narrow.get(), one.get()},
        {"bits to narrower RGB", small.get(), one.get()},
        {"narrower palette pixels to bits", one.get(), narrow.get()},
        {"narrower palette pixels to RGB", thirtyTwo.get(), narrow.get()},
        {"larger RGB", small.get(), thirtyTwo.get()},
        {"bits of another alignment, whatever it comes to", one.get(), aligned.get()},
        {"pixels that are not there", large.get(), stretched.get()},
        {"to no pixels", emptied.get(), one.get()},
        {"from no pixels", one.get(), emptied.get()},
    };
    for (const Case& c : cases) EXPECT_FALSE(Export::xfm(c.to, c.from)) << c.name;
    EXPECT_EQ(pictureOf(eight), Picture(8, 8));
    std::free(narrow->ownData());
    EXPECT_EQ(pictureOf(Owned<CImg32>(CImg32::create(*narrow, RGBOrderRGB))), Picture(7, 8));
}

// --- from bits ---

TEST(Export, BitsBecomeBitsPaletteAndRgbPixels) {
    for (ImgAlignmentEnum alignment : kAlignments)
        for (ImgULong width = 1; width <= 40; ++width) {
            const Picture picture = randomPicture<CImg1>(width, 3);
            const auto from = imageOf<CImg1>(picture, alignment), same = blank<CImg1>(width, 3, alignment);
            Picture indices = picture, colours = picture;
            for (auto& pixel : indices.pixels) pixel = pixel ? 0 : 255;
            for (auto& pixel : colours.pixels) pixel = pixel ? 0x445566 : 0x112233;
            const auto thirtyTwo = rgb(width, 3);
            ASSERT_TRUE(Export::xfm(*thirtyTwo, *from));
            ASSERT_EQ(pictureOf(thirtyTwo), colours) << width;
            ASSERT_EQ(pictureOf(Owned<CImg8>(CImg8::create(*from, nullptr, alignment))), indices) << width;
            ASSERT_TRUE(Export::xfm(*same, *from));
            ASSERT_EQ(bytesOf(*same), bytesOf(*from));
        }
}

// --- from colours ---

TEST(Export, PalettePixelsBecomeRgb) {
    ColorMap map(4, 255);
    map.entries[1] = {0x11, 0x22, 0x33};
    map.entries[2] = {-5, 300, 255};
    map.entries[3] = {0x77, 0x77, 0x77};
    map.count = 3;  // 3 is past the entries in use
    auto from = palette(4, 1, &map);
    std::memcpy(from->peekData(), "\1\2\3\0", 4);
    from->getColorMap()->entries[3] = map.entries[3];
    auto red = rgb(4, 1), blue = rgb(4, 1, RGBOrderBGR);
    std::fill_n(blue->peekData(), 4, 0xFFFFFFFF);
    EXPECT_TRUE(Export::xfm(*red, *from));
    EXPECT_TRUE(Export::xfm(*blue, *from));
    EXPECT_EQ(pictureOf(red), Picture(4, {0x332211, 0xFFFF00, 0, 0}));
    EXPECT_EQ(pictureOf(blue), Picture(4, {0x112233, 0x00FFFF, 0, 0}));
    // Counts that are not the table's, and no table.
    ColorMap& own = *from->getColorMap();
    own.count = 300;
    for (const auto& [capacity, last] : {std::pair(4, 0x777777u), {3, 0u}}) {
        own.capacity = capacity;
        EXPECT_TRUE(Export::xfm(*blue, *from));
        EXPECT_EQ(pictureOf(blue), Picture(4, {0x112233, 0x00FFFF, last, 0}));
    }
    own.count = -1;
    EXPECT_FALSE(Export::xfm(*blue, *from));
    own.count = 3;
    ColorMapEntry* const entries = std::exchange(own.entries, nullptr);
    EXPECT_FALSE(Export::xfm(*blue, *from));
    own.entries = entries;
}

TEST(Export, PaletteIntoRedFirstIsOredKept) {
    ColorMap map(1, 255);
    map.entries[0] = {0x0F, 0, 0};
    auto from = palette(1, 1, &map);
    auto to = rgb(1, 1);
    to->peekData()[0] = 0xF0;
    EXPECT_TRUE(Export::xfm(*to, *from));
    EXPECT_EQ(to->peekData()[0], 0xFFu);
    map.count = 0;
    EXPECT_FALSE(Export::xfm(*to, *palette(1, 1, &map))) << "a map without entries";
    EXPECT_TRUE(Export::xfm(*blank<CImg1>(1, 1), *palette(1, 1, &map)));
}

TEST(Export, ACompressedImageExpands) {
    const Picture picture("01100000 00000011");
    const auto to = blank<CImg1>(8, 2), small = blank<CImg1>(8, 1);
    const G4Image from = compressed(picture, 8, 2);
    EXPECT_TRUE(Export::xfm(*to, *from));
    EXPECT_EQ(pictureOf(to), picture);
    EXPECT_FALSE(Export::xfm(*small, *from));
}

TEST(Export, OrdersThatDifferExchangeBytes) {
    const auto from = rgb(1, 1, RGBOrderBGR), to = rgb(1, 1, static_cast<RGBOrder>(2));
    from->peekData()[0] = 0x44332211;
    EXPECT_TRUE(Export::xfm(*to, *from));
    EXPECT_EQ(to->peekData()[0], 0x44112233u);
}

// --- dithering ---

TEST(Dither, ToneCurve) {
    const auto grey = [](unsigned l) { return int{tilepress::toneOf(l, l, l)}; };
    for (const auto& [l, tone] :
         {std::pair{0, 0}, {20, 0}, {21, 1}, {100, 82}, {128, 127}, {150, 163}, {239, 254}, {240, 255}, {255, 255}})
        EXPECT_EQ(grey(static_cast<unsigned>(l)), tone) << l;
    for (unsigned l = 21; l <= 240; ++l) EXPECT_GT(grey(l), grey(l - 1)) << l;
    EXPECT_EQ(tilepress::toneOf(255, 0, 0), grey(76));
    EXPECT_EQ(tilepress::toneOf(0, 255, 0), grey(149));
    EXPECT_EQ(tilepress::toneOf(0, 0, 255), grey(28));
}

TEST(Dither, EqualGreysGiveTheirPatterns) {
    ColorMap map(256, 255);
    for (int i = 0; i < 256; ++i) map.entries[i] = {i, i, i};
    for (const auto& [grey, rows] : {std::pair(100, Bytes{0xDD, 0x6B, 0xDE, 0xB5}),
                                     {128, {0xAA, 0x55, 0xAA, 0x55}},
                                     {150, {0x49, 0x24, 0x92, 0x55}},
                                     {0, Bytes(4, 0xFF)},
                                     {255, Bytes(4)}}) {
        const auto eight = palette(8, 4, &map);
        std::memset(eight->peekData(), grey, 32);
        const auto thirtyTwo = rgb(8, 4);
        std::fill_n(thirtyTwo->peekData(), 32, 0xAA000000 | static_cast<unsigned>(grey) * 0x010101);
        for (const IImg* from : {static_cast<IImg*>(eight.get()), static_cast<IImg*>(thirtyTwo.get())})
            EXPECT_EQ(bytesOf(*Owned<CImg1>(CImg1::create(*from, 0, 1, ImgAlignNone))), rows) << grey;
    }
}

TEST(Dither, ByteTwoIsRedWhateverTheOrderKept) {
    const auto dithered = [](ImgULong pixel, RGBOrder order) {
        auto from = rgb(64, 32, order);
        std::fill_n(from->peekData(), 64 * 32, pixel);
        return bytesOf(*Owned<CImg1>(CImg1::create(*from, 0, 1, ImgAlignNone)));
    };
    for (RGBOrder order : {RGBOrderRGB, RGBOrderBGR})
        for (const auto& [pixel, luminance] : {std::pair{0x0000FFu, 28u}, {0x00FF00u, 149u}, {0xFF0000u, 76u}})
            EXPECT_EQ(dithered(pixel, order), dithered(luminance * 0x010101, order)) << std::hex << pixel;
    EXPECT_NE(dithered(0x0000FF, RGBOrderRGB), dithered(0xFF0000, RGBOrderRGB));
}

/// The rule written out over a whole picture of tones.
static std::vector<bool> modelDither(std::vector<int> tones, int width, int height) {
    std::vector<bool> black(tones.size());
    const auto give = [&](int x, int y, int share) {
        if (x >= 0 && x < width && y < height) tones[static_cast<std::size_t>(y * width + x)] += share;
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::size_t i = static_cast<std::size_t>(y * width + x);
            black[i] = tones[i] < 128;
            const int error = black[i] ? tones[i] : tones[i] - 255;
            give(x + 1, y, error * 7 >> 4);
            give(x - 1, y + 1, error * 3 >> 4);
            give(x, y + 1, error * 5 >> 4);
            give(x + 1, y + 1, error >> 4);
        }
    return black;
}

TEST(Dither, ErrorsSpreadAsTheRuleSays) {
    std::mt19937 random(3);
    for (int width = 1; width <= 40; ++width) {
        const int height = 19;
        Owned<CImg32> from = rgb(width, height);
        std::vector<int> tones;
        for (int i = 0; i < width * height; ++i) {
            const ImgULong pixel = static_cast<ImgULong>(random());
            from->peekData()[i] = pixel;
            tones.push_back(tilepress::toneOf(pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF));
        }
        const auto expected = modelDither(tones, width, height);
        // Into an image wider by two: the source's rows run on with the destination's padding.
        auto to = blank<CImg1>(width, height, ImgAlignDword), wider = blank<CImg1>(width + 2, height);
        ASSERT_TRUE(Export::xfm(*to, *from));
        ASSERT_TRUE(Export::xfm(*wider, *from));
        const auto bit = [](const CImg1& image, ImgULong at) { return image.peekData()[at / 8] >> (7 - at % 8) & 1; };
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const bool black = expected[static_cast<std::size_t>(y * width + x)];
                ASSERT_EQ(bit(*to, y * 8 * to->getBytesPerLine() + x), black) << width << ": " << x << ", " << y;
                ASSERT_EQ(bit(*wider, y * (width + wider->getPadBits()) + x), black) << width << ": " << x << ", " << y;
            }
    }
}

TEST(Dither, BitsPastASmallerImageAreDropped) {
    auto from = rgb(100, 100);  // black
    auto to = blank<CImg1>(8, 1);
    EXPECT_TRUE(Export::xfm(*to, *from));
    EXPECT_EQ(to->peekData()[0], 0xFF);
    auto narrow = rgb(3, 100);  // rows that start within a byte
    auto running = blank<CImg1>(8, 4);
    EXPECT_TRUE(Export::xfm(*running, *narrow));
    EXPECT_EQ(bytesOf(*running), Bytes(4, 0xFF));
}
