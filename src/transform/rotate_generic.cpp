// Rotation by any angle as three shears: along the rows, along the columns and along
// the rows again, each moving whole rows or columns by whole pixels.

#include "foundation/refuse.h"
#include "kernels/recipes.h"
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

/// How sheared pictures of a kind are made, for kernels/recipes.h.
template <class Image>
struct Making {
    /// Uncovered places are in the background colour.
    static Temporary<Image> blank(Image& image) {
        Image* const made = hasPixels(image) ? createResult(image) : refuse(ImgErrBadArgument);
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
Image* rotatedByShears(Image& image, double degrees) {
    if (!hasPixels(image)) return refuse(ImgErrBadArgument);  // before tables are made for extents that may be any
    return turnedByShears(Making<Image>(), image, degrees).release();
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
