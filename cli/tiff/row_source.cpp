#include "tiff/row_source.h"

#include "base/failure.h"
#include "tilepress/ccitt.h"

#include <fmt/format.h>

#include <algorithm>

DetectorTables::DetectorTables() { cit_enable_detect_changes(); }
DetectorTables::~DetectorTables() { cit_disable_detect_changes(); }

namespace {

// --- Group 4 --------------------------------------------------------------------------

class G4Rows : public RowSource {
public:
    explicit G4Rows(const G4Page& page) : name_(page.name()) {
        tp_reader* opened = nullptr;
        requireDone(tp_reader_open(page.get(), 0, 0, 0, 0, &options_, &opened), name_);
        reader_.reset(opened);
    }
    void next(Changes& row) override {
        const std::uint32_t* changes = nullptr;
        std::uint32_t count = 0;
        requireDone(tp_reader_next(reader_.get(), &changes, &count), name_);
        row.assign(changes, changes + count);
    }

private:
    const std::string name_;
    tp_options options_ = sized<tp_options>();
    ReaderHandle reader_;
};

// --- packed pixels ----------------------------------------------------------------------

/// The changes of a packed row, which is followed by one more byte.
void detect(Changes& row, std::vector<unsigned char>& packed, std::uint32_t width,
            std::vector<std::uint32_t>& elements) {
    std::uint32_t count = 0;
    elements.resize(std::size_t{width} + 4);
    cit_detect_changes(width, packed.data(), static_cast<std::int32_t>(elements.size()), elements.data(), &count);
    // The list counts columns from 1 and stands between a 0 and three ends.
    row.clear();
    for (std::uint32_t i = 1; i + 3 < count; ++i) row.push_back(elements[i] - 1);
}

class PictureRows : public RowSource {
public:
    explicit PictureRows(std::unique_ptr<PictureReader> from)
        : reader_(std::move(from)), packed_(reader_->rowBytes() + 1) {
        if (reader_->pixels != Pixels::bilevel)
            throw Failure(Exit::unsupported,
                          "the picture is not bilevel; convert it first: tilepress convert --to bilevel");
    }
    void next(Changes& row) override {
        reader_->nextRow(packed_.data());
        detect(row, packed_, reader_->size.width, elements_);
    }

private:
    std::unique_ptr<PictureReader> reader_;
    std::vector<unsigned char> packed_;
    std::vector<std::uint32_t> elements_;
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
    void next(Changes& row) override {
        if (!page_.tiled) {
            if (TIFFReadScanline(tiff_.get(), packed_.data(), y_) != 1 || !messages_.empty()) fail();
        } else {
            if (y_ % page_.tile.height == 0) readTileRow();
            std::copy_n(tileRow_.begin() + static_cast<std::ptrdiff_t>(y_ % page_.tile.height * rowBytes_), rowBytes_,
                        packed_.begin());
        }
        detect(row, packed_, page_.size.width, elements_);
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
    std::vector<std::uint32_t> elements_;
    std::uint32_t y_ = 0;
};

}  // namespace

std::unique_ptr<RowSource> g4Rows(const G4Page& page) { return std::make_unique<G4Rows>(page); }
std::unique_ptr<RowSource> libtiffRows(InputFile input, const TiffPage& page) {
    return std::make_unique<LibtiffRows>(std::move(input), page);
}
std::unique_ptr<RowSource> pictureRows(std::unique_ptr<PictureReader> reader) {
    return std::make_unique<PictureRows>(std::move(reader));
}
