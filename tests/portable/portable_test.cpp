// What other processors get where x86 has instructions of its own: compiled as if there were none.

#include "kernels/transpose.h"
#include "kernels/widen_pixels.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#ifdef __SSE2__
#  error this file is about processors without SSE2
#endif

using namespace tilepress;

TEST(Portable, LanesOfComparisonsBecomeBits) {
    for (unsigned bits = 0; bits < 0x10000; ++bits) {
        Shorts8 low{}, high{};
        Ints4 four{};
        for (unsigned k = 0; k < 8; ++k) {
            low[k] = static_cast<short>(-static_cast<int>(bits >> k & 1));
            high[k] = static_cast<short>(-static_cast<int>(bits >> (k + 8) & 1));
            four[k % 4] = -static_cast<int>(bits >> k % 4 & 1);
        }
        ASSERT_EQ(laneBits(low, high), bits);
        ASSERT_EQ(laneBits(four), bits % 16);
    }
}

TEST(Portable, NumbersBecomeBytes) {
    const Bytes16 bytes =
        narrowed(Words4{0, 1, 2, 255}, Words4{4, 5, 6, 254}, Words4{8, 9, 10, 253}, Words4{12, 13, 14, 252});
    for (unsigned k = 0; k < 16; ++k) EXPECT_EQ(bytes[k], k % 4 == 3 ? 255 - k / 4 : k);
}

TEST(Portable, BitsTurn) {
    constexpr std::size_t width = 150, height = 75, srcStride = 19, dstStride = 10;
    std::mt19937 random(1);
    std::vector<unsigned char> src(srcStride * height), dst(dstStride * width), expected(dst.size());
    for (unsigned char& byte : src) byte = static_cast<unsigned char>(random());
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x)
            if (src[y * srcStride + x / 8] & 0x80 >> x % 8)
                expected[x * dstStride + y / 8] =
                    static_cast<unsigned char>(expected[x * dstStride + y / 8] | 0x80 >> y % 8);
    transposeBits({dst.data(), dstStride}, {src.data(), srcStride}, width, height);
    EXPECT_EQ(dst, expected);
}

template <class Pixel>
static void widenAll() {
    for (std::uint32_t width = 1; width < 70; width += 3)
        for (std::uint32_t wider = width; wider < 3 * width + 3; ++wider) {
            std::vector<Pixel> src(width), dst(wider), expected(wider);
            for (std::uint32_t x = 0; x < width; ++x) src[x] = static_cast<Pixel>(x * 0x01030507u + 1);
            forEachMark(wider, width, [&](std::uint32_t first, std::uint32_t count, std::uint32_t k) {
                std::fill_n(expected.begin() + first, count, src[k]);
            });
            PixelWidener<Pixel> widener(width, wider);
            ASSERT_TRUE(widener.prepare());
            widener.widen(dst.data(), src.data());
            ASSERT_EQ(dst, expected) << width << " to " << wider;
        }
}

TEST(Portable, RowsWiden) {
    EXPECT_FALSE(shufflesBytes());
    widenAll<unsigned char>();
    widenAll<ImgULong>();
}
