#include "commands/info.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/file_reports.h"
#include "sources/open_pages.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

const char* photometricName(const TiffPage& page) {
    return page.photometric == 0 ? "WhiteIsZero" : page.photometric == 1 ? "BlackIsZero" : "other";
}

double expandedBytes(const TiffPage& page) { return (page.size.width + 7.0) / 8 * page.size.height; }

Json toJson(const TiffPage& page) {
    Json json = {{"page", page.number},
                 {"width", page.size.width},
                 {"height", page.size.height},
                 {"dpi", nullptr},
                 {"layout", page.tiled ? "tiles" : "strips"},
                 {"tileWidth", page.tile.width},
                 {"tileHeight", page.tile.height},
                 {"tiles", page.tiles},
                 {"emptyTiles", page.emptyTiles},
                 {"truncatedTiles", page.truncatedTiles},
                 {"compressedBytes", page.compressedBytes},
                 {"fillOrder", page.fillOrder},
                 {"photometric", page.photometric},
                 {"orientation", page.orientation},
                 {"mayBeUncompressed", page.mayBeUncompressed},
                 {"supported", page.unsupported.empty()},
                 {"unsupported", page.unsupported}};
    if (page.dpiX > 0) json["dpi"] = {page.dpiX, page.dpiY};
    return json;
}

void printPage(const TiffPage& page) {
    const std::string dpi = page.dpiX > 0 ? fmt::format("{:.5g} x {:.5g} dpi", page.dpiX, page.dpiY) : "dpi not given";
    print("  page {}: {} x {} pixels, {}\n", page.number, page.size.width, page.size.height, dpi);
    print("    {} {}{} of {} x {} pixels", page.tiles, page.tileName(), page.tiles == 1 ? "" : "s", page.tile.width,
          page.tile.height);
    if (!page.tiled && page.tiles > 1 && page.rowsOfTile(page.tiles - 1) != page.tile.height)
        print(", the last {} high", page.rowsOfTile(page.tiles - 1));
    print("\n    {} bytes compressed", page.compressedBytes);
    if (page.unsupported.empty() && page.compressedBytes > 0)
        print(", 1 : {:.1f}", expandedBytes(page) / static_cast<double>(page.compressedBytes));
    print("\n    fill order {}, photometric {} ({})", page.fillOrder, page.photometric, photometricName(page));
    if (page.orientation != 1) print(", orientation {}", page.orientation);
    print("\n");
    if (page.emptyTiles > 0) print("    {}s without data: {}\n", page.tileName(), page.emptyTiles);
    if (page.truncatedTiles > 0)
        print("    {}s that pass the end of the file: {}\n", page.tileName(), page.truncatedTiles);
    if (page.mayBeUncompressed) print("    may have parts in uncompressed mode, which count as damaged\n");
    for (const std::string& why : page.unsupported) print("    not supported: {}\n", why);
}

Exit report(const std::string& path, const InfoOptions& options, Json& entry) {
    const auto opened = openPages(InputFile(path));
    PageSource& source = *opened;
    const unsigned pages = source.countPages();
    entry["pageCount"] = pages;
    entry["pages"] = Json::array();
    if (!options.json) print("{}: {} page{}\n", source.name(), pages, pages == 1 ? "" : "s");
    Exit worst = Exit::good;
    for (const unsigned number : options.pages.of(pages)) {
        Json json = {{"page", number}};
        worst = worse(worst, reportEntry(json, [&](Json& into) {
                          const TiffPage page = source.page(number);
                          into = toJson(page);
                          if (!options.json) printPage(page);
                          return Exit::good;
                      }));
        entry["pages"].push_back(std::move(json));
    }
    source.requirePageList();
    return worst;
}

}  // namespace

int runInfo(const InfoOptions& options) {
    return reportFiles(options.files, options.json,
                       [&](const std::string& path, Json& entry) { return report(path, options, entry); });
}
