#include "commands/convert.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/stats.h"
#include "picture/picture_reader.h"
#include "picture/picture_writer.h"
#include "tiff/g4_page.h"

#include <fmt/format.h>

namespace {

Picture converted(Picture picture, Pixels to) {
    const double dpiX = picture.dpiX, dpiY = picture.dpiY;
    const Pixels from = picture.pixels();
    if (to == Pixels::palette && from == Pixels::rgb)
        throw Failure(Exit::unsupported, "colours cannot be gathered into a palette");
    const IImg& image = *picture.image;
    if (to == Pixels::bilevel && from != Pixels::bilevel)
        picture = pictureOf(CImg1::create(image, 0x00FFFFFF, 0xFF000000, ImgAlignNone));
    else if (to == Pixels::palette && from == Pixels::bilevel)
        picture = pictureOf(CImg8::create(image, greyRamp().get(), ImgAlignNone));
    else if (to == Pixels::rgb && from != Pixels::rgb) picture = pictureOf(CImg32::create(image, RGBOrderBGR));
    picture.grey = false;
    picture.dpiX = dpiX;
    picture.dpiY = dpiY;
    return picture;
}

}  // namespace

int runConvert(const ConvertOptions& options) {
    if (options.output.isDone()) return static_cast<int>(Exit::good);
    Stats stats;
    Progress progress(options.quiet);
    const Format format = chooseFormat(options.format, options.output.path);
    requireFormat(format, options.to);
    InputFile input(options.input);
    options.output.requireApart(input);
    bool damaged = false;
    Picture picture;
    std::string damage;
    if (input.kind() == InputFile::Kind::png || input.kind() == InputFile::Kind::pnm) {
        stats.compressedBytes = input.bytes();
        const auto reader = openPicture(std::move(input));
        requirePixels("the picture", reader->size, options.maxPixels);
        picture = reader->read({0, 0, reader->size.width, reader->size.height});
    } else {
        TiffSource source(std::move(input));
        const TiffPage page = source.page(options.page);
        page.requireSupported(source.name());
        requirePixels("the page", page.size, options.maxPixels);
        Drawing whole;
        whole.rect = {0, 0, page.size.width, page.size.height};
        whole.target = page.size;
        const G4Image image = loadPage(source, page, whole.rect, stats.compressedBytes, progress);
        progress.show("decoding");
        picture = drawPage(*image, page, whole, damaged);
        picture.dpiX = page.dpiX;
        picture.dpiY = page.dpiY;
        if (damaged) damage = fmt::format("{}: {}", source.name(), describeDamage(source, page, whole.rect));
    }
    progress.show("converting");
    picture = converted(std::move(picture), options.to);
    stats.expandedBytes = picture.rowBytes() * picture.size().height;
    writePicture(picture, options.output, format, progress);
    progress.clear();
    if (options.stats) stats.print(picture.size());
    if (!damaged) return static_cast<int>(Exit::good);
    complain(damage);
    return static_cast<int>(Exit::damaged);
}
