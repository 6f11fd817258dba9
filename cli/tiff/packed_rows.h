#pragma once

// The rows of bilevel pages in codes other than Group 4, by libtiff.

#include "files/libtiff.h"
#include "tiff/page_source.h"

#include <memory>
#include <string>
#include <vector>

/// Delivers rows from the top, packed, 1 being what is stored as 1. Throws Failure, for damage too.
class PackedRows {
public:
    /// Of a page of `from`, which is opened with its warnings. `faxMode`: libtiff's pseudo tag of that name, for codes
    /// that no TIFF file would have; negative: none.
    PackedRows(std::shared_ptr<TiffPages> from, const std::string& name, const TiffPage& page, int faxMode = -1);

    /// Valid until the next call.
    const unsigned char* next();

private:
    void readTileRow();
    [[noreturn]] void fail() const;

    const std::string name_;
    const TiffPage page_;
    const std::shared_ptr<TiffPages> from_;
    TIFF* const tiff_;
    LibtiffMessages& messages_;  ///< rows may arrive in spite of a complaint
    std::size_t rowBytes_ = 0;
    std::vector<unsigned char> packed_, tileRow_;
    std::uint32_t y_ = 0;
};
