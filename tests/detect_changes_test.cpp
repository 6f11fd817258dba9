#include "ccitt/detect_changes.h"
#include "support/pixel_rows.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

using namespace support;
using namespace tilepress::g4;

namespace {

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

TEST_F(DetectChanges, ListsOfRandomRowsThatFitTheirRoom) {
    EXPECT_EQ(detected(hex("FF"), 0, 4), (List{0, 1, 1, 1}));
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
        for (std::int32_t room = std::max(4, needed - 3); room <= needed + 2; ++room)
            ASSERT_EQ(detected(row, width, room), room >= needed ? listOf(text) : List{}) << text << " in " << room;
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
    for (int missing = 0; missing < 3; ++missing) {
        cit_detect_changes(8, missing == 0 ? nullptr : row, 12, missing == 1 ? nullptr : list,
                           missing == 2 ? nullptr : &(count = 9));
        EXPECT_EQ(count, 0u) << missing;
    }
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
