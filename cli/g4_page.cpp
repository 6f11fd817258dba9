#include "g4_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "failure.h"

namespace {

// Line buffers and column tables grow with a side, whatever the data.
constexpr std::uint32_t kMostSide = 1 << 24;
// Byte positions in a tile are 31-bit.
constexpr std::uint64_t kMostTileBytes = 0x7FFFFFFE;

ImgRect inclusive(const Rect& r) {
    ImgRect rect;
    rect.setRect(r.x, r.y, r.x + r.width - 1, r.y + r.height - 1);
    return rect;
}

/// Calls visit(k) for every tile that touches the rectangle, row by row.
template <class Visit>
void forTilesOf(const TiffPage& page, const Rect& rect, Visit visit) {
    const std::uint32_t left = rect.x / page.tile.width, right = (rect.x + rect.width - 1) / page.tile.width;
    const std::uint32_t top = rect.y / page.tile.height, bottom = (rect.y + rect.height - 1) / page.tile.height;
    for (std::uint32_t row = top; row <= bottom; ++row)
        for (std::uint32_t column = left; column <= right; ++column) visit(row * page.tilesAcross + column);
}

/// Rows of a tile that decode, at most `rows`.
std::uint32_t goodRows(std::vector<unsigned char>& data, std::uint32_t width, std::uint32_t rows) {
    const auto elements = static_cast<std::int32_t>(width);
    std::vector<std::int32_t> reference{0, elements + 1, elements + 1, elements + 1}, coding;
    reference.resize(std::size_t{width} + 8);
    coding.resize(std::size_t{width} + 8);
    std::int32_t referenceCount = 4, codingCount = 0, byte = 0, bit = 1;
    for (std::uint32_t row = 0; row < rows; ++row) {
        if (cit_decode_tiff_gr4(reference.data(), referenceCount, elements,
                                reinterpret_cast<std::uint16_t*>(data.data()), &byte, &bit, nullptr, coding.data(),
                                &codingCount, static_cast<std::int32_t>(data.size())) != 0)
            return row;
        reference.swap(coding);
        referenceCount = codingCount;
    }
    return rows;
}

void requireDrawable(const TiffSource& source, const TiffPage& page) {
    if (page.size.width > kMostSide || page.size.height > kMostSide || page.tile.width > kMostSide)
        throw Failure(Exit::tooLarge, fmt::format("{}: page {} or its tiles are more than {} pixels long or wide",
                                                  source.name(), page.number, kMostSide));
    // Tiles may share data, but not so that a small file fills the memory.
    if (page.compressedBytes / 8 > source.bytes())
        throw Failure(Exit::unsupported, fmt::format("{}: page {}: the {}s overlap in the file", source.name(),
                                                     page.number, page.tileName()));
}

/// The rectangle, pixel by pixel, in the colours of the code: 1 is a black run.
Picture expanded(CImg1G4& image, const ImgRect& rect) {
    Picture picture =
        pictureOf(CImg1::create(rect.getWidth(), rect.getHeight(), 0x00FFFFFF, 0xFF000000, ImgAlignNone));
    // With any other ground the image may exchange the colours.
    image.setBackgroundColor(0);
    if (!image.uncompress(&picture.bilevel(), rect)) throw Failure(Exit::tooLarge, "not enough memory to decode");
    return picture;
}

/// A reduction, in the colours of the page.
Picture reduced(CImg1G4& image, const TiffPage& page, const Drawing& drawing) {
    const bool grey = drawing.mode == Mode::grey;
    // Left open, the ground is found in the same walk that draws.
    if (drawing.background != Background::automatic)
        image.setBackgroundColor((drawing.background == Background::black) == page.whiteIsZero());
    ImgScaleAttr attr{grey ? 32u : 1u};
    Picture picture =
        pictureOf(image.scale(inclusive(drawing.rect), drawing.target.width, drawing.target.height, attr), grey);
    // The ground comes out white whatever its code. Of a damaged page it is not found, and coded white is taken.
    const bool codedBlackGround = image.isBackgroundKnown() && image.getBackgroundColor() == 1;
    if (codedBlackGround == page.whiteIsZero()) picture.invert();
    return picture;
}

}  // namespace

Picture drawPage(CImg1G4& image, const TiffPage& page, const Drawing& drawing, bool& damaged) {
    const Size from = drawing.rect.size(), to = drawing.target;
    imgRaise(ImgErrNone);
    Picture picture;
    switch (CImg::ScaleHow(from.width, from.height, to.width, to.height)) {
    case ImageScaleReduce: picture = reduced(image, page, drawing); break;
    case ImageScaleEnlarge: {
        ImgScaleAttr attr{1};
        image.setBackgroundColor(0);
        picture = pictureOf(image.scale(inclusive(drawing.rect), to.width, to.height, attr));
        if (!page.whiteIsZero()) picture.invert();
        break;
    }
    default:
        picture = expanded(image, inclusive(drawing.rect));
        if (!page.whiteIsZero()) picture.invert();
    }
    damaged = CImgErr::get() == ImgErrDecode;
    // What is left: one side grows and the other shrinks.
    return scaled(std::move(picture), drawing);
}

std::string describeDamage(TiffSource& source, const TiffPage& page, const Rect& rect) {
    const std::uint32_t bottom = rect.y + rect.height;
    std::uint32_t damagedTiles = 0, firstTile = 0, firstRow = 0, firstRowOnPage = 0;
    std::vector<unsigned char> data;
    cit_enable_decode_gr4();
    forTilesOf(page, rect, [&](std::uint32_t k) {
        const std::uint64_t bytes = source.tileBytes(k);
        if (bytes == 0) return;
        data.resize(TiffSource::paddedBytes(bytes));
        source.readTile(k, data.data(), bytes);
        const std::uint32_t top = k / page.tilesAcross * page.tile.height;
        const std::uint32_t rows = std::min(page.rowsOfTile(k), bottom - top);
        const std::uint32_t good = goodRows(data, page.tile.width, rows);
        if (good == rows) return;
        if (damagedTiles++ > 0 && top + good >= firstRowOnPage) return;
        firstTile = k;
        firstRow = good;
        firstRowOnPage = top + good;
    });
    cit_disable_decode_gr4();
    if (damagedTiles == 0) return fmt::format("page {}: damaged Group 4 data", page.number);
    return fmt::format("page {}: damaged Group 4 data: {} {} of {}, row {} of it (row {} of the page){}", page.number,
                       page.tileName(), firstTile + 1, page.tiles, firstRow + 1, firstRowOnPage + 1,
                       damagedTiles > 1 ? fmt::format("; {} {}s are damaged", damagedTiles, page.tileName()) : "");
}

G4Image loadPage(TiffSource& source, const TiffPage& page, const Rect& rect, std::uint64_t& bytes, Progress& progress) {
    requireDrawable(source, page);
    std::vector<ImgULong> lengths(page.tiles);
    std::uint64_t padded = 0;
    bytes = 0;
    forTilesOf(page, rect, [&](std::uint32_t k) {
        const std::uint64_t length = source.tileBytes(k);
        if (length > kMostTileBytes)
            throw Failure(Exit::tooLarge, fmt::format("{}: page {}: {} {} has {} bytes", source.name(), page.number,
                                                      page.tileName(), k + 1, length));
        lengths[k] = static_cast<ImgULong>(TiffSource::paddedBytes(length));
        padded += lengths[k];
        bytes += length;
    });

    // One block beside the image's own copies; it goes before anything is decoded.
    const auto block = std::make_unique_for_overwrite<unsigned char[]>(padded);
    std::vector<unsigned char*> tiles(page.tiles);
    std::uint64_t used = 0;
    forTilesOf(page, rect, [&](std::uint32_t k) {
        if (lengths[k] == 0) return;
        tiles[k] = block.get() + used;
        source.readTile(k, tiles[k], source.tileBytes(k));
        progress.show("reading", used += lengths[k], padded);
    });
    G4Image image(CImg1G4::create(page.size.width, page.size.height, page.tile.width, page.tile.height, tiles.data(),
                                  lengths.data(), 0x00FFFFFF, 0xFF000000, ImgAlignNone));
    if (!image) throw Failure(Exit::tooLarge, source.name() + ": not enough memory for the page");
    return image;
}
