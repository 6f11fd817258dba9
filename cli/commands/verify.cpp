#include "commands/verify.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/file_reports.h"
#include "picture/picture.h"
#include "sources/open_pages.h"
#include "tiff/g4_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace {

/// The same file's pixels as libtiff decodes them.
class Reference {
public:
    explicit Reference(const InputFile& input) : pages_(input.again(), "rm"), tiff_(pages_.get()) {
        if (!tiff_) throw Failure(Exit::unsupported, input.name() + ": libtiff cannot read the file");
    }
    /// Decodes a tile of a page; false when libtiff cannot.
    bool decode(const TiffPage& page, std::uint32_t k) {
        if (!pages_.goTo(page.number)) return false;
        const tmsize_t bytes = page.tiled ? TIFFTileSize(tiff_) : TIFFVStripSize(tiff_, page.rowsOfTile(k));
        pixels_.assign(static_cast<std::size_t>(bytes), 0);
        return (page.tiled ? TIFFReadEncodedTile(tiff_, k, pixels_.data(), bytes)
                           : TIFFReadEncodedStrip(tiff_, k, pixels_.data(), bytes)) == bytes;
    }
    /// The tile's rows, each as wide as the tile in whole bytes; 1 is coded black.
    const unsigned char* pixels() const { return pixels_.data(); }

private:
    TiffPages pages_;
    TIFF* const tiff_;
    std::vector<unsigned char> pixels_;
};

/// A tile of which libtiff has other pixels, or none.
struct Difference {
    std::uint32_t tile = 0, row = 0;
    const char* reason = "";
};

struct PageReport {
    std::uint64_t rows = 0;  ///< decoded
    std::vector<tp_damage> damaged;
    std::vector<Difference> different;
};

/// The tile's first row on the page in which the first `width` pixels are not those that libtiff has.
std::optional<Difference> compare(const G4Page& codes, std::uint32_t k, Reference& reference) {
    const TiffPage& page = codes.what();
    if (!reference.decode(page, k)) return Difference{k, 0, "libtiff cannot decode it"};
    auto view = sized<tp_view>();
    view.left = k % page.tilesAcross * page.tile.width;
    view.top = k / page.tilesAcross * page.tile.height;
    view.width = view.out_width = std::min(page.tile.width, page.size.width - view.left);
    view.height = view.out_height = page.rowsOfTile(k);
    view.mode = TP_NEAREST;
    view.format = TP_BITS;
    // Ink is 1; as coded, black is.
    view.flags = page.whiteIsZero() ? 0 : TP_INVERT;
    const std::size_t stride = (std::size_t{view.width} + 7) / 8, tileStride = (std::size_t{page.tile.width} + 7) / 8;
    std::vector<unsigned char> pixels(stride * view.height);
    view.pixels = pixels.data();
    view.stride = static_cast<std::ptrdiff_t>(stride);
    requireDone(tp_page_render(codes.get(), &view, 1, nullptr), codes.name());
    const unsigned char last = static_cast<unsigned char>(view.width % 8 ? 0xFF00 >> view.width % 8 : 0xFF);
    for (std::uint32_t row = 0; row < view.height; ++row) {
        const unsigned char *const ours = pixels.data() + row * stride, *const theirs =
                                                                            reference.pixels() + row * tileStride;
        if (!std::equal(ours, ours + stride - 1, theirs) || ((ours[stride - 1] ^ theirs[stride - 1]) & last) != 0)
            return Difference{k, row, "libtiff has other pixels"};
    }
    return std::nullopt;
}

PageReport verify(PageSource& source, const TiffPage& page, Reference* reference) {
    Progress progress(true);
    const G4Page codes(source, page, progress);
    PageReport report;
    report.damaged = codes.damage();
    std::vector<bool> bad(page.tiles);
    for (const tp_damage& damage : report.damaged) bad[damage.tile] = damage.kind != TP_LEFT_OVER;
    for (std::uint32_t k = 0; k < page.tiles; ++k) {
        if (source.isEmpty(k)) continue;  // as if coded all white
        if (!bad[k]) report.rows += page.rowsOfTile(k);
        if (reference && !bad[k])
            if (const auto difference = compare(codes, k, *reference)) report.different.push_back(*difference);
    }
    for (const tp_damage& damage : report.damaged)
        if (bad[damage.tile]) report.rows += std::min(damage.row, page.rowsOfTile(damage.tile));
    return report;
}

Json toJson(const std::vector<tp_damage>& damaged) {
    Json list = Json::array();
    for (const tp_damage& damage : damaged)
        list.push_back(
            {{"tile", damage.tile + 1}, {"row", damage.row + 1}, {"byte", damage.byte}, {"reason", reasonOf(damage)}});
    return list;
}

Json toJson(const std::vector<Difference>& different) {
    Json list = Json::array();
    for (const Difference& tile : different)
        list.push_back({{"tile", tile.tile + 1}, {"row", tile.row + 1}, {"reason", tile.reason}});
    return list;
}

void printPage(const TiffPage& page, const PageReport& report) {
    print("  page {}: {} {}{}, {} rows decoded", page.number, page.tiles, page.tileName(), page.tiles == 1 ? "" : "s",
          report.rows);
    if (page.emptyTiles > 0) print(", {} without data", page.emptyTiles);
    print("{}\n", report.damaged.empty() && report.different.empty() ? ", good" : "");
    for (const tp_damage& damage : report.damaged) print("    damaged: {}\n", describe(page, damage));
    for (const Difference& tile : report.different)
        print("    different: {} {} of {}, row {} of it: {}\n", page.tileName(), tile.tile + 1, page.tiles,
              tile.row + 1, tile.reason);
}

Exit verifyPage(PageSource& source, unsigned number, const VerifyOptions& options, Reference* reference, Json& entry) {
    requirePixels(fmt::format("{}: page {}", source.name(), number), source.page(number).size, options.maxInputPixels);
    const TiffPage page = source.codedPage(number);
    const PageReport report = verify(source, page, reference);
    if (!options.json) printPage(page, report);
    entry.update({{"tiles", page.tiles},
                  {"emptyTiles", page.emptyTiles},
                  {"rows", report.rows},
                  {"damaged", toJson(report.damaged)},
                  {"different", toJson(report.different)}});
    return report.damaged.empty() && report.different.empty() ? Exit::good : Exit::damaged;
}

Exit verifyFile(const std::string& path, const VerifyOptions& options, Json& entry) {
    InputFile input(path);
    std::optional<Reference> reference;
    if (options.reference) reference.emplace(input);
    const auto opened = openPages(std::move(input));
    PageSource& source = *opened;
    const unsigned pages = source.countPages();
    if (!options.json) print("{}: {} page{}\n", source.name(), pages, pages == 1 ? "" : "s");
    entry["pages"] = Json::array();
    Exit worst = Exit::good;
    for (const unsigned number : options.pages.of(pages)) {
        Json page = {{"page", number}};
        worst = worse(worst, reportEntry(page, [&](Json& into) {
                          return verifyPage(source, number, options, reference ? &*reference : nullptr, into);
                      }));
        entry["pages"].push_back(std::move(page));
    }
    source.requirePageList();
    return worst;
}

}  // namespace

int runVerify(const VerifyOptions& options) {
    return reportFiles(options.files, options.json,
                       [&](const std::string& path, Json& entry) { return verifyFile(path, options, entry); });
}
