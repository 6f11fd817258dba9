#pragma once

// Bilevel pages as rows of changes, wherever they come from.

#include "picture/picture_reader.h"
#include "tiff/g4_page.h"

#include <cstdint>
#include <memory>
#include <vector>

/// The columns at which the colour changes, from 0 and increasing; coded white comes first. None is at the width.
using Changes = std::vector<std::uint32_t>;

/// Calls each(from, to) for the coded black runs of a row.
template <class Each>
void forRuns(const Changes& row, std::uint32_t width, Each each) {
    for (std::size_t i = 0; i < row.size(); i += 2) each(row[i], i + 1 < row.size() ? row[i + 1] : width);
}

/// Delivers a page's rows from the top. Operations throw Failure.
class RowSource {
public:
    virtual ~RowSource() = default;
    virtual void next(Changes& row) = 0;
};

/// From Group 4 data, without pixels in between.
std::unique_ptr<RowSource> g4Rows(const G4Page& page);
/// From a picture. The tables of change detection must be there, as below.
std::unique_ptr<RowSource> pictureRows(std::unique_ptr<PictureReader> reader);

/// The tables of change detection for as long as this lives; there is one at a time.
class DetectorTables {
public:
    DetectorTables();
    DetectorTables(const DetectorTables&) = delete;
    DetectorTables& operator=(const DetectorTables&) = delete;
    ~DetectorTables();
};
