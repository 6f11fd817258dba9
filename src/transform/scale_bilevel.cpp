// Bilevel images enlarged, and reduced to bilevel ones.

#include "kernels/scale_bits.h"
#include "model/image_areas.h"
#include "tilepress/CImg1.h"
#include "transform/scale_requests.h"

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
    if (!enlarges(*this, src, dstWidth, dstHeight)) return nullptr;
    const bool whiteIsInk = calculateBackground() == 1;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    if (!result) return nullptr;
    result->setBackgroundColor(0);
    return finished(result, enlargeBits(areaOf(*result), areaOf(*this, src), whiteIsInk));
}

CImg1* CImg1::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    const bool whiteIsInk = calculateBackground() == 1;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    if (!result) return nullptr;
    result->setBackgroundColor(0);
    return finished(result, reduceInk(areaOf(*result), areaOf(*this, src), whiteIsInk));
}

CImg1* CImg1::QuickReduce_bkg(ImgULong dstWidth, ImgULong dstHeight, ImgRect& src, ImgULong background) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    // Kept: with another background bits would only be cleared, and all of them are clear from the start.
    if (!result || background != 0) return result;
    return finished(result, reduceInk(areaOf(*result), areaOf(*this, src), false));
}

/// Every cell's top left pixel as it is; no request leads here.
CImg1* CImg1::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    CImg1* const result = createScaled(*this, dstWidth, dstHeight);
    return result ? finished(result, pickFirsts(areaOf(*result), areaOf(*this, src))) : nullptr;
}
