// Palette and RGB images enlarged and reduced.

#include "kernels/scale_pixels.h"
#include "model/image_kinds.h"

namespace tilepress {
namespace {

template <class Image>
Image* enlarged(const Image& source, ImgULong width, ImgULong height, const ImgRect& part) {
    if (!canEnlarge(source, part, width, height)) return nullptr;
    return finished(createLike(source, width, height),
                    [&](Image& result) { return enlargePixels(areaOf(result), areaOf(source, part)); });
}

template <class Image>
Image* reduced(const Image& source, ImgULong width, ImgULong height, const ImgRect& part) {
    if (!canReduce(source, part, width, height)) return nullptr;
    return finished(createLike(source, width, height),
                    [&](Image& result) { return reducePixels(areaOf(result), areaOf(source, part)); });
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
    return reduced(*this, dstWidth, dstHeight, src);
}
CImg32* CImg32::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    return reduced(*this, dstWidth, dstHeight, src);
}

CImg8* CImg8::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!canReduce(*this, src, dstWidth, dstHeight)) return nullptr;
    const ImgULong background = calculateBackground();
    return finished(createLike(*this, dstWidth, dstHeight),
                    [&](CImg8& result) { return reducePixels(areaOf(result), areaOf(*this, src), background); });
}
CImg32* CImg32::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!canReduce(*this, src, dstWidth, dstHeight)) return nullptr;
    const ImgULong background = calculateBackground();
    // Kept: a result of the source's size, of which only the top left part is filled; the rest is 0.
    return finished(create(src.getWidth(), src.getHeight(), rgbOrder), [&](CImg32& result) {
        return reducePixels(areaOf(result).part(0, 0, dstWidth, dstHeight), areaOf(*this, src), background);
    });
}
