#include "memory_tiff.h"
#include "support/pixel_rows.h"
#include "tilepress/ccitt.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace support;

namespace {

struct Image {
    std::int32_t width, height;
    Bytes pixels;  // rows of whole bytes, pad bits 0
    std::int32_t bytesPerRow() const { return (width + 7) / 8; }
};

Image randomImage(std::mt19937& random) {
    const std::size_t width = random() % 8 ? 1 + random() % 200 : 1 + random() % 12000;
    const std::size_t height = 1 + random() % 40, longest = 1u << (1 + random() % 13);
    Image image{static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), {}};
    std::string row(width, '0');
    for (std::size_t y = 0; y < height; ++y) {
        row = randomRow(random, width, longest, row);
        const Bytes bytes = packed(row);
        image.pixels.insert(image.pixels.end(), bytes.begin(), bytes.end());
    }
    return image;
}

Bytes codedByUs(Image image) {
    std::uint8_t* strip = nullptr;
    const std::int32_t length =
        create_g4_tiff_strip(image.pixels.data(), &strip, image.width, image.bytesPerRow(), image.height);
    Bytes bytes(strip, strip + length);
    std::free(strip);
    return bytes;
}

/// The pixels of a strip, or none when a row is refused.
Bytes decodedByUs(const Bytes& strip, const Image& size) {
    Bytes words = exchanged(strip), pixels;
    List above = listOf(std::string(size.width, '0')), list(size.width + 4);
    std::int32_t byte = 0, bit = 1, count;
    for (std::int32_t y = 0; y < size.height; ++y) {
        if (CCITT_G4Decode(above.data(), static_cast<std::int32_t>(above.size()), size.width,
                           reinterpret_cast<std::uint16_t*>(words.data()), &byte, &bit, nullptr, list.data(), &count,
                           static_cast<std::int32_t>(words.size())) != 0)
            return {};
        above.assign(list.begin(), list.begin() + count);
        std::string row;
        for (std::int32_t k = 1; k < count; ++k) row.resize(above[k] - 1, k % 2 ? '0' : '1');
        const Bytes bytes = packed(row);
        pixels.insert(pixels.end(), bytes.begin(), bytes.end());
    }
    return pixels;
}

struct Libtiff : testing::Test {
    void SetUp() override {
        cit_enable_detect_changes();
        cit_enable_encode_gr4();
        ASSERT_EQ(CCITT_EnableG4Decode(), ImgErrNone);
    }
    void TearDown() override {
        cit_disable_detect_changes();
        cit_disable_encode_gr4();
        CCITT_DisableG4Decode();
    }
};

}  // namespace

TEST_F(Libtiff, CodesRandomImagesAsWeDo) {
    std::mt19937 random(6);
    for (int n = 0; n < 2000; ++n) {
        const Image image = randomImage(random);
        const Bytes ours = codedByUs(image),
                    theirs = peer::MemoryTiff(image.width, image.height).codedFrom(image.pixels);
        ASSERT_EQ(ours, theirs) << image.width << " x " << image.height;
        ASSERT_EQ(decodedByUs(theirs, image), image.pixels);
        ASSERT_EQ(peer::MemoryTiff(image.width, image.height).pixelsFrom(ours, image.pixels.size()), image.pixels);
    }
}
