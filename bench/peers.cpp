#include "peers.h"

#include <algorithm>
#include <array>
#include <bit>

namespace bench {

// --- libtiff ----------------------------------------------------------------------

namespace {

MemoryFile& fileOf(thandle_t handle) { return *static_cast<MemoryFile*>(handle); }

tmsize_t readFile(thandle_t handle, void* to, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    if (file.position >= file.data.size()) return 0;
    const std::size_t count = std::min(static_cast<std::size_t>(size), file.data.size() - file.position);
    std::memcpy(to, file.data.data() + file.position, count);
    file.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t writeFile(thandle_t handle, void* from, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    const std::size_t end = file.position + static_cast<std::size_t>(size);
    if (end > file.data.size()) file.data.resize(end);
    std::memcpy(file.data.data() + file.position, from, static_cast<std::size_t>(size));
    file.position = end;
    return size;
}

toff_t seekFile(thandle_t handle, toff_t offset, int whence) {
    MemoryFile& file = fileOf(handle);
    if (whence == SEEK_CUR) offset += file.position;
    if (whence == SEEK_END) offset += file.data.size();
    return file.position = offset;
}

int closeFile(thandle_t) { return 0; }
toff_t sizeOfFile(thandle_t handle) { return fileOf(handle).data.size(); }

void setBilevelTags(TIFF* tiff, std::uint32_t width, std::uint32_t height) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
}

}  // namespace

Tiff MemoryFile::open(const char* mode) {
    position = 0;
    return Tiff(
        TIFFClientOpen("memory", mode, this, readFile, writeFile, seekFile, closeFile, sizeOfFile, nullptr, nullptr));
}

void placeTile(const Page& page, std::uint32_t k, const unsigned char* rows, Bitmap& into) {
    const std::size_t x = k % page.tilesAcross() * page.tileWidth, y = k / page.tilesAcross() * page.tileHeight;
    const std::size_t tileBytes = (page.tileWidth + 7) / 8, count = std::min(tileBytes, into.rowBytes() - x / 8);
    for (std::size_t r = 0; r < page.rowsOf(k) && y + r < into.height; ++r)
        std::memcpy(into.row(y + r) + x / 8, rows + r * tileBytes, count);
}

MemoryTiff::MemoryTiff(const Page& page) {
    {
        const Tiff out = file_.open("wm");
        setBilevelTags(out.get(), page.bitmap.width, page.bitmap.height);
        if (page.tiled) {
            TIFFSetField(out.get(), TIFFTAG_TILEWIDTH, page.tileWidth);
            TIFFSetField(out.get(), TIFFTAG_TILELENGTH, page.tileHeight);
        } else {
            TIFFSetField(out.get(), TIFFTAG_ROWSPERSTRIP, page.tileHeight);
        }
        unsigned char empty[2] = {};
        for (std::uint32_t k = 0; k < page.tiles.size(); ++k) {
            if (page.tiled) TIFFWriteRawTile(out.get(), k, empty, 2);
            else TIFFWriteRawStrip(out.get(), k, empty, 2);
        }
    }
    tiff_ = file_.open("rm");
    if (page.tiled) tile_.resize(static_cast<std::size_t>(TIFFTileSize(tiff_.get())));
}

bool MemoryTiff::decode(const Page& page, Bitmap& into) {
    const std::size_t rowBytes = into.rowBytes();
    for (std::uint32_t k = 0; k < page.tiles.size(); ++k) {
        auto* const code =
            const_cast<unsigned char*>(page.tiles[k].data());  // the fill order is the file's: not written
        const auto length = static_cast<tmsize_t>(page.tiles[k].size());
        unsigned char* const out = page.tiled ? tile_.data() : into.row(std::size_t{k} * page.tileHeight);
        const std::size_t bytes = page.tiled ? tile_.size() : rowBytes * page.rowsOf(k);
        if (!TIFFReadFromUserBuffer(tiff_.get(), k, code, length, out, static_cast<tmsize_t>(bytes))) return false;
        if (page.tiled) placeTile(page, k, out, into);
    }
    return true;
}

void StripEncoder::encode(const Bitmap& bitmap) {
    file_.data.clear();
    const Tiff out = file_.open("wm");
    setBilevelTags(out.get(), bitmap.width, bitmap.height);
    TIFFSetField(out.get(), TIFFTAG_ROWSPERSTRIP, bitmap.height);
    TIFFWriteEncodedStrip(out.get(), 0, const_cast<unsigned char*>(bitmap.bits.data()),  // only read
                          static_cast<tmsize_t>(bitmap.bits.size()));
}

Bytes StripEncoder::strip() {
    const Tiff in = file_.open("rm");
    Bytes bytes(static_cast<std::size_t>(TIFFGetStrileByteCount(in.get(), 0)));
    TIFFReadRawStrip(in.get(), 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
    return bytes;
}

// --- Leptonica --------------------------------------------------------------------

PixPtr toPix(const unsigned char* rows, std::uint32_t width, std::uint32_t height, int depth) {
    PixPtr pix(pixCreateNoInit(static_cast<l_int32>(width), static_cast<l_int32>(height), depth));
    const std::size_t rowBytes = (std::size_t{width} * static_cast<unsigned>(depth) + 7) / 8;
    const std::size_t pixBytes = static_cast<std::size_t>(pixGetWpl(pix.get())) * 4;
    auto* out = reinterpret_cast<unsigned char*>(pixGetData(pix.get()));
    for (std::size_t y = 0; y < height; ++y, out += pixBytes) {
        std::memcpy(out, rows + y * rowBytes, rowBytes);
        std::memset(out + rowBytes, 0, pixBytes - rowBytes);
    }
    // Its words have the first pixel highest. A pixel of 32 bits is a word already.
    if (depth < 32) pixEndianByteSwap(pix.get());
    return pix;
}

PixPtr toPix(const Bitmap& bitmap) { return toPix(bitmap.bits.data(), bitmap.width, bitmap.height, 1); }

Bitmap toBitmap(PIX* pix) {
    Bitmap bitmap(static_cast<std::uint32_t>(pixGetWidth(pix)), static_cast<std::uint32_t>(pixGetHeight(pix)));
    const PixPtr swapped(pixEndianByteSwapNew(pix));
    const std::size_t pixBytes = static_cast<std::size_t>(pixGetWpl(pix)) * 4;
    const auto* in = reinterpret_cast<const unsigned char*>(pixGetData(swapped.get()));
    for (std::size_t y = 0; y < bitmap.height; ++y) std::memcpy(bitmap.row(y), in + y * pixBytes, bitmap.rowBytes());
    bitmap.clearSpareBits();
    return bitmap;
}

/// Every pixel joined with those up to `distance` right of it, or below.
static void joinRight(PIX* pix, int distance) {
    pixRasterop(pix, 0, 0, pixGetWidth(pix) - distance, pixGetHeight(pix), PIX_SRC | PIX_DST, pix, distance, 0);
}
static void joinBelow(PIX* pix, int distance) {
    pixRasterop(pix, 0, 0, pixGetWidth(pix), pixGetHeight(pix) - distance, PIX_SRC | PIX_DST, pix, 0, distance);
}

PixPtr inkTenth(PIX* pix) {
    const PixPtr half(pixReduceRankBinary2(pix, 1, nullptr));
    pixSetWidth(half.get(), pixGetWidth(pix) / 10 * 5);
    pixSetHeight(half.get(), pixGetHeight(pix) / 10 * 5);
    for (int distance : {1, 2, 1}) joinBelow(half.get(), distance);
    const PixPtr rows(pixScaleBinary(half.get(), 1, 0.2f));
    for (int distance : {1, 2, 1}) joinRight(rows.get(), distance);
    return PixPtr(pixScaleBinary(rows.get(), 0.2f, 1));
}

PixPtr inkThird(PIX* pix) {
    const PixPtr copy(pixCopy(nullptr, pix));
    pixSetWidth(copy.get(), pixGetWidth(pix) / 3 * 3);
    pixSetHeight(copy.get(), pixGetHeight(pix) / 3 * 3);
    for (int distance : {1, 1}) joinBelow(copy.get(), distance);
    const PixPtr rows(pixScaleBinary(copy.get(), 1, 1 / 3.0f));
    for (int distance : {1, 1}) joinRight(rows.get(), distance);
    return PixPtr(pixScaleBinary(rows.get(), 1 / 3.0f, 1));
}

// --- counting ---------------------------------------------------------------------

static constexpr auto kOnes = [] {
    std::array<unsigned char, 1024> ones{};
    for (unsigned bits = 0; bits < 1024; ++bits) ones[bits] = static_cast<unsigned char>(std::popcount(bits));
    return ones;
}();

void countTenths(const Bitmap& bitmap, std::vector<std::uint32_t>& counts) {
    const std::size_t across = bitmap.width / 10, down = bitmap.height / 10;
    counts.assign(across * down, 0);
    for (std::size_t y = 0; y < down * 10; ++y) {
        const unsigned char* const row = bitmap.row(y);
        std::uint32_t* const out = counts.data() + y / 10 * across;
        for (std::size_t cell = 0, bit = 0; cell < across; ++cell, bit += 10) {
            // Ten bits from any place lie within two bytes, as cells begin at even columns.
            const unsigned two = static_cast<unsigned>(row[bit / 8]) << 8 | row[bit / 8 + 1];
            out[cell] += kOnes[(two << bit % 8 & 0xFFC0) >> 6];
        }
    }
}

}  // namespace bench
