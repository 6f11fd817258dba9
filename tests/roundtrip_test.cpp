#include "ccitt/strip.h"
#include "support/pixel_rows.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

using namespace support;
using namespace tilepress::g4;

namespace {

using Rows = std::vector<std::string>;

Rows randomRows(std::mt19937& random, std::size_t width, std::size_t count, std::size_t longest) {
    Rows rows(count, std::string(width, '0'));
    for (std::size_t y = 0; y < count; ++y) rows[y] = randomRow(random, width, longest, y ? rows[y - 1] : rows[0]);
    return rows;
}

struct RoundTrip : testing::Test {
    void SetUp() override {
        ASSERT_EQ(CCITT_EnableG4Decode(), ImgErrNone);
        ASSERT_EQ(cit_enable_encode_gr4(), 1);
    }
    void TearDown() override {
        CCITT_DisableG4Decode();
        cit_disable_encode_gr4();
    }
    /// Decodes the stream at a position, which it moves on.
    static List decoded(const Bytes& words, List above, std::int32_t width, std::int32_t& byte, std::int32_t& bit) {
        List list(static_cast<std::size_t>(width) + 4);
        std::int32_t count = 0;
        auto* data = reinterpret_cast<std::uint16_t*>(const_cast<unsigned char*>(words.data()));
        EXPECT_EQ(CCITT_G4Decode(above.data(), static_cast<std::int32_t>(above.size()), width, data, &byte, &bit,
                                 nullptr, list.data(), &count, static_cast<std::int32_t>(words.size())),
                  0);
        list.resize(static_cast<std::size_t>(count));
        return list;
    }
    static void expectRows(const Bytes& plain, const Rows& rows) {
        const Bytes words = exchanged(plain);
        List above = listOf(std::string(rows[0].size(), '0'));
        std::int32_t byte = 0, bit = 1;
        for (const std::string& row : rows) {
            const List list = decoded(words, above, static_cast<std::int32_t>(row.size()), byte, bit);
            ASSERT_EQ(list, listOf(row));
            above = list;
        }
    }
};

Bytes bytesOf(Stream stream) { return Bytes(stream.bytes, stream.bytes + stream.length); }

}  // namespace

TEST_F(RoundTrip, RowEncoderWritesWhatTheDecoderReads) {
    std::mt19937 random(4);
    for (std::size_t width = 1; width < 3000; width += width < 70 ? 1 : 293) {
        List above = listOf(std::string(width, '0'));
        for (const std::string& row : randomRows(random, width, 50, width < 70 ? 9 : 700)) {
            List list = listOf(row);
            Bytes words((7 * width + 18 + 15) / 16 * 2);
            std::int32_t bits = 0, byte = 0, bit = 1;
            cit_encode_gr4(above.data(), static_cast<int>(above.size()), list.data(), static_cast<int>(list.size()),
                           reinterpret_cast<std::uint16_t*>(words.data()), &bits);
            ASSERT_EQ(decoded(words, above, static_cast<int>(width), byte, bit), list);
            ASSERT_EQ(8 * byte + bit - 1, bits);
            above = list;
        }
    }
}

TEST_F(RoundTrip, StripsOfManyWidthsFromOneWriter) {
    std::mt19937 random(5);
    StripWriter writer;
    for (std::size_t width = 0; width < 9000; width += width < 70 ? 1 : 1171) {
        const Rows rows = randomRows(random, width, 30, width < 70 ? 7 : 3000);
        ASSERT_TRUE(writer.begin(static_cast<int>(width)));
        for (const std::string& row : rows) ASSERT_EQ(writer.addPackedRow(packed(row).data()), RowResult::kAdded);
        const Bytes fromPixels = bytesOf(writer.finish());
        ASSERT_TRUE(writer.begin(static_cast<int>(width)));
        for (const std::string& row : rows) {
            const List list = listOf(row);
            ASSERT_EQ(writer.addRow({list.data(), static_cast<int>(list.size())}), RowResult::kAdded);
        }
        EXPECT_EQ(bytesOf(writer.finish()), fromPixels);
        expectRows(fromPixels, rows);
    }
}

TEST_F(RoundTrip, WriterTakesRowsBeyondTheBuildersLimits) {
    std::string row(70000, '0');  // more than 4095 bytes, more than 7996 changes
    for (std::size_t x = 0; x < row.size(); x += 2) row[x] = '1';
    StripWriter writer;
    ASSERT_TRUE(writer.begin(70000));
    for (int y = 0; y < 3; ++y) ASSERT_EQ(writer.addPackedRow(packed(row).data()), RowResult::kAdded);
    expectRows(bytesOf(writer.finish()), Rows(3, row));
}

TEST(StripWriter, RefusedRowsLeaveNoTrace) {
    StripWriter writer;
    EXPECT_FALSE(writer.begin(-1));
    EXPECT_FALSE(writer.begin(0x7FFFFFF8));
    ASSERT_TRUE(writer.begin(8));
    const List bad{0, 5, 3, 9, 9, 9}, narrow{0, 3, 5, 8, 8, 8}, tooLong{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9};
    for (const List& list : {bad, narrow, tooLong})
        EXPECT_EQ(writer.addRow({list.data(), static_cast<int>(list.size())}), RowResult::kRefused);
    EXPECT_EQ(writer.addRow({nullptr, 4}), RowResult::kRefused);
    const unsigned char pixels = 0x55;
    EXPECT_EQ(writer.addPackedRow(&pixels, 6), RowResult::kRefused);
    const unsigned char white = 0;
    EXPECT_EQ(writer.addPackedRow(&white), RowResult::kAdded);
    EXPECT_EQ(bytesOf(writer.finish()), hex("80 08 00 80"));
    unsigned char* taken = writer.release();
    EXPECT_EQ(taken[0], 0x80);
    std::free(taken);
    ASSERT_TRUE(writer.begin(8));
    EXPECT_EQ(bytesOf(writer.finish()), hex("00 10 01"));
}
