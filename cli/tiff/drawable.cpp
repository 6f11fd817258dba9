#include "tiff/drawable.h"

#include "base/failure.h"
#include "picture/picture_reader.h"
#include "tiff/g4_page.h"

#include <fmt/format.h>

#include <utility>

namespace {

class DrawablePage : public Drawable {
public:
    DrawablePage(InputFile input, unsigned number) : source_(std::move(input)), page_(source_.page(number)) {
        page_.requireSupported(source_.name());
        source_.countPages();
        size = page_.size;
        dpiX = page_.dpiX;
        dpiY = page_.dpiY;
        orientation = page_.orientation;
    }

    Drawn draw(const Drawing& drawing, bool salvage, Progress& progress) override {
        G4Page codes(source_, page_, drawing.rect, progress);
        progress.show("looking for damage");
        const auto damage = codes.damage();
        progress.show("decoding");
        Drawn drawn;
        drawn.damaged = !damage.empty();
        drawn.picture = drawPage(codes, drawing, drawn.damaged, salvage);
        drawn.compressedBytes = codes.compressedBytes();
        if (const std::string list = source_.damageOfPageList(); !list.empty()) drawn.remarks.push_back(list);
        if (page_.emptyTiles > 0)
            drawn.remarks.push_back(fmt::format("{}: {} of {} {}s have no data and are drawn empty", codes.name(),
                                                page_.emptyTiles, page_.tiles, page_.tileName()));
        if (!salvage && drawn.damaged) drawn.remarks.push_back(codes.describeFirst(damage));
        if (salvage)
            for (const tp_damage& tile : damage)
                drawn.remarks.push_back(fmt::format("{}: damaged Group 4 data, blank from there on: {}", codes.name(),
                                                    describe(page_, tile)));
        return drawn;
    }

private:
    TiffSource source_;
    const TiffPage page_;
};

class DrawablePicture : public Drawable {
public:
    explicit DrawablePicture(InputFile input) : bytes_(input.bytes()), reader_(openPicture(std::move(input))) {
        size = reader_->size;
        dpiX = reader_->dpiX;
        dpiY = reader_->dpiY;
        pixels = reader_->pixels;
    }
    Drawn draw(const Drawing& drawing, bool, Progress& progress) override {
        progress.show("reading");
        Picture whole = reader_->read(drawing.rect);
        progress.show("scaling");
        return {scaled(std::move(whole), drawing), bytes_, {}, false};
    }

private:
    const std::uint64_t bytes_;
    const std::unique_ptr<PictureReader> reader_;
};

}  // namespace

std::unique_ptr<Drawable> openDrawable(InputFile input, unsigned page) {
    if (!input.isPicture()) return std::make_unique<DrawablePage>(std::move(input), page);
    if (page != 1) throw Failure(Exit::failed, "--page is for TIFF files");
    return std::make_unique<DrawablePicture>(std::move(input));
}
