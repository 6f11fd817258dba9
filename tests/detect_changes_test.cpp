#include "ccitt/detect_changes.h"
#include "support/pixel_rows.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>
#include <bit>

using namespace support;
using namespace tilepress::g4;

namespace {

/// Detection byte by byte as it is described: an alternating byte behind the row stops both scans.
List slowList(Bytes row, std::uint32_t width, std::int32_t capacity) {
    // The place of the first set bit, 1 the highest; 0 for none.
    const auto firstSet = [](unsigned v) {
        return v == 0 ? 0u : 1u + static_cast<unsigned>(std::countl_zero(static_cast<std::uint8_t>(v)));
    };
    const auto firstClear = [&](unsigned v) { return firstSet(~v & 0xFF); };
    std::vector<std::uint32_t> found(static_cast<std::size_t>(capacity) + 2);
    row[(width + 7) / 8] = 0xAA;
    std::uint32_t byte = 0, bit = 0;
    std::int32_t cursor = 1;
    do {
        const unsigned rest = row[byte] & 0xFFu >> bit;
        bit = firstSet(rest);
        if (bit == 0) {
            while (row[++byte] == 0x00) {
            }
            bit = firstSet(row[byte]);
        }
        found[static_cast<std::size_t>(cursor++)] = bit + 8 * byte;
        const unsigned filled = row[byte] | (0xFF00u >> bit & 0xFF);
        bit = firstClear(filled);
        if (bit == 0) {
            while (row[++byte] == 0xFF) {
            }
            bit = firstClear(row[byte]);
        }
        found[static_cast<std::size_t>(cursor++)] = bit + 8 * byte;
    } while (found[static_cast<std::size_t>(cursor - 1)] <= width && cursor <= capacity - 3);
    std::int32_t last = cursor - 1;
    while (last > 0 && found[static_cast<std::size_t>(last)] > width) --last;
    if (last >= capacity - 3) return {};
    List list(found.begin(), found.begin() + last + 1);
    list.insert(list.end(), 3, static_cast<std::int32_t>(width + 1));
    return list;
}

/// What the exported function gives; the array has no element more than it is told.
List detected(Bytes row, std::uint32_t width, std::int32_t capacity) {
    const Bytes before = row;
    std::vector<std::uint32_t> list(static_cast<std::size_t>(capacity));
    std::uint32_t count = 77;
    cit_detect_changes(width, row.data(), capacity, list.data(), &count);
    EXPECT_EQ(row, before);
    return List(list.begin(), list.begin() + count);
}

struct DetectChanges : testing::Test {
    void SetUp() override { cit_enable_detect_changes(); }
    void TearDown() override { cit_disable_detect_changes(); }
};

}  // namespace

TEST_F(DetectChanges, ListsOfSingleRows) {
    EXPECT_EQ(detected(hex("FF 5A"), 3, 7), (List{0, 1, 4, 4, 4}));
    EXPECT_EQ(detected(hex("1F 5A"), 3, 7), (List{0, 4, 4, 4})) << "pad bits alone";
    EXPECT_EQ(detected(hex("FF"), 0, 4), (List{0, 1, 1, 1}));
    EXPECT_EQ(detected(hex("FF FF 00"), 16, 20), (List{0, 1, 17, 17, 17}));
    EXPECT_EQ(detected(hex("AA 11"), 8, 12), (List{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9}));
    EXPECT_EQ(detected(hex("AA 11"), 8, 11), List{});
    EXPECT_EQ(detected(hex("00 11"), 8, 4), (List{0, 9, 9, 9}));
}

TEST_F(DetectChanges, SameAsByteByByteForAllWidthsAndRooms) {
    std::mt19937 random(1);
    std::string above;
    for (int round = 0; round < 12000; ++round) {
        const std::size_t width = round < 9000 ? 1 + static_cast<std::size_t>(round) % 70 : 1000 + random() % 4000;
        above.resize(width, '0');
        const std::string text = above = randomRow(random, width, round % 3 ? 5 : 90, above);
        Bytes row = packed(text);
        row.push_back(static_cast<unsigned char>(random()));
        if (width % 8) row[width / 8] = static_cast<unsigned char>(row[width / 8] | (random() & 0xFF >> width % 8));
        const auto needed = static_cast<std::int32_t>(listOf(text).size());
        EXPECT_EQ(detected(row, width, static_cast<std::int32_t>(width) + 4), listOf(text));
        for (std::int32_t room = std::max(4, needed - 3); room <= needed + 2; ++room)
            ASSERT_EQ(detected(row, width, room), slowList(row, width, room)) << text << " in " << room;
    }
}

TEST_F(DetectChanges, RefusesWhatHasNoList) {
    std::uint8_t row[2] = {0xAA, 0};
    std::uint32_t list[12] = {5}, count = 9;
    for (std::int32_t room : {3, 0, -1, INT32_MIN}) {
        cit_detect_changes(8, row, room, list, &count);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(list[0], 5u) << "nothing is written";
    }
    for (std::uint32_t width : {0x7FFFFFF8u, 0x80000000u, 0xFFFFFFFFu}) {
        count = 9;
        cit_detect_changes(width, row, INT32_MAX, list, &count);
        EXPECT_EQ(count, 0u);
    }
    cit_detect_changes(8, nullptr, 12, list, &(count = 9));
    EXPECT_EQ(count, 0u);
    cit_detect_changes(8, row, 12, nullptr, &(count = 9));
    EXPECT_EQ(count, 0u);
    cit_detect_changes(8, row, 12, list, nullptr);
}

TEST(DetectFamilies, EachHasTablesOfItsOwn) {
    std::uint8_t row[2] = {0x80, 0};
    std::uint32_t list[12], count = 9;
    CCITT_EnableDetectChanges();
    cit_enable_detect_changes_tmp();
    cit_enable_detect_changes_tmp();
    cit_detect_changes(8, row, 12, list, &count);
    EXPECT_EQ(count, 0u) << "plain family";
    cit_detect_changes_tmp(8, row, 12, list, &count);
    EXPECT_EQ(count, 6u);
    for (int twice = 0; twice < 2; ++twice) {
        CCITT_DisableDetectChanges();
        cit_disable_detect_changes_tmp();
    }
    cit_detect_changes_tmp(8, row, 12, list, &count);
    EXPECT_EQ(count, 0u);
}
