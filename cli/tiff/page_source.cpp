#include "tiff/page_source.h"

#include "base/failure.h"
#include "tiff/packed_rows.h"
#include "tiff/page_api.h"

#include <fmt/format.h>

#include <algorithm>

std::uint32_t TiffPage::rowsOfTile(std::uint32_t k) const {
    return std::min(tile.height, size.height - k / tilesAcross * tile.height);
}

void TiffPage::requireSupported(const std::string& file) const {
    if (!unsupported.empty())
        throw Failure(Exit::unsupported, fmt::format("{}: page {}: {}", file, number, unsupported.front()));
}

void PageSource::requirePageList() const {
    if (const std::string damage = damageOfPageList(); !damage.empty()) throw Failure(Exit::damaged, damage);
}

TiffPage PageSource::codedPage(unsigned number) {
    forgetCodes();
    TiffPage coded = page(number);
    coded.requireSupported(name());
    if (coded.isGroup4()) return coded;
    const std::string what = fmt::format("{}: page {}", name(), number);
    const std::unique_ptr<PackedRows> from = rows(coded);
    tp_encoder* opened = nullptr;
    requireDone(tp_encoder_open(coded.size.width, 1, nullptr, &opened), what);
    const EncoderHandle encoder(opened);
    for (std::uint32_t y = 0; y < coded.size.height; ++y)
        requireDone(tp_encoder_add_bits(opened, from->next(), 0, 1), what);
    const void* data = nullptr;
    std::size_t size = 0;
    requireDone(tp_encoder_finish(opened, &data, &size), what);
    const auto* const bytes = static_cast<const unsigned char*>(data);
    recoded_.assign(bytes, bytes + size);
    coded.compression = COMPRESSION_CCITTFAX4;
    coded.fillOrder = 1;
    coded.tiled = coded.mayBeUncompressed = false;
    coded.recoded = true;
    coded.tile = coded.size;
    coded.tiles = coded.tilesAcross = 1;
    coded.emptyTiles = coded.truncatedTiles = 0;
    coded.compressedBytes = size;
    return coded;
}

void PageSource::readTile(std::uint32_t k, unsigned char* buffer, std::uint64_t bytes) {
    if (recoded_.empty()) readStored(k, buffer, bytes);
    else std::copy_n(recoded_.begin(), bytes, buffer);
}
