// Handles mirrored, turned, cut and scaled: by the kernels that image classes use.

#include "handles/operations.h"
#include "kernels/recipes.h"
#include "kernels/scale_bits.h"
#include "kernels/scale_pixels.h"

#include <cmath>
#include <cstring>

namespace tilepress::handles {
namespace {

/// How pictures of a kind are made, for kernels/recipes.h.
template <class Kind>
struct Making {
    static Temporary like(const ImgHandle& image, std::uint32_t width, std::uint32_t height) {
        return createLike(image, width, height, alignmentOf<Kind>(image));
    }
    static Temporary blank(const ImgHandle& image) { return like(image, widthOf(image), heightOf(image)); }
    static Temporary turned(const ImgHandle& image) { return placed(Making(), kRotate180, image); }
    static auto area(const ImgHandle& image) { return areaOf<Kind>(image); }
};

// --- scaling --------------------------------------------------------------------------

bool enlarge(const BitArea& to, const BitArea& from) { return enlargeBits(to, InkSource(from, false)); }
bool reduce(const BitArea& to, const BitArea& from) { return reduceInk(to, InkSource(from, false)); }
template <class Pixel>
bool enlarge(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    return enlargePixels(to, from);
}
template <class Pixel>
bool reduce(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    return reducePixels(to, from);
}

template <class Kind>
Temporary scaled(const ImgHandle& image, const RenderSize& size) {
    const auto made = [&](std::uint32_t width, std::uint32_t height, bool grows) {
        const bool last = width == size.width && height == size.height;
        Temporary result = createLike(image, width, height, last ? size.alignBits : alignmentOf<Kind>(image));
        if (!hasRows<Kind>(result.get())) return Temporary();
        const auto to = areaOf<Kind>(*result), from = areaOf<Kind>(image);
        if (!(grows ? enlarge(to, from) : reduce(to, from))) result.reset();
        return result;
    };
    return resized(
        widthOf(image), heightOf(image), size.width, size.height,
        [&](std::uint32_t width, std::uint32_t height) { return made(width, height, true); },
        [&] { return made(size.width, size.height, false); },
        [&](std::uint32_t width, std::uint32_t height) {
            const Temporary grown = made(width, height, true);
            return grown ? scaled<Kind>(*grown, size) : Temporary();
        });
}

// --- regions --------------------------------------------------------------------------

/// Pad bits stay clear.
void cut(const BitArea& to, const BitArea& from) {
    const auto stride = static_cast<std::size_t>(from.rows.stride);
    copyRows(to, from, (from.height - 1) * std::uint64_t{stride} + packedBytes(std::uint64_t{from.left} + from.width));
    for (std::size_t y = 0; y < to.height; ++y)
        clearFrom(to.rows[y], static_cast<std::size_t>(to.rows.stride), to.width);
}
template <class Pixel>
void cut(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    copyRows<Pixel>(to, from, to.width, from[from.height - 1] + from.width);
}

}  // namespace

RenderSize::RenderSize(std::uint32_t w, std::uint32_t h, std::uint32_t align, const ImgQuads& quads)
    : width(w), height(h), alignBits(align) {
    const auto extent = [](std::int64_t size) { return size <= INT32_MAX ? static_cast<std::uint32_t>(size) : 0; };
    if (width == 0) width = extent(quadWidth(quads.dstQuad));
    if (height == 0) height = extent(quadHeight(quads.dstQuad));
}

template <class Kind>
ImgHandle* rotate(ImgHandle* image, double degrees) {
    if (!hasRows<Kind>(image) || !std::isfinite(degrees)) return nullptr;
    if (degrees > 360 || degrees < -360) degrees -= 360 * std::trunc(degrees / 360);
    if (degrees == 0) return clone<Kind>(image);
    if (const Places* const places = rightAngle(degrees)) return placed(Making<Kind>(), *places, *image).release();
    return turnedByShears(Making<Kind>(), *image, degrees).release();
}

template <class Kind>
ImgHandle* mirror(ImgHandle* image, int direction) {
    if (direction != 1 && direction != 2) return image;  // Kept: not a copy; callers compare before they free
    if (!hasRows<Kind>(image)) return nullptr;
    return placed(Making<Kind>(), direction == 1 ? kMirrorX : kMirrorY, *image).release();
}

template <class Kind>
ImgHandle* subImage(ImgHandle* image, const std::int32_t* corners) {
    if (!hasRows<Kind>(image) || !corners) return nullptr;
    ImgQuad quad;
    std::memcpy(&quad, corners, sizeof quad);
    const std::int64_t left = quad.x0, top = quad.y1;
    const std::int64_t width = quad.x2 - left + 1, height = quad.y0 - top + 1;
    if (width < 1 || height < 1 || left < 0 || top < 0 || left + width > widthOf(*image) ||
        top + height > heightOf(*image))
        return nullptr;
    const auto part = areaOf<Kind>(*image).part(static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
                                                static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    Temporary result = Making<Kind>::like(*image, part.width, part.height);
    if (result) cut(areaOf<Kind>(*result), part);
    return result.release();
}

template <class Kind>
ImgHandle* rendered(ImgHandle& image, std::int32_t mirrorFlag, std::int32_t degrees, const RenderSize& size) {
    if (!size.isValid()) return nullptr;
    ImgHandle* now = &image;
    Temporary mirrored, turned;
    if (mirrorFlag == 1 || mirrorFlag == 2) {
        mirrored.reset(mirror<Kind>(now, mirrorFlag));
        if (!(now = mirrored.get())) return nullptr;
    }
    if (degrees != 0) {
        turned.reset(rotate<Kind>(now, degrees));
        if (!(now = turned.get())) return nullptr;
        mirrored.reset();
    }
    return scaled<Kind>(*now, size).release();
}

template <class Kind>
ImgHandle* render(ImgHandle* image, std::uint32_t width, std::uint32_t height, const void* header, std::uint32_t,
                  std::uint32_t, std::uint32_t alignBits) {
    if (!hasRows<Kind>(image)) return nullptr;
    const auto& how = *static_cast<const typename Kind::Header*>(header ? header : image->header);
    return rendered<Kind>(*image, how.mirror, how.rotation, RenderSize(width, height, alignBits, how.quads));
}

#define TILEPRESS_KIND(Kind)                                                                             \
  template ImgHandle* rotate<Kind>(ImgHandle*, double);                                                  \
  template ImgHandle* mirror<Kind>(ImgHandle*, int);                                                     \
  template ImgHandle* subImage<Kind>(ImgHandle*, const std::int32_t*);                                   \
  template ImgHandle* rendered<Kind>(ImgHandle&, std::int32_t, std::int32_t, const RenderSize&);         \
  template ImgHandle* render<Kind>(ImgHandle*, std::uint32_t, std::uint32_t, const void*, std::uint32_t, \
                                   std::uint32_t, std::uint32_t)
TILEPRESS_KIND(Bilevel);
TILEPRESS_KIND(Palette8);
TILEPRESS_KIND(Colour24);
TILEPRESS_KIND(Colour32);
#undef TILEPRESS_KIND

}  // namespace tilepress::handles
