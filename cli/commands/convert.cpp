#include "commands/convert.h"

#include "base/failure.h"

#include <utility>

namespace {

Picture converted(Picture picture, Pixels to) {
    const double dpiX = picture.dpiX, dpiY = picture.dpiY;
    const Pixels from = picture.pixels();
    if (to == Pixels::palette && from == Pixels::rgb)
        throw Failure(Exit::unsupported, "colours cannot be gathered into a palette");
    const IImg& image = *picture.image;
    if (to == Pixels::bilevel && from != Pixels::bilevel) picture = dithered(picture);
    else if (to == Pixels::palette && from == Pixels::bilevel)
        picture = pictureOf(CImg8::create(image, greyRamp().get(), ImgAlignNone));
    else if (to == Pixels::rgb && from != Pixels::rgb) picture = pictureOf(CImg32::create(image, RGBOrderBGR));
    picture.grey = false;
    picture.dpiX = dpiX;
    picture.dpiY = dpiY;
    return picture;
}

Drawing plan(const ConvertOptions& options, const Drawable& from, const Shown& shown, const Coding& to) {
    Drawing whole;
    whole.rect = {0, 0, from.size.width, from.size.height};
    whole.orientation = shown.orientation;
    whole.target = shown.stretched(shown.size);
    requirePixels("the picture", whole.target, options.maxPixels);
    to.require(options.to, whole.target);
    return whole;
}

}  // namespace

int runConvert(const ConvertOptions& options) {
    const auto finish = [&](Picture picture, const Drawing&, const Shown& shown, Progress& progress) {
        picture.dpiX = shown.dpiX * shown.stretchX;
        picture.dpiY = shown.dpiY * shown.stretchY;
        progress.show("converting");
        return converted(std::move(picture), options.to);
    };
    return drawPages(options, {[&](const Drawable& from, const Shown& shown, const Coding& to) {
                                   return plan(options, from, shown, to);
                               },
                               finish});
}
