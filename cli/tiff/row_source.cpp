#include "tiff/row_source.h"

#include "base/failure.h"
#include "tiff/g4_page.h"
#include "tiff/tile_rows.h"
#include "tilepress/ccitt.h"

#include <fmt/format.h>

#include <algorithm>

void ChangeList::addRun(std::int32_t from, std::int32_t to) {
    if (size_ > 1 && elements_[std::size_t(size_) - 1] == from + 1) {
        --size_;
    } else {
        elements_[std::size_t(size_)] = from + 1;
        ++size_;
    }
    elements_[std::size_t(size_)] = to + 1;
    ++size_;
}

void ChangeList::close() {
    // A run that reaches the end is closed by the first of the three.
    if (size_ > 1 && elements_[std::size_t(size_) - 1] == end_) --size_;
    std::fill_n(elements_.begin() + size_, 3, end_);
    size_ += 3;
}

void ChangeList::assign(const std::vector<std::int32_t>& list, std::int32_t count) {
    std::copy_n(list.begin(), count, elements_.begin());
    size_ = count;
}

bool ChangeList::operator==(const ChangeList& other) const {
    return std::equal(data(), data() + size_, other.data(), other.data() + other.size_);
}

DetectorTables::DetectorTables() { cit_enable_detect_changes(); }
DetectorTables::~DetectorTables() { cit_disable_detect_changes(); }

namespace {

// --- Group 4 --------------------------------------------------------------------------

class G4Rows : public RowSource {
public:
    G4Rows(TiffSource& file, const TiffPage& which) : source_(file), page_(which), data_(page_.tilesAcross) {}

    void next(ChangeList& row) override {
        if (y_ % page_.tile.height == 0) startTileRow();
        row.begin();
        for (std::uint32_t column = 0; column < page_.tilesAcross; ++column)
            if (decode(column)) addTile(row, column);
        row.close();
        ++y_;
    }

private:
    void startTileRow() {
        tiles_.clear();
        for (std::uint32_t column = 0; column < page_.tilesAcross; ++column) {
            if (source_.isEmpty(firstTile() + column)) {
                tiles_.push_back(nullptr);
                continue;
            }
            readWords(source_, page_, firstTile() + column, data_[column]);
            tiles_.push_back(std::make_unique<TileRows>(data_[column], page_.tile.width));
        }
    }
    std::uint32_t firstTile() const { return y_ / page_.tile.height * page_.tilesAcross; }
    /// False for a tile that is left out, which is white.
    bool decode(std::uint32_t column) {
        if (!tiles_[column]) return false;
        TileRows& tile = *tiles_[column];
        if (!tile.next())
            throw Failure(Exit::damaged,
                          fmt::format("{}: page {}: damaged Group 4 data: {}", source_.name(), page_.number,
                                      describe(page_, {firstTile() + column, y_ % page_.tile.height, tile.bit() / 8,
                                                       tile.reason()})));
        return true;
    }
    /// The part of the tile's row that is on the page.
    void addTile(ChangeList& row, std::uint32_t column) const {
        const TileRows& tile = *tiles_[column];
        const auto left = static_cast<std::int32_t>(column * page_.tile.width);
        const auto width = static_cast<std::int32_t>(page_.size.width);
        const std::vector<std::int32_t>& list = tile.list();
        for (std::int32_t i = 2; i < tile.count() - 2; i += 2) {
            const std::int32_t from = left + list[std::size_t(i) - 1] - 1;
            const std::int32_t to = std::min(left + list[std::size_t(i)] - 1, width);
            if (from < to) row.addRun(from, to);
        }
    }

    TiffSource& source_;
    const TiffPage& page_;
    std::vector<std::vector<unsigned char>> data_;
    std::vector<std::unique_ptr<TileRows>> tiles_;
    std::uint32_t y_ = 0;
};

// --- packed pixels ----------------------------------------------------------------------

/// The changes of a packed row, which is followed by one more byte.
void detect(ChangeList& row, std::vector<unsigned char>& packed, std::uint32_t width,
            std::vector<std::uint32_t>& changes) {
    std::uint32_t count = 0;
    changes.resize(std::size_t{width} + 4);
    cit_detect_changes(width, packed.data(), static_cast<std::int32_t>(changes.size()), changes.data(), &count);
    row.begin();
    // Closed by three elements of its own.
    for (std::uint32_t i = 2; i + 2 < count; i += 2)
        row.addRun(static_cast<std::int32_t>(changes[i - 1]) - 1, static_cast<std::int32_t>(changes[i]) - 1);
    row.close();
}

class PictureRows : public RowSource {
public:
    explicit PictureRows(std::unique_ptr<PictureReader> from)
        : reader_(std::move(from)), packed_(reader_->rowBytes() + 1) {
        if (reader_->pixels != Pixels::bilevel)
            throw Failure(Exit::unsupported,
                          "the picture is not bilevel; convert it first: tilepress convert --to bilevel");
    }
    void next(ChangeList& row) override {
        reader_->nextRow(packed_.data());
        detect(row, packed_, reader_->size.width, changes_);
    }

private:
    std::unique_ptr<PictureReader> reader_;
    std::vector<unsigned char> packed_;
    std::vector<std::uint32_t> changes_;
};

/// A row of tiles, or one strip's row, at a time.
class LibtiffRows : public RowSource {
public:
    LibtiffRows(InputFile input, const TiffPage& which) : name_(input.name()), page_(which) {
        tiff_ = messages_.open(input.release(), name_, "rm", true);
        if (!tiff_ || !TIFFSetDirectory(tiff_.get(), static_cast<tdir_t>(page_.number - 1))) fail();
        rowBytes_ = (std::size_t{page_.size.width} + 7) / 8;
        packed_.resize(static_cast<std::size_t>(TIFFScanlineSize(tiff_.get())) + rowBytes_ + 1);
        if (page_.tiled) tileRow_.resize(rowBytes_ * page_.tile.height);
    }
    void next(ChangeList& row) override {
        if (!page_.tiled) {
            if (TIFFReadScanline(tiff_.get(), packed_.data(), y_) != 1 || !messages_.empty()) fail();
        } else {
            if (y_ % page_.tile.height == 0) readTileRow();
            std::copy_n(tileRow_.begin() + static_cast<std::ptrdiff_t>(y_ % page_.tile.height * rowBytes_), rowBytes_,
                        packed_.begin());
        }
        detect(row, packed_, page_.size.width, changes_);
        ++y_;
    }

private:
    void readTileRow() {
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
    [[noreturn]] void fail() const {
        throw Failure(messages_.code(Exit::damaged), fmt::format("{}: page {}: row {} cannot be decoded{}", name_,
                                                                 page_.number, y_ + 1, messages_.reason()));
    }

    const std::string name_;
    const TiffPage& page_;
    LibtiffMessages messages_;  ///< rows may arrive in spite of a complaint
    TiffHandle tiff_;
    std::size_t rowBytes_ = 0;
    std::vector<unsigned char> packed_, tileRow_;
    std::vector<std::uint32_t> changes_;
    std::uint32_t y_ = 0;
};

}  // namespace

std::unique_ptr<RowSource> g4Rows(TiffSource& source, const TiffPage& page) {
    return std::make_unique<G4Rows>(source, page);
}
std::unique_ptr<RowSource> libtiffRows(InputFile input, const TiffPage& page) {
    return std::make_unique<LibtiffRows>(std::move(input), page);
}
std::unique_ptr<RowSource> pictureRows(std::unique_ptr<PictureReader> reader) {
    return std::make_unique<PictureRows>(std::move(reader));
}
