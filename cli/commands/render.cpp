#include "commands/render.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/stats.h"
#include "commands/page_count.h"
#include "picture/picture_writer.h"
#include "sources/drawable.h"

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

/// Everything that can be refused before a pixel is read.
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

int renderOne(const RenderOptions& options, InputFile input) {
    const Coding coding(options.format, options.output.path, options.quality);
    Stats stats;
    Progress progress(options.quiet);
    const auto source = openDrawable(std::move(input), options.page);
    const Shown shown(source->size, source->dpiX, source->dpiY, source->orientation, options.show);
    const Drawing drawing = plan(options, shown, source->pixels, coding);
    Drawn drawn = source->draw(drawing, options.salvage, progress);
    stats.compressedBytes = drawn.compressedBytes;
    stats.expandedBytes = expandedBytes(drawing.rect.size(), source->pixels);
    setResolution(drawn.picture, options.dpi, shown, drawing);
    progress.show("turning");
    Picture picture = turned(std::move(drawn.picture), drawing);
    if (std::lround(drawing.angle / 90) % 2 != 0) std::swap(picture.dpiX, picture.dpiY);
    writePicture(picture, options.output, coding, progress);
    progress.clear();
    if (options.stats) stats.print(picture.size());
    for (const std::string& remark : drawn.remarks) complain(remark);
    return static_cast<int>(drawn.damaged ? Exit::damaged : Exit::good);
}

}  // namespace

int runRender(const RenderOptions& options) {
    return forEachPage(options.input, options.pages, options.output,
                       [&](InputFile input, unsigned page, const OutputOptions& output) {
                           RenderOptions one = options;
                           one.page = page;
                           one.output = output;
                           return renderOne(one, std::move(input));
                       });
}
