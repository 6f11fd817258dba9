// Rows into strips, as packed bits and as change lists.

#include "ccitt/detect_changes.h"
#include "tilepress/ccitt.h"
#include "tilepress/page.h"

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

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

std::vector<std::uint32_t> changesOf(const unsigned char* row, std::uint32_t width) {
    std::vector<std::uint32_t> changes;
    for (std::uint32_t x = 0; x < width; ++x) {
        const auto pixel = [&](std::uint32_t i) { return row[i / 8] >> (7 - i % 8) & 1; };
        if (pixel(x) != (x > 0 ? pixel(x - 1) : 0)) changes.push_back(x);
    }
    return changes;
}

TEST(PageEncoder, BitsAndChangesGiveTheStripThatTheStripBuilderGives) {
    std::mt19937 random(7);
    cit_enable_encode_gr4();
    cit_enable_detect_changes();
    for (std::uint32_t width : {1u, 8u, 31u, 64u, 65u, 1000u}) {
        const std::uint32_t rows = 9, stride = (width + 7) / 8;
        Bytes bits(std::size_t{rows} * stride);
        for (auto& byte : bits) byte = static_cast<unsigned char>(random() % 3 ? 0xF0 : random());
        unsigned char* strip = nullptr;
        const std::int32_t length =
            create_g4_tiff_strip(bits.data(), &strip, static_cast<std::int32_t>(width),
                                 static_cast<std::int32_t>(stride), static_cast<std::int32_t>(rows));
        if (length == 0) continue;  // rows that hardly compress are refused there
        const Bytes expected(strip, strip + length);
        std::free(strip);

        tp_encoder* const encoder = encoderFor(width);
        EXPECT_EQ(tp_encoder_add_bits(encoder, bits.data(), stride, 4), TP_OK);
        for (std::uint32_t y = 4; y < rows; ++y) {
            const auto changes = changesOf(bits.data() + std::size_t{y} * stride, width);
            EXPECT_EQ(tp_encoder_add_changes(encoder, changes.data(), static_cast<std::uint32_t>(changes.size())),
                      TP_OK);
        }
        EXPECT_EQ(finished(encoder), expected) << width;
        EXPECT_EQ(finished(encoder), (Bytes{0x00, 0x10, 0x01})) << "a strip without rows";
        tp_encoder_close(encoder);

        tp_encoder* const reversed = encoderFor(width, 2);
        const auto* last = bits.data() + bits.size() - stride;
        Bytes upsideDown(bits.size());
        for (std::uint32_t y = 0; y < rows; ++y)
            std::memcpy(&upsideDown[std::size_t{y} * stride], last - std::size_t{y} * stride, stride);
        EXPECT_EQ(tp_encoder_add_bits(reversed, &upsideDown[upsideDown.size() - stride],
                                      -static_cast<std::ptrdiff_t>(stride), rows),
                  TP_OK);
        Bytes other = finished(reversed);
        for (auto& byte : other) {
            unsigned turned = 0;
            for (unsigned bit = 0; bit < 8; ++bit) turned |= (byte >> bit & 1u) << (7 - bit);
            byte = static_cast<unsigned char>(turned);
        }
        EXPECT_EQ(other, expected) << width;
        tp_encoder_close(reversed);
    }
    cit_disable_encode_gr4();
    cit_disable_detect_changes();
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
