// Group 4: from coded bytes to pixels, to a smaller or larger picture, and back.

#include "benches.h"

#include "peers.h"
#include "report.h"
#include "results.h"
#include "rows.h"

#include "tilepress/CImg32.h"
#include "tilepress/Rothstein.h"
#include "tilepress/ccitt.h"

#include <cstdlib>

namespace bench {
namespace {

/// What both sides of a pair work on and leave behind.
struct Codec {
    PagePtr page;
    CodedTiles tiles;
    MemoryTiff tiff;
    Bitmap decoded;  ///< libtiff's last
    Result ours;
    PixPtr peer;

    explicit Codec(const PagePtr& p) : page(p), tiles(*p), tiff(*p), decoded(p->bitmap.width, p->bitmap.height) {}

    std::uint32_t width() const { return page->bitmap.width; }
    std::uint32_t height() const { return page->bitmap.height; }

    /// As a program that opens a page does it: the image is made of the coded bytes, asked once, and ended.
    void scale(std::uint32_t newWidth, std::uint32_t newHeight, std::uint32_t factor, ImgULong depth) {
        ours.reset();
        const auto image = tiles.image();
        if (newWidth > width()) image->setBackgroundColor(0);  // else an enlargement of a dark page is inverted
        ImgScaleAttr attr{depth};
        const ImgRect rect(static_cast<int>(width() / factor * factor), static_cast<int>(height() / factor * factor));
        ours.reset(image->scale(rect, newWidth, newHeight, attr));
    }
    void reduce(std::uint32_t factor, ImgULong depth) { scale(width() / factor, height() / factor, factor, depth); }

    PixPtr decodeToPix() {
        tiff.decode(*page, decoded);
        return toPix(decoded);
    }
    /// Whether the reductions take white for ink.
    bool isDark() const { return blackShare(page->bitmap) > 0.55; }
};

Pair pairOf(const std::shared_ptr<Codec>& codec, const char* operation, const char* peerName) {
    return {operation, codec->page->name, peerName, codec->page->pixels(), {}, {}, {}};
}

std::string decoding(const Page& page) {
    if (page.name.find("halftone") != std::string::npos) return "decode, halftones";
    return page.tiled ? "decode, tiles" : "decode, strips";
}

/// Ours, into a clear bitmap, from the coded bytes on.
std::function<void()> ourDecode(const std::shared_ptr<Codec>& codec, const std::shared_ptr<CImg1>& dest) {
    return [codec, dest] {
        const auto image = codec->tiles.image();
        image->setBackgroundColor(0);
        std::memset(dest->peekData(), 0, dest->getTotalBytes());
        image->uncompress(dest.get(), image->getRect());
    };
}

std::shared_ptr<CImg1> emptyPage(const Codec& codec) {
    return std::shared_ptr<CImg1>(CImg1::create(codec.width(), codec.height(), 0xFFFFFF, 0, ImgAlignNone));
}

void addDecoding(const std::shared_ptr<Codec>& codec) {
    const std::string operation = decoding(*codec->page);
    Pair pair = pairOf(codec, operation.c_str(), "libtiff");
    const auto dest = emptyPage(*codec);
    pair.ours = ourDecode(codec, dest);
    pair.peer = [codec] { codec->tiff.decode(*codec->page, codec->decoded); };
    pair.same = [codec, dest] {
        codec->decoded.clearSpareBits();
        return alike(bitmapOf(*dest), codec->decoded);
    };
    addPair(std::move(pair));
}

void addRowDecoding(const std::shared_ptr<Codec>& codec) {
    if (codec->page->tiles.size() != 1 || codec->page->tiled) return;
    const auto rows = std::make_shared<CodedRows>(codec->page->tiles[0], codec->width(), codec->height());
    Pair pair = pairOf(codec, "row decode, a code", "6 ns");
    pair.pixels = rows->codes();
    pair.peerSeconds = 6e-9 * pair.pixels;
    const auto whole = std::make_shared<bool>();
    pair.ours = [rows, whole] { *whole = rows->decode(); };
    pair.same = [whole] { return *whole; };
    addPair(std::move(pair));
}

/// What a reduction or enlargement takes beside decoding to a bitmap and, where asked for, writing as many bytes as its
/// result has.
void addBesideDecode(const std::shared_ptr<Codec>& codec, const char* operation, std::function<void()> ours,
                     std::size_t outputBytes) {
    const auto dest = emptyPage(*codec);
    const auto output = std::make_shared<Bytes>(outputBytes);
    Pair pair = pairOf(codec, operation, outputBytes ? "our decode, output" : "our decode");
    pair.ours = std::move(ours);
    pair.peer = [decode = ourDecode(codec, dest), output] {
        decode();
        std::fill(output->begin(), output->end(), static_cast<unsigned char>(output->size()));
    };
    addPair(std::move(pair));
}

/// Ours against exact counts under our own mapping of counts to grey.
bool greysAreThoseOf(const std::vector<std::uint32_t>& counts, const Result& result, bool dark) {
    if (!result || result->getType() != ImageTypeRGB) return false;
    const CImg32& grey = static_cast<const CImg32&>(*result);
    unsigned char* map = nullptr;
    CreateGreyMapping(101, &map, 0);
    bool same = std::size_t{grey.getWidth()} * grey.getHeight() == counts.size();
    for (std::size_t k = 0; same && k < counts.size(); ++k)
        same = grey.peekData()[k] == map[dark ? 100 - counts[k] : counts[k]] * 0x010101u;
    std::free(map);
    return same;
}

void addGreyTenths(const std::shared_ptr<Codec>& codec) {
    const auto ours = [codec] { codec->reduce(10, 32); };
    Pair pair = pairOf(codec, "grey tenth", "libtiff, then 10 x 10 counts");
    const auto counts = std::make_shared<std::vector<std::uint32_t>>();
    pair.ours = ours;
    pair.peer = [codec, counts] {
        codec->tiff.decode(*codec->page, codec->decoded);
        countTenths(codec->decoded, *counts);
    };
    pair.same = [codec, counts] { return greysAreThoseOf(*counts, codec->ours, codec->isDark()); };
    addPair(std::move(pair));
    addBesideDecode(codec, "grey tenth", ours, 0);

    pair = pairOf(codec, "grey tenth", "libtiff, then pixScaleToGray");
    pair.ours = ours;
    pair.peer = [codec] {
        codec->peer.reset();
        codec->peer.reset(pixScaleToGray(codec->decodeToPix().get(), 0.1f));
    };
    addPair(std::move(pair));

    pair = pairOf(codec, "grey tenth", "libtiff, then pixScaleToGrayMipmap");
    pair.ours = ours;
    pair.peer = [codec] {
        codec->peer.reset();
        codec->peer.reset(pixScaleToGrayMipmap(codec->decodeToPix().get(), 0.1f));
    };
    addPair(std::move(pair));
}

void addInk(const std::shared_ptr<Codec>& codec, const char* operation, const char* peerName, std::uint32_t factor,
            std::function<PixPtr(PIX*)> reduce) {
    Pair pair = pairOf(codec, operation, peerName);
    pair.ours = [codec, factor] { codec->reduce(factor, 1); };
    pair.peer = [codec, reduce] {
        codec->peer.reset();
        codec->peer = reduce(codec->decodeToPix().get());
    };
    // White ink on a dark page is no work that the peer was asked to do.
    if (!codec->isDark()) pair.same = [codec] { return alike(bitmapOf(codec->ours), toBitmap(codec->peer.get())); };
    const auto ours = pair.ours;
    addPair(std::move(pair));
    const std::size_t result = codec->page->bitmap.bits.size() / factor / factor;
    addBesideDecode(codec, operation, ours, result);
}

void addEnlarging(const std::shared_ptr<Codec>& codec) {
    if (codec->page->pixels() > 1e8) return;
    Pair pair = pairOf(codec, "enlarge by 2", "libtiff, then pixExpandBinaryPower2");
    pair.ours = [codec] { codec->scale(2 * codec->width(), 2 * codec->height(), 1, 1); };
    pair.peer = [codec] {
        codec->peer.reset();
        codec->peer.reset(pixExpandBinaryPower2(codec->decodeToPix().get(), 2));
    };
    pair.same = [codec] { return alike(bitmapOf(codec->ours), toBitmap(codec->peer.get())); };
    const auto ours = pair.ours;
    addPair(std::move(pair));
    addBesideDecode(codec, "enlarge by 2", ours, 4 * codec->page->bitmap.bits.size());
}

struct FreeBlock {
    void operator()(unsigned char* block) const { std::free(block); }
};

void addEncoding(const std::shared_ptr<Codec>& codec) {
    const Bitmap& bitmap = codec->page->bitmap;
    if (bitmap.rowBytes() > 4095) return;  // more than the strip builder takes
    struct Strips {
        std::unique_ptr<unsigned char, FreeBlock> ours;
        std::int32_t length = 0;
        StripEncoder peer;
        Bytes rows;
    };
    const auto strips = std::make_shared<Strips>();
    strips->rows = bitmap.bits;
    strips->rows.push_back(0);  // change detection borrows the byte after a row
    Pair pair = pairOf(codec, "encode", "libtiff");
    pair.ours = [codec, strips] {
        unsigned char* strip = nullptr;
        strips->ours.reset();
        strips->length = create_g4_tiff_strip(strips->rows.data(), &strip, static_cast<std::int32_t>(codec->width()),
                                              static_cast<std::int32_t>(codec->page->bitmap.rowBytes()),
                                              static_cast<std::int32_t>(codec->height()));
        strips->ours.reset(strip);
    };
    pair.peer = [codec, strips] { strips->peer.encode(codec->page->bitmap); };
    pair.same = [strips] {
        const Bytes ours(strips->ours.get(), strips->ours.get() + strips->length), peer = strips->peer.strip();
        return ours == peer;
    };
    addPair(std::move(pair));
}

}  // namespace

void addCodecPairs(const PagePtr& page) {
    const auto codec = std::make_shared<Codec>(page);
    addDecoding(codec);
    addRowDecoding(codec);
    addGreyTenths(codec);
    addInk(codec, "ink quarter", "libtiff, then pixReduceRankBinaryCascade", 4,
           [](PIX* pix) { return PixPtr(pixReduceRankBinaryCascade(pix, 1, 1, 0, 0)); });
    addInk(codec, "ink tenth", "libtiff, then cells joined", 10, [](PIX* pix) { return inkTenth(pix); });
    addEnlarging(codec);
    addEncoding(codec);
}

}  // namespace bench
