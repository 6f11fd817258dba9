#include "commands/convert.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/stats.h"
#include "commands/page_count.h"
#include "picture/picture_writer.h"
#include "sources/drawable.h"

#include <utility>

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

int convertOne(const ConvertOptions& options, InputFile input) {
    Stats stats;
    Progress progress(options.quiet);
    const Coding coding(options.format, options.output.path, options.quality);
    const auto source = openDrawable(std::move(input), options.page);
    const Shown shown(source->size, source->dpiX, source->dpiY, source->orientation, options.show);
    Drawing whole;
    whole.rect = {0, 0, source->size.width, source->size.height};
    whole.orientation = shown.orientation;
    whole.target = shown.stretched(shown.size);
    requirePixels("the picture", whole.target, options.maxPixels);
    coding.require(options.to, whole.target);
    Drawn drawn = source->draw(whole, false, progress);
    drawn.picture.dpiX = shown.dpiX * shown.stretchX;
    drawn.picture.dpiY = shown.dpiY * shown.stretchY;
    progress.show("converting");
    const Picture picture = converted(std::move(drawn.picture), options.to);
    stats.compressedBytes = drawn.compressedBytes;
    stats.expandedBytes = picture.rowBytes() * picture.size().height;
    writePicture(picture, options.output, coding, progress);
    progress.clear();
    if (options.stats) stats.print(picture.size());
    for (const std::string& remark : drawn.remarks) complain(remark);
    return static_cast<int>(drawn.damaged ? Exit::damaged : Exit::good);
}

}  // namespace

int runConvert(const ConvertOptions& options) {
    return forEachPage(options.input, options.pages, options.output,
                       [&](InputFile input, unsigned page, const OutputOptions& output) {
                           ConvertOptions one = options;
                           one.page = page;
                           one.output = output;
                           return convertOne(one, std::move(input));
                       });
}
