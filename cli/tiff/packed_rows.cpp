#include "tiff/packed_rows.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

PackedRows::PackedRows(std::shared_ptr<TiffPages> from, const std::string& name, const TiffPage& page, int faxMode)
    : name_(name), page_(page), from_(std::move(from)), tiff_(from_->get()), messages_(from_->messages()) {
    if (!tiff_ || !from_->goTo(page_.number)) fail();
    if (faxMode >= 0) TIFFSetField(tiff_, TIFFTAG_FAXMODE, faxMode);
    messages_.clear();
    rowBytes_ = (std::size_t{page_.size.width} + 7) / 8;
    packed_.resize(static_cast<std::size_t>(TIFFScanlineSize(tiff_)) + rowBytes_ + 1);
    if (page_.tiled) tileRow_.resize(rowBytes_ * page_.tile.height);
}

const unsigned char* PackedRows::next() {
    if (!page_.tiled) {
        if (TIFFReadScanline(tiff_, packed_.data(), y_) != 1 || !messages_.empty()) fail();
    } else {
        if (y_ % page_.tile.height == 0) readTileRow();
        std::copy_n(tileRow_.begin() + static_cast<std::ptrdiff_t>(y_ % page_.tile.height * rowBytes_), rowBytes_,
                    packed_.begin());
    }
    ++y_;
    return packed_.data();
}

void PackedRows::readTileRow() {
    const std::size_t tileBytes = (std::size_t{page_.tile.width} + 7) / 8;
    std::vector<unsigned char> tile(static_cast<std::size_t>(TIFFTileSize(tiff_)));
    for (std::uint32_t x = 0; x < page_.size.width; x += page_.tile.width) {
        if (TIFFReadTile(tiff_, tile.data(), x, y_, 0, 0) < 0 || !messages_.empty()) fail();
        const std::size_t left = x / 8, bytes = std::min(tileBytes, rowBytes_ - left);
        for (std::size_t i = 0; i < page_.tile.height; ++i)
            std::copy_n(tile.begin() + static_cast<std::ptrdiff_t>(i * tileBytes), bytes,
                        tileRow_.begin() + static_cast<std::ptrdiff_t>(i * rowBytes_ + left));
    }
}
void PackedRows::fail() const {
    throw Failure(messages_.code(Exit::damaged), fmt::format("{}: page {}: row {} cannot be decoded{}", name_,
                                                             page_.number, y_ + 1, messages_.reason()));
}
