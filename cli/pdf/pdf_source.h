#pragma once

#include "pdf/pdf_images.h"
#include "tiff/page_source.h"

#include <map>
#include <qpdf/QPDF.hh>
#include <string>
#include <utility>
#include <vector>

/// The images of a PDF file's pages, by libqpdf. Each image is a page here, in the order of the document's pages; a
/// page of the document without one is a page that is not supported. Nothing that a page draws beside images is there.
class PdfSource : public PageSource {
public:
    explicit PdfSource(InputFile input);

    unsigned countPages() override { return static_cast<unsigned>(images_.size()); }
    TiffPage page(unsigned number) override;
    void copyTags(TIFF* to) const override;

private:
    bool storedEmpty(std::uint32_t) const override { return false; }
    std::uint64_t storedBytes(std::uint32_t) override { return codes_.size(); }
    void readStored(std::uint32_t, unsigned char* buffer, std::uint64_t bytes) override;
    std::unique_ptr<PackedRows> rows(const TiffPage& page) override;

    mutable QPDF document_;  ///< loads objects as they are looked at
    std::vector<PdfImage> images_;
    const PdfImage* image_ = nullptr;  ///< of the page asked for last, and its codes
    std::string codes_;
};
