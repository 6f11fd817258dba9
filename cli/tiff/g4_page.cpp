#include "tiff/g4_page.h"

#include "base/failure.h"
#include "tiff/g4_encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

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

void requireTileBytes(const TiffSource& source, const TiffPage& page, std::uint32_t k, std::uint64_t bytes) {
    if (bytes > kMostTileBytes)
        throw Failure(Exit::tooLarge, fmt::format("{}: page {}: {} {} has {} bytes", source.name(), page.number,
                                                  page.tileName(), k + 1, bytes));
}

/// The rectangle, pixel by pixel, in the colours of the code: 1 is a black run.
Picture expanded(CImg1G4& image, const ImgRect& rect) {
    Picture picture = pictureOf(CImg1::create(rect.getWidth(), rect.getHeight(), 0x00FFFFFF, 0xFF000000, ImgAlignNone));
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

void requireDrawable(const TiffSource& source, const TiffPage& page) {
    if (page.size.width > kMostSide || page.size.height > kMostSide || page.tile.width > kMostSide)
        throw Failure(Exit::tooLarge, fmt::format("{}: page {} or its tiles are more than {} pixels long or wide",
                                                  source.name(), page.number, kMostSide));
    // Tiles may share data, but not so that a small file fills the memory.
    if (page.compressedBytes / 8 > source.bytes())
        throw Failure(Exit::unsupported, fmt::format("{}: page {}: the {}s overlap in the file", source.name(),
                                                     page.number, page.tileName()));
}

std::string describe(const TiffPage& page, const TileDamage& damage) {
    const std::uint32_t top = damage.tile / page.tilesAcross * page.tile.height;
    return fmt::format("{} {} of {}, row {} of it (row {} of the page), byte {}: {}", page.tileName(), damage.tile + 1,
                       page.tiles, damage.row + 1, top + damage.row + 1, damage.byte, damage.reason);
}

std::string describeDamage(TiffSource& source, const TiffPage& page, const Rect& rect) {
    std::vector<TileDamage> damaged;
    std::vector<unsigned char> words;
    const DecoderTables tables;
    forTilesOf(page, rect, [&](std::uint32_t k) {
        if (source.isEmpty(k)) return;
        readWords(source, page, k, words);
        const std::uint32_t top = k / page.tilesAcross * page.tile.height;
        TileRows rows(words, page.tile.width);
        if (const auto damage = decodeRows(rows, k, std::min(page.rowsOfTile(k), rect.y + rect.height - top)))
            damaged.push_back(*damage);
    });
    if (damaged.empty()) return fmt::format("page {}: damaged Group 4 data", page.number);
    const auto rowOnPage = [&](const TileDamage& d) { return d.tile / page.tilesAcross * page.tile.height + d.row; };
    const auto first = std::min_element(damaged.begin(), damaged.end(), [&](const TileDamage& a, const TileDamage& b) {
        return rowOnPage(a) < rowOnPage(b);
    });
    return fmt::format("page {}: damaged Group 4 data: {}{}", page.number, describe(page, *first),
                       damaged.size() > 1 ? fmt::format("; {} {}s are damaged", damaged.size(), page.tileName()) : "");
}

void readWords(TiffSource& source, const TiffPage& page, std::uint32_t k, std::vector<unsigned char>& words) {
    const std::uint64_t bytes = source.tileBytes(k);
    requireTileBytes(source, page, k, bytes);
    words.resize(TiffSource::paddedBytes(bytes));
    source.readTile(k, words.data(), bytes);
}

static void exchangePairs(std::vector<unsigned char>& bytes) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
}

/// The damaged tile as far as it is good, then white; as words for the decoder.
static std::vector<unsigned char> salvagedWords(const std::vector<unsigned char>& words, const TileRows& good,
                                                std::uint32_t width, std::uint32_t whiteRows) {
    std::vector<unsigned char> bytes = words;
    bytes.resize(TiffSource::paddedBytes(good.bit() / 8 + 1));
    exchangePairs(bytes);
    G4Encoder encoder(width);
    encoder.resume(bytes.data(), good.bit(), good.list(), good.count());
    for (std::uint32_t row = 0; row < whiteRows; ++row) encoder.addWhite();
    bytes = encoder.finish();
    bytes.resize(TiffSource::paddedBytes(bytes.size()));
    exchangePairs(bytes);
    return bytes;
}

/// Puts new data, which the result holds, in the place of damaged tiles.
static std::vector<std::vector<unsigned char>> salvage(TiffSource& source, const TiffPage& page, const Rect& rect,
                                                       std::vector<unsigned char*>& tiles,
                                                       std::vector<ImgULong>& lengths,
                                                       std::vector<TileDamage>& damaged) {
    std::vector<std::vector<unsigned char>> replaced;
    const DecoderTables decoder;
    const EncoderTables encoder;
    std::vector<unsigned char> words;
    forTilesOf(page, rect, [&](std::uint32_t k) {
        if (lengths[k] == 0) return;
        words.assign(tiles[k], tiles[k] + TiffSource::paddedBytes(source.tileBytes(k)));
        TileRows rows(words, page.tile.width);
        const std::uint32_t height = page.rowsOfTile(k);
        const auto damage = decodeRows(rows, k, height);
        if (!damage) return;
        damaged.push_back(*damage);
        replaced.push_back(salvagedWords(words, rows, page.tile.width, height - damage->row));
        tiles[k] = replaced.back().data();
        lengths[k] = static_cast<ImgULong>(replaced.back().size());
    });
    return replaced;
}

G4Image loadPage(TiffSource& source, const TiffPage& page, const Rect& rect, std::uint64_t& bytes, Progress& progress,
                 std::vector<TileDamage>* salvaged) {
    requireDrawable(source, page);
    std::vector<ImgULong> lengths(page.tiles);
    std::uint64_t padded = 0;
    bytes = 0;
    forTilesOf(page, rect, [&](std::uint32_t k) {
        const std::uint64_t length = source.tileBytes(k);
        requireTileBytes(source, page, k, length);
        // What the file has lost must not look like what it leaves out: zeros in its place are no code.
        lengths[k] = static_cast<ImgULong>(TiffSource::paddedBytes(length > 0 || source.isEmpty(k) ? length : 2));
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
        std::fill_n(tiles[k], 2, static_cast<unsigned char>(0));
        source.readTile(k, tiles[k], source.tileBytes(k));
        progress.show("reading", used += lengths[k], padded);
    });
    std::vector<std::vector<unsigned char>> replaced;
    if (salvaged) replaced = salvage(source, page, rect, tiles, lengths, *salvaged);
    G4Image image(CImg1G4::create(page.size.width, page.size.height, page.tile.width, page.tile.height, tiles.data(),
                                  lengths.data(), 0x00FFFFFF, 0xFF000000, ImgAlignNone));
    if (!image) throw Failure(Exit::tooLarge, source.name() + ": not enough memory for the page");
    return image;
}
