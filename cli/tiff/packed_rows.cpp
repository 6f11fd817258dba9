#include "tiff/packed_rows.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <algorithm>

PackedRows::PackedRows(InputFile input, const TiffPage& page, int faxMode) : name_(input.name()), page_(page) {
    tiff_ = messages_.open(input.release(), name_, "rm", true);
    if (!tiff_ || !TIFFSetDirectory(tiff_.get(), static_cast<tdir_t>(page_.number - 1))) fail();
    if (faxMode >= 0) TIFFSetField(tiff_.get(), TIFFTAG_FAXMODE, faxMode);
    messages_.clear();
    rowBytes_ = (std::size_t{page_.size.width} + 7) / 8;
    packed_.resize(static_cast<std::size_t>(TIFFScanlineSize(tiff_.get())) + rowBytes_ + 1);
    if (page_.tiled) tileRow_.resize(rowBytes_ * page_.tile.height);
}

const unsigned char* PackedRows::next() {
    if (!page_.tiled) {
        if (TIFFReadScanline(tiff_.get(), packed_.data(), y_) != 1 || !messages_.empty()) fail();
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
    std::vector<unsigned char> tile(static_cast<std::size_t>(TIFFTileSize(tiff_.get())));
    for (std::uint32_t x = 0; x < page_.size.width; x += page_.tile.width) {
        if (TIFFReadTile(tiff_.get(), tile.data(), x, y_, 0, 0) < 0 || !messages_.empty()) fail();
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
