#include "tilepress/CImg1G4.h"

#include "foundation/refuse.h"
#include "kernels/mirror_turn.h"
#include "model/image_kinds.h"

#include <cmath>

using namespace tilepress;

// Cutting and turning expand what they need, once, and leave the rest to the
// bilevel image.

/// The rectangle as a bilevel image with the image's colours and alignment, or null.
static CImg1* expanded(CImg1G4& image, const ImgRect& r) {
    CImg1* const result = CImg1::create(r.getWidth(), r.getHeight(), image.getBackgroundInterpretation(),
                                        image.getForegroundInterpretation(), image.getAlignment());
    if (!result) return refuse(ImgErrCreate);
    return finished(result, [&](CImg1&) { return image.uncompress(result, r); });
}

IImg* CImg1G4::getSubImage(const ImgRect& r) {
    if (!inside(*this, r)) return refuse(ImgErrBadArgument);
    return expanded(*this, r);
}

/// What a member of the bilevel image makes of the expanded one.
template <class Turn, class... Angle>
static CImg1* turned(CImg1G4& image, Turn turn, Angle... angle) {
    const Temporary<CImg1> whole(expanded(image, image.getRect()));
    CImg1* const result = whole ? static_cast<CImg1*>((*whole.*turn)(angle...)) : nullptr;
    if (result) result->setBackgroundColor(0);
    return result;
}

CImg1* CImg1G4::mirrorX() { return turned(*this, &CImg1::mirrorX); }
CImg1* CImg1G4::mirrorY() { return turned(*this, &CImg1::mirrorY); }
CImg1* CImg1G4::rotate90() { return turned(*this, &CImg1::rotate90); }
CImg1* CImg1G4::rotateMinus90() { return turned(*this, &CImg1::rotateMinus90); }
CImg1* CImg1G4::rotate180() { return turned(*this, &CImg1::rotate180); }

IImg* CImg1G4::mirror(ImgMirT direction) {
    switch (direction) {
    case ImgMirX: return mirrorX();
    case ImgMirY: return mirrorY();
    default: return this;
    }
}

IImg* CImg1G4::rotate(double angle) {
    if (!std::isfinite(angle)) return nullptr;
    snap90(angle, kSnapTolerance);
    if (angle == 0) return expanded(*this, getRect());  // not clone(), which is an empty grid here
    return turned(*this, &CImg1::rotate, angle);
}
