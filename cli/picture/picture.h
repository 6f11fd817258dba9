#pragma once

// A picture in memory between reading, transforming and writing.

#include "base/geometry.h"
#include "tilepress/tilepress.h"

#include <cstdint>
#include <memory>
#include <string>

/// How a picture's pixels are written.
enum class Pixels { bilevel, grey, palette, rgb };

struct ImageDeleter {
    /// A palette image leaves its colour map to whoever ends it.
    void operator()(IImg* image) const {
        const ColorMap* const map =
            image->getType() == ImageTypePalette ? static_cast<CImg8*>(image)->getColorMap() : nullptr;
        delete image;
        delete map;
    }
};

struct Picture {
    std::unique_ptr<IImg, ImageDeleter> image;  ///< CImg1 (1 is shown black), CImg8 or CImg32, never compressed
    bool grey = false;          ///< a CImg32 of equal components, or a CImg8 whose pixel values are greys
    double dpiX = 0, dpiY = 0;  ///< 0 when not known

    Size size() const { return {image->getWidth(), image->getHeight()}; }
    Pixels pixels() const;
    CImg1& bilevel() const { return static_cast<CImg1&>(*image); }
    CImg8& palette() const { return static_cast<CImg8&>(*image); }
    CImg32& rgb() const { return static_cast<CImg32&>(*image); }

    /// One row: bilevel packed as in CImg1 with clear padding; grey and palette one byte, RGB three bytes a pixel.
    void copyRow(std::uint32_t y, unsigned char* row) const;
    std::uint64_t rowBytes() const;
    /// Exchanges black and white; CImg1 and CImg32 only.
    void invert();
};

/// Throws Failure when `image` is null: memory ran out, or the last error says why.
Picture pictureOf(IImg* image, bool grey = false);
/// Bytes of so many uncompressed pixels, each row in whole ones.
std::uint64_t expandedBytes(Size size, Pixels pixels);
/// In black and white, by error diffusion. Throws Failure.
Picture dithered(const Picture& picture);
/// A map in which every value is its own grey.
std::unique_ptr<ColorMap> greyRamp();

/// Throws Failure when a picture has more pixels than allowed; `what` names it.
void requirePixels(const std::string& what, Size size, std::uint64_t most);
