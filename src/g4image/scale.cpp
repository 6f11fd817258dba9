#include "g4image/painters.h"

#include "foundation/heap.h"
#include "kernels/mark_tables.h"
#include "model/image_kinds.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/ccitt.h"

#include <cstring>

using namespace tilepress;
using namespace tilepress::g4;

IImg* CImg1G4::scale(const ImgRect& r, ImgULong newWidth, ImgULong newHeight, ImgScaleAttr& attr) {
    if (CCITT_EnableG4Decode() != ImgErrNone) return nullptr;
    const ImageScaleType how = ScaleHow(r.getWidth(), r.getHeight(), newWidth, newHeight);
    IImg* result = nullptr;
    CImg1* intermediate = nullptr;
    if (how != ImageScaleSame && !inside(*this, r)) {
        imgRaise(ImgErrBadArgument);
    } else if (!tileRows) {
        imgRaise(ImgErrDecode);
    } else {
        switch (how) {
        case ImageScaleSame:
            // Kept: the whole image, whatever the rectangle.
            result = CImg1::create(*this, 0xFFFFFF, 0xFF000000, ImgAlignNone);
            break;
        case ImageScaleEnlarge: result = Enlarge(newWidth, newHeight, r); break;
        case ImageScaleReduce:
            if (attr.depth == 32) result = Reduce_greyscale(newWidth, newHeight, r);
            else result = Reduce_bkg(newWidth, newHeight, r);
            break;
        case ImageScaleReduceXEnlargeY: intermediate = Enlarge(r.getWidth(), newHeight, r); break;
        case ImageScaleEnlargeXReduceY: intermediate = Enlarge(newWidth, r.getHeight(), r); break;
        }
    }
    if (intermediate) result = intermediate->scale(intermediate->getRect(), newWidth, newHeight, attr);
    delete intermediate;
    CCITT_DisableG4Decode();
    return result;
}

/// A clear image for a scaled copy, with this image's colours; null with the code raised.
CImg1* CImg1G4::emptyResult(ImgULong newWidth, ImgULong newHeight) {
    CImg1* result =
        CImg1::create(newWidth, newHeight, backgroundInterpretation, foregroundInterpretation, ImgAlignNone);
    if (!result) imgRaise(ImgErrCreate);
    return result;
}

/// Paints a source row into the first of its destination rows.
ImgErr CImg1G4::decode_enlarge_scanline(unsigned char* row, G4ScaleInfo* info) {
    const ImgULong* const columns = info->columns;
    return paintRow(row, *info,
                    [columns](std::size_t from, std::size_t to, auto paint) { paint(columns[from], columns[to]); });
}

CImg1* CImg1G4::Enlarge(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    const ImgULong width = r.getWidth(), height = r.getHeight();
    if (newWidth < width || newHeight < height || width == 0 || height == 0) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    CImg1* result = emptyResult(newWidth, newHeight);
    if (!result) return nullptr;
    Heap<ImgULong> columns;
    ToggledRow painted;
    if (!painted.prepare(newWidth) || !markTable(columns, newWidth, width)) {
        delete result;
        imgRaise(ImgErrCreate);
        return nullptr;
    }
    if (!PrepForDecode(r)) {
        walkFailed();
        return result;
    }
    G4ScaleInfo info(r);
    info.paintWhite = backgroundKnown && backgroundColor == 1;
    info.columns = columns.get();
    info.painted = &painted;
    info.rowBytes = packedBytes(newWidth);

    const std::size_t bytesPerRow = result->getBytesPerLine();
    unsigned char* const pixels = result->peekData();
    ImgULong dst = 0;
    for (ImgULong y = 0; y < height; ++y) {
        unsigned char* const row = pixels + bytesPerRow * dst;
        if (decode_enlarge_scanline(row, &info) != ImgErrNone) {
            walkFailed();
            return result;
        }
        advanceRow();
        const ImgULong next = markPosition(y + 1, newHeight, height);
        for (ImgULong copy = 1; copy < next - dst; ++copy) std::memcpy(row + bytesPerRow * copy, row, bytesPerRow);
        dst = next;
    }
    if (!backgroundKnown) {
        // Kept: the enlargement is asked, by its own rule, not the pixels just decoded.
        backgroundColor = result->getBackgroundColor() == 1 ? 1 : 0;
        backgroundKnown = true;
        if (backgroundColor == 1) result->invert();
    }
    result->setBackgroundColor(0);
    return result;
}
