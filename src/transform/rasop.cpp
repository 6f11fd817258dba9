// Raster operations: a second image combined into an image, or pixels set to a colour.

#include "foundation/refuse.h"
#include "kernels/paste_rows.h"
#include "model/image_kinds.h"

#include <algorithm>
#include <cstring>

namespace tilepress {
namespace {

bool isCode(RasOpT op) { return op >= RasOpAnd && op <= RasOpFill; }

bool isOfKind(const IImg& other, ImageType kind) {
    if (const_cast<IImg&>(other).getType() == kind) return true;  // not const, though it changes nothing
    return refuse(ImgErrBadArgument);
}

/// A copying form: the same in place on a copy, which may be null.
template <class Image, class... Request>
IImg* onCopy(Image* copy, Request&&... request) {
    if (!copy) return refuse(ImgErrCreate);
    copy->doRasOpInPlace(request...);
    return copy;
}

/// Whether both images have their pixels and `other` fits into `dest` at the offsets.
template <class Image>
bool fits(const Image* dest, const RasOpXfmAttr& attr, const Image& other) {
    if (!dest || !hasPixels(*dest) || !hasPixels(other)) return false;
    const ImgULong width = dest->getWidth(), height = dest->getHeight();
    return other.getWidth() <= width && attr.columnOffset <= width - other.getWidth() && other.getHeight() <= height &&
           attr.rowOffset <= height - other.getHeight();
}

template <class Rule>
ImgErr combineBits(CImg1* dest, const RasOpXfmAttr& attr, const CImg1& other) {
    if (!fits(dest, attr, other)) return imgRaise(ImgErrBadArgument);
    const PackedBlock block{dest->peekData(), dest->getTotalBytes(), dest->getBytesPerLine()};
    pasteRows<Rule>(block, attr.columnOffset, attr.rowOffset, other.peekData(), other.getBytesPerLine(),
                    other.getHeight());
    return ImgErrNone;
}

template <class Pixel>
void copyVisible(Pixel* dst, const Pixel* src, std::size_t count, Pixel transparent) {
    for (std::size_t i = 0; i < count; ++i) dst[i] = src[i] == transparent ? dst[i] : src[i];
}

template <class Pixel, class Image>
ImgErr combinePixels(Image* dest, const RasOpXfmAttr& attr, const Image& other) {
    if (!fits(dest, attr, other)) return imgRaise(ImgErrBadArgument);
    const std::size_t width = other.getWidth();
    const Pixel transparent = static_cast<Pixel>(attr.transparentValue);
    for (std::size_t y = 0; y < other.getHeight(); ++y) {
        Pixel* dst = dest->peekDataArray()[y + attr.rowOffset] + attr.columnOffset;
        const Pixel* src = other.peekDataArray()[y];
        if (attr.transparent) copyVisible(dst, src, width, transparent);
        else std::memmove(dst, src, width * sizeof(Pixel));
    }
    return ImgErrNone;
}

void fill(unsigned char* pixels, std::size_t count, unsigned char value) { std::memset(pixels, value, count); }

void fill(ImgULong* pixels, std::size_t count, ImgULong value) {
    const Words4 four = {value, value, value, value};
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) storeLanes(pixels + i, four);
    for (; i < count; ++i) pixels[i] = value;
}

/// Whole blocks, row padding included; with `onlyOthers` the pixels alone, and of them those that are not `keep`.
template <class Pixel, class Image>
ImgErr fillPixels(Image* dest, bool onlyOthers, Pixel keep, Pixel value) {
    if (!dest || !hasPixels(*dest)) return imgRaise(ImgErrBadArgument);
    if (!onlyOthers) {
        fill(dest->peekData(), dest->getTotalBytes() / sizeof(Pixel), value);
        return imgRaise(ImgErrNone);
    }
    for (std::size_t y = 0; y < dest->getHeight(); ++y) {
        Pixel* row = dest->peekDataArray()[y];
        std::replace_if(
            row, row + dest->getWidth(), [keep](Pixel pixel) { return pixel != keep; }, value);
    }
    return imgRaise(ImgErrNone);
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

// --- bilevel ----------------------------------------------------------------------

ImgErr CImg1::rasOpAnd(CImg1* dest, RasOpXfmAttr& attr, const CImg1& other) {
    return combineBits<PasteAnd>(dest, attr, other);
}

ImgErr CImg1::rasOpOr(CImg1* dest, RasOpXfmAttr& attr, const CImg1& other) {
    return combineBits<PasteOr>(dest, attr, other);
}

ImgErr CImg1::rasOpSet(CImg1* dest, RasOpXfmAttr& attr, const CImg1& other) {
    return attr.transparent ? rasOpOr(dest, attr, other) : combineBits<PasteSet>(dest, attr, other);
}

// Kept: bilevel images have a worker that fills, but their colour operations do nothing.
ImgErr CImg1::rasOpSet(CImg1* dest, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    if (!dest || !hasPixels(*dest)) return ImgErrBadArgument;
    if (!onlyOthers || (keepValue != 0) == (value != 0))
        std::memset(dest->peekData(), value ? 0xFF : 0, dest->getTotalBytes());
    return ImgErrNone;
}

IImg* CImg1::doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) {
    if (!isOfKind(other, ImageTypeBilevel)) return nullptr;
    CImg1* copy = create(*this, backgroundInterpretation, foregroundInterpretation, alignment);
    if (!copy) return refuse(ImgErrCreate);
    const CImg1& second = static_cast<const CImg1&>(other);
    ImgErr result = ImgErrNone;
    if (op == RasOpAnd) result = rasOpAnd(copy, attr, second);
    else if (isCode(op)) result = rasOpSet(copy, attr, second);
    imgRaise(result);
    return copy;
}

void CImg1::doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) {
    if (!isOfKind(other, ImageTypeBilevel)) return;
    // Kept: in place the code of AND copies, and code 3 does nothing.
    const bool acts = isCode(op) && op != RasOpCopy3;
    imgRaise(acts ? rasOpSet(this, attr, static_cast<const CImg1&>(other)) : ImgErrNone);
}

// --- palette ----------------------------------------------------------------------

ImgErr CImg8::rasOpSet(CImg8* dest, RasOpXfmAttr& attr, const CImg8& other) {
    return combinePixels<unsigned char>(dest, attr, other);
}

ImgErr CImg8::rasOpSet(CImg8* dest, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    return fillPixels(dest, onlyOthers, static_cast<unsigned char>(keepValue), static_cast<unsigned char>(value));
}

// Kept: no palette image can be made from a palette image, so both copying forms always fail.
IImg* CImg8::doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) {
    if (!isOfKind(other, ImageTypePalette)) return nullptr;
    return onCopy(create(*this, colorMap, alignment), op, attr, other);
}

IImg* CImg8::doRasOp(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    return onCopy(create(*this, colorMap, alignment), op, onlyOthers, keepValue, value);
}

void CImg8::doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) {
    if (!isOfKind(other, ImageTypePalette)) return;
    imgRaise(isCode(op) ? rasOpSet(this, attr, static_cast<const CImg8&>(other)) : ImgErrNone);
}

void CImg8::doRasOpInPlace(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    imgRaise(isCode(op) ? rasOpSet(this, onlyOthers, keepValue, value) : ImgErrNone);
}

// --- RGB --------------------------------------------------------------------------

ImgErr CImg32::rasOpSet(CImg32* dest, RasOpXfmAttr& attr, const CImg32& other) {
    return combinePixels<ImgULong>(dest, attr, other);
}

ImgErr CImg32::rasOpSet(CImg32* dest, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    return fillPixels(dest, onlyOthers, keepValue, value);
}

IImg* CImg32::doRasOp(RasOpT op, RasOpXfmAttr& attr, const IImg& other) {
    if (!isOfKind(other, ImageTypeRGB)) return nullptr;
    return onCopy(create(*this, RGBOrderRGB), op, attr, other);
}

IImg* CImg32::doRasOp(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    return onCopy(create(*this, RGBOrderRGB), op, onlyOthers, keepValue, value);
}

void CImg32::doRasOpInPlace(RasOpT op, RasOpXfmAttr& attr, const IImg& other) {
    if (!isOfKind(other, ImageTypeRGB)) return;
    imgRaise(isCode(op) ? rasOpSet(this, attr, static_cast<const CImg32&>(other)) : ImgErrNone);
}

void CImg32::doRasOpInPlace(RasOpT op, bool onlyOthers, ImgULong keepValue, ImgULong value) {
    imgRaise(isCode(op) ? rasOpSet(this, onlyOthers, keepValue, value) : ImgErrNone);
}
