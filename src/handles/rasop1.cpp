// Pixels of one handle filled or inverted.

#include "handles/operations.h"

#include <algorithm>
#include <cstring>

using namespace tilepress;
using namespace tilepress::handles;

static bool keepsAll(const ImgRasOp1Desc& desc) { return desc.keepColorA && desc.keepColorB; }

/// The one colour that stays, or null.
static const std::uint32_t* keptColor(const ImgRasOp1Desc& desc) {
    if (desc.keepColorA) return &desc.colorA;
    return desc.keepColorB ? &desc.colorB : nullptr;
}

ImgHandle* Img1RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, std::uint32_t value) {
    if (!isImage<Bilevel>(image) || !desc || desc->op > ImgRasFill) return nullptr;
    if (desc->op == ImgRasInvert) {
        // Kept: in place, whatever was asked for.
        complement(Bilevel::block(*image), headerOf<Bilevel>(*image).dataSize);
        return image;
    }
    ImgHandle* const target = targetOf<Bilevel>(image, *desc);
    const bool set = value != 0;
    if (!target || (desc->op == ImgRasClear && set) || (desc->op == ImgRasSet && !set) || keepsAll(*desc))
        return target;
    // Of two colours, keeping the other one leaves nothing to change.
    const std::uint32_t* const kept = keptColor(*desc);
    if (!kept || (*kept != 0) == set)
        std::memset(Bilevel::block(*target), set ? 0xFF : 0, blockBytes<Bilevel>(*target));
    return target;
}

ImgHandle* Img8RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, std::uint32_t value) {
    if (!isImage<Palette8>(image) || !desc || desc->op > ImgRasFill) return nullptr;
    if (desc->op == ImgRasInvert) return image;  // Kept: never a copy
    ImgHandle* const target = targetOf<Palette8>(image, *desc);
    if (!target || keepsAll(*desc)) return target;
    unsigned char* const pixels = Palette8::block(*target);
    const std::size_t count = blockBytes<Palette8>(*target);
    const auto colour = static_cast<unsigned char>(value);
    if (const std::uint32_t* const kept = keptColor(*desc))
        std::replace_if(
            pixels, pixels + count, [=](unsigned char p) { return p != (*kept & 0xFF); }, colour);
    else std::memset(pixels, colour, count);
    return target;
}

// --- RGB ----------------------------------------------------------------------------

/// A colour as the bytes of a pixel.
template <class Pixel>
static Pixel pixelOf(std::uint32_t color) {
    Pixel pixel{};
    std::uint8_t bytes[sizeof(Pixel)] = {};
    std::memcpy(&pixel, Img24BitColorToPixRGB(bytes, color), sizeof pixel);
    return pixel;
}

static bool isColour(const Rgb24& pixel, const Rgb24& colour) { return pixel == colour; }
/// The fourth byte does not count.
static bool isColour(ImgULong pixel, ImgULong colour) { return ((pixel ^ colour) & pixelOf<ImgULong>(0xFFFFFF)) == 0; }

template <class Kind>
static ImgHandle* fillColours(ImgHandle* image, const ImgRasOp1Desc& desc, std::uint32_t value) {
    using Pixel = typename Kind::Pixel;
    if (desc.op != ImgRasFill || !hasRows<Kind>(image)) return nullptr;
    ImgHandle* const target = targetOf<Kind>(image, desc);
    if (!target || keepsAll(desc)) return target;
    const auto area = areaOf<Kind>(*target);
    const Pixel colour = pixelOf<Pixel>(value);
    const std::uint32_t* const kept = keptColor(desc);
    const Pixel keep = pixelOf<Pixel>(kept ? *kept : 0);
    for (std::size_t y = 0; y < area.height; ++y) {
        Pixel* const row = area[y];
        if (!kept) std::fill_n(row, area.width, colour);
        else
            std::replace_if(
                row, row + area.width, [&](const Pixel& p) { return !isColour(p, keep); }, colour);
    }
    return target;
}

ImgHandle* Img24RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, std::uint32_t value) {
    if (!hasRows<Colour24>(image) || !desc) return nullptr;
    if (desc->op != ImgRasInvert) return fillColours<Colour24>(image, *desc, value);
    const auto area = areaOf<Colour24>(*image);
    for (std::size_t y = 0; y < area.height; ++y) complement(area[y]->bytes, std::size_t{3} * area.width);
    return image;
}

ImgHandle* Img32RasOp1(ImgHandle* image, const ImgRasOp1Desc* desc, std::uint32_t value) {
    if (!isImage<Colour32>(image) || !desc) return nullptr;
    return desc->op == ImgRasInvert ? image : fillColours<Colour32>(image, *desc, value);
}
