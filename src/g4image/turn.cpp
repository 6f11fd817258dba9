#include "tilepress/CImg1.h"
#include "tilepress/CImg1G4.h"

#include "foundation/refuse.h"
#include "model/image_kinds.h"
#include "model/temporary.h"

#include <cmath>

using namespace tilepress;

// Cutting and turning expand what they need, once, and leave the rest to the
// bilevel image.

/// Turns an expanded picture and ends it.
template <class Turn>
static CImg1* turned(CImg1* source, Turn turn) {
    if (!source) return nullptr;
    CImg1* result = turn(*source);
    delete source;
    if (result) result->setBackgroundColor(0);
    return result;
}

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

CImg1* CImg1G4::mirrorX() {
    return turned(expanded(*this, getRect()), [](CImg1& image) { return image.mirrorX(); });
}
CImg1* CImg1G4::mirrorY() {
    return turned(expanded(*this, getRect()), [](CImg1& image) { return image.mirrorY(); });
}
CImg1* CImg1G4::rotate90() {
    return turned(expanded(*this, getRect()), [](CImg1& image) { return image.rotate90(); });
}
CImg1* CImg1G4::rotateMinus90() {
    return turned(expanded(*this, getRect()), [](CImg1& image) { return image.rotateMinus90(); });
}
CImg1* CImg1G4::rotate180() {
    return turned(expanded(*this, getRect()), [](CImg1& image) { return image.rotate180(); });
}

IImg* CImg1G4::mirror(ImgMirT direction) {
    switch (direction) {
    case ImgMirX: return mirrorX();
    case ImgMirY: return mirrorY();
    default: return this;
    }
}

IImg* CImg1G4::rotate(double angle) {
    if (!std::isfinite(angle)) return nullptr;
    snap90(angle, 0.001);
    if (angle == 0) return expanded(*this, getRect());  // not clone(), which is an empty grid here
    if (angle == 90) return rotate90();
    if (angle == 180) return rotate180();
    if (angle == 270) return rotateMinus90();
    return turned(expanded(*this, getRect()), [angle](CImg1& image) { return image.rotateGeneric(angle); });
}
