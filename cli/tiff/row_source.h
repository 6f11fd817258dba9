#pragma once

// Bilevel pages as rows of changing elements, wherever they come from.

#include "picture/picture_reader.h"
#include "tiff/tiff_source.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A row: 0, the columns (from 1) where the colour changes, starting from white, and three times width + 1.
class ChangeList {
public:
    explicit ChangeList(std::uint32_t width)
        : elements_(std::size_t{width} + 8), end_(static_cast<std::int32_t>(width) + 1) {}

    void begin() { size_ = 1; }
    /// A black run [from, to) of columns counted from 0, not left of the last one's end; they join where they meet.
    void addRun(std::int32_t from, std::int32_t to);
    void close();
    void assign(const std::vector<std::int32_t>& list, std::int32_t count);

    const std::int32_t* data() const { return elements_.data(); }
    std::int32_t count() const { return size_; }
    /// Calls each(from, to) for the black runs of a closed list.
    template <class Each>
    void forRuns(Each each) const {
        for (std::int32_t i = 2; i < size_ - 2; i += 2)
            each(elements_[std::size_t(i) - 1] - 1, elements_[std::size_t(i)] - 1);
    }
    bool operator==(const ChangeList& other) const;

private:
    std::vector<std::int32_t> elements_;
    std::int32_t end_, size_ = 1;
};

/// Delivers a page's rows from the top. Operations throw Failure.
class RowSource {
public:
    virtual ~RowSource() = default;
    virtual void next(ChangeList& row) = 0;
};

/// From Group 4 data, without pixels in between. The decoder's tables must be there.
std::unique_ptr<RowSource> g4Rows(TiffSource& source, const TiffPage& page);
/// From a page in any other compression, by libtiff. The tables of change detection must be there, as below.
std::unique_ptr<RowSource> libtiffRows(InputFile input, const TiffPage& page);
std::unique_ptr<RowSource> pictureRows(std::unique_ptr<PictureReader> reader);

/// The tables of change detection for as long as this lives; there is one at a time.
class DetectorTables {
public:
    DetectorTables();
    DetectorTables(const DetectorTables&) = delete;
    DetectorTables& operator=(const DetectorTables&) = delete;
    ~DetectorTables();
};
