#include "support/coded.h"
#include "support/decoders.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

using namespace support;
using namespace tilepress;
using namespace tilepress::g4;

namespace {

using List = std::vector<std::int32_t>;

List whiteRow(std::int32_t width) { return {0, width + 1, width + 1, width + 1}; }

struct Decoded {
    int status = -1;
    List list;
    std::int32_t byte = 0, bit = 1;
    int bits() const { return 8 * byte + bit - 1; }
};

Decoded decode(std::int32_t width, Bytes plain, List reference = {}, std::int32_t byte = 0, std::int32_t bit = 1,
               std::int32_t length = INT32_MAX) {
    Bytes data = exchanged(std::move(plain));
    if (length == INT32_MAX) length = static_cast<std::int32_t>(data.size());
    if (reference.empty()) reference = whiteRow(width);
    Decoded result;
    result.byte = byte;
    result.bit = bit;
    std::int32_t count = -7;
    List coding(static_cast<std::size_t>(width) + 4, -1);
    result.status = CCITT_G4Decode(reference.data(), static_cast<std::int32_t>(reference.size()), width,
                                   reinterpret_cast<std::uint16_t*>(data.data()), &result.byte, &result.bit, nullptr,
                                   coding.data(), &count, length);
    if (result.status == 0) result.list.assign(coding.begin(), coding.begin() + count);
    else EXPECT_EQ(count, -7) << "a failing row keeps the count";
    return result;
}

class G4Decode : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(CCITT_EnableG4Decode(), ImgErrNone); }
    void TearDown() override { CCITT_DisableG4Decode(); }
};

}  // namespace

TEST(G4Tables, LifeCycleOfTheClassFamily) {
    CCITT_DisableG4Decode();
    EXPECT_EQ(decode(8, hex("80")).status, 6) << "without tables";
    EXPECT_EQ(CCITT_EnableG4Decode(), ImgErrNone);
    EXPECT_EQ(CCITT_EnableG4Decode(), ImgErrNone);
    EXPECT_EQ(decode(8, hex("80")).status, 0);
    EXPECT_EQ(cit_enable_decode_gr4(), 1);
    EXPECT_EQ(cit_enable_decode_gr4(), 1) << "releases the tables it had";
    cit_disable_decode_gr4();
    cit_disable_decode_gr4();
    EXPECT_EQ(decode(8, hex("80")).status, 0) << "the other family's disable";
    CCITT_DisableG4Decode();
    EXPECT_EQ(decode(8, hex("80")).status, 6);
}

TEST_F(G4Decode, StatusesAndListsOfSingleRows) {
    struct Case {
        const char* coded;
        int status;
        List list;
        int bits;
        List reference;
    };
    const Case cases[] = {
        {"80", 0, {0, 9, 9, 9}, 1, {}},
        {"26 BC", 0, {0, 1, 3, 9, 9, 9}, 14, {}},
        {"3E 80", 0, {0, 8, 9, 9, 9}, 10, {}},
        {"33 0D C0", 0, {0, 9, 9, 9}, 18, {}},
        {"33 40", 1, {}, 0, {}},
        {"34 00", 2, {}, 0, {}},  // past the end and invalid
        {"60", 1, {}, 0, {}},
        {"02", 5, {}, 0, {}},
        {"00 10 01 C0", 0, {0, 9, 9, 9}, 25, {}},
        {"00 1F 01 80", 0, {0, 9, 9, 9}, 25, {}},
        {"00 10 01 00", 1, {}, 0, {}},
        {"00 20", 6, {}, 0, {}},
        {"90 DD F0", 0, {0, 3, 5, 6, 9, 9, 9}, 20, {0, 3, 6, 9, 9, 9}},
        {"18", 0, {0, 9, 9, 9}, 5, {}},  // pass, then below: the search stays in the list
        {"05", 6, {}, 0, {0, 1, 3, 9, 9, 9}},
        {"00 10 01 00 00 00 80 00", 0, {0, 9, 9, 9}, 49, {}},   // fill behind an end-of-block
        {"04 08 10 20 40 81 02 04 08 10 20 40", 1, {}, 0, {}},  // three left, again and again
        // The end of the block in black: once, and more often than the list has room for.
        {"09 21 11 00 10 01 FF", 0, {0, 9, 9, 9}, 49, {}},
        {"09 21 11 00 10 01 11 00 10 01 11 00 10 01 11 00 10 01 11 00 10 01 11 00 10 01 11 00 10 01 11 00 10 01 FF",
         1,
         {},
         0,
         {}},
    };
    for (const Case& c : cases) {
        const Decoded row = decode(8, hex(c.coded), c.reference);
        EXPECT_EQ(row.status, c.status) << c.coded;
        EXPECT_EQ(row.list, c.list) << c.coded;
        EXPECT_EQ(row.bits(), c.bits) << c.coded;
    }
}

TEST_F(G4Decode, SearchesStopAtTheListsEnds) {
    // Two left of column 1, then directly below what is left of that.
    EXPECT_EQ(decode(8, bits("000010 1 1 1 1"), {0, 1, 3, 9, 9, 9}).status, 0);
    EXPECT_EQ(decode(8, bits("0000010 1"), {0, 9, 20, 20}).list, (List{0, 6, 9, 9, 9}))
        << "and forward at the last change";
}

TEST_F(G4Decode, PositionsCountWithinCodedBytes) {
    EXPECT_EQ(decode(8, hex("00 80 00 00"), {}, 1, 1).bits(), 9);
    EXPECT_EQ(decode(8, hex("FF FF 20 00"), {}, 2, 3).bits(), 19);
    const Decoded odd = decode(8, hex("FF 00 80 00"), {}, 1, 3), even = decode(8, hex("FF FF 00 00"), {}, 2, 3);
    EXPECT_EQ(odd.status, 5);
    EXPECT_EQ(odd.byte, 1);
    EXPECT_EQ(odd.bit, 11) << "Kept: rewritten within the word, also on failure";
    EXPECT_EQ(even.byte, 2);
    EXPECT_EQ(even.bit, 3);
}

TEST_F(G4Decode, RefusesWhatItCannotHold) {
    EXPECT_EQ(decode(8, hex("80"), {0, 9, 9}).status, 1);
    Bytes data = exchanged(hex("80 00"));
    auto* words = reinterpret_cast<std::uint16_t*>(data.data());
    List reference = whiteRow(8), coding(12);
    std::int32_t byte = 0, bit = 1, count = 0;
    EXPECT_EQ(CCITT_G4Decode(reference.data(), 4, -1, words, &byte, &bit, nullptr, coding.data(), &count, 2), 1);
    EXPECT_EQ(CCITT_G4Decode(reference.data(), 4, 0x7FFFFFF8, words, &byte, &bit, nullptr, coding.data(), &count, 2),
              1);
    for (int missing = 0; missing < 6; ++missing) {
        const auto unless = [missing](int which, auto* given) { return missing == which ? nullptr : given; };
        byte = bit = 1;
        EXPECT_EQ(CCITT_G4Decode(unless(0, reference.data()), 4, 8, unless(1, words), unless(2, &byte), unless(3, &bit),
                                 nullptr, unless(4, coding.data()), unless(5, &count), 2),
                  1)
            << missing;
        EXPECT_EQ(bit, missing == 2 || missing == 3 ? 1 : 9) << "Kept: rewritten all the same";
    }
    for (auto [farByte, farBit] : {std::pair(0x20000000, 1), {1, INT32_MAX}, {INT32_MIN, 1}, {0, INT32_MIN}})
        EXPECT_EQ(decode(8, hex("80 00 80 00"), {}, farByte, farBit).status, 6) << "nothing is coded there";
    byte = 0, bit = 1;
    EXPECT_EQ(CCITT_G4Decode(reference.data(), 4, 8, words, &byte, &bit, nullptr, coding.data(), &count, 2), 0);
}

// Kept: of an odd number of bytes the last one's word counts as gone when fill reaches it, though it holds more.
TEST_F(G4Decode, KeptFillNeverReachesTheLastWordOfAnOddLength) {
    for (auto [length, status] : {std::pair(5, 1), {6, 0}})
        EXPECT_EQ(decode(8, hex("00 10 01 00 00 80"), {}, 0, 1, length).status, status);
}

TEST_F(G4Decode, AnUnknownLengthBoundsNothingButFill) {
    for (std::int32_t length : {0, -1, INT32_MIN}) {
        EXPECT_EQ(decode(8, hex("26 BC 00 00 00 00"), {}, 0, 1, length).list, (List{0, 1, 3, 9, 9, 9})) << length;
        EXPECT_EQ(decode(8, hex("00 10 01 C0 00 00 00 00 00 00"), {}, 0, 1, length).status, 0) << length;
        EXPECT_EQ(decode(8, hex("00 10 01 00 C0 00 00 00 00 00"), {}, 0, 1, length).status, 1) << length;
    }
}

// By the standard: what changes nothing is no change, a row never goes back, and data that end are no row.
TEST(G4Standard, StatusesAndListsOfSingleRows) {
    const std::string nothing = "001" + runText(0, false) + runText(0, true);
    struct Case {
        std::string coded;
        int status;
        List list;
        List reference = whiteRow(8);
    };
    const Case cases[] = {
        {"1", kRowDecoded, {0, 9, 9, 9}},
        {nothing + "001" + runText(3, false) + runText(2, true) + "1", kRowDecoded, {0, 4, 6, 9, 9, 9}},
        {"001" + runText(3, false) + runText(0, true) + "1", kRowDecoded, {0, 9, 9, 9}},
        {"001" + runText(0, false) + runText(3, true) + nothing + "1", kRowDecoded, {0, 1, 4, 9, 9, 9}},
        {"001" + runText(3, false) + runText(0, true) + "001" + runText(0, false) + runText(5, true),
         kRowDecoded,
         {0, 4, 9, 9, 9}},
        {"001" + runText(8, false) + runText(0, true), kRowDecoded, {0, 9, 9, 9}},
        {"001" + runText(0, false) + runText(8, true), kRowDecoded, {0, 1, 9, 9, 9}},
        {"0001", kRowDecoded, {0, 9, 9, 9}},  // a pass to the row's end ends it
        {"0001 001" + runText(0, false) + runText(2, true) + "1", kRowDecoded, {0, 5, 7, 9, 9, 9}, {0, 3, 5, 9, 9, 9}},
        {"011 000010 1", kRowDecoded, {0, 9, 9, 9}, {0, 3, 6, 9, 9, 9}},  // stays
        {"1 0000010 1", kRowBackwards, {}, {0, 3, 5, 9, 9, 9}},
        {"010", kRowBackwards, {}, {0, 1, 3, 9, 9, 9}},  // left of the row
        {"011", kRowPastEnd, {}},
        {"001" + runText(9, false) + runText(0, true), kRowPastEnd, {}},
        {"0000001 1", kRowExtension, {}},
        {"00000001 1111 1111", kRowInvalidMode, {}},
        {"001 000000001 1111 1111 1111", kRowInvalidRun, {}},
        {kEndOfBlockText + std::string("1"), kRowNoData, {}},
        {"001" + runText(3, false), kRowNoData, {}},
        {"001" + runText(3, false) + runText(2, true) + std::string(40, '0'), kRowNoData, {}},
        {"", kRowNoData, {}},
    };
    for (const Case& c : cases) {
        Bytes plain = bits(c.coded);
        const auto length = static_cast<std::int64_t>(plain.size());
        plain.resize(plain.size() + kCodedBack);
        std::int32_t *const reference = allocateLine(8), *const coding = allocateLine(8);
        std::copy(c.reference.begin(), c.reference.end(), reference);
        std::fill_n(reference + c.reference.size(), kLineRepeats, 9);
        reference[kLineIrregular] = 0;
        std::int64_t bit = 0;
        std::int32_t count = 0;
        EXPECT_EQ(
            decodeLine({plain.data(), length, false}, bit, {reference, static_cast<std::int32_t>(c.reference.size())},
                       8, coding, count, Decoding::standard),
            c.status)
            << c.coded;
        EXPECT_EQ(List(coding, coding + count), c.list) << c.coded;
        freeLine(reference);
        freeLine(coding);
    }
}

// A make-up chain far beyond 32 bits must not wrap into a valid position.
TEST_F(G4Decode, HoldsEndlessMakeUpCodes) {
    std::string text = "001";
    for (int i = 0; i < 900000; ++i) text += "000000011111";
    EXPECT_EQ(decode(8, bits(text + "00110101" + "0000110111")).status, 1);
    EXPECT_EQ(decode(8, bits(text + "00000000000000")).status, 2);
}

TEST_F(G4Decode, FastAndExactAgreeOnRandomCodes) {
    std::mt19937 random(7);
    const char* const modes[] = {"1", "1", "1", "1", "011", "010", "000011", "000010", "0000011", "0000010", "0001"};
    int decodedRows = 0;
    for (int round = 0; round < 3000; ++round) {
        const auto width = static_cast<std::int32_t>(1 + random() % (round % 3 ? 40 : 3000));
        const Decoding how = round % 4 ? Decoding::classic : Decoding::standard;
        std::string text;
        const auto longest = static_cast<unsigned>(std::max(width / 4, 2));
        while (text.size() < 3000) {
            const unsigned pick = random() % 16;
            if (pick < 11) text += modes[pick];
            else if (pick < 15 || random() % 8)
                text += "001" + runText(static_cast<int>(random() % longest), false) +
                        runText(static_cast<int>(random() % longest), true);
            else text += random() % 4 ? kEndOfBlockText : "0000001";
        }
        const int rows = rowsDecodedAlike(width, exchanged(bits(text)), 60, how);
        ASSERT_GE(rows, 0) << round;
        decodedRows += rows;
    }
    EXPECT_GT(decodedRows, 5000);
}
