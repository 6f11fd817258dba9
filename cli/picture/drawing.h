#pragma once

// What is wanted of a page or picture, and how it is done once the pixels are there.

#include "picture/picture.h"

/// How pages are reduced. Greys and colours: area takes means, the others take one pixel of many.
enum class Mode { grey, ink, copy, area };
/// Which displayed colour counts as the page's ground.
enum class Background { automatic, white, black };

/// How a picture is shown.
struct ShowOptions {
    bool orient = true;   ///< as its orientation says
    bool square = false;  ///< with square pixels: the side of lower resolution grows
};

/// What is shown of a picture that is stored some way.
struct Shown {
    Shown(Size stored, double storedDpiX, double storedDpiY, std::uint32_t storedOrientation,
          const ShowOptions& options);

    Size stored;
    std::uint32_t orientation;  ///< 1 when it is not to be applied
    Size size;
    double dpiX, dpiY;                  ///< 0 when not known
    double stretchX = 1, stretchY = 1;  ///< what makes pixels square, if that is wanted

    Size stretched(Size from) const;
};

struct Drawing {
    Rect rect;                      ///< of the page as it is stored
    std::uint32_t orientation = 1;  ///< how that is shown, as TIFF's tag has it
    Size target;                    ///< the rectangle's size in the picture, as it is shown
    Mode mode = Mode::grey;
    Background background = Background::automatic;
    ImgMirT mirror{};  ///< neither direction: none
    double angle = 0;  ///< degrees, counter-clockwise

    /// The rectangle's size as it is shown.
    Size shownRect() const { return shownSize(rect.size(), orientation); }
};

/// The whole of an uncompressed picture at the drawing's target size.
Picture scaled(Picture picture, const Drawing& drawing);

/// As TIFF's orientation tag says that it is shown.
Picture upright(Picture picture, std::uint32_t orientation);

/// Mirrored, then turned.
Picture turned(Picture picture, const Drawing& drawing);
