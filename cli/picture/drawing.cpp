#include "picture/drawing.h"

#include "picture/area_average.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <tuple>
#include <utility>

namespace {

/// The entry nearest to a grey.
ImgULong nearestIndex(const ColorMap& map, int grey) {
    int best = 0, bestDistance = 1 << 20;
    for (int i = 0; i < map.count; ++i) {
        const ColorMapEntry& entry = map.entries[i];
        const int distance = std::abs(entry.red - grey) + std::abs(entry.green - grey) + std::abs(entry.blue - grey);
        if (distance >= bestDistance) continue;
        best = i;
        bestDistance = distance;
    }
    return static_cast<ImgULong>(best);
}

/// Chooses what the corners that a turn uncovers are filled with.
void setCorners(const Picture& picture, bool black) {
    if (picture.image->getType() == ImageTypePalette)
        picture.palette().setBackgroundColor(nearestIndex(*picture.palette().getColorMap(), black ? 0 : 255));
    else if (picture.image->getType() == ImageTypeRGB) picture.rgb().setBackgroundColor(black ? 0 : 0x00FFFFFF);
}

}  // namespace

Shown::Shown(Size storedSize, double storedDpiX, double storedDpiY, std::uint32_t storedOrientation,
             const ShowOptions& options)
    : stored(storedSize),
      orientation(options.orient && storedOrientation >= 1 && storedOrientation <= 8 ? storedOrientation : 1),
      size(shownSize(stored, orientation)), dpiX(storedDpiX), dpiY(storedDpiY) {
    if (isTurned(orientation)) std::swap(dpiX, dpiY);
    if (!options.square || !(dpiX > 0 && dpiY > 0)) return;
    stretchX = std::max(dpiY / dpiX, 1.0);
    stretchY = std::max(dpiX / dpiY, 1.0);
}

Size Shown::stretched(Size from) const {
    return {stretchX > 1 ? scaled(from, stretchX).width : from.width,
            stretchY > 1 ? scaled(from, stretchY).height : from.height};
}

Picture scaled(Picture picture, const Drawing& drawing) {
    if (picture.size() == drawing.target) return picture;
    const bool bilevel = picture.pixels() == Pixels::bilevel;
    const bool blackGround = drawing.background == Background::automatic
                                 ? bilevel && picture.image->getBackgroundColor() == 1
                                 : drawing.background == Background::black;
    if (bilevel) {
        // With the foreground as 1 and the ground known, nothing is left to the image's own estimate.
        if (blackGround) picture.invert();
        picture.bilevel().setBackgroundColor(0);
    }
    if (!bilevel && drawing.mode == Mode::area && reduces(picture.size(), drawing.target))
        return averaged(picture, drawing.target);
    ImgScaleAttr attr{drawing.mode == Mode::grey ? 32u : 1u};
    Picture result =
        pictureOf(picture.image->scale(picture.image->getRect(), drawing.target.width, drawing.target.height, attr),
                  picture.grey);
    if (!bilevel) return result;
    result.grey = result.image->getType() == ImageTypeRGB;
    if (blackGround) result.invert();
    return result;
}

Picture turned(Picture picture, const Drawing& drawing) {
    const auto replace = [&picture](IImg* image) { picture.image = pictureOf(image).image; };
    if (drawing.mirror != ImgMirT{}) replace(picture.image->mirror(drawing.mirror));
    // From 0 to 360, where all three right angles are exact. A turn by nothing would be a clone, which not every
    // kind of image has.
    double angle = std::fmod(drawing.angle, 360);
    if (angle < 0) angle += 360;
    if (angle < 0.001 || angle > 359.999) return picture;
    const bool blackCorners = drawing.background == Background::black;
    setCorners(picture, blackCorners);
    // Bilevel corners come out as 0.
    const bool exchange = blackCorners && picture.pixels() == Pixels::bilevel;
    if (exchange) picture.invert();
    replace(picture.image->rotate(angle));
    if (exchange) picture.invert();
    return picture;
}

Picture upright(Picture picture, std::uint32_t orientation) {
    // By what mirror and turn each of the eight is shown.
    constexpr std::pair<ImgMirT, double> kTurns[] = {{ImgMirT{}, 0}, {ImgMirY, 0},   {ImgMirT{}, 180},
                                                     {ImgMirX, 0},   {ImgMirY, 90},  {ImgMirT{}, 270},
                                                     {ImgMirY, 270}, {ImgMirT{}, 90}};
    Drawing drawing;
    std::tie(drawing.mirror, drawing.angle) = kTurns[(orientation - 1) % 8];
    return turned(std::move(picture), drawing);
}
