#pragma once

// What is wanted of a page or picture, and how it is done once the pixels are there.

#include "picture/picture.h"

/// How bilevel pages are reduced.
enum class Mode { grey, ink, copy };
/// Which displayed colour counts as the page's ground.
enum class Background { automatic, white, black };

struct Drawing {
    Rect rect;    ///< of the page
    Size target;  ///< the rectangle's size in the picture
    Mode mode = Mode::grey;
    Background background = Background::automatic;
    ImgMirT mirror{};  ///< neither direction: none
    double angle = 0;  ///< degrees, counter-clockwise
};

/// The whole of an uncompressed picture at the drawing's target size. `blackGround`: black is to be treated as a
/// bilevel picture's ground.
Picture scaled(Picture picture, const Drawing& drawing, bool blackGround);
/// As above, where the ground is as the drawing says or, if it is automatic, estimated.
Picture scaled(Picture picture, const Drawing& drawing);

/// Mirrored, then turned.
Picture turned(Picture picture, const Drawing& drawing);
