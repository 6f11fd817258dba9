#include "tiff_peer.h"

#include <algorithm>

namespace bench {

namespace {

MemoryFile& fileOf(thandle_t handle) { return *static_cast<MemoryFile*>(handle); }

tmsize_t readFile(thandle_t handle, void* to, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    if (file.position >= file.data.size()) return 0;
    const std::size_t position = static_cast<std::size_t>(file.position);
    const std::size_t count = std::min(static_cast<std::size_t>(size), file.data.size() - position);
    std::memcpy(to, file.data.data() + position, count);
    file.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t writeFile(thandle_t handle, void* from, tmsize_t size) {
    MemoryFile& file = fileOf(handle);
    const std::size_t position = static_cast<std::size_t>(file.position),
                      end = position + static_cast<std::size_t>(size);
    if (end > file.data.size()) file.data.resize(end);
    std::memcpy(file.data.data() + position, from, static_cast<std::size_t>(size));
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

}  // namespace bench
