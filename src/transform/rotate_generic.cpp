// Rotation by any angle as three shears: along the rows, along the columns and along
// the rows again, each moving whole rows or columns by whole pixels.

#include "kernels/shear.h"
#include "model/image_areas.h"
#include "model/temporary.h"

#include <algorithm>

namespace tilepress {
namespace {

// Kept: the alignment's value becomes the background interpretation, and alignment 0 is used.
CImg1* createResult(CImg1& image) {
    return CImg1::create(image.getWidth(), image.getHeight(), image.getAlignment(), 0xFF000000, ImgAlignNone);
}

template <class Image>
Image* createResult(Image& image) {
    return createLike(image, image.getWidth(), image.getHeight());
}

/// Whether the image has its pixels; raises when not.
template <class Image>
bool canTurn(const Image& image) {
    if (hasPixels(image)) return true;
    imgRaise(ImgErrBadArgument);
    return false;
}

/// The picture that a shear fills, its uncovered places in the background colour.
template <class Image>
Temporary<Image> startShear(Image& image) {
    if (!canTurn(image)) return nullptr;
    Temporary<Image> result(createResult(image));
    if (!result) return nullptr;
    const ImgULong background = image.getBackgroundColor();
    // Kept: bilevel images ignore the fill, so what they do not cover is 0 also on a background of 1.
    result->doRasOpInPlace(RasOpFill, false, 0, background);
    result->setBackgroundColor(background);
    return result;
}

template <class Image>
Image* shearedX(Image& image, const int* table) {
    Temporary<Image> result = startShear(image);
    if (!result) return nullptr;
    moveRows(areaOf(*result), areaOf(image), table);
    return result.release();
}

template <class Image>
Image* shearedY(Image& image, const int* table) {
    Temporary<Image> result = startShear(image);
    if (!result || !moveColumns(areaOf(*result), areaOf(image), table)) return nullptr;
    return result.release();
}

template <class Image>
Image* rotatedByShears(Image& image, double degrees) {
    if (!canTurn(image)) return nullptr;  // before tables are made for extents that may be any
    const Shears shears(degrees, image.getWidth(), image.getHeight());
    if (!shears) return nullptr;
    Temporary<Image> halfTurned;
    if (shears.halfTurn) {
        halfTurned.reset(static_cast<Image*>(image.rotate(180)));
        if (!halfTurned) return nullptr;
        halfTurned->setBackgroundColor(image.getBackgroundColor());
    }
    const Temporary<Image> first(shearedX(halfTurned ? *halfTurned : image, shears.alongRows.get()));
    halfTurned.reset();
    if (!first) return nullptr;
    const Temporary<Image> second(shearedY(*first, shears.alongColumns.get()));
    return second ? shearedX(*second, shears.alongRows.get()) : nullptr;
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

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

CImg1* CImg1::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg1* CImg1::rotateShearX(int* table) { return shearedX(*this, table); }
CImg1* CImg1::rotateShearY(int* table) { return shearedY(*this, table); }

CImg8* CImg8::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg8* CImg8::rotateShearX(int* table) { return shearedX(*this, table); }
CImg8* CImg8::rotateShearY(int* table) { return shearedY(*this, table); }

CImg32* CImg32::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg32* CImg32::rotateShearX(int* table) { return shearedX(*this, table); }
CImg32* CImg32::rotateShearY(int* table) { return shearedY(*this, table); }
