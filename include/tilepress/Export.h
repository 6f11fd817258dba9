#ifndef TILEPRESS_EXPORT_H
#define TILEPRESS_EXPORT_H

/// \file
/// Conversion between the kinds of image.

#include "tilepress/IImg.h"

/// Converts pixels from one image into another; never instantiated.
///
/// | from | to |
/// |---|---|
/// | bilevel | bilevel of equal layout, palette, RGB |
/// | compressed bilevel | bilevel |
/// | palette | bilevel (error diffusion), RGB |
/// | RGB | bilevel (error diffusion), RGB |
class TILEPRESS_API Export {
public:
    /// Fills `destination` from `source`; sizes must match. False, with nothing changed, for
    /// every pair that is not in the table, unequal sizes or an image without pixels.
    static bool xfm(IImg& destination, const IImg& source);
    /// The same by pointers, of which none may be null.
    static bool xfm(IImg* destination, const IImg* source);
    /// Widens three-byte pixels to four-byte ones, fourth byte 0; no component is moved, whatever
    /// the orders. Source rows are padded to 32 bits with ImgAlignDword. Always true.
    static bool copy24To32(ImgULong* destination, unsigned char* source, ImgULong width, ImgULong height,
                           ImgAlignmentEnum alignment, RGBOrder sourceOrder, RGBOrder destinationOrder);

private:
    Export();
    ~Export();  // NOLINT(performance-trivially-destructible): has an address in the library
};

#endif
