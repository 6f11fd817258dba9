#include "support/pictures.h"

#include <bit>

using namespace support;

namespace {

Owned<CImg1> filled(ImgULong width, ImgULong height, Bytes bytes) {
    return Owned<CImg1>(CImg1::create(width, height, bytes.data(), static_cast<ImgULong>(bytes.size()), 0x00FFFFFF,
                                      0xFF000000, ImgAlignNone));
}

}  // namespace

TEST(Bilevel, RowLengths) {
    struct Case {
        ImgULong width;
        ImgAlignmentEnum alignment;
        ImgULong padBits, bytes;
    };
    for (const Case& c : {Case{10, ImgAlignNone, 6, 2}, Case{10, ImgAlignByte, 6, 2}, Case{10, ImgAlignDword, 22, 4},
                          Case{32, ImgAlignDword, 0, 4}, Case{8, ImgAlignByte, 0, 1}, Case{33, ImgAlignDword, 31, 8},
                          Case{1, ImgAlignNone, 7, 1}, Case{4294967295u, ImgAlignNone, 1, 536870912u}}) {
        const auto image = blank<CImg1>(c.width, 1, c.alignment);
        if (!image && c.width > 1000000) continue;  // memory may not do
        EXPECT_EQ(image->getPadBits(), c.padBits) << c.width;
        EXPECT_EQ(image->getBytesPerLine(), c.bytes) << c.width;
        EXPECT_EQ(image->getTotalBytes(), c.bytes) << c.width;
    }
}

TEST(Bilevel, CreateRefusesBadSizes) {
    for (auto [w, h] : {std::pair(0u, 5u), {5u, 0u}, {4294967295u, 8u}})  // the last one of 2^32 bytes
        EXPECT_EQ(blank<CImg1>(w, h), nullptr) << w;
    EXPECT_EQ(filled(10, 3, Bytes(5)), nullptr);
    EXPECT_EQ(filled(10, 3, Bytes(7)), nullptr);
    EXPECT_EQ(CImg1::create(8, 1, nullptr, 1, 0, 0, ImgAlignNone), nullptr);
    EXPECT_EQ(CImg1::create(nullptr, 8, 8, ImgAlignNone), nullptr);
}

TEST(Bilevel, BlocksChangeHands) {
    const auto image = filled(8, 2, {1, 2});
    CImg1 copy(*image);
    EXPECT_EQ(copy.peekData(), image->peekData()) << "copies of the object share the pixels";
    copy.ownData();
    unsigned char* const block = image->ownData();
    EXPECT_EQ(image->peekData(), nullptr);
    EXPECT_EQ(image->ownData(), nullptr);
    EXPECT_EQ(image->dupData(nullptr, 2), ImgErrCreate);
    EXPECT_EQ(image->dupData(block, 2), ImgErrNone);
    EXPECT_NE(image->peekData(), block);
    EXPECT_EQ(bytesOf(*image), (Bytes{1, 2}));
    block[0] = 7;
    unsigned char* data = block;
    EXPECT_EQ(image->transferData(&data, 3), ImgErrCreate);
    EXPECT_EQ(data, block);
    for (int again = 0; again < 2; ++again) {  // the image's own block handed in stays alive
        data = block;
        EXPECT_EQ(image->transferData(&data, 2), ImgErrNone);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(image->peekData(), block);
        EXPECT_EQ(bytesOf(*image), (Bytes{7, 2}));
    }
    EXPECT_EQ(image->transferData(nullptr, 2), ImgErrCreate);
    EXPECT_EQ(image->transferData(&data, 2), ImgErrNone) << "no block is one too";
    EXPECT_EQ(image->peekData(), nullptr);
}

TEST(Bilevel, ChangedHeaderFieldsFailTheNextCopyKept) {
    Bytes bytes(8);
    auto image = blank<CImg1>(10, 3);
    image->setAlignment(ImgAlignDword);
    EXPECT_EQ(image->getBytesPerLine(), 2u);
    EXPECT_EQ(image->dupData(bytes.data(), 6), ImgErrCreate);
    image = blank<CImg1>(10, 3);
    EXPECT_FALSE(image->setExtents(10, 0));
    EXPECT_TRUE(image->setExtents(10, 4));
    EXPECT_EQ(image->getHeight(), 4u);
    EXPECT_EQ(image->getTotalBytes(), 6u);
    EXPECT_EQ(image->dupData(bytes.data(), 8), ImgErrCreate);
    EXPECT_EQ(image->dupData(bytes.data(), 6), ImgErrCreate);
    EXPECT_TRUE(image->setExtents(12, 3));  // rows of as many bytes, but other padding
    EXPECT_EQ(image->dupData(bytes.data(), 6), ImgErrCreate);
}

TEST(Bilevel, CloneKeepsPixelsOfAlignmentNoneOnlyKept) {
    for (ImgAlignmentEnum alignment : kAlignments) {
        const auto image = imageOf<CImg1>(Picture(32, 2, 1), alignment);
        const auto copy = owned<CImg1>(image->clone());
        EXPECT_EQ(pictureOf(copy), Picture(32, 2, alignment == ImgAlignNone)) << alignment;
        EXPECT_EQ(copy->getAlignment(), ImgAlignNone);
        EXPECT_EQ(copy->getBackgroundInterpretation(), 0x00FFFFFFu);
        EXPECT_EQ(copy->getForegroundInterpretation(), 0xFF000000u);
        image->setAlignment(ImgAlignNone);
        EXPECT_EQ(result<CImg1>(image->clone()), Picture(32, 2, 1)) << "the value alone decides";
    }
}

// --- background ---

static ImgULong backgroundOf(ImgULong bytesPerLine, ImgULong height, const Bytes& bytes) {
    const auto image = filled(8 * bytesPerLine, height, bytes);
    EXPECT_FALSE(image->isBackgroundKnown());
    const ImgULong background = image->getBackgroundColor();
    EXPECT_TRUE(image->isBackgroundKnown());
    std::memset(image->peekData(), background ? 0 : 0xFF, bytes.size());
    EXPECT_EQ(image->getBackgroundColor(), background) << "stays as first seen";
    return background;
}

TEST(Bilevel, BackgroundSampleIsAChequerboardThatDriftsKept) {
    struct {
        ImgULong bytesPerLine;
        std::vector<std::size_t> sampled;
    } const grids[] = {{1, {0, 3, 6}}, {2, {0, 3, 5, 8, 10}}, {3, {0, 2, 5, 7, 9, 12, 14, 16}}};
    for (const auto& grid : grids) {
        Bytes sampled(grid.bytesPerLine * 8), others(sampled.size(), 0xFF);
        for (std::size_t i : grid.sampled) sampled[i] = 0xFF, others[i] = 0;
        EXPECT_EQ(backgroundOf(grid.bytesPerLine, 8, sampled), 1u) << grid.bytesPerLine;
        EXPECT_EQ(backgroundOf(grid.bytesPerLine, 8, others), 0u) << grid.bytesPerLine;
    }
}

/// The sampled set bits, byte by byte.
static bool modelBackground(std::size_t bytesPerLine, std::size_t height, const Bytes& bytes) {
    std::size_t p = 0, total = 0;
    for (std::size_t r = 0; r < height / 8 + height / 2; ++r) {
        std::size_t s = r % 2;
        p += s;
        for (; s < bytesPerLine; s += 2, p += 2) total += static_cast<std::size_t>(std::popcount(bytes.at(p)));
    }
    return total > 2 * bytes.size();
}

TEST(Bilevel, BackgroundIsThatOfTheSampledBytes) {
    std::mt19937 random(1);
    int black = 0;
    for (int n = 0; n < 2000; ++n) {
        const ImgULong bytesPerLine = random() % 40 + 1, height = random() % (n % 3 ? 40 : 8) + 1;
        Bytes bytes(bytesPerLine * height);
        for (auto& byte : bytes) byte = n % 2 || random() % 5 ? 0xFF : static_cast<unsigned char>(random());
        const bool expected = modelBackground(bytesPerLine, height, bytes);
        black += expected;
        EXPECT_EQ(backgroundOf(bytesPerLine, height, bytes), expected) << bytesPerLine << " x " << height;
    }
    EXPECT_GT(black, 100);
    EXPECT_LT(black, 1900);
}

TEST(Bilevel, BackgroundReadsOnlyWhatIsThere) {
    for (ImgULong bytes = 1; bytes <= 40; ++bytes)
        for (ImgULong height = 1; height <= 12; ++height) {
            const auto image = imageOf<CImg1>(Picture(8 * bytes, height, 1));
            image->setExtents(8 * bytes, 80);
            EXPECT_EQ(image->getBackgroundColor(), 1u) << bytes << " x " << height;
        }
    const auto empty = imageOf<CImg1>(Picture(16, 8, 1));
    std::free(empty->ownData());
    EXPECT_EQ(empty->getBackgroundColor(), 0u);
}
