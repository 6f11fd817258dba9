#include "commands/render.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/stats.h"
#include "picture/picture_reader.h"
#include "picture/picture_writer.h"
#include "tiff/g4_page.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

Size targetSize(const RenderOptions& options, Size from) {
    if (options.size) return *options.size;
    if (options.fit) return fitted(from, *options.fit);
    return options.factor ? scaled(from, *options.factor) : from;
}

/// Everything that can be refused before a pixel is read.
Drawing plan(const RenderOptions& options, Size page, Pixels pixels, Format format) {
    requirePixels("the page", page, options.maxInputPixels);
    Drawing drawing;
    drawing.rect = options.rect.value_or(Rect{0, 0, page.width, page.height});
    requireInside(drawing.rect, page);
    const Size from = drawing.rect.size(), to = drawing.target = targetSize(options, from);
    drawing.mode = options.mode;
    drawing.background = options.background;
    drawing.mirror = options.mirror;
    drawing.angle = options.angle;
    requirePixels("the picture", to, options.maxPixels);
    const bool reduces = to.width < from.width || to.height < from.height;
    if (reduces && options.mode == Mode::copy)
        throw Failure(Exit::failed, "--mode copy keeps every pixel: it does not go with a reduction");
    const bool becomesGrey = pixels == Pixels::bilevel && reduces && options.mode == Mode::grey;
    requireFormat(format, becomesGrey ? Pixels::grey : pixels);
    return drawing;
}

/// One command's state.
class Renderer {
public:
    explicit Renderer(const RenderOptions& chosen)
        : options_(chosen), format_(chooseFormat(chosen.format, chosen.output.path)), progress_(chosen.quiet) {}

    int renderPage(InputFile input) {
        TiffSource source(std::move(input));
        const TiffPage page = source.page(options_.page);
        page.requireSupported(source.name());
        const Drawing drawing = plan(options_, page.size, Pixels::bilevel, format_);
        const Size from = drawing.rect.size(), to = drawing.target;
        if ((to.width < from.width) != (to.height < from.height))
            requirePixels("the part to expand", from, options_.maxPixels);

        bool damaged = false;
        std::vector<TileDamage> salvaged;
        Picture picture;
        {
            const G4Image image = loadPage(source, page, drawing.rect, stats_.compressedBytes, progress_,
                                           options_.salvage ? &salvaged : nullptr);
            stats_.expandedBytes = (std::uint64_t{from.width} + 7) / 8 * from.height;
            progress_.show("decoding");
            picture = drawPage(*image, page, drawing, damaged);
        }
        picture.dpiX = page.dpiX;
        picture.dpiY = page.dpiY;
        finish(std::move(picture), drawing);
        if (page.emptyTiles > 0 && !options_.quiet)
            complain(fmt::format("{}: page {}: {} of {} {}s have no data and are drawn empty", source.name(),
                                 page.number, page.emptyTiles, page.tiles, page.tileName()));
        for (const TileDamage& tile : salvaged)
            complain(fmt::format("{}: page {}: damaged Group 4 data, white from there on: {}", source.name(),
                                 page.number, describe(page, tile)));
        if (damaged) complain(fmt::format("{}: {}", source.name(), describeDamage(source, page, drawing.rect)));
        if (!damaged && salvaged.empty()) return static_cast<int>(Exit::good);
        return static_cast<int>(Exit::damaged);
    }

    int renderPicture(InputFile input) {
        stats_.compressedBytes = input.bytes();
        const auto reader = openPicture(std::move(input));
        if (options_.page != 1) throw Failure(Exit::failed, "--page is for TIFF files");
        const Drawing drawing = plan(options_, reader->size, reader->pixels, format_);
        requirePixels("the part to read", drawing.rect.size(), options_.maxPixels);
        progress_.show("reading");
        Picture picture = reader->read(drawing.rect);
        stats_.expandedBytes = picture.rowBytes() * drawing.rect.height;
        finish(scaled(std::move(picture), drawing), drawing);
        return static_cast<int>(Exit::good);
    }

private:
    void finish(Picture picture, const Drawing& drawing) {
        picture.dpiX *= static_cast<double>(drawing.target.width) / drawing.rect.width;
        picture.dpiY *= static_cast<double>(drawing.target.height) / drawing.rect.height;
        progress_.show("turning");
        picture = turned(std::move(picture), drawing);
        if (std::lround(drawing.angle / 90) % 2 != 0) std::swap(picture.dpiX, picture.dpiY);
        writePicture(picture, options_.output, format_, progress_);
        progress_.clear();
        if (options_.stats) stats_.print(picture.size());
    }

    const RenderOptions& options_;
    const Format format_;
    Progress progress_;
    Stats stats_;
};

}  // namespace

int runRender(const RenderOptions& options) {
    if (options.output.isDone()) return static_cast<int>(Exit::good);
    Renderer renderer(options);
    InputFile input(options.input);
    options.output.requireApart(input);
    return input.kind() == InputFile::Kind::png || input.kind() == InputFile::Kind::pnm
               ? renderer.renderPicture(std::move(input))
               : renderer.renderPage(std::move(input));
}
