// Bilevel images enlarged, and reduced to bilevel ones.

#include "kernels/scale_bits.h"
#include "model/image_kinds.h"

namespace tilepress {
namespace {

/// Kept: the source's alignment goes into the background's display colour, and the result has neither the source's
/// alignment nor its colours.
CImg1* createScaled(const CImg1& source, ImgULong width, ImgULong height) {
    return CImg1::create(width, height, static_cast<ImgULong>(alignmentOf(source)), 0xFF000000, ImgAlignNone);
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

CImg1* CImg1::Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!canEnlarge(*this, src, dstWidth, dstHeight)) return nullptr;
    const bool whiteIsInk = calculateBackground() == 1;
    return finished(createScaled(*this, dstWidth, dstHeight), [&](CImg1& result) {
        result.setBackgroundColor(0);
        return enlargeBits(areaOf(result), InkSource(areaOf(*this, src), whiteIsInk));
    });
}

CImg1* CImg1::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!canReduce(*this, src, dstWidth, dstHeight)) return nullptr;
    const bool whiteIsInk = calculateBackground() == 1;
    return finished(createScaled(*this, dstWidth, dstHeight), [&](CImg1& result) {
        result.setBackgroundColor(0);
        return reduceInk(areaOf(result), InkSource(areaOf(*this, src), whiteIsInk));
    });
}

CImg1* CImg1::QuickReduce_bkg(ImgULong dstWidth, ImgULong dstHeight, ImgRect& src, ImgULong background) {
    if (!canReduce(*this, src, dstWidth, dstHeight)) return nullptr;
    // Kept: with another background bits would only be cleared, and all of them are clear from the start.
    return finished(createScaled(*this, dstWidth, dstHeight), [&](CImg1& result) {
        return background != 0 || reduceInk(areaOf(result), InkSource(areaOf(*this, src), false));
    });
}

/// Every cell's top left pixel as it is; no request leads here.
CImg1* CImg1::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!canReduce(*this, src, dstWidth, dstHeight)) return nullptr;
    return finished(createScaled(*this, dstWidth, dstHeight),
                    [&](CImg1& result) { return pickFirsts(areaOf(result), areaOf(*this, src)); });
}
