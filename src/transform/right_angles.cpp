// Mirrors and right angles of whole pictures, and the angles that count as such.

#include "foundation/refuse.h"
#include "kernels/recipes.h"
#include "model/image_areas.h"
#include "model/temporary.h"

#include <cmath>

namespace tilepress {
namespace {

constexpr double kSnapTolerance = 0.001;  // degrees

/// How turned pictures of a kind are made, for kernels/recipes.h.
template <class Image>
struct Making {
    static Temporary<Image> like(const Image& image, ImgULong width, ImgULong height) {
        return Temporary<Image>(createLike(image, width, height));
    }
    static auto area(const Image& image) { return areaOf(image); }
};

template <class Image>
Image* placed(Places places, Image& image) {
    if (!hasPixels(image)) return refuse(ImgErrBadArgument);
    return placed(Making<Image>(), places, image).release();
}

template <class Image>
IImg* mirrored(Image& image, ImgMirT direction) {
    if (direction == ImgMirX) return placed(kMirrorX, image);
    if (direction == ImgMirY) return placed(kMirrorY, image);
    return &image;  // Kept: not a copy; callers compare before they delete
}

/// By an angle that has been snapped.
template <class Image>
IImg* rotated(Image& image, double angle, Image* (Image::*generic)(double)) {
    if (!std::isfinite(angle)) return nullptr;
    if (angle == 0) return image.clone();
    if (angle == 90) return placed(kRotate90, image);
    if (angle == 180) return placed(kRotate180, image);
    if (angle == 270) return placed(kRotateMinus90, image);
    return (image.*generic)(angle);
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

// Kept: negative angles and exactly 360 are not snapped; they go the way of arbitrary angles. So does what
// is too small to be told from 360 once it is taken from it.
void CImg::snap90(double& angle, double tolerance) {
    const auto snap = [&](double centre) {
        if (centre - tolerance < angle && angle < centre + tolerance) angle = centre;
    };
    if (angle > 360 || angle < -360) angle -= 360 * std::trunc(angle / 360);
    if (0 < angle && angle < tolerance) angle = 360 - angle;
    if (0 < angle && angle < tolerance) angle = 0;
    snap(90);
    snap(180);
    snap(270);
    if (360 - tolerance < angle && angle < 360) angle = 0;
}

IImg* CImg1::mirror(ImgMirT direction) { return mirrored(*this, direction); }
IImg* CImg8::mirror(ImgMirT direction) { return mirrored(*this, direction); }
IImg* CImg32::mirror(ImgMirT direction) { return mirrored(*this, direction); }

IImg* CImg1::rotate(double angle) {
    snap90(angle, kSnapTolerance);
    return rotated(*this, angle, &CImg1::rotateGeneric);
}
IImg* CImg8::rotate(double angle) {
    snap90(angle, kSnapTolerance);
    return rotated(*this, angle, &CImg8::rotateGeneric);
}
IImg* CImg32::rotate(double angle) {
    snap90(angle, kSnapTolerance);
    return rotated(*this, angle, &CImg32::rotateGeneric);
}

CImg1* CImg1::mirrorX() { return placed(kMirrorX, *this); }
CImg1* CImg1::mirrorY() { return placed(kMirrorY, *this); }
CImg1* CImg1::rotate90() { return placed(kRotate90, *this); }
CImg1* CImg1::rotateMinus90() { return placed(kRotateMinus90, *this); }
CImg1* CImg1::rotate180() { return placed(kRotate180, *this); }

CImg8* CImg8::mirrorX() { return placed(kMirrorX, *this); }
CImg8* CImg8::mirrorY() { return placed(kMirrorY, *this); }
CImg8* CImg8::rotate90() { return placed(kRotate90, *this); }
CImg8* CImg8::rotateMinus90() { return placed(kRotateMinus90, *this); }
CImg8* CImg8::rotate180() { return placed(kRotate180, *this); }

CImg32* CImg32::mirrorX() { return placed(kMirrorX, *this); }
CImg32* CImg32::mirrorY() { return placed(kMirrorY, *this); }
CImg32* CImg32::rotate90() { return placed(kRotate90, *this); }
CImg32* CImg32::rotateMinus90() { return placed(kRotateMinus90, *this); }
CImg32* CImg32::rotate180() { return placed(kRotate180, *this); }
