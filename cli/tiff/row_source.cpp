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

}  // namespace

std::unique_ptr<RowSource> g4Rows(const G4Page& page) { return std::make_unique<G4Rows>(page); }
std::unique_ptr<RowSource> pictureRows(std::unique_ptr<PictureReader> reader) {
    return std::make_unique<PictureRows>(std::move(reader));
}
