#include "sources/drawable.h"

#include "base/failure.h"
#include "picture/picture_reader.h"
#include "sources/open_pages.h"
#include "tiff/g4_page.h"

#include <fmt/format.h>

#include <utility>

namespace {

class DrawablePage : public Drawable {
public:
    DrawablePage(std::shared_ptr<PageSource> from, unsigned number)
        : owned_(std::move(from)), source_(*owned_), page_(source_.codedPage(number)) {
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
    const std::shared_ptr<PageSource> owned_;
    PageSource& source_;
    const TiffPage page_;
};

class DrawablePicture : public Drawable {
public:
    DrawablePicture(std::uint64_t bytes, std::unique_ptr<PictureReader> reader)
        : bytes_(bytes), reader_(std::move(reader)) {
        size = reader_->size;
        dpiX = reader_->dpiX;
        dpiY = reader_->dpiY;
        pixels = reader_->pixels;
    }
    Drawn draw(const Drawing& drawing, bool, Progress& progress) override {
        progress.show("reading");
        Picture whole = upright(reader_->read(drawing.rect), drawing.orientation);
        progress.show("scaling");
        return {scaled(std::move(whole), drawing), bytes_, {}, false};
    }

private:
    const std::uint64_t bytes_;
    const std::unique_ptr<PictureReader> reader_;
};

}  // namespace

std::unique_ptr<Drawable> openDrawable(InputFile input, unsigned page) {
    const std::uint64_t bytes = input.bytes();
    if (input.isPicture()) {
        if (page != 1) throw Failure(Exit::failed, "--page is for files of several pages");
        return std::make_unique<DrawablePicture>(bytes, openPicture(std::move(input)));
    }
    const std::shared_ptr<PageSource> source = openPages(std::move(input));
    source->countPages();
    const TiffPage stored = source->page(page);
    const std::shared_ptr<TiffPages> decoder = stored.bilevel ? nullptr : source->decoder();
    if (!decoder) return std::make_unique<DrawablePage>(source, page);
    auto picture = std::make_unique<DrawablePicture>(bytes, openTiffPicture(decoder, source->name(), page));
    picture->dpiX = stored.dpiX;
    picture->dpiY = stored.dpiY;
    picture->orientation = stored.orientation;
    return picture;
}
