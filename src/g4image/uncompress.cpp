#include "g4image/scale_info.h"

#include "model/image_kinds.h"
#include "tilepress/ccitt.h"

using namespace tilepress;
using namespace tilepress::g4;

/// Whether `dest` has rows for a picture of this size.
static bool canHold(const CImg1* dest, std::uint64_t width, std::uint64_t height) {
    if (!dest || !dest->peekData()) return false;
    const std::uint64_t bytes = dest->getBytesPerLine();
    return 8 * bytes >= width && dest->getTotalBytes() >= (height - 1) * bytes + packedBytes(width);
}

ImgErr CImg1G4::decode_copy_scanline(unsigned char* row, G4ScaleInfo* info) { return info->paint(row, Copied()); }

bool CImg1G4::uncompress(CImg1* dest, const ImgRect& r) {
    if (!inside(*this, r) || !canHold(dest, r.getWidth(), r.getHeight())) return refuse(ImgErrBadArgument);
    if (!tileRows) return refuse(ImgErrDecode);
    if (CCITT_EnableG4Decode() != ImgErrNone) return false;
    G4ScaleInfo info(*this, r);
    if (!info.prepare(r.getWidth())) {
        CCITT_DisableG4Decode();
        return false;
    }
    info.clip.white = backgroundKnown && backgroundColor == 1;
    unsigned char* const pixels = dest->peekData();
    const std::size_t bytesPerRow = dest->getBytesPerLine();
    std::uint64_t black = 0;
    const auto paint = [&](ImgULong y) {
        decode_copy_scanline(pixels + y * bytesPerRow, &info);
        black += info.blackCount;
    };
    // Kept: a walk that fails leaves the decoder enabled and says true; what was decoded stays in dest.
    if (!info.begin() || !info.rows(paint)) return true;
    if (!backgroundKnown) {
        setBackgroundColor(isMostlyBlack(black, std::uint64_t{r.getWidth()} * r.getHeight()));
        if (backgroundColor == 1) dest->invert();
    }
    dest->setBackgroundColor(0);
    CCITT_DisableG4Decode();
    return true;
}

ImgULong CImg1G4::calculateBackground() {
    if (backgroundKnown) return backgroundColor;
    if (CCITT_EnableG4Decode() != ImgErrNone) return 0;
    G4ScaleInfo info(*this, getRect());
    if (!info.prepare(0)) {
        CCITT_DisableG4Decode();
        return 0;
    }
    std::uint64_t black = 0;
    const auto count = [&](ImgULong) { info.runs([&](std::size_t from, std::size_t to) { black += to - from; }); };
    // Kept: a call that computes returns 1, whatever the colour; callers read the field.
    if (!info.begin() || !info.rows(count)) return 1;
    setBackgroundColor(isMostlyBlack(black, std::uint64_t{getWidth()} * getHeight()));
    CCITT_DisableG4Decode();
    return 1;
}
