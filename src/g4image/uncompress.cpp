#include "g4image/painters.h"

#include "foundation/heap.h"
#include "model/image_kinds.h"
#include "tilepress/CImg1.h"
#include "tilepress/ccitt.h"

using namespace tilepress;
using namespace tilepress::g4;

/// Whether `dest` has rows for a picture of this size.
static bool canHold(const CImg1* dest, std::uint64_t width, std::uint64_t height) {
    if (!dest || !dest->peekData()) return false;
    const std::uint64_t bytes = dest->getBytesPerLine();
    return 8 * bytes >= width && dest->getTotalBytes() >= (height - 1) * bytes + packedBytes(width);
}

/// As decode_scanline, painting the row; of a row that fails, the tiles before the corrupt one.
ImgErr CImg1G4::decode_copy_scanline(unsigned char* row, G4ScaleInfo* info) {
    return paintRow(row, *info, [](std::size_t from, std::size_t to, auto paint) { paint(from, to); });
}

ImgErr CImg1G4::decode_scanline_and_sum(ImgULong& count) {
    std::uint64_t black = 0;
    const ImgErr status =
        decodeRuns(G4ScaleInfo(getRect()), [&](std::size_t from, std::size_t to) { black += to - from; });
    count = static_cast<ImgULong>(black);
    return status;
}

bool CImg1G4::uncompress(CImg1* dest, const ImgRect& r) {
    if (!inside(*this, r) || !canHold(dest, r.getWidth(), r.getHeight())) {
        imgRaise(ImgErrBadArgument);
        return false;
    }
    if (!tileRows) {
        imgRaise(ImgErrDecode);
        return false;
    }
    if (CCITT_EnableG4Decode() != ImgErrNone) return false;
    // Kept: a walk that fails leaves the decoder enabled and says true; what was decoded stays in dest.
    if (!PrepForDecode(r)) {
        walkFailed();
        return true;
    }
    ToggledRow painted;
    if (!painted.prepare(r.getWidth())) {
        CCITT_DisableG4Decode();
        return false;
    }
    G4ScaleInfo info(r);
    info.paintWhite = backgroundKnown && backgroundColor == 1;
    info.painted = &painted;
    info.rowBytes = packedBytes(r.getWidth());

    const std::size_t bytesPerRow = dest->getBytesPerLine();
    const ImgULong height = r.getHeight();
    unsigned char* row = dest->peekData();
    std::uint64_t black = 0;
    for (ImgULong y = 0; y < height; ++y, row += bytesPerRow) {
        if (decode_copy_scanline(row, &info) != ImgErrNone) {
            walkFailed();
            return true;
        }
        black += info.blackCount;
        advanceRow();
    }
    if (!backgroundKnown) {
        settleBackground(black, std::uint64_t{r.getWidth()} * height);
        if (backgroundColor == 1) dest->invert();
    }
    dest->setBackgroundColor(0);
    CCITT_DisableG4Decode();
    return true;
}

ImgULong CImg1G4::calculateBackground() {
    if (backgroundKnown) return backgroundColor;
    if (CCITT_EnableG4Decode() != ImgErrNone) return 0;
    // Kept: a call that computes returns 1, whatever the colour; callers read the field.
    if (!PrepForDecode(getRect())) {
        walkFailed();
        return 1;
    }
    const ImgULong height = getHeight();
    std::uint64_t black = 0;
    for (ImgULong y = 0; y < height; ++y) {
        ImgULong count = 0;
        if (decode_scanline_and_sum(count) != ImgErrNone) {
            walkFailed();
            return 1;
        }
        black += count;
        advanceRow();
    }
    settleBackground(black, std::uint64_t{getWidth()} * height);
    CCITT_DisableG4Decode();
    return 1;
}
