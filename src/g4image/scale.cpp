#include "g4image/scale_info.h"

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
    CImg1* grown = nullptr;  // in one dimension
    if (how != ImageScaleSame && !inside(*this, r)) imgRaise(ImgErrBadArgument);
    else if (!tileRows) imgRaise(ImgErrDecode);
    // Kept: the whole image, whatever the rectangle.
    else if (how == ImageScaleSame) result = CImg1::create(*this, 0xFFFFFF, 0xFF000000, ImgAlignNone);
    else if (how == ImageScaleEnlarge) result = Enlarge(newWidth, newHeight, r);
    else if (how == ImageScaleReduceXEnlargeY) grown = Enlarge(r.getWidth(), newHeight, r);
    else if (how == ImageScaleEnlargeXReduceY) grown = Enlarge(newWidth, r.getHeight(), r);
    else if (attr.depth == 32) result = Reduce_greyscale(newWidth, newHeight, r);
    else result = Reduce_bkg(newWidth, newHeight, r);
    if (grown) result = grown->scale(grown->getRect(), newWidth, newHeight, attr);
    delete grown;
    CCITT_DisableG4Decode();
    return result;
}

/// Paints a source row into the first of its destination rows.
ImgErr CImg1G4::decode_enlarge_scanline(unsigned char* row, G4ScaleInfo* info) {
    const ImgULong* const columns = info->columns;
    return info->paint(row,
                       [columns](std::size_t from, std::size_t to, auto paint) { paint(columns[from], columns[to]); });
}

CImg1* CImg1G4::Enlarge(ImgULong newWidth, ImgULong newHeight, const ImgRect& r) {
    const ImgULong width = r.getWidth(), height = r.getHeight();
    if (newWidth < width || newHeight < height || width == 0 || height == 0) return refuse(ImgErrBadArgument);
    G4ScaleInfo info(*this, r);
    Heap<ImgULong> columns;
    CImg1* const result = emptyLike(*this, newWidth, newHeight);
    if (!result || !info.prepare(newWidth) || !markTable(columns, newWidth, width)) {
        delete result;
        return refuse(ImgErrCreate);
    }
    info.clip.white = backgroundKnown && backgroundColor == 1;
    info.columns = columns.get();
    const std::size_t bytesPerRow = result->getBytesPerLine();
    MarkWalk mark(newHeight, height);
    const auto paint = [&](ImgULong) {
        unsigned char* const row = result->peekData() + bytesPerRow * mark.position();
        if (decode_enlarge_scanline(row, &info) == ImgErrNone)
            for (ImgULong copy = 1; copy < mark.run(); ++copy) std::memcpy(row + bytesPerRow * copy, row, bytesPerRow);
        mark.advance();
    };
    if (!info.begin() || !info.rows(paint)) return result;
    if (!backgroundKnown) {
        // Kept: the enlargement is asked, by its own rule, not the pixels just decoded.
        setBackgroundColor(result->getBackgroundColor() == 1);
        if (backgroundColor == 1) result->invert();
    }
    result->setBackgroundColor(0);
    return result;
}
