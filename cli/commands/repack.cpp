#include "commands/repack.h"

#include "base/failure.h"
#include "base/progress.h"
#include "files/unnamed_tiff.h"
#include "tiff/g4_encoder.h"
#include "tiff/g4_page.h"
#include "tiff/row_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kTileSide = 512;

/// Codes the rows of one page into tiles or strips.
class PageWriter {
public:
    PageWriter(const UnnamedTiff& to, Size pageSize, const G4Layout& layout)
        : file_(to), size_(pageSize), tiled_(layout.tiled()), part_(layout.part(pageSize)) {
        for (std::uint32_t left = 0; left < size_.width; left += part_.width) {
            encoders_.emplace_back(part_.width);
            rows_.emplace_back(part_.width);
        }
        TIFF* const tiff = file_.get();
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size_.width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size_.height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        TIFFSetField(tiff, TIFFTAG_GROUP4OPTIONS, 0);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);  // unless the page says otherwise
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        if (tiled_) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, part_.width);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, part_.height);
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, part_.height);
        }
    }

    void add(const ChangeList& row) {
        if (encoders_.size() == 1 && part_.width == size_.width) {
            encoders_[0].add(row.data(), row.count());
        } else {
            cut(row);
            for (std::size_t i = 0; i < encoders_.size(); ++i) encoders_[i].add(rows_[i].data(), rows_[i].count());
        }
        if (++y_ % part_.height == 0 || y_ == size_.height) writeParts();
    }
    void finish() const { file_.require(TIFFWriteDirectory(file_.get()) == 1); }

private:
    /// Distributes the black runs over the columns of tiles.
    void cut(const ChangeList& row) {
        for (ChangeList& list : rows_) list.begin();
        const auto width = static_cast<std::int32_t>(part_.width);
        row.forRuns([&](std::int32_t from, std::int32_t to) {
            for (std::int32_t column = from / width; column <= (to - 1) / width; ++column) {
                const std::int32_t left = column * width;
                rows_[std::size_t(column)].addRun(std::max(from - left, 0), std::min(to - left, width));
            }
        });
        for (ChangeList& list : rows_) list.close();
    }
    void writeParts() {
        for (G4Encoder& encoder : encoders_) {
            // Tiles are whole also where the page ends within them.
            for (std::uint32_t row = y_; tiled_ && row % part_.height != 0; ++row) encoder.addWhite();
            std::vector<unsigned char> code = encoder.finish();
            const auto bytes = static_cast<tmsize_t>(code.size());
            file_.require((tiled_ ? TIFFWriteRawTile(file_.get(), number_, code.data(), bytes)
                                  : TIFFWriteRawStrip(file_.get(), number_, code.data(), bytes)) == bytes);
            ++number_;
        }
    }

    const UnnamedTiff& file_;
    const Size size_;
    const bool tiled_;
    const Size part_;
    std::vector<G4Encoder> encoders_;
    std::vector<ChangeList> rows_;
    std::uint32_t y_ = 0, number_ = 0;
};

/// A page to code: its rows can be had more than once.
struct PageInput {
    Size size;
    std::function<std::unique_ptr<RowSource>()> rows;
    std::function<void(TIFF*)> setTags;
};

class Packer {
public:
    explicit Packer(const RepackOptions& chosen) : options_(chosen), progress_(chosen.quiet), output_(chosen.output) {}

    void add(const PageInput& page) {
        requirePixels("the page", page.size, options_.maxInputPixels);
        PageWriter writer(file_, page.size, options_.layout);
        page.setTags(file_.get());
        const std::unique_ptr<RowSource> source = page.rows();
        ChangeList row(page.size.width);
        for (std::uint32_t y = 0; y < page.size.height; ++y) {
            source->next(row);
            writer.add(row);
            progress_.show("coding", y, page.size.height);
        }
        writer.finish();
    }
    /// Decodes what was written of the next page and compares every row with the source; all pages have been added.
    void check(const PageInput& page) {
        if (!written_) written_.emplace(file_.reopened());
        const TiffPage result = written_->page(++checked_);
        const std::unique_ptr<RowSource> source = page.rows(), copy = g4Rows(*written_, result);
        ChangeList wanted(page.size.width), found(page.size.width);
        for (std::uint32_t y = 0; y < page.size.height; ++y) {
            source->next(wanted);
            copy->next(found);
            if (!(wanted == found))
                throw Failure(
                    Exit::failed,
                    fmt::format("page {}: row {} has other pixels when decoded; nothing is written", checked_, y + 1));
            progress_.show("checking", y, page.size.height);
        }
    }
    void finish() {
        file_.copyTo(output_);
        output_.commit();
        progress_.clear();
    }

private:
    const RepackOptions& options_;
    Progress progress_;
    OutputFile output_;  ///< from the start: where nothing can be written is known before the work
    UnnamedTiff file_;
    std::optional<TiffSource> written_;
    unsigned checked_ = 0;
    const DecoderTables decoder_;
    const EncoderTables encoder_;
    const DetectorTables detector_;
};

void addPages(Packer& packer, InputFile input, bool check) {
    const InputFile second = input.again();  // for pages that libtiff decodes
    TiffSource source(std::move(input));
    const unsigned pages = source.countPages();
    const auto forPages = [&](const auto& visit) {
        for (unsigned number = 1; number <= pages; ++number) {
            const TiffPage page = source.page(number);
            page.requireBilevel(source.name());
            requireDrawable(source, page);
            visit(PageInput{
                page.size, [&]() { return page.isGroup4() ? g4Rows(source, page) : libtiffRows(second.again(), page); },
                [&](TIFF* to) { source.copyTags(to); }});
        }
    };
    forPages([&](const PageInput& page) { packer.add(page); });
    if (check) forPages([&](const PageInput& page) { packer.check(page); });
    packer.finish();
    source.requirePageList();
}

void addPicture(Packer& packer, const InputFile& input, bool check) {
    const std::unique_ptr<PictureReader> first = openPicture(input.again());
    const PageInput page{first->size, [&]() { return pictureRows(openPicture(input.again())); },
                         [&](TIFF* to) {
                             if (!(first->dpiX > 0)) return;
                             TIFFSetField(to, TIFFTAG_XRESOLUTION, first->dpiX);
                             TIFFSetField(to, TIFFTAG_YRESOLUTION, first->dpiY);
                             TIFFSetField(to, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
                         }};
    packer.add(page);
    if (check) packer.check(page);
    packer.finish();
}

int run(const RepackOptions& options, bool pictures) {
    if (options.output.isDone()) return static_cast<int>(Exit::good);
    InputFile input(options.input);
    options.output.requireApart(input);
    Packer packer(options);
    if (pictures && (input.kind() == InputFile::Kind::png || input.kind() == InputFile::Kind::pnm))
        addPicture(packer, input, options.check);
    else addPages(packer, std::move(input), options.check);
    return static_cast<int>(Exit::good);
}

}  // namespace

Size G4Layout::part(Size page) const {
    const std::uint32_t side = tile.value_or(kTileSide);
    if (tiled()) return {side, side};
    return {page.width, singleStrip ? page.height : std::min(*stripRows, page.height)};
}

int runEncode(const RepackOptions& options) { return run(options, true); }
int runRepack(const RepackOptions& options) { return run(options, false); }
