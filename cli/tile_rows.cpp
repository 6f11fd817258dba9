#include "tile_rows.h"

#include <algorithm>
#include <functional>

#include "failure.h"
#include "tilepress/ccitt.h"

// Beside the decoder's own: decoders that paint as they go would take such a row for damaged too.
constexpr int kGoesBack = -1;

DecoderTables::DecoderTables() {
    if (!cit_enable_decode_gr4()) throw Failure(Exit::tooLarge, "not enough memory");
}
DecoderTables::~DecoderTables() { cit_disable_decode_gr4(); }

TileRows::TileRows(std::vector<unsigned char>& words, std::uint32_t tileWidth)
    : data(words), width(static_cast<std::int32_t>(tileWidth)), row(std::size_t{tileWidth} + 8), coding(row.size()) {
    std::fill_n(row.begin() + 1, 3, width + 1);
}

bool TileRows::next() {
    auto byte = static_cast<std::int32_t>(position / 8), bit = static_cast<std::int32_t>(position % 8) + 1;
    std::int32_t count = 0;
    // Without data there is nothing to decode, but a length of 0 would mean that it is not known.
    status = data.empty() ? 1
                          : cit_decode_tiff_gr4(row.data(), rowCount, width,
                                                reinterpret_cast<std::uint16_t*>(data.data()), &byte, &bit, nullptr,
                                                coding.data(), &count, static_cast<std::int32_t>(data.size()));
    if (status == 0) {
        const auto end = coding.begin() + count - 2;  // the first of three that close the list
        if (std::adjacent_find(coding.begin(), end, std::greater_equal<>()) != end) status = kGoesBack;
    }
    if (status != 0) return false;
    row.swap(coding);
    rowCount = count;
    position = 8 * static_cast<std::uint64_t>(byte) + static_cast<std::uint64_t>(bit) - 1;
    return true;
}

const char* TileRows::reason() const {
    switch (status) {
    case kGoesBack: return "the row goes back";
    case 1: return position / 8 >= data.size() ? "the data end" : "the row is longer than the tile is wide";
    case 2: return "no such run";
    case 5: return "uncompressed mode, which is not supported";
    default: return position / 8 >= data.size() ? "the data end" : "no such code";
    }
}
