#pragma once

// Pictures as plain pixel values, whatever kind of image holds them, for models
// that go pixel by pixel.

#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

namespace tilepress::test {

struct Picture {
    std::size_t width = 0, height = 0;
    std::vector<std::uint32_t> pixels;

    Picture(std::size_t w, std::size_t h, std::uint32_t value = 0) : width(w), height(h), pixels(w * h, value) {}
    Picture(std::size_t w, std::initializer_list<std::uint32_t> rows)
        : width(w), height(rows.size() / w), pixels(rows) {}
    std::uint32_t& at(std::size_t x, std::size_t y) { return pixels[y * width + x]; }
    std::uint32_t at(std::size_t x, std::size_t y) const { return pixels[y * width + x]; }
    bool operator==(const Picture&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Picture& picture) {
    for (std::size_t i = 0; i < picture.pixels.size() && i < 4096; ++i)
        out << (i % picture.width ? " " : "\n") << picture.pixels[i];
    return out;
}

template <class Image>
using Owned = std::unique_ptr<Image>;

inline Owned<CImg1> blank(CImg1*, std::size_t w, std::size_t h, ImgAlignmentEnum alignment) {
    return Owned<CImg1>(CImg1::create(w, h, 0x112233, 0x445566, alignment));
}
inline Owned<CImg8> blank(CImg8*, std::size_t w, std::size_t h, ImgAlignmentEnum alignment) {
    return Owned<CImg8>(CImg8::create(w, h, nullptr, alignment));
}
inline Owned<CImg32> blank(CImg32*, std::size_t w, std::size_t h, ImgAlignmentEnum) {
    return Owned<CImg32>(CImg32::create(w, h, RGBOrderBGR));
}

inline void setPixel(CImg1& image, std::size_t x, std::size_t y, std::uint32_t value) {
    unsigned char& byte = image.peekData()[y * image.getBytesPerLine() + x / 8];
    byte = static_cast<unsigned char>(value ? byte | 0x80 >> x % 8 : byte & ~(0x80 >> x % 8));
}
inline void setPixel(CImg8& image, std::size_t x, std::size_t y, std::uint32_t value) {
    image.peekDataArray()[y][x] = static_cast<unsigned char>(value);
}
inline void setPixel(CImg32& image, std::size_t x, std::size_t y, std::uint32_t value) {
    image.peekDataArray()[y][x] = value;
}

inline std::uint32_t getPixel(const CImg1& image, std::size_t x, std::size_t y) {
    return image.peekData()[y * image.getBytesPerLine() + x / 8] >> (7 - x % 8) & 1;
}
inline std::uint32_t getPixel(const CImg8& image, std::size_t x, std::size_t y) { return image.peekDataArray()[y][x]; }
inline std::uint32_t getPixel(const CImg32& image, std::size_t x, std::size_t y) { return image.peekDataArray()[y][x]; }

template <class Image>
Owned<Image> imageOf(const Picture& picture, ImgAlignmentEnum alignment) {
    auto image = blank(static_cast<Image*>(nullptr), picture.width, picture.height, alignment);
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) setPixel(*image, x, y, picture.at(x, y));
    return image;
}

/// The image's pixels; an empty picture for null.
template <class Image>
Picture pictureOf(const Image* image) {
    if (!image) return Picture(0, 0);
    Picture picture(image->getWidth(), image->getHeight());
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) picture.at(x, y) = getPixel(*image, x, y);
    return picture;
}

/// An operation's result, which has the kind of the image it came from.
template <class Image>
Owned<Image> owned(IImg* result) {
    return Owned<Image>(static_cast<Image*>(result));
}

/// Largest pixel value of a kind.
template <class Image>
constexpr std::uint32_t kWhole = 0xFFFFFFFF;
template <>
inline constexpr std::uint32_t kWhole<CImg1> = 1;
template <>
inline constexpr std::uint32_t kWhole<CImg8> = 255;

template <class Image>
Picture randomPicture(std::size_t width, std::size_t height) {
    static std::mt19937 random(4711);
    Picture picture(width, height);
    for (auto& pixel : picture.pixels) pixel = static_cast<std::uint32_t>(random()) & kWhole<Image>;
    return picture;
}

using PixelKinds = ::testing::Types<CImg1, CImg8, CImg32>;
inline constexpr ImgAlignmentEnum kAlignments[] = {ImgAlignNone, ImgAlignByte, ImgAlignDword};

}  // namespace tilepress::test
