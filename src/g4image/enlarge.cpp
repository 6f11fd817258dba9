#include "g4image/scale_info.h"

#include "kernels/mark_tables.h"
#include "model/image_kinds.h"
#include "tilepress/ccitt.h"

#include <cstring>

using namespace tilepress;
using namespace tilepress::g4;

IImg* CImg1G4::scale(const ImgRect& r, ImgULong newWidth, ImgULong newHeight, ImgScaleAttr& attr) {
    if (CCITT_EnableG4Decode() != ImgErrNone) return nullptr;
    IImg* result = nullptr;
    const bool same = newWidth == r.getWidth() && newHeight == r.getHeight();
    if (!same && !inside(*this, r)) imgRaise(ImgErrBadArgument);
    else if (!tileRows) imgRaise(ImgErrDecode);
    // Kept: the whole image, whatever the rectangle.
    else if (same) result = CImg1::create(*this, 0xFFFFFF, 0xFF000000, ImgAlignNone);
    else
        result = resized(
            r, newWidth, newHeight, attr, [&](ImgULong width, ImgULong height) { return Enlarge(width, height, r); },
            [&]() -> IImg* {
                if (attr.depth == 32) return Reduce_greyscale(newWidth, newHeight, r);
                return Reduce_bkg(newWidth, newHeight, r);
            });
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
    Temporary<CImg1> result(emptyLike(*this, newWidth, newHeight));
    if (!result || !info.prepare(newWidth) || !markTable(columns, newWidth, width)) return refuse(ImgErrCreate);
    info.clip.white = backgroundKnown && backgroundColor == 1;
    info.columns = columns.get();
    const std::size_t bytesPerRow = result->getBytesPerLine();
    MarkWalk mark(newHeight, height);
    const auto paint = [&](ImgULong) {
        unsigned char* const row = result->peekData() + bytesPerRow * mark.position();
        if (decode_enlarge_scanline(row, &info) == ImgErrNone)
            for (ImgULong copy = 1; copy < mark.size(); ++copy) std::memcpy(row + bytesPerRow * copy, row, bytesPerRow);
        mark.advance();
    };
    if (!info.begin() || !info.rows(paint)) return result.release();
    if (!backgroundKnown) {
        // Kept: the enlargement is asked, by its own rule, not the pixels just decoded.
        setBackgroundColor(result->getBackgroundColor() == 1);
        if (backgroundColor == 1) result->invert();
    }
    result->setBackgroundColor(0);
    return result.release();
}
