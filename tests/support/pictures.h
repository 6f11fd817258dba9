#pragma once

// Pictures as plain pixel values, whatever kind of image holds them, for models
// that go pixel by pixel.

#include "support/owned.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <ostream>
#include <random>
#include <string_view>

namespace support {

struct Picture {
    std::size_t width = 0, height = 0;
    std::vector<std::uint32_t> pixels;

    Picture(std::size_t w, std::size_t h, std::uint32_t value = 0) : width(w), height(h), pixels(w * h, value) {}
    Picture(std::size_t w, std::initializer_list<std::uint32_t> rows)
        : width(w), height(rows.size() / w), pixels(rows) {}
    /// "0110 0001": bits of rows of one length.
    Picture(std::string_view rows) {
        width = rows.substr(0, rows.find(' ')).size();
        for (const char c : rows)
            if (c != ' ') pixels.push_back(c == '1');
        height = width ? pixels.size() / width : 0;
    }
    Picture(const char* rows) : Picture(std::string_view(rows)) {}
    std::uint32_t& at(std::size_t x, std::size_t y) { return pixels[y * width + x]; }
    std::uint32_t at(std::size_t x, std::size_t y) const { return pixels[y * width + x]; }
    bool operator==(const Picture&) const = default;
};

inline const Picture kNone(0, 0);

inline std::ostream& operator<<(std::ostream& out, const Picture& picture) {
    for (std::size_t i = 0; i < picture.pixels.size() && i < 4096; ++i)
        out << (i % picture.width ? " " : "\n") << picture.pixels[i];
    return out;
}

inline Picture cut(const Picture& picture, const ImgRect& r) {
    Picture part(r.getWidth(), r.getHeight());
    for (std::size_t y = 0; y < part.height; ++y)
        for (std::size_t x = 0; x < part.width; ++x) part.at(x, y) = picture.at(r.getLeft() + x, r.getTop() + y);
    return part;
}

/// Of bits.
inline Picture complement(Picture picture) {
    for (auto& pixel : picture.pixels) pixel ^= 1;
    return picture;
}

inline std::size_t inked(const Picture& picture) {
    std::size_t count = 0;
    for (const auto pixel : picture.pixels) count += pixel;
    return count;
}

// --- images ---------------------------------------------------------------------------

inline Owned<CImg1> blank(CImg1*, std::size_t w, std::size_t h, ImgAlignmentEnum alignment) {
    return Owned<CImg1>(CImg1::create(w, h, 0x112233, 0x445566, alignment));
}
inline Owned<CImg8> blank(CImg8*, std::size_t w, std::size_t h, ImgAlignmentEnum alignment) {
    return Owned<CImg8>(CImg8::create(w, h, nullptr, alignment));
}
inline Owned<CImg32> blank(CImg32*, std::size_t w, std::size_t h, ImgAlignmentEnum) {
    return Owned<CImg32>(CImg32::create(w, h, RGBOrderBGR));
}
template <class Image>
Owned<Image> blank(std::size_t w, std::size_t h, ImgAlignmentEnum alignment = ImgAlignNone) {
    return blank(static_cast<Image*>(nullptr), w, h, alignment);
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
Owned<Image> imageOf(const Picture& picture, ImgAlignmentEnum alignment = ImgAlignNone) {
    auto image = blank<Image>(picture.width, picture.height, alignment);
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) setPixel(*image, x, y, picture.at(x, y));
    return image;
}

/// The image's pixels; an empty picture for null.
template <class Image>
Picture pictureOf(const Image* image) {
    if (!image) return kNone;
    Picture picture(image->getWidth(), image->getHeight());
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) picture.at(x, y) = getPixel(*image, x, y);
    return picture;
}
template <>
inline Picture pictureOf<IImg>(const IImg* image) {
    switch (image ? const_cast<IImg*>(image)->getType() : ImageTypeBilevel) {
    case ImageTypePalette: return pictureOf(static_cast<const CImg8*>(image));
    case ImageTypeRGB: return pictureOf(static_cast<const CImg32*>(image));
    default: return pictureOf(static_cast<const CImg1*>(image));
    }
}
template <class Image>
Picture pictureOf(const Owned<Image>& image) {
    return pictureOf(image.get());
}

/// The whole block, padding included.
template <class Image>
Bytes bytesOf(const Image& image) {
    const auto* const block = reinterpret_cast<const unsigned char*>(image.peekData());
    return Bytes(block, block + image.getTotalBytes());
}

/// An operation's result, which has the kind of the image it came from.
template <class Image>
Owned<Image> owned(IImg* result) {
    return Owned<Image>(static_cast<Image*>(result));
}
/// Its pixels.
template <class Image>
Picture result(IImg* image) {
    return pictureOf(owned<Image>(image));
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

/// A suite whose tests are run for each of a list of types.
#define SUITE_FOR(Suite, Kinds)            \
  template <class>                         \
  class Suite : public ::testing::Test {}; \
  TYPED_TEST_SUITE(Suite, Kinds)

using PixelKinds = ::testing::Types<CImg1, CImg8, CImg32>;
using ColourKinds = ::testing::Types<CImg8, CImg32>;
inline constexpr ImgAlignmentEnum kAlignments[] = {ImgAlignNone, ImgAlignByte, ImgAlignDword};

}  // namespace support
