#include "commands/repack.h"

#include "base/failure.h"
#include "base/progress.h"
#include "files/unnamed_tiff.h"
#include "pdf/pdf_writer.h"
#include "sources/open_pages.h"
#include "tiff/g4_page.h"
#include "tiff/row_source.h"
#include "tiff/tiff_source.h"

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
        for (std::uint64_t left = 0; left < size_.width; left += part_.width) {
            tp_encoder* opened = nullptr;
            requireDone(tp_encoder_open(part_.width, 1, nullptr, &opened), kWhat);
            encoders_.emplace_back(opened);
        }
        rows_.resize(encoders_.size());
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

    void add(const Changes& row) {
        if (part_.width == size_.width) {
            addTo(encoders_[0], row);
        } else {
            cut(row);
            for (std::size_t i = 0; i < encoders_.size(); ++i) addTo(encoders_[i], rows_[i]);
        }
        if (++y_ % part_.height == 0 || y_ == size_.height) writeParts();
    }
    void finish() const { file_.require(TIFFWriteDirectory(file_.get()) == 1); }

private:
    static constexpr const char* kWhat = "coding";

    static void addTo(const EncoderHandle& encoder, const Changes& row) {
        requireDone(tp_encoder_add_changes(encoder.get(), row.data(), static_cast<std::uint32_t>(row.size())), kWhat);
    }
    /// Distributes the black runs over the columns of tiles.
    void cut(const Changes& row) {
        for (Changes& part : rows_) part.clear();
        const std::uint32_t width = part_.width;
        forRuns(row, size_.width, [&](std::uint32_t from, std::uint32_t to) {
            for (std::uint32_t column = from / width; column <= (to - 1) / width; ++column) {
                const std::uint32_t left = column * width;
                rows_[column].push_back(std::max(from, left) - left);
                if (to - left < width) rows_[column].push_back(to - left);
            }
        });
    }
    void writeParts() {
        for (const EncoderHandle& encoder : encoders_) {
            // Tiles are whole also where the page ends within them.
            for (std::uint32_t row = y_; tiled_ && row % part_.height != 0; ++row) addTo(encoder, {});
            const void* code = nullptr;
            std::size_t size = 0;
            requireDone(tp_encoder_finish(encoder.get(), &code, &size), kWhat);
            // libtiff does not change raw data of this bit order.
            void* const data = const_cast<void*>(code);
            const auto bytes = static_cast<tmsize_t>(size);
            file_.require((tiled_ ? TIFFWriteRawTile(file_.get(), number_, data, bytes)
                                  : TIFFWriteRawStrip(file_.get(), number_, data, bytes)) == bytes);
            ++number_;
        }
    }

    const UnnamedTiff& file_;
    const Size size_;
    const bool tiled_;
    const Size part_;
    std::vector<EncoderHandle> encoders_;
    std::vector<Changes> rows_;
    std::uint32_t y_ = 0, number_ = 0;
};

/// A page to code: its rows can be had more than once.
struct PageInput {
    Size size;
    std::function<std::unique_ptr<RowSource>()> rows;
    std::function<void(TIFF*)> setTags;
};

bool isPdf(const std::string& path) { return path.ends_with(".pdf") || path.ends_with(".PDF"); }

/// An image of a PDF file has its codes in one piece.
RepackOptions laidOut(RepackOptions options) {
    if (!isPdf(options.output.path)) return options;
    if (options.layout.tile || options.layout.stripRows)
        throw Failure(Exit::failed, "a page of a PDF file is one strip: no --tile and no --strip-rows");
    options.layout.singleStrip = true;
    return options;
}

/// The rows of pages from the first on, as far as they are few: to compare with them then takes no second decoding.
class KeptRows : public RowSource {
public:
    void begin(Size page) {
        if (full_) return;
        pages_.push_back(page);
        start_ = values_.size();
    }
    void add(const Changes& row) {
        if (full_) return;
        full_ = values_.size() + row.size() >= kMostValues;
        if (full_) {
            pages_.pop_back();
            values_.resize(start_);
        } else {
            values_.push_back(static_cast<std::uint32_t>(row.size()));
            values_.insert(values_.end(), row.begin(), row.end());
        }
    }
    const std::vector<Size>& pages() const { return pages_; }
    void next(Changes& row) override {
        const auto first = values_.begin() + static_cast<std::ptrdiff_t>(read_ + 1);
        row.assign(first, first + values_[read_]);
        read_ += 1 + row.size();
    }

private:
    static constexpr std::size_t kMostValues = 1 << 20;
    std::vector<Size> pages_;
    Changes values_;  ///< of each row their number and the changes
    std::size_t start_ = 0, read_ = 0;
    bool full_ = false;
};

class Packer {
public:
    explicit Packer(const RepackOptions& chosen) : options_(chosen), progress_(chosen.quiet), output_(chosen.output) {}

    void add(const PageInput& page) {
        PageWriter writer(file_, page.size, options_.layout);
        page.setTags(file_.get());
        const std::unique_ptr<RowSource> source = page.rows();
        if (options_.check) kept_.begin(page.size);
        Changes row;
        for (std::uint32_t y = 0; y < page.size.height; ++y) {
            source->next(row);
            writer.add(row);
            if (options_.check) kept_.add(row);
            progress_.show("coding", y, page.size.height);
        }
        writer.finish();
    }
    /// Decodes what was written and compares every row, as far as rows were kept; all pages have been added. The result
    /// is how many pages that were.
    std::size_t checkKept() {
        for (const Size page : kept_.pages()) check(page, kept_);
        return kept_.pages().size();
    }
    /// The same for the next page, with the source.
    void check(const PageInput& page) { check(page.size, *page.rows()); }
    void finish() {
        if (isPdf(options_.output.path)) writePdf(file_.reopened(), output_);
        else file_.copyTo(output_);
        output_.commit();
        progress_.clear();
    }

    Progress& progress() { return progress_; }

private:
    void check(Size page, RowSource& source) {
        if (!written_) written_.emplace(file_.reopened());
        const TiffPage result = written_->page(++checked_);
        const G4Page decoded(*written_, result, progress_);
        const std::unique_ptr<RowSource> copy = g4Rows(decoded);
        Changes wanted, found;
        for (std::uint32_t y = 0; y < page.height; ++y) {
            source.next(wanted);
            copy->next(found);
            if (wanted != found)
                throw Failure(
                    Exit::failed,
                    fmt::format("page {}: row {} has other pixels when decoded; nothing is written", checked_, y + 1));
            progress_.show("checking", y, page.height);
        }
    }

    const RepackOptions& options_;
    Progress progress_;
    OutputFile output_;  ///< from the start: where nothing can be written is known before the work
    UnnamedTiff file_;
    KeptRows kept_;
    std::optional<TiffSource> written_;
    unsigned checked_ = 0;
    const DetectorTables detector_;
};

/// A grey or colour page as rows of a bilevel picture.
class DitheredPage : public PictureReader {
public:
    explicit DitheredPage(PictureReader& from)
        : picture_(dithered(from.read({0, 0, from.size.width, from.size.height}))) {
        size = from.size;
    }
    void nextRow(unsigned char* row) override { picture_.copyRow(y_++, row); }

private:
    const Picture picture_;
    std::uint32_t y_ = 0;
};

void requireUndamaged(const G4Page& page) {
    if (const auto damage = page.damage(); !damage.empty()) throw Failure(Exit::damaged, page.describeFirst(damage));
}

void addPages(Packer& packer, InputFile input, const RepackOptions& options) {
    const auto opened = openPages(std::move(input));
    PageSource& source = *opened;
    const std::vector<unsigned> pages = options.pages.of(source.countPages());
    const auto forPages = [&](std::size_t first, const auto& visit) {
        for (std::size_t i = first; i < pages.size(); ++i) {
            const unsigned number = pages[i];
            const TiffPage stored = source.page(number);
            requirePixels(fmt::format("{}: page {}", source.name(), number), stored.size, options.maxInputPixels);
            if (const auto decoder = options.dither && !stored.bilevel ? source.decoder() : nullptr) {
                const auto rows = [&]() {
                    const auto whole = openTiffPicture(decoder, source.name(), number);
                    return pictureRows(std::make_unique<DitheredPage>(*whole));
                };
                const auto setTags = [&](TIFF* to) {
                    source.copyTags(to);
                    TIFFSetField(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
                };
                visit(PageInput{stored.size, rows, setTags}, nullptr);
                continue;
            }
            const TiffPage page = source.codedPage(number);
            const G4Page codes(source, page, packer.progress());
            const auto rows = [&]() { return g4Rows(codes); };
            visit(PageInput{page.size, rows, [&](TIFF* to) { source.copyTags(to); }}, &codes);
        }
    };
    forPages(0, [&](const PageInput& page, const G4Page* codes) {
        if (codes) requireUndamaged(*codes);
        packer.add(page);
    });
    if (options.check) forPages(packer.checkKept(), [&](const PageInput& page, const auto&) { packer.check(page); });
    packer.finish();
    source.requirePageList();
}

void addPicture(Packer& packer, const InputFile& input, const RepackOptions& options) {
    const std::unique_ptr<PictureReader> first = openPicture(input.again());
    requirePixels("the picture", first->size, options.maxInputPixels);
    const PageInput page{first->size, [&]() { return pictureRows(openPicture(input.again())); },
                         [&](TIFF* to) {
                             if (!(first->dpiX > 0)) return;
                             TIFFSetField(to, TIFFTAG_XRESOLUTION, first->dpiX);
                             TIFFSetField(to, TIFFTAG_YRESOLUTION, first->dpiY);
                             TIFFSetField(to, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
                         }};
    packer.add(page);
    if (options.check && packer.checkKept() == 0) packer.check(page);
    packer.finish();
}

int run(const RepackOptions& given, bool pictures) {
    const RepackOptions options = laidOut(given);
    if (options.output.isDone()) return static_cast<int>(Exit::good);
    InputFile input(options.input);
    options.output.requireApart(input);
    Packer packer(options);
    if (pictures && input.isPicture()) addPicture(packer, input, options);
    else addPages(packer, std::move(input), options);
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
