// Compressed handles: expanded, scaled, written as one block and revived.

#include "support/g4_images.h"
#include "support/handles.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <functional>
#include <random>
#include <utility>

using namespace support;

namespace {

const Picture& page() {
    static const Picture picture = [] {
        std::mt19937 random(99);
        return randomPicture(random, 100, 50, 40);
    }();
    return picture;
}

Handle pageOf(const std::vector<Bytes>& tiles) { return compressedHandle(tiles, 100, 50, 64, 32); }
Handle compressedPage() { return pageOf(tilesOf(page(), 64, 32)); }

struct Block {
    void* data = nullptr;
    std::uint32_t size = 0;
    explicit Block(const Handle& image) { EXPECT_EQ(TiffG4Serialize(image.get(), &data, &size), 1u); }
    ~Block() { MemFree(0, data); }
    Block(const Block&) = delete;
    std::uint32_t& word(std::size_t offset) {
        return *reinterpret_cast<std::uint32_t*>(static_cast<char*>(data) + offset);
    }
    ImgG4Header& header() { return *reinterpret_cast<ImgG4Header*>(static_cast<char*>(data) + sizeof(ImgHandle)); }
    ImgHandle* revive() {
        ImgHandle* image = nullptr;
        EXPECT_EQ(TiffG4Deserialize(&image, data), 1u);
        return image;
    }
};

Picture rendered(ImgHandle* image, std::uint32_t w = 100, std::uint32_t h = 50) {
    return image ? pictureOf(Handle(image->render(image, w, h, nullptr, 0, 0, 8))) : kNone;
}

TEST(HandleTiffG4, RendersAsTheExpandedImage) {
    const Handle image = compressedPage(), bits = handleOf<Bits>(page());
    for (auto [w, h] : {std::pair(100, 50), {200, 100}, {137, 50}, {33, 17}, {1, 1}, {150, 20}, {40, 90}})
        EXPECT_EQ(rendered(image.get(), w, h), rendered(bits.get(), w, h)) << w << ' ' << h;
    for (auto [degrees, mirror] : {std::pair(90, 0), {90, 1}, {0, 2}, {7, 0}}) {
        for (ImgHandle* handle : {image.get(), bits.get()}) ImgSetMirFlag(ImgSetRotation(handle, degrees), mirror);
        for (auto [w, h] : {std::pair(50, 100), {20, 40}})
            EXPECT_EQ(rendered(image.get(), w, h), rendered(bits.get(), w, h)) << degrees << ' ' << mirror << ' ' << w;
    }
    const ImgConvertDesc bilevel{1, 1, nullptr}, colour{4, 1, nullptr};
    EXPECT_EQ(pictureOf(Handle(image->convert(image.get(), &bilevel))), page());
    EXPECT_EQ(pictureOf(Handle(image->convert(image.get(), &colour))),
              pictureOf(Handle(bits->convert(bits.get(), &colour))));
}

TEST(HandleTiffG4, DamageGivesNullAndTheCodecStaysAsItWas) {
    std::vector<Bytes> tiles = tilesOf(page(), 64, 32);
    tiles[3].assign(tiles[3].size(), 0);
    const Handle image = pageOf(tiles), good = compressedPage();
    EXPECT_EQ(rendered(image.get()), kNone);
    const ImgConvertDesc target{1, 1, nullptr};
    EXPECT_FALSE(image->convert(image.get(), &target));
    const auto decodes = [] {
        std::int32_t reference[] = {0, 9, 9, 9}, coding[12], count = 0, byte = 0, bit = 1;
        std::uint16_t data[] = {0x8000, 0};
        return cit_decode_tiff_gr4(reference, 4, 8, data, &byte, &bit, nullptr, coding, &count, 4) == 0;
    };
    EXPECT_FALSE(decodes());
    cit_enable_decode_gr4();
    EXPECT_EQ(rendered(good.get()), page());
    EXPECT_TRUE(decodes());
    cit_disable_decode_gr4();
    EXPECT_EQ(rendered(good.get()), page());
    EXPECT_FALSE(decodes());
}

TEST(HandleTiffG4, WhatIsMissingIsWhiteOrRefused) {
    std::vector<Bytes> tiles = tilesOf(page(), 64, 32);
    tiles[1].clear();
    const Handle image = pageOf(tiles);
    void** const data = static_cast<void**>(image->data);
    void* const last = std::exchange(data[3], nullptr);
    Picture wanted = page();
    for (std::size_t y = 0; y < 50; ++y) std::fill_n(&wanted.at(64, y), 36, 0);
    EXPECT_EQ(rendered(image.get()), wanted) << "tiles without bytes";
    Block block(image);
    const auto* const end = static_cast<unsigned char*>(block.data) + block.size;
    EXPECT_TRUE(std::all_of(end - tiles[3].size(), end, [](unsigned char byte) { return byte == 0; }));
    data[3] = last;

    const ImgConvertDesc target{1, 1, nullptr};
    auto& header = *static_cast<ImgG4Header*>(image->header);
    const auto refused = [&](bool drawn, const char* why) {
        void* buffer = nullptr;
        std::uint32_t size = 0;
        TiffG4Serialize(image.get(), &buffer, &size);
        EXPECT_EQ(buffer, nullptr) << why;
        EXPECT_EQ(size, 0u) << why;
        if (drawn) return;
        EXPECT_EQ(image->render(image.get(), 9, 9, nullptr, 0, 0, 8), nullptr) << why;
        EXPECT_EQ(image->convert(image.get(), &target), nullptr) << why;
    };
    void* buffer = nullptr;
    std::uint32_t size = 0;
    EXPECT_EQ(image->serialize(image.get(), nullptr, &size), 0u);
    EXPECT_EQ(image->serialize(image.get(), &buffer, nullptr), 0u);
    image->data = nullptr;
    refused(false, "without tiles");
    image->data = data;
    std::uint32_t* const counts = std::exchange(header.byteCounts, nullptr);
    refused(false, "without byte counts");
    header.byteCounts = counts;
    EXPECT_EQ(image->convert(image.get(), nullptr), nullptr);
    EXPECT_EQ(image->convert(nullptr, &target), nullptr);
    EXPECT_EQ(image->render(nullptr, 9, 9, nullptr, 0, 0, 8), nullptr);
    header.tileWidth = 0;
    EXPECT_EQ(image->render(image.get(), 9, 9, nullptr, 0, 0, 8), nullptr);
    header.tileWidth = 0x40000000;
    refused(true, "larger than its size can say");
    header.tileWidth = 64;
    header.totalBytes -= 1;
    refused(true, "fewer bytes than its tiles have");
    header.totalBytes += 1;
}

TEST(HandleTiffG4, BeginningAndEnd) {
    const Handle none(ImgNew(ImgTypeTiffG4));
    const std::uint32_t counts[] = {0}, large[] = {0x80000000, 0x80000000};
    void *tiles[] = {nullptr}, *two[] = {nullptr, nullptr};
    struct Case {
        ImgHandle* image;
        std::uint32_t width, height, tileWidth, tileHeight;
        const std::uint32_t* counts;
        void** tiles;
    };
    ImgHandle* const some = none.get();
    for (const Case& c : {Case{some, 10, 10, 0, 10, counts, tiles}, Case{some, 10, 10, 10, 0, counts, tiles},
                          Case{some, 0, 10, 10, 10, counts, tiles}, Case{some, 10, 0, 10, 10, counts, tiles},
                          Case{some, 10, 10, 10, 10, nullptr, tiles}, Case{some, 10, 10, 10, 10, counts, nullptr},
                          Case{some, 20, 10, 10, 10, large, two}, Case{nullptr, 10, 10, 10, 10, counts, tiles}})
        EXPECT_FALSE(ImgCreateTiffG4(c.image, c.width, c.height, c.tileWidth, c.tileHeight, c.counts, c.tiles))
            << c.width << ' ' << c.height << ' ' << c.tileWidth << ' ' << c.tileHeight;
    ImgHandle* bare = none.get();
    EXPECT_EQ(ImgTIFFG4Free(&bare, nullptr), nullptr);
    EXPECT_EQ(bare, none.get()) << "without a header it stays";
    for (const Handle& other : {handleOf<Bits>(Picture(9, 9)), Handle(ImgNew(ImgTypeTiffG4))})
        EXPECT_FALSE(none->render(other.get(), 5, 5, nullptr, 0, 0, 8));

    ImgHandle* image = compressedPage().release();
    const auto& header = *static_cast<ImgG4Header*>(image->header);
    EXPECT_EQ(header.bytesPerLine, 13u);
    EXPECT_EQ(header.totalBytes,
              header.byteCounts[0] + header.byteCounts[1] + header.byteCounts[2] + header.byteCounts[3]);
    void** const data = static_cast<void**>(image->data);
    for (std::uint32_t k = 0; k < 4; ++k) {
        const ImgG4TileRec& tile = header.tileRows[k / 2][k % 2];
        EXPECT_EQ(tile.originX, k % 2 * 64) << k;
        EXPECT_EQ(tile.originY, k / 2 * 32) << k;
        EXPECT_EQ(tile.decodeFlag, 1u) << k;
        EXPECT_EQ(tile.decodeState, 0u) << k;
        EXPECT_EQ(tile.tileData, data[k]) << k;
    }
    for (void** buffers : {header.columnBufA, header.columnBufB})
        for (int column = 0; column < 2; ++column) std::memset(buffers[column], 1, 4 * 64 + 24);
    EXPECT_EQ(ImgGetWidth(image) * 1000 + ImgGetHeight(image), 100050u);
    EXPECT_EQ(image->free(&image, data), data);
    EXPECT_EQ(image, nullptr);
    for (int k = 0; k < 4; ++k) MemFree(0, data[k]);
    MemFree(0, data);
}

TEST(HandleFlat, LiesAsItIsWritten) {
    const bool narrow = sizeof(void*) == 4;
    const Handle written = compressedPage();
    const std::int32_t place[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    ImgSetDstRect(ImgSetRotation(ImgSetMirFlag(written.get(), 2), 90), place);
    Block block(written);
    EXPECT_EQ(std::memcmp(&block.header().quads.dstQuad, place, sizeof place), 0);
    EXPECT_EQ(block.header().rotation, 90);
    EXPECT_EQ(block.header().mirror, 2);
    block.header().rotation = block.header().mirror = 0;
    const std::size_t counts = narrow ? 264 : 376, pointers = narrow ? 280 : 392, records = narrow ? 296 : 424,
                      buffers = narrow ? 440 : 584, coded = narrow ? 1560 : 1704;
    EXPECT_EQ(block.size, coded + block.header().totalBytes);
    EXPECT_EQ(block.word(0), 8u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.header().byteCounts), counts);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(static_cast<ImgHandle*>(block.data)->data), pointers);
    for (std::size_t at = 3 * sizeof(void*); at < sizeof(ImgHandle); at += 4) EXPECT_EQ(block.word(at), 0u) << at;
    for (std::size_t at = pointers; at < coded; at += 4) EXPECT_EQ(block.word(at), 0u) << at;
    ImgHandle* image = block.revive();
    ASSERT_EQ(image, block.data);
    EXPECT_EQ(static_cast<char*>(static_cast<void*>(block.header().tileRows[0])),
              static_cast<char*>(block.data) + records);
    EXPECT_EQ(block.header().tileRows[1][1].originY, 32u);
    for (std::size_t column = 0; column < 2; ++column) {
        EXPECT_EQ(block.header().columnBufA[column], static_cast<char*>(block.data) + buffers + 280 * column);
        EXPECT_EQ(block.header().columnBufB[column], static_cast<char*>(block.data) + buffers + 280 * (2 + column));
    }
    EXPECT_EQ(rendered(image), page());
    EXPECT_EQ(image->free(&image, nullptr), nullptr);
    EXPECT_EQ(image, block.data) << "ends with its block only";

    void* moved = nullptr;
    MemAllocate(0, block.size, 0, &moved);
    std::memcpy(moved, block.data, block.size);
    std::memset(block.data, 0xEE, block.size);
    ASSERT_EQ(TiffG4Deserialize(&image, moved), 1u);
    EXPECT_EQ(rendered(image), page()) << "revived a second time, elsewhere";
    void* again = nullptr;
    std::uint32_t size = 0;
    TiffG4Serialize(image, &again, &size);
    EXPECT_EQ(size, block.size);
    MemFree(0, again);
    MemFree(0, moved);
}

TEST(HandleFlat, FromTheOtherByteOrder) {
    Block block(compressedPage());
    const std::vector<std::uint32_t> counts(
        &block.word(reinterpret_cast<std::uintptr_t>(block.header().byteCounts)),
        &block.word(reinterpret_cast<std::uintptr_t>(block.header().byteCounts)) + 4);
    auto* coded = static_cast<unsigned char*>(block.data) + block.size - block.header().totalBytes;
    const std::vector<unsigned char> native(coded, coded + block.header().totalBytes);
    for (std::uint32_t count : counts) {
        for (std::uint32_t i = 0; i + 1 < count; i += 2) tra_swap_2(coded + i);
        coded += count;
    }
    for (std::size_t k = 0; k < 4; ++k)
        tra_swap_4(&block.word(reinterpret_cast<std::uintptr_t>(block.header().byteCounts)) + k);
    tra_swap_4(block.data);
    for (std::size_t at = 0; at < 28; ++at) tra_swap_4(reinterpret_cast<std::uint32_t*>(&block.header()) + at);
    tra_swap_4(&block.header().tileWidth);
    tra_swap_4(&block.header().tileHeight);
    ImgHandle* image = block.revive();
    ASSERT_TRUE(image);
    EXPECT_EQ(ImgGetWidth(image), 0u) << "the type code stays in the other order";
    EXPECT_EQ(image->getWidth(image), 100u);
    EXPECT_EQ(block.header().quads.srcQuad.y1, 49);
    EXPECT_EQ(block.header().quads.dstQuad.y1, 49 << 24) << "not converted";
    EXPECT_TRUE(std::equal(native.begin(), native.end(), coded - native.size()));
    EXPECT_EQ(rendered(image), page());
    EXPECT_EQ(rendered(block.revive()), page()) << "nothing is converted twice";
}

TEST(HandleFlat, OddTilesKeepTheirLastByte) {
    Block block(pageOf({{1, 2, 3}, {4, 5}, {}, {6}}));
    ImgG4Header& header = block.header();
    const std::size_t counts = reinterpret_cast<std::uintptr_t>(header.byteCounts);
    for (std::size_t at = 0; at < 28; ++at) tra_swap_4(reinterpret_cast<std::uint32_t*>(&header) + at);
    for (std::uint32_t* word : {&header.tileWidth, &header.tileHeight}) tra_swap_4(word);
    for (std::size_t k = 0; k < 4; ++k) tra_swap_4(&block.word(counts + 4 * k));
    ImgHandle* image = block.revive();
    ASSERT_TRUE(image);
    auto** tiles = static_cast<unsigned char**>(image->data);
    EXPECT_EQ(Bytes(tiles[0], tiles[0] + 6), (Bytes{2, 1, 3, 5, 4, 6}));
    EXPECT_EQ(tiles[2], tiles[3]) << "an empty tile points at the next";
    Block single(compressedHandle({{1, 2}}, 8, 8, 8, 8));  // pointers behind an odd count of numbers
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(single.revive()->data) % sizeof(void*), 0u);
}

TEST(HandleFlat, RefusesWhatIsNoHeader) {
    const std::vector<std::function<void(ImgG4Header&)>> faults = {
        [](ImgG4Header& h) { ++h.bytesPerLine; },
        [](ImgG4Header& h) { h.tileWidth = 101; },
        [](ImgG4Header& h) { h.tileWidth = 0; },
        [](ImgG4Header& h) { h.tileHeight = 51; },
        [](ImgG4Header& h) { h.tileHeight = 0; },
        [](ImgG4Header& h) { h.quads.srcQuad.y0 = -1; },
        [](ImgG4Header& h) { h.quads.srcQuad.x2 = -99; },
        [](ImgG4Header& h) { h.quads.srcQuad.y2 = -49; },
        [](ImgG4Header& h) { h.quads.srcQuad.x0 = -1; },
        [](ImgG4Header& h) { h.quads.srcQuad.y2 = INT32_MIN; },
        [](ImgG4Header& h) { h.totalBytes -= 1; },
        [](ImgG4Header& h) { h.quads.srcQuad.x2 = 0x7FFFFFFF, h.bytesPerLine = 0x10000000, h.tileWidth = 1; },
        [](ImgG4Header& h) { h.quads.srcQuad.x2 = 0x80; },  // the other way round the lowest number
        [](ImgG4Header& h) { h.quads.srcQuad.x2 = 0x3FFFFFFF, h.bytesPerLine = 0x08000000, h.tileWidth = 0x40000000; }};
    for (const auto& fault : faults) {
        Block block(compressedPage());
        fault(block.header());
        EXPECT_EQ(block.revive(), nullptr);
    }
    ImgHandle* image = nullptr;
    EXPECT_EQ(TiffG4Deserialize(&image, nullptr), 1u);
    EXPECT_EQ(TiffG4Deserialize(nullptr, nullptr), 1u);
    char untouched;
    void* buffer = &untouched;
    std::uint32_t size = 7;
    EXPECT_EQ(TiffG4Serialize(handleOf<Bytes24>(Picture(1, 1)).get(), &buffer, &size), 1u);
    EXPECT_EQ(TiffG4Serialize(nullptr, &buffer, &size), 1u);
    EXPECT_EQ(TiffG4Serialize(Handle(ImgNew(ImgTypeNone)).get(), &buffer, &size), 1u);
    EXPECT_EQ(buffer, &untouched) << "other types store nothing";
    EXPECT_EQ(size, 7u);
    EXPECT_EQ(TiffG4Serialize(Handle(ImgNew(ImgTypeTiffG4)).get(), &buffer, &size), 1u);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(size, 0u);
}

}  // namespace
