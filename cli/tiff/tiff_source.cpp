#include "tiff/tiff_source.h"

#include "tiff/packed_rows.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace {

template <class Value>
Value field(TIFF* tiff, std::uint32_t tag, Value otherwise) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : otherwise;
}

std::string compressionName(std::uint16_t compression) {
    const TIFFCodec* const codec = TIFFFindCODEC(compression);
    return codec ? codec->name : fmt::format("number {}", compression);
}

void addUnsupported(TIFF* tiff, TiffPage& page) {
    const auto refuse = [&page](std::string why) { page.unsupported.push_back(std::move(why)); };
    const auto bits = field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const auto samples = field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    page.bilevel = bits == 1 && samples == 1 && (page.photometric <= 1 || page.photometric == PHOTOMETRIC_PALETTE);
    if (!page.bilevel)
        refuse(
            fmt::format("not black and white: {} sample{} of {} bit{} a pixel; tilepress convert --to bilevel makes "
                        "it so, repack --dither takes it",
                        samples, samples == 1 ? "" : "s", bits, bits == 1 ? "" : "s"));
    else if (!TIFFIsCODECConfigured(page.compression))
        refuse(fmt::format("compression {} is not known", compressionName(page.compression)));
    if (page.fillOrder != FILLORDER_MSB2LSB && page.fillOrder != FILLORDER_LSB2MSB)
        refuse(fmt::format("fill order {}, neither 1 nor 2", page.fillOrder));
    std::uint32_t options = 0;
    page.mayBeUncompressed = page.compression == COMPRESSION_CCITTFAX4 &&
                             TIFFGetField(tiff, TIFFTAG_GROUP4OPTIONS, &options) && options & GROUP4OPT_UNCOMPRESSED;
}

/// Of two colours, the darker one is ink.
bool onePaints(TIFF* tiff, const TiffPage& page) {
    std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    if (page.photometric != PHOTOMETRIC_PALETTE || !page.bilevel) return page.photometric == PHOTOMETRIC_MINISWHITE;
    if (!TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue)) return false;
    return red[1] + green[1] + blue[1] < red[0] + green[0] + blue[0];
}

void addResolution(TIFF* tiff, TiffPage& page) {
    float x = 0, y = 0;
    if (!TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) || !TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y)) return;
    const auto unit = field<std::uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    const double perInch = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
    if (!(x > 0) || !(y > 0) || x > 1e6f || y > 1e6f) return;
    page.dpiX = double{x} * perInch;
    page.dpiY = double{y} * perInch;
}

InputFile requireTiff(InputFile input) {
    if (input.kind() != InputFile::Kind::tiff) throw Failure(Exit::unsupported, input.name() + ": not a TIFF file");
    return input;
}

}  // namespace

std::shared_ptr<TiffPages> TiffSource::decoder() {
    if (!decoder_) decoder_ = std::make_shared<TiffPages>(file().again(), "rm", true);
    return decoder_;
}

std::unique_ptr<PackedRows> TiffSource::rows(const TiffPage& page) {
    return std::make_unique<PackedRows>(decoder(), name(), page);
}

void TiffSource::copyTags(TIFF* to) const {
    TIFF* const from = tiff_;
    for (const std::uint32_t tag : {TIFFTAG_ORIENTATION, TIFFTAG_RESOLUTIONUNIT, TIFFTAG_THRESHHOLDING})
        if (std::uint16_t value = 0; TIFFGetField(from, tag, &value)) TIFFSetField(to, tag, value);
    TIFFSetField(to, TIFFTAG_PHOTOMETRIC, current_.inkIsOne ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK);
    for (const std::uint32_t tag : {TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION, TIFFTAG_XPOSITION, TIFFTAG_YPOSITION})
        if (float value = 0; TIFFGetField(from, tag, &value)) TIFFSetField(to, tag, double{value});
    if (std::uint32_t type = 0; TIFFGetField(from, TIFFTAG_SUBFILETYPE, &type))
        TIFFSetField(to, TIFFTAG_SUBFILETYPE, type);
    if (std::uint16_t page = 0, pages = 0; TIFFGetField(from, TIFFTAG_PAGENUMBER, &page, &pages))
        TIFFSetField(to, TIFFTAG_PAGENUMBER, page, pages);
    for (const std::uint32_t tag :
         {TIFFTAG_DOCUMENTNAME, TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE, TIFFTAG_MODEL, TIFFTAG_PAGENAME,
          TIFFTAG_SOFTWARE, TIFFTAG_DATETIME, TIFFTAG_ARTIST, TIFFTAG_HOSTCOMPUTER, TIFFTAG_COPYRIGHT})
        if (char* text = nullptr; TIFFGetField(from, tag, &text)) TIFFSetField(to, tag, text);
}

// m: not mapped, so that a file that shrinks cannot kill us; O: tables of tiles are loaded when first asked for;
// c: strips are reported as they are.
TiffSource::TiffSource(InputFile input)
    : PageSource(input), pages_(requireTiff(std::move(input)), "rmOc"), messages_(pages_.messages()),
      tiff_(pages_.get()) {
    if (!tiff_) fail("the TIFF file cannot be read");
}

void TiffSource::fail(const std::string& otherwise) {
    throw Failure(messages_.code(Exit::unsupported), fmt::format("{}: {}{}", name(), otherwise, messages_.reason()));
}

unsigned TiffSource::countPages() {
    if (pageCount_ > 0) return pageCount_;
    messages_.clear();
    pageCount_ = TIFFNumberOfDirectories(tiff_);
    pageListDamage_ = messages_.reason();
    return pageCount_;
}

std::string TiffSource::damageOfPageList() const {
    return pageListDamage_.empty() ? "" : fmt::format("{}: the list of pages is damaged{}", name(), pageListDamage_);
}

TiffPage TiffSource::page(unsigned number) {
    TIFF* const file = tiff_;
    forgetCodes();
    if (current_.number == number && number > 0) return current_;
    current_ = {};
    messages_.clear();
    if (!pages_.goTo(number)) {
        const Failure unreadable(messages_.code(Exit::unsupported),
                                 fmt::format("{}: page {} cannot be read{}", name(), number, messages_.reason()));
        const unsigned pages = countPages();
        if (number > pages)
            throw Failure(Exit::failed,
                          fmt::format("{}: no page {}: the file has {}{}", name(), number, pages,
                                      pageListDamage_.empty() ? "" : ", and the list of them is damaged"));
        throw unreadable;
    }
    TiffPage page;
    page.number = number;
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &page.size.width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &page.size.height);
    page.compression = field<std::uint16_t>(file, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    page.fillOrder = field<std::uint16_t>(file, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    page.orientation = field<std::uint16_t>(file, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFGetField(file, TIFFTAG_PHOTOMETRIC, &page.photometric);
    if (page.size.width == 0 || page.size.height == 0) fail(fmt::format("page {} has no pixels", number));
    // What libtiff has against tags that have nothing to do with the pixels is not our concern.
    messages_.clear();
    addResolution(file, page);
    addUnsupported(file, page);
    page.inkIsOne = onePaints(file, page);
    addLayout(page);
    addSizes(page);
    return current_ = page;
}

void TiffSource::addLayout(TiffPage& page) {
    TIFF* const file = tiff_;
    page.tiled = TIFFIsTiled(file) != 0;
    if (page.tiled) {
        TIFFGetField(file, TIFFTAG_TILEWIDTH, &page.tile.width);
        TIFFGetField(file, TIFFTAG_TILELENGTH, &page.tile.height);
    } else {
        page.tile.width = page.size.width;
        page.tile.height =
            std::min(field<std::uint32_t>(file, TIFFTAG_ROWSPERSTRIP, page.size.height), page.size.height);
    }
    if (page.tile.width == 0 || page.tile.height == 0)
        fail(fmt::format("page {} has {}s without pixels", page.number, page.tileName()));
    const auto count = [](std::uint64_t whole, std::uint32_t part) { return (whole + part - 1) / part; };
    const std::uint64_t across = count(page.size.width, page.tile.width);
    const std::uint64_t down = count(page.size.height, page.tile.height);
    // Each of several tiles takes at least an offset and a length of two bytes each in the file.
    if (across * down > 1 && across > bytes() / 4 / down)
        fail(fmt::format("page {} has {} {}s, more than the file has room for", page.number, across * down,
                         page.tileName()));
    page.tilesAcross = static_cast<std::uint32_t>(across);
    page.tiles = static_cast<std::uint32_t>(across * down);
}

void TiffSource::addSizes(TiffPage& page) {
    messages_.clear();
    for (std::uint32_t k = 0; k < page.tiles; ++k) {
        int badOffset = 0, badCount = 0;
        TIFFGetStrileOffsetWithErr(tiff_, k, &badOffset);
        const std::uint64_t given = TIFFGetStrileByteCountWithErr(tiff_, k, &badCount);
        if (badOffset || badCount || !messages_.empty())
            fail(fmt::format("page {}: the place of {} {} cannot be read", page.number, page.tileName(), k + 1));
        const std::uint64_t bytes = tileBytes(k);
        page.compressedBytes += bytes;
        page.emptyTiles += isEmpty(k);
        page.truncatedTiles += given > bytes;
    }
}

bool TiffSource::storedEmpty(std::uint32_t k) const {
    return TIFFGetStrileByteCount(tiff_, k) == 0 && TIFFGetStrileOffset(tiff_, k) == 0;
}

std::uint64_t TiffSource::storedBytes(std::uint32_t k) {
    const std::uint64_t offset = TIFFGetStrileOffset(tiff_, k);
    return std::min(TIFFGetStrileByteCount(tiff_, k), bytes() - std::min(offset, bytes()));
}

void TiffSource::readStored(std::uint32_t k, unsigned char* buffer, std::uint64_t bytes) {
    if (bytes == 0) return;
    const auto asked = static_cast<tmsize_t>(bytes);
    const tmsize_t got =
        current_.tiled ? TIFFReadRawTile(tiff_, k, buffer, asked) : TIFFReadRawStrip(tiff_, k, buffer, asked);
    if (got != asked)
        throw Failure(Exit::failed, fmt::format("{}: cannot read {} bytes{}", name(), bytes, messages_.reason()));
}
