// Mirrors and rotation of whole pictures: by right angles pixel by pixel, by any other as three shears, along the rows,
// along the columns and along the rows again, each moving whole rows or columns by whole pixels.

#include "foundation/refuse.h"
#include "kernels/recipes.h"
#include "model/image_kinds.h"

#include <algorithm>
#include <cmath>

namespace tilepress {
namespace {

// Kept: the alignment's value becomes the background interpretation, and alignment 0 is used.
CImg1* createSheared(CImg1& image) {
    return CImg1::create(image.getWidth(), image.getHeight(), image.getAlignment(), 0xFF000000, ImgAlignNone);
}
template <class Image>
Image* createSheared(Image& image) {
    return createLike(image, image.getWidth(), image.getHeight());
}

/// How pictures of a kind are made, for kernels/recipes.h.
template <class Image>
struct Making {
    static Temporary<Image> like(const Image& image, ImgULong width, ImgULong height) {
        return Temporary<Image>(createLike(image, width, height));
    }
    /// Uncovered places are in the background colour.
    static Temporary<Image> blank(Image& image) {
        Image* const made = hasPixels(image) ? createSheared(image) : refuse(ImgErrBadArgument);
        Temporary<Image> result(made);
        if (!result) return nullptr;
        const ImgULong background = image.getBackgroundColor();
        // Kept: bilevel images ignore the fill, so what they do not cover is 0 also on a background of 1.
        result->doRasOpInPlace(RasOpFill, false, 0, background);
        result->setBackgroundColor(background);
        return result;
    }
    static Temporary<Image> turned(Image& image) {
        Temporary<Image> result(static_cast<Image*>(image.rotate(180)));
        if (result) result->setBackgroundColor(image.getBackgroundColor());
        return result;
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

template <class Image>
Image* rotatedByShears(Image& image, double degrees) {
    if (!hasPixels(image)) return refuse(ImgErrBadArgument);  // before tables are made for extents that may be any
    return turnedByShears(Making<Image>(), image, degrees).release();
}

/// By an angle that has been snapped.
template <class Image>
IImg* rotated(Image& image, double angle) {
    if (!std::isfinite(angle)) return nullptr;
    if (angle == 0) return image.clone();
    if (const Places* const places = rightAngle(angle)) return placed(*places, image);
    return rotatedByShears(image, angle);
}

template <class Image>
Image* shearedX(Image& image, const int* table) {
    return shearedAlongRows(Making<Image>(), image, table).release();
}
template <class Image>
Image* shearedY(Image& image, const int* table) {
    return shearedAlongColumns(Making<Image>(), image, table).release();
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
    snap(90);
    snap(180);
    snap(270);
    if (360 - tolerance < angle && angle < 360) angle = 0;
}

// Kept: the public tables spread each shear over the dimension that it does not move, which is the same for
// square images only; they go on for as long as the other dimension needs.
int* CImg::makeRotationXShearRoth(double angle) {
    return spreadShifts(totalAlongRows(getHeight(), angle), getWidth(), std::max(getWidth(), getHeight()),
                        Direction::Down);
}

int* CImg::makeRotationYShearRoth(double angle) {
    return spreadShifts(totalAlongColumns(getWidth(), angle), getHeight(), std::max(getWidth(), getHeight()),
                        Direction::Up);
}

IImg* CImg1::mirror(ImgMirT direction) { return mirrored(*this, direction); }
CImg1* CImg1::mirrorX() { return placed(kMirrorX, *this); }
CImg1* CImg1::mirrorY() { return placed(kMirrorY, *this); }
IImg* CImg1::rotate(double angle) {
    snap90(angle, kSnapTolerance);
    return rotated(*this, angle);
}
CImg1* CImg1::rotate90() { return placed(kRotate90, *this); }
CImg1* CImg1::rotateMinus90() { return placed(kRotateMinus90, *this); }
CImg1* CImg1::rotate180() { return placed(kRotate180, *this); }
CImg1* CImg1::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg1* CImg1::rotateShearX(int* table) { return shearedX(*this, table); }
CImg1* CImg1::rotateShearY(int* table) { return shearedY(*this, table); }

IImg* CImg8::mirror(ImgMirT direction) { return mirrored(*this, direction); }
CImg8* CImg8::mirrorX() { return placed(kMirrorX, *this); }
CImg8* CImg8::mirrorY() { return placed(kMirrorY, *this); }
IImg* CImg8::rotate(double angle) {
    snap90(angle, kSnapTolerance);
    return rotated(*this, angle);
}
CImg8* CImg8::rotate90() { return placed(kRotate90, *this); }
CImg8* CImg8::rotateMinus90() { return placed(kRotateMinus90, *this); }
CImg8* CImg8::rotate180() { return placed(kRotate180, *this); }
CImg8* CImg8::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg8* CImg8::rotateShearX(int* table) { return shearedX(*this, table); }
CImg8* CImg8::rotateShearY(int* table) { return shearedY(*this, table); }

IImg* CImg32::mirror(ImgMirT direction) { return mirrored(*this, direction); }
CImg32* CImg32::mirrorX() { return placed(kMirrorX, *this); }
CImg32* CImg32::mirrorY() { return placed(kMirrorY, *this); }
IImg* CImg32::rotate(double angle) {
    snap90(angle, kSnapTolerance);
    return rotated(*this, angle);
}
CImg32* CImg32::rotate90() { return placed(kRotate90, *this); }
CImg32* CImg32::rotateMinus90() { return placed(kRotateMinus90, *this); }
CImg32* CImg32::rotate180() { return placed(kRotate180, *this); }
CImg32* CImg32::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg32* CImg32::rotateShearX(int* table) { return shearedX(*this, table); }
CImg32* CImg32::rotateShearY(int* table) { return shearedY(*this, table); }
