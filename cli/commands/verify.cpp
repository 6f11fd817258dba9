#include "commands/verify.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/file_reports.h"
#include "picture/picture.h"
#include "tiff/g4_page.h"
#include "tiff/tiff_source.h"
#include "tiff/tile_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace {

/// The same file's pixels as libtiff decodes them.
class Reference {
public:
    explicit Reference(InputFile input) {
        tiff_ = messages_.open(input.release(), input.name(), "rm");
        if (!tiff_) throw Failure(Exit::unsupported, input.name() + ": libtiff cannot read the file");
    }
    /// Decodes a tile of a page; false when libtiff cannot.
    bool decode(const TiffPage& page, std::uint32_t k) {
        if (!TIFFSetDirectory(tiff_.get(), static_cast<tdir_t>(page.number - 1))) return false;
        const tmsize_t bytes = page.tiled ? TIFFTileSize(tiff_.get()) : TIFFVStripSize(tiff_.get(), page.rowsOfTile(k));
        rowBytes_ = (std::size_t{page.tile.width} + 7) / 8;
        pixels_.assign(static_cast<std::size_t>(bytes), 0);
        return (page.tiled ? TIFFReadEncodedTile(tiff_.get(), k, pixels_.data(), bytes)
                           : TIFFReadEncodedStrip(tiff_.get(), k, pixels_.data(), bytes)) == bytes;
    }
    bool equals(std::uint32_t row, const std::vector<unsigned char>& packed) const {
        return std::equal(packed.begin(), packed.end(), pixels_.begin() + static_cast<std::ptrdiff_t>(row * rowBytes_));
    }

private:
    LibtiffMessages messages_;
    TiffHandle tiff_;
    std::vector<unsigned char> pixels_;
    std::size_t rowBytes_ = 0;
};

/// A row's black runs as packed pixels.
void pack(const TileRows& tile, std::uint32_t width, std::vector<unsigned char>& packed) {
    packed.assign((std::size_t{width} + 7) / 8, 0);
    const std::vector<std::int32_t>& list = tile.list();
    for (std::int32_t i = 2; i < tile.count() - 2; i += 2)
        for (std::int32_t x = list[std::size_t(i) - 1] - 1; x < list[std::size_t(i)] - 1; ++x)
            packed[std::size_t(x) / 8] |= static_cast<unsigned char>(0x80 >> x % 8);
}

struct PageReport {
    std::uint64_t rows = 0;  ///< decoded
    std::vector<TileDamage> damaged;
    std::vector<TileDamage> different;  ///< from the reference, or without one
};

/// The tile against libtiff's decode of it: the first difference.
std::optional<TileDamage> compare(Reference& reference, const TiffPage& page, std::uint32_t k,
                                  std::vector<unsigned char>& words) {
    if (!reference.decode(page, k)) return TileDamage{k, 0, 0, "libtiff cannot decode it"};
    TileRows rows(words, page.tile.width);
    std::vector<unsigned char> packed;
    std::uint32_t row = 0;
    std::optional<TileDamage> difference;
    decodeRows(rows, k, page.rowsOfTile(k), [&](const TileRows& tile) {
        pack(tile, page.tile.width, packed);
        if (!difference && !reference.equals(row, packed))
            difference = TileDamage{k, row, tile.bit() / 8, "libtiff has other pixels"};
        ++row;
    });
    return difference;
}

PageReport verify(TiffSource& source, const TiffPage& page, Reference* reference) {
    PageReport report;
    const DecoderTables tables;
    std::vector<unsigned char> words;
    for (std::uint32_t k = 0; k < page.tiles; ++k) {
        if (source.isEmpty(k)) continue;  // as if coded all white
        readWords(source, page, k, words);
        TileRows rows(words, page.tile.width);
        const std::uint32_t height = page.rowsOfTile(k);
        const auto damage = decodeRows(rows, k, height);
        report.rows += damage ? damage->row : height;
        if (damage) {
            report.damaged.push_back(*damage);
        } else if (reference) {
            if (const auto difference = compare(*reference, page, k, words)) report.different.push_back(*difference);
        }
    }
    return report;
}

Json toJson(const std::vector<TileDamage>& tiles) {
    Json list = Json::array();
    for (const TileDamage& tile : tiles)
        list.push_back({{"tile", tile.tile + 1}, {"row", tile.row + 1}, {"byte", tile.byte}, {"reason", tile.reason}});
    return list;
}

void printPage(const TiffPage& page, const PageReport& report) {
    print("  page {}: {} {}{}, {} rows decoded", page.number, page.tiles, page.tileName(), page.tiles == 1 ? "" : "s",
          report.rows);
    if (page.emptyTiles > 0) print(", {} without data", page.emptyTiles);
    print("{}\n", report.damaged.empty() && report.different.empty() ? ", good" : "");
    for (const TileDamage& tile : report.damaged) print("    damaged: {}\n", describe(page, tile));
    for (const TileDamage& tile : report.different) print("    different: {}\n", describe(page, tile));
}

Exit verifyPage(TiffSource& source, unsigned number, const VerifyOptions& options, Reference* reference, Json& entry) {
    const TiffPage page = source.page(number);
    page.requireSupported(source.name());
    requirePixels(fmt::format("{}: page {}", source.name(), number), page.size, options.maxInputPixels);
    requireDrawable(source, page);
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
    if (options.reference) reference.emplace(input.again());
    TiffSource source(std::move(input));
    const unsigned pages = source.countPages();
    if (!options.json) print("{}: {} page{}\n", source.name(), pages, pages == 1 ? "" : "s");
    entry["pages"] = Json::array();
    Exit worst = Exit::good;
    for (unsigned number = 1; number <= pages; ++number) {
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
