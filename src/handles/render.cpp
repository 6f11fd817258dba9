// Handles mirrored, turned, cut and scaled: by the kernels that image classes use.

#include "handles/operations.h"
#include "kernels/mirror_turn.h"
#include "kernels/scale_bits.h"
#include "kernels/scale_pixels.h"
#include "kernels/shear.h"

#include <cmath>
#include <cstring>

namespace tilepress::handles {
namespace {

template <class Kind>
ImgHandle* placed(Places places, const ImgHandle& image) {
    const std::uint32_t width = widthOf(image), height = heightOf(image);
    ImgHandle* const result = createLike<Kind>(image, places.turned ? height : width, places.turned ? width : height,
                                               alignmentOf<Kind>(image));
    if (result) place(places, areaOf<Kind>(*result), areaOf<Kind>(image));
    return result;
}

template <class Kind>
Temporary blankLike(const ImgHandle& image) {
    return Temporary(createLike<Kind>(image, widthOf(image), heightOf(image), alignmentOf<Kind>(image)));
}

template <class Kind>
ImgHandle* rotatedByShears(const ImgHandle& image, double degrees) {
    const Shears shears(degrees, widthOf(image), heightOf(image));
    if (!shears) return nullptr;
    const Temporary turned(shears.halfTurn ? placed<Kind>(kRotate180, image) : nullptr);
    if (shears.halfTurn && !turned) return nullptr;
    Temporary first = blankLike<Kind>(image), second = blankLike<Kind>(image);
    if (!first || !second) return nullptr;
    moveRows(areaOf<Kind>(*first), areaOf<Kind>(turned ? *turned : image), shears.alongRows.get());
    if (!moveColumns(areaOf<Kind>(*second), areaOf<Kind>(*first), shears.alongColumns.get())) return nullptr;
    first = blankLike<Kind>(image);
    if (first) moveRows(areaOf<Kind>(*first), areaOf<Kind>(*second), shears.alongRows.get());
    return first.release();
}

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
ImgHandle* scaled(const ImgHandle& image, const RenderSize& size) {
    const std::uint32_t width = widthOf(image), height = heightOf(image);
    const bool wider = size.width > width, taller = size.height > height;
    if ((wider && size.height < height) || (taller && size.width < width)) {
        // One dimension grows first; the other is a pure reduction of what comes of that.
        const Temporary grown(createLike<Kind>(image, std::max(width, size.width), std::max(height, size.height),
                                               alignmentOf<Kind>(image)));
        if (!grown || !enlarge(areaOf<Kind>(*grown), areaOf<Kind>(image))) return nullptr;
        return scaled<Kind>(*grown, size);
    }
    Temporary result(createLike<Kind>(image, size.width, size.height, size.alignBits));
    if (!hasRows<Kind>(result.get())) return nullptr;
    const auto to = areaOf<Kind>(*result), from = areaOf<Kind>(image);
    return (wider || taller ? enlarge(to, from) : reduce(to, from)) ? result.release() : nullptr;
}

// --- regions --------------------------------------------------------------------------

void cut(const BitArea& to, const BitArea& from) {
    const std::size_t bytes = packedBytes(to.width), there = packedBytes(std::uint64_t{from.left} + from.width);
    for (std::size_t y = 0; y < to.height; ++y) {
        copyBits(to.rows[y], bytes, from.rows[y], there, from.left);
        clearFrom(to.rows[y], bytes, to.width);
    }
}
template <class Pixel>
void cut(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from) {
    for (std::size_t y = 0; y < to.height; ++y) std::memcpy(to[y], from[y], to.width * sizeof(Pixel));
}

BitArea part(BitArea area, std::uint32_t left, std::uint32_t top) {
    area.rows.first = area.rows[top];
    area.left = left;
    area.width -= left;
    area.height -= top;
    return area;
}
template <class Pixel>
PixelArea<Pixel> part(PixelArea<Pixel> area, std::uint32_t left, std::uint32_t top) {
    area.table += top;
    area.left = left;
    area.width -= left;
    area.height -= top;
    return area;
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
    if (degrees == 90) return placed<Kind>(kRotate90, *image);
    if (degrees == 180) return placed<Kind>(kRotate180, *image);
    if (degrees == 270) return placed<Kind>(kRotateMinus90, *image);
    return rotatedByShears<Kind>(*image, degrees);
}

template <class Kind>
ImgHandle* mirror(ImgHandle* image, int direction) {
    if (direction != 1 && direction != 2) return image;  // Kept: not a copy; callers compare before they free
    if (!hasRows<Kind>(image)) return nullptr;
    return placed<Kind>(direction == 1 ? kMirrorX : kMirrorY, *image);
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
    ImgHandle* const result = createLike<Kind>(*image, static_cast<std::uint32_t>(width),
                                               static_cast<std::uint32_t>(height), alignmentOf<Kind>(*image));
    if (result)
        cut(areaOf<Kind>(*result),
            part(areaOf<Kind>(*image), static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top)));
    return result;
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
    return scaled<Kind>(*now, size);
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
