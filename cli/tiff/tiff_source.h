#pragma once

#include "tiff/page_source.h"

#include <memory>
#include <string>

/// A TIFF file whose directories and compressed bytes are read; pages in Group 4 codes are never decoded by libtiff.
/// All operations throw Failure.
class TiffSource : public PageSource {
public:
    explicit TiffSource(InputFile input);

    unsigned countPages() override;
    std::string damageOfPageList() const override;
    TiffPage page(unsigned number) override;
    std::shared_ptr<TiffPages> decoder() override;
    void copyTags(TIFF* to) const override;

private:
    bool storedEmpty(std::uint32_t k) const override;
    std::uint64_t storedBytes(std::uint32_t k) override;
    void readStored(std::uint32_t k, unsigned char* buffer, std::uint64_t bytes) override;
    std::unique_ptr<PackedRows> rows(const TiffPage& page) override;
    [[noreturn]] void fail(const std::string& otherwise);
    void addLayout(TiffPage& page);
    void addSizes(TiffPage& page);

    TiffPages pages_;
    LibtiffMessages& messages_;
    TIFF* const tiff_;
    std::shared_ptr<TiffPages> decoder_;
    unsigned pageCount_ = 0;  ///< 0: not counted yet
    std::string pageListDamage_;
    TiffPage current_;
};
