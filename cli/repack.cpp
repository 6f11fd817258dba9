#include "repack.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "failure.h"
#include "g4_encoder.h"
#include "g4_page.h"
#include "progress.h"
#include "row_source.h"
#include "unnamed_tiff.h"

namespace {

constexpr std::uint32_t kTileSide = 512;

/// Codes the rows of one page into tiles or strips.
class PageWriter {
public:
    PageWriter(const UnnamedTiff& to, Size pageSize, const G4Layout& layout)
        : file(to), size(pageSize), tiled(layout.tiled()), part(layout.part(pageSize)) {
        for (std::uint32_t left = 0; left < size.width; left += part.width) {
            encoders.emplace_back(part.width);
            rows.emplace_back(part.width);
        }
        TIFF* const tiff = file.get();
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
        TIFFSetField(tiff, TIFFTAG_GROUP4OPTIONS, 0);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);  // unless the page says otherwise
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        if (tiled) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, part.width);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, part.height);
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, part.height);
        }
    }

    void add(const ChangeList& row) {
        if (encoders.size() == 1 && part.width == size.width) {
            encoders[0].add(row.data(), row.count());
        } else {
            cut(row);
            for (std::size_t i = 0; i < encoders.size(); ++i) encoders[i].add(rows[i].data(), rows[i].count());
        }
        if (++y % part.height == 0 || y == size.height) writeParts();
    }
    void finish() const { file.require(TIFFWriteDirectory(file.get()) == 1); }

private:
    /// Distributes the black runs over the columns of tiles.
    void cut(const ChangeList& row) {
        for (ChangeList& list : rows) list.begin();
        const auto width = static_cast<std::int32_t>(part.width);
        row.forRuns([&](std::int32_t from, std::int32_t to) {
            for (std::int32_t column = from / width; column <= (to - 1) / width; ++column) {
                const std::int32_t left = column * width;
                rows[std::size_t(column)].addRun(std::max(from - left, 0), std::min(to - left, width));
            }
        });
        for (ChangeList& list : rows) list.close();
    }
    void writeParts() {
        for (G4Encoder& encoder : encoders) {
            // Tiles are whole also where the page ends within them.
            for (std::uint32_t row = y; tiled && row % part.height != 0; ++row) encoder.addWhite();
            std::vector<unsigned char> code = encoder.finish();
            const auto bytes = static_cast<tmsize_t>(code.size());
            file.require((tiled ? TIFFWriteRawTile(file.get(), number, code.data(), bytes)
                                : TIFFWriteRawStrip(file.get(), number, code.data(), bytes)) == bytes);
            ++number;
        }
    }

    const UnnamedTiff& file;
    const Size size;
    const bool tiled;
    const Size part;
    std::vector<G4Encoder> encoders;
    std::vector<ChangeList> rows;
    std::uint32_t y = 0, number = 0;
};

/// A page to code: its rows can be had more than once.
struct PageInput {
    Size size;
    std::function<std::unique_ptr<RowSource>()> rows;
    std::function<void(TIFF*)> setTags;
};

class Packer {
public:
    explicit Packer(const RepackOptions& chosen) : options(chosen), progress(chosen.quiet), output(chosen.output) {}

    void add(const PageInput& page) {
        requirePixels("the page", page.size, options.maxInputPixels);
        PageWriter writer(file, page.size, options.layout);
        page.setTags(file.get());
        const std::unique_ptr<RowSource> source = page.rows();
        ChangeList row(page.size.width);
        for (std::uint32_t y = 0; y < page.size.height; ++y) {
            source->next(row);
            writer.add(row);
            progress.show("coding", y, page.size.height);
        }
        writer.finish();
    }
    /// Decodes what was written of the next page and compares every row with the source; all pages have been added.
    void check(const PageInput& page) {
        if (!written) written.emplace(file.reopened());
        const TiffPage result = written->page(++checked);
        const std::unique_ptr<RowSource> source = page.rows(), copy = g4Rows(*written, result);
        ChangeList wanted(page.size.width), found(page.size.width);
        for (std::uint32_t y = 0; y < page.size.height; ++y) {
            source->next(wanted);
            copy->next(found);
            if (!(wanted == found))
                throw Failure(
                    Exit::failed,
                    fmt::format("page {}: row {} has other pixels when decoded; nothing is written", checked, y + 1));
            progress.show("checking", y, page.size.height);
        }
    }
    void finish() {
        file.copyTo(output);
        output.commit();
        progress.clear();
    }

private:
    const RepackOptions& options;
    Progress progress;
    OutputFile output;  ///< from the start: where nothing can be written is known before the work
    UnnamedTiff file;
    std::optional<TiffSource> written;
    unsigned checked = 0;
    const DecoderTables decoder;
    const EncoderTables encoder;
    const DetectorTables detector;
};

void addPages(Packer& packer, InputFile input, bool check) {
    const InputFile second = input.again();  // for pages that libtiff decodes
    TiffSource source(std::move(input));
    const unsigned pages = source.countPages();
    if (!source.damageOfPageList().empty())
        throw Failure(Exit::damaged,
                      fmt::format("{}: the list of pages is damaged: {}", source.name(), source.damageOfPageList()));
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
}

int run(const RepackOptions& options, bool pictures) {
    InputFile input(options.input);
    Packer packer(options);
    if (pictures && (input.kind() == InputFile::Kind::png || input.kind() == InputFile::Kind::pnm))
        addPicture(packer, input, options.check);
    else addPages(packer, std::move(input), options.check);
    packer.finish();
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
