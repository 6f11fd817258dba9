#pragma once

// Handles for tests: made from pictures, read back as pictures, ended with all they have.

#include "support/pictures.h"

namespace support {

inline std::uint8_t* rowOf(const ImgHandle& image, std::size_t y) {
    if (image.type != ImgTypeBilevel) return static_cast<std::uint8_t**>(image.data)[y];
    return static_cast<std::uint8_t*>(image.data) + y * static_cast<Img1Header*>(image.header)->bytesPerLine;
}

inline std::uint32_t alignmentOf(const ImgHandle& image) {
    switch (image.type) {
    case ImgTypeBilevel: return static_cast<Img1Header*>(image.header)->alignBits;
    case ImgTypePalette8: return static_cast<Img8Header*>(image.header)->alignBits;
    case ImgTypeRGB24: return static_cast<Img24Header*>(image.header)->alignBits;
    default: return 32;
    }
}

/// A type of handle, and the class with the same pixels.
template <std::uint32_t Type, class ImageType, std::uint32_t Alignment>
struct HandleKind {
    using Image = ImageType;
    static constexpr std::uint32_t type = Type;
    static bool create(ImgHandle* h, std::uint32_t width, std::uint32_t height, void* data = nullptr,
                       std::uint32_t align = Alignment) {
        switch (Type) {
        case ImgTypeBilevel: return ImgCreateBilevel(h, width, height, align, data);
        case ImgTypePalette8: return ImgCreatePalette8(h, width, height, align, nullptr, data);
        case ImgTypeRGB24: return ImgCreateRGB24(h, width, height, align, data);
        default: return ImgCreateRGB32(h, width, height, 1, data);
        }
    }
};
using Bits = HandleKind<ImgTypeBilevel, CImg1, 16>;
using Bytes8 = HandleKind<ImgTypePalette8, CImg8, 32>;
using Bytes24 = HandleKind<ImgTypeRGB24, CImg32, 32>;
using Words32 = HandleKind<ImgTypeRGBA32, CImg32, 32>;
using HandleKinds = ::testing::Types<Bits, Bytes8, Bytes24, Words32>;

inline std::size_t pixelBytes(const ImgHandle& image) {
    return image.type == ImgTypePalette8 ? 1 : image.type == ImgTypeRGB24 ? 3 : 4;
}

template <class Kind>
Handle handleOf(const Picture& picture, std::uint32_t align = 0) {
    Handle image(ImgNew(Kind::type));
    const auto w = static_cast<std::uint32_t>(picture.width), h = static_cast<std::uint32_t>(picture.height);
    EXPECT_TRUE(align ? Kind::create(image.get(), w, h, nullptr, align) : Kind::create(image.get(), w, h));
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel = picture.at(x, y);
            if (Kind::type == ImgTypeBilevel)
                rowOf(*image, y)[x / 8] |= static_cast<std::uint8_t>(pixel << (7 - x % 8));
            else std::memcpy(rowOf(*image, y) + x * pixelBytes(*image), &pixel, pixelBytes(*image));
        }
    return image;
}

/// With copies of the tiles.
inline Handle compressedHandle(const std::vector<Bytes>& tiles, std::uint32_t w, std::uint32_t h, std::uint32_t tw,
                               std::uint32_t th) {
    void* array = nullptr;
    MemAllocate(0, tiles.size() * sizeof(void*), 0, &array);
    void** const blocks = static_cast<void**>(array);
    std::vector<std::uint32_t> counts;
    for (std::size_t k = 0; k < tiles.size(); ++k) {
        counts.push_back(static_cast<std::uint32_t>(tiles[k].size()));
        MemAllocate(0, tiles[k].size(), 0, &blocks[k]);
        std::copy(tiles[k].begin(), tiles[k].end(), static_cast<unsigned char*>(blocks[k]));
    }
    Handle image(ImgNew(ImgTypeTiffG4));
    EXPECT_TRUE(ImgCreateTiffG4(image.get(), w, h, tw, th, counts.data(), blocks));
    return image;
}

/// The handle's pixels; an empty picture for null.
template <>
inline Picture pictureOf<ImgHandle>(const ImgHandle* image) {
    if (!image) return kNone;
    Picture picture(image->getWidth(const_cast<ImgHandle*>(image)), image->getHeight(const_cast<ImgHandle*>(image)));
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) {
            if (image->type == ImgTypeBilevel) picture.at(x, y) = rowOf(*image, y)[x / 8] >> (7 - x % 8) & 1;
            else std::memcpy(&picture.at(x, y), rowOf(*image, y) + x * pixelBytes(*image), pixelBytes(*image));
        }
    return picture;
}

/// As many values as a kind's pixels have.
template <class Kind>
Picture randomPixels(std::size_t width, std::size_t height) {
    Picture picture = randomPicture<typename Kind::Image>(width, height);
    if (Kind::type == ImgTypeRGB24)
        for (auto& pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture;
}

}  // namespace support
