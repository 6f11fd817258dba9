#include "tiff/tile_rows.h"

#include "base/failure.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <functional>

// Beside the decoder's own: decoders that paint as they go would take such a row for damaged too.
constexpr int kGoesBack = -1;

DecoderTables::DecoderTables() {
    if (!cit_enable_decode_gr4()) throw Failure(Exit::tooLarge, "not enough memory");
}
DecoderTables::~DecoderTables() { cit_disable_decode_gr4(); }

TileRows::TileRows(std::vector<unsigned char>& words, std::uint32_t tileWidth)
    : data_(words), width_(static_cast<std::int32_t>(tileWidth)), row_(std::size_t{tileWidth} + 8),
      coding_(row_.size()) {
    std::fill_n(row_.begin() + 1, 3, width_ + 1);
}

bool TileRows::next() {
    auto byte = static_cast<std::int32_t>(position_ / 8), bit = static_cast<std::int32_t>(position_ % 8) + 1;
    std::int32_t count = 0;
    // Without data there is nothing to decode, but a length of 0 would mean that it is not known.
    status_ = data_.empty() ? 1
                            : cit_decode_tiff_gr4(row_.data(), rowCount_, width_,
                                                  reinterpret_cast<std::uint16_t*>(data_.data()), &byte, &bit, nullptr,
                                                  coding_.data(), &count, static_cast<std::int32_t>(data_.size()));
    if (status_ == 0) {
        const auto end = coding_.begin() + count - 2;  // the first of three that close the list
        if (std::adjacent_find(coding_.begin(), end, std::greater_equal<>()) != end) status_ = kGoesBack;
    }
    if (status_ != 0) return false;
    row_.swap(coding_);
    rowCount_ = count;
    position_ = 8 * static_cast<std::uint64_t>(byte) + static_cast<std::uint64_t>(bit) - 1;
    return true;
}

const char* TileRows::reason() const {
    switch (status_) {
    case kGoesBack: return "the row goes back";
    case 1: return position_ / 8 >= data_.size() ? "the data end" : "the row is longer than the tile is wide";
    case 2: return "no such run";
    case 5: return "uncompressed mode, which is not supported";
    default: return position_ / 8 >= data_.size() ? "the data end" : "no such code";
    }
}
