#include "pdf/pdf_source.h"

#include "base/failure.h"
#include "files/unnamed_tiff.h"
#include "tiff/packed_rows.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <qpdf/QPDFPageDocumentHelper.hh>

namespace {

/// What libqpdf throws, as a failure.
void withFailures(const std::string& name, const std::function<void()>& call) {
    try {
        call();
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(Exit::unsupported, fmt::format("{}: the PDF file cannot be read: {}", name, error.what()));
    }
}

/// Whether codes begin with an end of line, after any fill.
bool beginsWithEndOfLine(const std::string& codes) {
    unsigned zeros = 0;
    for (std::size_t i = 0; i < codes.size() && i < 64; ++i)
        for (unsigned bit = 0x80; bit != 0; bit >>= 1) {
            if ((static_cast<unsigned char>(codes[i]) & bit) != 0) return zeros >= 11;
            ++zeros;
        }
    return false;
}

}  // namespace

PdfSource::PdfSource(InputFile input) : PageSource(input) {
    withFailures(name(), [&] {
        document_.setSuppressWarnings(true);
        std::FILE* const file = fdopen(input.release(), "rb");
        if (!file) throw Failure(Exit::failed, name() + ": cannot be read");
        document_.processFile(name().c_str(), file, true);
        unsigned number = 0;
        for (const QPDFPageObjectHelper& page : QPDFPageDocumentHelper(document_).getAllPages()) {
            std::vector<PdfImage> images = imagesOf(page, ++number);
            std::move(images.begin(), images.end(), std::back_inserter(images_));
        }
    });
}

TiffPage PdfSource::page(unsigned number) {
    forgetCodes();
    if (number == 0 || number > images_.size())
        throw Failure(Exit::failed, fmt::format("{}: no page {}: the file has {}", name(), number, images_.size()));
    image_ = &images_[number - 1];
    codes_.clear();
    TiffPage page;
    page.number = number;
    page.size = page.tile = image_->size;
    page.dpiX = image_->dpiX;
    page.dpiY = image_->dpiY;
    page.orientation = image_->orientation;
    page.tiles = page.tilesAcross = 1;
    page.inkIsOne = image_->codedBlackIsInk;
    page.photometric = page.inkIsOne ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
    page.bilevel = image_->unsupported.empty();
    const FaxParameters& fax = image_->fax;
    page.compression = fax.k < 0 ? COMPRESSION_CCITTFAX4 : COMPRESSION_CCITTFAX3;
    if (!page.bilevel)
        page.unsupported.push_back(
            fmt::format("image on page {} of the document: {}", image_->documentPage, image_->unsupported));
    else if (fax.k < 0 && fax.byteAligned)
        page.unsupported.push_back(
            "its rows begin with whole bytes (EncodedByteAlign), which Group 4 pages elsewhere "
            "cannot; pdfimages -tiff takes it out of the file");
    if (!page.unsupported.empty()) return page;
    withFailures(name(), [&] { codes_ = codesOf(document_, *image_); });
    page.compressedBytes = codes_.size();
    return page;
}

void PdfSource::readStored(std::uint32_t, unsigned char* buffer, std::uint64_t bytes) {
    std::copy_n(codes_.begin(), bytes, buffer);
}

std::unique_ptr<PackedRows> PdfSource::rows(const TiffPage& page) {
    const FaxParameters& fax = image_->fax;
    const bool lines = fax.k > 0 || beginsWithEndOfLine(codes_);
    UnnamedTiff wrapped;
    TIFF* const tiff = wrapped.get();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.size.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.size.height);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, page.size.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, page.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, lines ? COMPRESSION_CCITTFAX3 : COMPRESSION_CCITTRLE);
    if (lines) TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, fax.k > 0 ? GROUP3OPT_2DENCODING : 0);
    const auto bytes = static_cast<tmsize_t>(codes_.size());
    wrapped.require(TIFFWriteRawStrip(tiff, 0, codes_.data(), bytes) == bytes);
    wrapped.require(TIFFWriteDirectory(tiff) == 1);
    TiffPage only = page;
    only.number = 1;
    const int mode = FAXMODE_NORTC | FAXMODE_NOEOL | (fax.byteAligned ? FAXMODE_BYTEALIGN : 0);
    return std::make_unique<PackedRows>(std::make_shared<TiffPages>(wrapped.reopened(), "rm", true), name(), only,
                                        lines ? -1 : mode);
}

void PdfSource::copyTags(TIFF* to) const {
    const PdfImage& image = *image_;
    TIFFSetField(to, TIFFTAG_PHOTOMETRIC, image.codedBlackIsInk ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(to, TIFFTAG_ORIENTATION, image.orientation);
    if (image.dpiX > 0) {
        TIFFSetField(to, TIFFTAG_XRESOLUTION, image.dpiX);
        TIFFSetField(to, TIFFTAG_YRESOLUTION, image.dpiY);
        TIFFSetField(to, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    QPDFObjectHandle about = document_.getTrailer().getKey("/Info");
    if (!about.isDictionary()) return;
    constexpr std::pair<const char*, std::uint32_t> kTexts[] = {{"/Title", TIFFTAG_DOCUMENTNAME},
                                                                {"/Subject", TIFFTAG_IMAGEDESCRIPTION},
                                                                {"/Author", TIFFTAG_ARTIST},
                                                                {"/Creator", TIFFTAG_SOFTWARE}};
    for (const auto& [key, tag] : kTexts)
        if (QPDFObjectHandle text = about.getKey(key); text.isString())
            TIFFSetField(to, tag, text.getUTF8Value().c_str());
}
