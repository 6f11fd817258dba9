#pragma once

// Handles for tests: made from pictures, read back as pictures, ended with all they have.

#include "support/pictures.h"
#include "tilepress/ImgHandle.h"

#include <memory>

namespace tilepress::test {

struct EndHandle {
    void operator()(ImgHandle* image) const {
        if (image->type == ImgTypePalette8 && image->header) {
            ColorTable* table = static_cast<Img8Header*>(image->header)->colorTable;
            MemFree(0, table->entries);
            MemFree(0, table);
        }
        if (image->free && image->header) image->free(&image, nullptr);
        else MemFree(0, image);
    }
};
using Handle = std::unique_ptr<ImgHandle, EndHandle>;

inline std::uint8_t* rowOf(const ImgHandle& image, std::size_t y) {
    if (image.type != ImgTypeBilevel) return static_cast<std::uint8_t**>(image.data)[y];
    return static_cast<std::uint8_t*>(image.data) + y * static_cast<Img1Header*>(image.header)->bytesPerLine;
}

/// A type of handle, and the class with the same pixels.
template <std::uint32_t Type, class ImageType>
struct HandleKind {
    using Image = ImageType;
    static constexpr std::uint32_t type = Type;
    static bool create(ImgHandle* h, std::uint32_t width, std::uint32_t height, void* data = nullptr) {
        switch (Type) {
        case ImgTypeBilevel: return ImgCreateBilevel(h, width, height, 16, data);
        case ImgTypePalette8: return ImgCreatePalette8(h, width, height, 32, nullptr, data);
        case ImgTypeRGB24: return ImgCreateRGB24(h, width, height, 32, data);
        default: return ImgCreateRGB32(h, width, height, 1, data);
        }
    }
};
using Bits = HandleKind<ImgTypeBilevel, CImg1>;
using Bytes8 = HandleKind<ImgTypePalette8, CImg8>;
using Bytes24 = HandleKind<ImgTypeRGB24, CImg32>;
using Words32 = HandleKind<ImgTypeRGBA32, CImg32>;
using HandleKinds = ::testing::Types<Bits, Bytes8, Bytes24, Words32>;

inline std::size_t pixelBytes(const ImgHandle& image) {
    return image.type == ImgTypePalette8 ? 1 : image.type == ImgTypeRGB24 ? 3 : 4;
}

template <class Kind>
Handle handleOf(const Picture& picture) {
    Handle image(ImgNew(Kind::type));
    EXPECT_TRUE(Kind::create(image.get(), static_cast<std::uint32_t>(picture.width),
                             static_cast<std::uint32_t>(picture.height)));
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel = picture.at(x, y);
            if (Kind::type == ImgTypeBilevel)
                rowOf(*image, y)[x / 8] |= static_cast<std::uint8_t>(pixel << (7 - x % 8));
            else std::memcpy(rowOf(*image, y) + x * pixelBytes(*image), &pixel, pixelBytes(*image));
        }
    return image;
}

/// The handle's pixels; an empty picture for null.
inline Picture pictureOf(const ImgHandle* image) {
    if (!image) return Picture(0, 0);
    Picture picture(image->getWidth(const_cast<ImgHandle*>(image)), image->getHeight(const_cast<ImgHandle*>(image)));
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) {
            if (image->type == ImgTypeBilevel) picture.at(x, y) = rowOf(*image, y)[x / 8] >> (7 - x % 8) & 1;
            else std::memcpy(&picture.at(x, y), rowOf(*image, y) + x * pixelBytes(*image), pixelBytes(*image));
        }
    return picture;
}
inline Picture pictureOf(const Handle& image) { return pictureOf(image.get()); }

/// As many values as a kind's pixels have.
template <class Kind>
Picture randomPixels(std::size_t width, std::size_t height) {
    Picture picture = randomPicture<typename Kind::Image>(width, height);
    if (Kind::type == ImgTypeRGB24)
        for (auto& pixel : picture.pixels) pixel &= 0xFFFFFF;
    return picture;
}

}  // namespace tilepress::test
