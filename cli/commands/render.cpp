#include "commands/render.h"

#include "base/failure.h"

#include <cmath>
#include <utility>

namespace {

Size targetSize(const RenderOptions& options, const Shown& shown, Size part) {
    if (options.dpi) {
        if (!(shown.dpiX > 0 && shown.dpiY > 0))
            throw Failure(Exit::failed,
                          "the page has no resolution, which --dpi needs; choose --scale, --size or --fit");
        return {scaled(part, *options.dpi / shown.dpiX).width, scaled(part, *options.dpi / shown.dpiY).height};
    }
    const Size from = shown.stretched(part);
    if (options.size) return *options.size;
    if (options.fit) return fitted(from, *options.fit);
    return options.factor ? scaled(from, *options.factor) : from;
}

/// What pixels become where they are reduced.
Pixels reducedPixels(Pixels pixels, Mode mode) {
    if (pixels == Pixels::bilevel) return mode == Mode::ink ? pixels : Pixels::grey;
    return pixels == Pixels::palette && mode == Mode::area ? Pixels::rgb : pixels;
}

Drawing plan(const RenderOptions& options, const Shown& shown, Pixels pixels, const Coding& coding) {
    requirePixels("the page", shown.stored, options.maxInputPixels);
    Drawing drawing;
    const Rect rect = options.rect.value_or(Rect{0, 0, shown.size.width, shown.size.height});
    requireInside(rect, shown.size);
    drawing.rect = storedRect(rect, shown.stored, shown.orientation);
    drawing.orientation = shown.orientation;
    const Size from = rect.size(), to = drawing.target = targetSize(options, shown, from);
    drawing.mode = pixels == Pixels::bilevel && options.mode == Mode::area ? Mode::grey : options.mode;
    drawing.background = options.background;
    drawing.mirror = options.mirror;
    drawing.angle = options.angle;
    requirePixels("the picture", to, options.maxPixels);
    if (pixels != Pixels::bilevel) requirePixels("the part to read", from, options.maxPixels);
    const bool smaller = reduces(from, to);
    if (smaller && options.mode == Mode::copy)
        throw Failure(Exit::failed, "--mode copy keeps every pixel: it does not go with a reduction");
    coding.require(smaller ? reducedPixels(pixels, options.mode) : pixels, to);
    return drawing;
}

/// The resolution of what is drawn: as many pixels less, or more, to the inch.
void setResolution(Picture& picture, std::optional<double> wanted, const Shown& shown, const Drawing& drawing) {
    if (wanted) {
        picture.dpiX = picture.dpiY = *wanted;
        return;
    }
    const Size from = drawing.shownRect();
    picture.dpiX = shown.dpiX * drawing.target.width / from.width;
    picture.dpiY = shown.dpiY * drawing.target.height / from.height;
}

}  // namespace

int runRender(const RenderOptions& options) {
    const auto finish = [&](Picture picture, const Drawing& drawing, const Shown& shown, Progress& progress) {
        setResolution(picture, options.dpi, shown, drawing);
        progress.show("turning");
        picture = turned(std::move(picture), drawing);
        if (std::lround(drawing.angle / 90) % 2 != 0) std::swap(picture.dpiX, picture.dpiY);
        return picture;
    };
    return drawPages(options, {[&](const Drawable& from, const Shown& shown, const Coding& to) {
                                   return plan(options, shown, from.pixels, to);
                               },
                               finish});
}
