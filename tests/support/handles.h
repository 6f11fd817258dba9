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

/// A type of handle, the class with the same pixels, and one handle of a size.
struct Bits {
    using Image = CImg1;
    static constexpr std::uint32_t type = ImgTypeBilevel;
    static bool create(ImgHandle* h, std::uint32_t w, std::uint32_t ht, void* data = nullptr) {
        return ImgCreateBilevel(h, w, ht, 16, data);
    }
};
struct Bytes8 {
    using Image = CImg8;
    static constexpr std::uint32_t type = ImgTypePalette8;
    static bool create(ImgHandle* h, std::uint32_t w, std::uint32_t ht, void* data = nullptr) {
        return ImgCreatePalette8(h, w, ht, 32, nullptr, data);
    }
};
struct Bytes24 {
    using Image = CImg32;
    static constexpr std::uint32_t type = ImgTypeRGB24;
    static bool create(ImgHandle* h, std::uint32_t w, std::uint32_t ht, void* data = nullptr) {
        return ImgCreateRGB24(h, w, ht, 32, data);
    }
};
struct Words32 {
    using Image = CImg32;
    static constexpr std::uint32_t type = ImgTypeRGBA32;
    static bool create(ImgHandle* h, std::uint32_t w, std::uint32_t ht, void* data = nullptr) {
        return ImgCreateRGB32(h, w, ht, 1, data);
    }
};
using HandleKinds = ::testing::Types<Bits, Bytes8, Bytes24, Words32>;

inline std::size_t pixelBytes(const ImgHandle& image) {
    return image.type == ImgTypePalette8 ? 1 : image.type == ImgTypeRGB24 ? 3 : 4;
}

template <class Kind>
Handle handleOf(const Picture& picture) {
    Handle image(ImgNew(Kind::type));
    EXPECT_TRUE(Kind::create(image.get(), static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height)));
    for (std::size_t y = 0; y < picture.height; ++y)
        for (std::size_t x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel = picture.at(x, y);
            if (Kind::type == ImgTypeBilevel) rowOf(*image, y)[x / 8] |= static_cast<std::uint8_t>(pixel << (7 - x % 8));
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
