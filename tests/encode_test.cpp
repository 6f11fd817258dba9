#include "support/pixel_rows.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace support;

namespace {

/// The bits that the exported row encoder gives as text; checks that it writes whole words of them and no more.
std::string encoded(List above, List row) {
    const std::size_t room = (7 * static_cast<std::size_t>(row.back()) + 18 + 15) / 16;
    std::vector<std::uint16_t> words(room + 1, 0x5A5A);
    std::int32_t count = -1;
    cit_encode_gr4(above.data(), static_cast<std::int32_t>(above.size()), row.data(),
                   static_cast<std::int32_t>(row.size()), words.data(), &count);
    std::string text;
    const std::size_t used = (static_cast<std::size_t>(count) + 15) / 16;
    EXPECT_LE(used, room);
    for (std::size_t i = 0; i < 16 * used; ++i) text += words[i / 16] >> (15 - i % 16) & 1 ? '1' : '0';
    EXPECT_EQ(text.find('1', static_cast<std::size_t>(count)), std::string::npos) << "unused bits are 0";
    for (std::size_t i = used; i < words.size(); ++i) EXPECT_EQ(words[i], 0x5A5A);
    return text.substr(0, static_cast<std::size_t>(count));
}

std::string encodedRow(const std::string& above, const std::string& row) { return encoded(listOf(above), listOf(row)); }

struct Built {
    std::int32_t length;
    bool null;
    Bytes bytes;
};

using Builder = decltype(&create_g4_tiff_strip);

Built build(Builder builder, Bytes rows, std::int32_t width, std::int32_t bytesPerRow, std::int32_t rowCount) {
    std::uint8_t mark = 0, *output = &mark;
    rows.reserve(1);
    const std::int32_t length = builder(rows.data(), &output, width, bytesPerRow, rowCount);
    Built result{length, output == nullptr, {}};
    if (output) result.bytes.assign(output, output + length);
    std::free(output);
    return result;
}

Bytes strip(Bytes rows, std::int32_t width, std::int32_t bytesPerRow, std::int32_t rowCount) {
    const Built plain = build(create_g4_tiff_strip, rows, width, bytesPerRow, rowCount);
    testing::internal::CaptureStderr();
    const Built alternate = build(create_g4_tiff_strip_tmp, rows, width, bytesPerRow, rowCount);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(plain.null || alternate.null);
    EXPECT_EQ(plain.bytes, alternate.bytes);
    return plain.bytes;
}

/// Both builders fail; the result is what the alternate one says.
std::string refusal(Bytes rows, std::int32_t width, std::int32_t bytesPerRow, std::int32_t rowCount) {
    testing::internal::CaptureStderr();
    const Built plain = build(create_g4_tiff_strip, rows, width, bytesPerRow, rowCount);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    const Built alternate = build(create_g4_tiff_strip_tmp, rows, width, bytesPerRow, rowCount);
    EXPECT_TRUE(plain.null && alternate.null);
    EXPECT_EQ(plain.length, 0);
    EXPECT_EQ(alternate.length, 0);
    return testing::internal::GetCapturedStderr();
}

const char* const kNoBuffer = "ERROR: Unable to allocate compressed buffer\n";
const char* const kTooLong = "Compressed output exceeded buffer length\n";

struct Encode : testing::Test {
    void SetUp() override {
        cit_enable_detect_changes();
        cit_enable_detect_changes_tmp();
        EXPECT_EQ(cit_enable_encode_gr4(), 1);
        EXPECT_EQ(cit_enable_encode_gr4_tmp(), 1);
    }
    void TearDown() override {
        cit_disable_detect_changes();
        cit_disable_detect_changes_tmp();
        cit_disable_encode_gr4();
        cit_disable_encode_gr4_tmp();
    }
};
using Strip = Encode;

}  // namespace

TEST_F(Encode, SameAsPixelByPixel) {
    EXPECT_EQ(encodedRow("", ""), "1");
    std::mt19937 random(2);
    std::string above;
    for (int round = 0; round < 6000; ++round) {
        const std::size_t width = round < 5000 ? 1 + static_cast<std::size_t>(round) % 70 : 1000 + random() % 9000;
        above.resize(width, '0');
        std::string row = randomRow(random, width, round % 3 ? 6 : 4000, above);
        ASSERT_EQ(encodedRow(above, row), rowCodes(above, row)) << above << "\n" << row;
        above.swap(row);
    }
}

TEST_F(Encode, RunsOfEveryLengthInBothColours) {
    for (int run = 1; run < 8000; run += run < 130 ? 1 : 61) {
        const std::string white(8200, '0');
        const auto length = static_cast<std::size_t>(run);
        std::string row = white;
        row.replace(0, length, length, '1');
        EXPECT_EQ(encodedRow(white, row), "001" + runText(0, false) + runText(run, true) + "1");
        row = std::string(length, '0') + "1" + std::string(8199 - length, '0');
        EXPECT_EQ(encodedRow(white, row), "001" + runText(run, false) + runText(1, true) + "1");
    }
}

TEST_F(Encode, TheWidestRowOfAll) {
    const std::int32_t end = INT32_MAX;
    List above{0, 1, end, end, end}, row{0, end, end, end};
    std::vector<std::uint16_t> words(700000);
    std::int32_t count = 0;
    cit_encode_gr4(above.data(), 5, row.data(), 4, words.data(), &count);
    const int rest = (end - 1) % 2560;
    EXPECT_EQ(count, 3 + (end - 1) / 2560 * 12 + static_cast<int>((runText(rest, false) + runText(0, true)).size()));
}

TEST_F(Encode, ListsThatAreNoRowsGiveNoBits) {
    const List good{0, 3, 5, 9, 9, 9};
    EXPECT_NE(encoded(good, good), "");
    for (const List& bad :
         {List{0, 9, 9}, List{0, 3, 3, 9, 9, 9}, List{0, 5, 3, 9, 9, 9}, List{0, 3, 5, 9, 9, 8}, List{0, 0, 5, 9, 9, 9},
          List{1, 3, 5, 9, 9, 9}, List{0, 3, 5, 10, 10, 10}, List{0, -3, 5, 9, 9, 9}, List{0, 3, 12, 9, 9, 9}}) {
        EXPECT_EQ(encoded(good, bad), "");
        EXPECT_EQ(encoded(bad, good), "");
    }
    List row = good;
    std::uint16_t word = 0;
    for (int missing = 0; missing < 6; ++missing) {
        const auto unless = [missing](int which, auto* given) { return missing == which ? nullptr : given; };
        std::int32_t count = 5;
        cit_encode_gr4(unless(0, row.data()), missing == 1 ? 0 : 6, unless(2, row.data()), missing == 3 ? 0 : 6,
                       unless(4, &word), unless(5, &count));
        EXPECT_EQ(count, missing == 5 ? 5 : 0) << missing;
    }
    EXPECT_EQ(word, 0);
}

TEST_F(Encode, FamiliesAreApartAndDisableTwiceIsHarmless) {
    List row{0, 3, 5, 9, 9, 9};
    std::uint16_t words[8] = {};
    std::int32_t count = 0;
    CCITT_EnableG4Encode();
    cit_enable_encode_gr4();
    for (int twice = 0; twice < 2; ++twice) {
        CCITT_DisableG4Encode();
        cit_disable_encode_gr4();
    }
    cit_encode_gr4(row.data(), 6, row.data(), 6, words, &(count = 5));
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(build(create_g4_tiff_strip, Bytes(1), 8, 1, 1).null) << "without encoding tables";
    cit_encode_gr4_tmp(row.data(), 6, row.data(), 6, words, &count);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(words[0], 0xE000);
    cit_disable_detect_changes_tmp();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(build(create_g4_tiff_strip_tmp, Bytes(1), 8, 1, 1).null) << "without detection tables";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kNoBuffer);
}

TEST_F(Strip, SmallStrips) {
    EXPECT_EQ(strip(Bytes(8), 8, 1, 8), hex("FF 00 10 01"));
    EXPECT_EQ(strip(Bytes(8), 8, 1, 8), hex("FF 00 10 01")) << "every call's end-of-block is in order";
    EXPECT_EQ(strip(Bytes(1), 8, 1, 1), hex("80 08 00 80"));
    EXPECT_EQ(strip(Bytes(), 8, 1, 0), hex("00 10 01"));
    EXPECT_EQ(strip(Bytes(), 0, 0, 0), hex("00 10 01"));
    EXPECT_EQ(strip(Bytes(), 8, 100000, 0), hex("00 10 01"));
    EXPECT_EQ(strip(hex("30 00"), 10, 2, 1), hex("2F C0 04 00 40"));
}

TEST_F(Strip, RowsJoinWithoutPaddingAndPadBitsDoNotCount) {
    std::mt19937 random(3);
    for (std::size_t width : {1u, 7u, 8u, 30u, 63u, 64u, 65u, 200u, 3000u}) {
        const std::size_t bytesPerRow = (width + 7) / 8 + random() % 3;
        std::string text, above(width, '0');
        Bytes rows;
        for (int y = 0; y < 40; ++y) {
            const std::string row = randomRow(random, width, 9, above);
            Bytes bytes = packed(row);
            bytes.resize(bytesPerRow, 0xA5);
            if (width % 8)
                bytes[width / 8] = static_cast<unsigned char>(bytes[width / 8] | (random() & 0xFF >> width % 8));
            rows.insert(rows.end(), bytes.begin(), bytes.end());
            text += rowCodes(above, row);
            above = row;
        }
        Bytes expected = bits(text += kEndOfBlockText);
        expected.resize((text.size() + 7) / 8);
        EXPECT_EQ(strip(rows, static_cast<int>(width), static_cast<int>(bytesPerRow), 40), expected) << width;
    }
}

TEST_F(Strip, RefusesImpossibleSizes) {
    const Bytes rows(16);
    EXPECT_EQ(refusal(rows, -1, 1, 1), kNoBuffer);
    EXPECT_EQ(refusal(rows, 8, -1, 1), kNoBuffer);
    EXPECT_EQ(refusal(rows, 8, 1, -1), kNoBuffer);
    EXPECT_EQ(refusal(rows, 9, 1, 1), kNoBuffer);
    EXPECT_EQ(create_g4_tiff_strip(nullptr, nullptr, 8, 1, 1), 0);
    std::uint8_t byte = 0, *output = &byte;
    EXPECT_EQ(create_g4_tiff_strip(nullptr, &output, 8, 1, 1), 0);
    EXPECT_EQ(output, nullptr);
    EXPECT_EQ(create_g4_tiff_strip(&byte, nullptr, 8, 1, 1), 0);
}

TEST_F(Strip, KeptRowMaximumWrapsAtSixteenBits) {
    EXPECT_EQ(strip(Bytes(4095), 8, 4095, 1), hex("80 08 00 80"));
    for (std::int32_t bytesPerRow : {4096, 8191, 8192, 12288})
        EXPECT_EQ(refusal(Bytes(static_cast<std::size_t>(bytesPerRow)), 8, bytesPerRow, 1), kNoBuffer) << bytesPerRow;
    Bytes row(8193);
    EXPECT_EQ(strip(row, 65544, 8193, 1), hex("80 08 00 80"));
    std::fill_n(row.begin(), 3, 0x55);
    EXPECT_EQ(refusal(row, 65544, 8193, 1), kTooLong) << "more than 8 bytes";
}

TEST_F(Strip, KeptStripEndsEarlyCloseToItsMaximum) {
    // Two rows of at most 8 bytes; the first takes 8, so the second is not coded.
    Bytes rows(2 * 8193);
    const Bytes first = hex("55 7F FF 80");
    std::copy(first.begin(), first.end(), rows.begin());
    EXPECT_EQ(strip(rows, 65544, 8193, 2), strip(rows, 65544, 8193, 1));
}

TEST_F(Strip, RefusesARowOfTooManyChanges) {
    Bytes row(1000);
    std::fill_n(row.begin(), 999, 0x55);
    row[999] = 0x50;  // 7992 + 4 changes: with their closing elements 8000
    EXPECT_GT(strip(row, 8000, 1000, 1).size(), 5000u);
    row[999] = 0x57;  // one more, and black to the end
    EXPECT_EQ(refusal(row, 8000, 1000, 1), kTooLong);
    // 33 957 bytes of codes, which 16 bits with a sign do not count.
    row.assign(1 + 8192 * 382, 0);
    for (int run = 1; run < 7990; run += 2) std::fill_n(row.begin() + 391 * run, 391, 0xFF);
    EXPECT_EQ(refusal(row, 8 * 391 * 7990, 1 + 8192 * 382, 1), kTooLong);
}
