// Rows into strips, as packed bits and as change lists.

#include "support/pages.h"
#include "support/pixel_rows.h"

namespace support {
namespace {

Bytes finished(tp_encoder* encoder) {
    const void* data = nullptr;
    std::size_t size = 0;
    EXPECT_EQ(tp_encoder_finish(encoder, &data, &size), TP_OK);
    const auto* bytes = static_cast<const unsigned char*>(data);
    return Bytes(bytes, bytes + size);
}

tp_encoder* encoderFor(std::uint32_t width, std::uint32_t fillOrder = 1) {
    tp_encoder* encoder = nullptr;
    EXPECT_EQ(tp_encoder_open(width, fillOrder, nullptr, &encoder), TP_OK);
    return encoder;
}

TEST(PageEncoder, BitsAndChangesGiveTheCodesOfTheirRows) {
    std::mt19937 random(7);
    for (std::uint32_t width : {1u, 8u, 31u, 64u, 65u, 1000u}) {
        const std::uint32_t stride = (width + 7) / 8;
        std::string text, above(width, '0');
        Bytes rows, upsideDown;
        tp_encoder *const encoder = encoderFor(width), *const reversed = encoderFor(width, 2);
        for (int y = 0; y < 9; ++y) {
            const std::string row = randomRow(random, width, 9, above);
            text += rowCodes(above, row);
            above = row;
            const Bytes bytes = packed(row);
            upsideDown.insert(upsideDown.begin(), bytes.begin(), bytes.end());
            std::vector<std::uint32_t> changes;
            for (const std::int32_t element : listOf(row))
                if (element > 0 && element <= static_cast<std::int32_t>(width)) changes.push_back(element - 1u);
            if (y < 4) EXPECT_EQ(tp_encoder_add_bits(encoder, bytes.data(), stride, 1), TP_OK);
            else EXPECT_EQ(tp_encoder_add_changes(encoder, changes.data(), changes.size()), TP_OK);
        }
        Bytes expected = bits(text += kEndOfBlockText);
        expected.resize((text.size() + 7) / 8);
        EXPECT_EQ(finished(encoder), expected) << width;
        EXPECT_EQ(finished(encoder), (Bytes{0x00, 0x10, 0x01})) << "a strip without rows";
        tp_encoder_close(encoder);
        EXPECT_EQ(tp_encoder_add_bits(reversed, &upsideDown[8 * stride], -static_cast<std::ptrdiff_t>(stride), 9),
                  TP_OK);
        EXPECT_EQ(finished(reversed), withBitsReversed(expected)) << width;
        tp_encoder_close(reversed);
    }
}

TEST(PageEncoder, RefusedRowsLeaveTheStripAsItWas) {
    tp_encoder* const encoder = encoderFor(10);
    const std::uint32_t good[] = {0, 3, 9}, equal[] = {3, 3}, falling[] = {4, 2}, past[] = {3, 10}, many[11] = {};
    EXPECT_EQ(tp_encoder_add_changes(encoder, good, 3), TP_OK);
    for (const std::uint32_t* bad : {equal, falling, past})
        EXPECT_EQ(tp_encoder_add_changes(encoder, bad, 2), TP_E_ARGUMENT);
    EXPECT_EQ(tp_encoder_add_changes(encoder, many, 11), TP_E_ARGUMENT);
    const Bytes strip = finished(encoder);
    EXPECT_EQ(tp_encoder_add_changes(encoder, good, 3), TP_OK);
    EXPECT_EQ(finished(encoder), strip);
    tp_encoder_close(encoder);
}

TEST(PageEncoder, LimitsHoldBeforeAndWhileItGrows) {
    tp_encoder* encoder = nullptr;
    tp_limits limits{0, 1000};
    EXPECT_EQ(tp_encoder_open(1 << 30, 1, &limits, &encoder), TP_E_LIMIT);
    EXPECT_EQ(encoder, nullptr);
    EXPECT_EQ(tp_encoder_open(0, 1, nullptr, &encoder), TP_E_ARGUMENT);
    EXPECT_EQ(tp_encoder_open(8, 3, nullptr, &encoder), TP_E_ARGUMENT);
    EXPECT_EQ(tp_encoder_open(0x7FFFFFFF, 1, nullptr, &encoder), TP_E_TOO_LARGE);
    ASSERT_EQ(tp_encoder_open(32, 1, &limits, &encoder), TP_OK);
    const unsigned char rows[2][4] = {{0x55, 0x55, 0x55, 0x55}, {0, 0, 0, 0}};
    tp_status status = TP_OK;
    std::uint32_t added = 0;
    for (; status == TP_OK && added < 1000; ++added) status = tp_encoder_add_bits(encoder, rows[added % 2], 4, 1);
    EXPECT_EQ(status, TP_E_LIMIT);
    EXPECT_LT(finished(encoder).size(), 1000u);
    tp_encoder_close(encoder);
}

}  // namespace
}  // namespace support
