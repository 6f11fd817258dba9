// Palette and RGB images enlarged and reduced.

#include "kernels/scale_pixels.h"
#include "model/image_areas.h"
#include "transform/scale_requests.h"

namespace tilepress {
namespace {

template <class Image>
Image* enlarged(const Image& source, ImgULong width, ImgULong height, const ImgRect& part) {
    if (!enlarges(source, part, width, height)) return nullptr;
    return finished(createLike(source, width, height),
                    [&](Image& result) { return enlargePixels(areaOf(result), areaOf(source, part)); });
}

/// Fills the first `width` by `height` pixels of `result`, which may be null; `background` is none or one colour.
template <class Image, class... Background>
Image* reduced(Image* result, const Image& source, ImgULong width, ImgULong height, const ImgRect& part,
               Background... background) {
    return finished(result, [&](Image& image) {
        auto to = areaOf(image);
        to.width = width;
        to.height = height;
        return reducePixels(to, areaOf(source, part), background...);
    });
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

CImg8* CImg8::Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    return enlarged(*this, dstWidth, dstHeight, src);
}
CImg32* CImg32::Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    return enlarged(*this, dstWidth, dstHeight, src);
}

CImg8* CImg8::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    return reduced(createLike(*this, dstWidth, dstHeight), *this, dstWidth, dstHeight, src);
}
CImg32* CImg32::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    return reduced(createLike(*this, dstWidth, dstHeight), *this, dstWidth, dstHeight, src);
}

CImg8* CImg8::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    const ImgULong background = calculateBackground();
    return reduced(createLike(*this, dstWidth, dstHeight), *this, dstWidth, dstHeight, src, background);
}
CImg32* CImg32::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    const ImgULong background = calculateBackground();
    // Kept: a result of the source's size, of which only the top left part is filled; the rest is 0.
    CImg32* const result = CImg32::create(src.getWidth(), src.getHeight(), rgbOrder);
    return reduced(result, *this, dstWidth, dstHeight, src, background);
}
