// What a scaling request is, and which worker answers it.

#include "model/image_kinds.h"

#include <cmath>

using namespace tilepress;

ImageScaleType CImg::ScaleHow(ImgULong srcWidth, ImgULong srcHeight, ImgULong dstWidth, ImgULong dstHeight) {
    if (dstWidth == srcWidth && dstHeight == srcHeight) return ImageScaleSame;
    if (dstWidth >= srcWidth && dstHeight >= srcHeight) return ImageScaleEnlarge;
    if (dstWidth <= srcWidth && dstHeight <= srcHeight) return ImageScaleReduce;
    return dstWidth < srcWidth ? ImageScaleReduceXEnlargeY : ImageScaleEnlargeXReduceY;
}

IImg* CImg::scale(double factor, ImgScaleAttr& attr) {
    if (!(factor >= 0.0)) return nullptr;
    const double width = std::ceil(getWidth() * factor), height = std::ceil(getHeight() * factor);
    if (!(width <= 4294967295.0 && height <= 4294967295.0)) return nullptr;
    return scale(getRect(), static_cast<ImgULong>(width), static_cast<ImgULong>(height), attr);
}

IImg* CImg::scale(const ImgRect& source, const ImgRect& destination, ImgScaleAttr& attr) {
    return scale(source, destination.getWidth(), destination.getHeight(), attr);
}

namespace tilepress {
namespace {

/// The request's result from the kind's own same(), enlarge(width, height) and reduce().
template <class Same, class Enlarge, class Reduce>
IImg* answer(const ImgRect& src, ImgULong width, ImgULong height, ImgScaleAttr& attr, Same same, Enlarge enlarge,
             Reduce reduce) {
    if (width == 0 || height == 0) return nullptr;
    if (width == src.getWidth() && height == src.getHeight()) return same();
    return resized(src, width, height, attr, enlarge, reduce);
}

}  // namespace
}  // namespace tilepress

IImg* CImg1::scale(const ImgRect& src, ImgULong width, ImgULong height, ImgScaleAttr& attr) {
    return answer(
        src, width, height, attr,
        [&]() -> IImg* {
            CImg1* const copy = static_cast<CImg1*>(getSubImage(src));
            if (!copy) return nullptr;
            if (calculateBackground() == 1) copy->invert();
            copy->setBackgroundColor(0);
            return copy;
        },
        [&](ImgULong w, ImgULong h) { return Enlarge(w, h, src); },
        [&]() -> IImg* {
            if (attr.depth == 32) return Reduce_greyscale(width, height, src);
            return Reduce_bkg(width, height, src);
        });
}

IImg* CImg8::scale(const ImgRect& src, ImgULong width, ImgULong height, ImgScaleAttr& attr) {
    return answer(
        src, width, height, attr, [&] { return getSubImage(src); },
        [&](ImgULong w, ImgULong h) { return Enlarge(w, h, src); },
        [&]() -> IImg* { return Reduce(width, height, src); });
}

IImg* CImg32::scale(const ImgRect& src, ImgULong width, ImgULong height, ImgScaleAttr& attr) {
    return answer(
        src, width, height, attr, [&] { return getSubImage(src); },
        [&](ImgULong w, ImgULong h) { return Enlarge(w, h, src); },
        [&]() -> IImg* { return Reduce(width, height, src); });
}
