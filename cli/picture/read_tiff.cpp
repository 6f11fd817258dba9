// Pages of TIFF files in greys and colours, by libtiff.

#include "base/failure.h"
#include "files/libtiff.h"
#include "picture/picture_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

class TiffReader : public PictureReader {
public:
    TiffReader(std::shared_ptr<TiffPages> from, const std::string& name, unsigned page)
        : name_(fmt::format("{}: page {}", name, page)), pages_(std::move(from)), messages_(pages_->messages()) {
        TIFF* const file = pages_->get();
        messages_.clear();
        if (!file || !pages_->goTo(page)) fail(Exit::unsupported, "cannot be read");
        messages_.clear();
        TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &size.width);
        TIFFGetField(file, TIFFTAG_IMAGELENGTH, &size.height);
        std::uint16_t photometric = 0, samples = 1;
        TIFFGetField(file, TIFFTAG_PHOTOMETRIC, &photometric);
        TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLESPERPIXEL, &samples);
        char why[1024] = "";
        if (!TIFFRGBAImageOK(file, why))
            throw Failure(Exit::unsupported, fmt::format("{}: {}; tiffcp or ImageMagick may change that", name_, why));
        pixels = samples == 1 && photometric <= PHOTOMETRIC_MINISBLACK ? Pixels::grey : Pixels::rgb;
        // Turning is not libtiff's, which would turn every strip for itself.
        TIFFSetField(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        tiled_ = TIFFIsTiled(file) != 0;
        part_ = size;
        if (tiled_) {
            TIFFGetField(file, TIFFTAG_TILEWIDTH, &part_.width);
            TIFFGetField(file, TIFFTAG_TILELENGTH, &part_.height);
        } else {
            TIFFGetFieldDefaulted(file, TIFFTAG_ROWSPERSTRIP, &part_.height);
            part_.height = std::clamp(part_.height, 1u, size.height);
        }
    }

    void nextRow(unsigned char* row) override {
        if (y_ % part_.height == 0) readBand();
        const std::uint32_t* from = band_.data() + std::size_t{y_ % part_.height} * size.width;
        for (std::uint32_t x = 0; x < size.width; ++x, ++from) {
            // Where nothing covers it, paper shows.
            const std::uint32_t paper = 255 - TIFFGetA(*from);
            *row++ = static_cast<unsigned char>(std::min(TIFFGetR(*from) + paper, 255u));
            if (pixels == Pixels::grey) continue;
            *row++ = static_cast<unsigned char>(std::min(TIFFGetG(*from) + paper, 255u));
            *row++ = static_cast<unsigned char>(std::min(TIFFGetB(*from) + paper, 255u));
        }
        ++y_;
    }

private:
    /// A strip, or a row of tiles, from its top down; libtiff delivers both from the bottom up.
    void readBand() {
        const std::uint32_t rows = std::min(part_.height, size.height - y_);
        std::vector<std::uint32_t> raster(std::size_t{part_.width} * part_.height);
        band_.resize(std::size_t{size.width} * rows);
        for (std::uint32_t left = 0; left < size.width; left += part_.width) {
            const int read = tiled_ ? TIFFReadRGBATileExt(pages_->get(), left, y_, raster.data(), 1)
                                    : TIFFReadRGBAStripExt(pages_->get(), y_, raster.data(), 1);
            if (!read || !messages_.empty()) fail(Exit::damaged, fmt::format("row {} cannot be decoded", y_ + 1));
            const std::uint32_t width = std::min(part_.width, size.width - left), high = tiled_ ? part_.height : rows;
            for (std::uint32_t row = 0; row < rows; ++row)
                std::copy_n(raster.begin() + static_cast<std::ptrdiff_t>(std::size_t{high - 1 - row} * part_.width),
                            width, band_.begin() + static_cast<std::ptrdiff_t>(std::size_t{row} * size.width + left));
        }
    }
    [[noreturn]] void fail(Exit code, const std::string& what) const {
        throw Failure(messages_.code(code), fmt::format("{}: {}{}", name_, what, messages_.reason()));
    }

    const std::string name_;
    const std::shared_ptr<TiffPages> pages_;
    LibtiffMessages& messages_;
    bool tiled_ = false;
    Size part_;
    std::vector<std::uint32_t> band_;
    std::uint32_t y_ = 0;
};

}  // namespace

std::unique_ptr<PictureReader> openTiffPicture(std::shared_ptr<TiffPages> from, const std::string& name,
                                               unsigned page) {
    return std::make_unique<TiffReader>(std::move(from), name, page);
}
