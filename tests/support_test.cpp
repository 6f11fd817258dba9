#include "tilepress/support.h"
#include "foundation/bits.h"
#include "tilepress/ColorMap.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <vector>

TEST(Blocks, AnEmptyBlockIsABlock) {
    void* block = nullptr;
    EXPECT_EQ(MemAllocate(0, 0, 0, &block), 0);
    EXPECT_NE(block, nullptr);
    MemSetPointer(0, nullptr, &block);  // leaves the block alive
    static_cast<unsigned char*>(block)[0] = 1;
    MemFree(0, block);
    MemFree(0, nullptr);
}

TEST(Blocks, FailureIsTold) {
    void* block = nullptr;
    EXPECT_NE(MemAllocate(0, SIZE_MAX - 64, 0, &block), 0);
}

TEST(ColorMaps, ImpossibleCapacitiesGiveAnEmptyTable) {
    for (ImgLong capacity : {ImgLong{0}, ImgLong{-1}, ImgLong{INT_MIN}, ImgLong{INT_MAX / 12 + 1}, ImgLong{INT_MAX}}) {
        const ColorMap map(capacity, 255);
        EXPECT_EQ(map.capacity, 0) << capacity;
        EXPECT_EQ(map.count, 0) << capacity;
        EXPECT_EQ(map.entries, nullptr) << capacity;
    }
}

namespace {

/// A table opened and closed again.
struct Table {
    ColorTable* table;

    explicit Table(std::vector<ColorMapEntry> colours) : table(ColOpen(static_cast<int>(colours.size()), 255)) {
        std::copy(colours.begin(), colours.end(), table->entries);
    }
    ~Table() {
        std::free(table->entries);
        std::free(table);
    }
    std::int32_t closest(ColorMapEntry colour) const {
        std::int32_t index = -1;
        ColGetClosestColor(&colour, table, &index);
        return index;
    }
};

}  // namespace

TEST(ColorTables, ClosestIsByDistanceAndTheFirstOfEquals) {
    const Table table({{0, 0, 0}, {10, 0, 0}, {0, 0, 10}, {10, 0, 0}, {INT_MAX, INT_MAX, INT_MAX}});
    EXPECT_EQ(table.table->capacity, 5);
    EXPECT_EQ(table.closest({5, 0, 0}), 0);
    EXPECT_EQ(table.closest({6, 0, 0}), 1);
    EXPECT_EQ(table.closest({6, 0, 6}), 1);
    EXPECT_EQ(table.closest({INT_MIN, INT_MIN, INT_MIN}), 0);
    EXPECT_EQ(table.closest({INT_MAX, INT_MAX, 0}), 4);
    table.table->capacity = 2;  // below its count
    EXPECT_EQ(table.closest({0, 0, 10}), 0);
    EXPECT_EQ(Table({}).closest({1, 2, 3}), 0);
}

TEST(ColorTables, ATransformIsComputedAnewForEachPairOfTables) {
    const Table grey({{0, 0, 0}, {255, 255, 255}}), reversed({{255, 255, 255}, {0, 0, 0}}), one({{250, 250, 250}});
    ColorXfm* transform = ColOpenXfm(2);
    EXPECT_EQ(transform->key, 2);
    EXPECT_EQ(ColMapColors(one.table, grey.table, transform), 0);
    EXPECT_EQ(transform->index[0], 1);
    EXPECT_EQ(ColMapColors(grey.table, reversed.table, transform), 0);
    EXPECT_EQ(transform->index[0], 1);
    EXPECT_EQ(transform->index[1], 0);
    ColCloseXfm(&transform);
    EXPECT_EQ(transform, nullptr);
    ColCloseXfm(&transform);
}

TEST(ByteOrder, SwapsUnalignedWordsInPlace) {
    unsigned char bytes[] = {1, 2, 3, 4, 5, 6};
    tra_swap_4(bytes + 1);
    EXPECT_EQ((std::vector<int>(bytes, bytes + 6)), (std::vector<int>{1, 5, 4, 3, 2, 6}));
    tra_swap_2(bytes + 3);
    EXPECT_EQ((std::vector<int>(bytes, bytes + 6)), (std::vector<int>{1, 5, 4, 2, 3, 6}));
    EXPECT_EQ(osh_get_sys_parms()->byteOrder, std::endian::native == std::endian::little ? 2 : 1);
}

TEST(ByteOrder, ExchangesPairsOfAnyCount) {
    for (std::size_t count = 0; count <= 40; ++count) {
        std::vector<unsigned char> from(count), to(count + count % 2 + 1, 0xEE), expected = to;
        for (std::size_t i = 0; i < count; ++i) from[i] = static_cast<unsigned char>(i + 1);
        for (std::size_t i = 0; i < count + count % 2; ++i) expected[i] = (i ^ 1) < count ? from[i ^ 1] : 0;
        tilepress::exchangePairs(to.data(), from.data(), count);
        EXPECT_EQ(to, expected) << count;
    }
}
