#include "row_source.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "failure.h"
#include "g4_page.h"
#include "tile_rows.h"
#include "tilepress/ccitt.h"

void ChangeList::addRun(std::int32_t from, std::int32_t to) {
    if (size > 1 && elements[std::size_t(size) - 1] == from + 1) {
        --size;
    } else {
        elements[std::size_t(size)] = from + 1;
        ++size;
    }
    elements[std::size_t(size)] = to + 1;
    ++size;
}

void ChangeList::close() {
    // A run that reaches the end is closed by the first of the three.
    if (size > 1 && elements[std::size_t(size) - 1] == end) --size;
    std::fill_n(elements.begin() + size, 3, end);
    size += 3;
}

void ChangeList::assign(const std::vector<std::int32_t>& list, std::int32_t count) {
    std::copy_n(list.begin(), count, elements.begin());
    size = count;
}

bool ChangeList::operator==(const ChangeList& other) const {
    return std::equal(data(), data() + size, other.data(), other.data() + other.size);
}

DetectorTables::DetectorTables() { cit_enable_detect_changes(); }
DetectorTables::~DetectorTables() { cit_disable_detect_changes(); }

namespace {

// --- Group 4 --------------------------------------------------------------------------

class G4Rows : public RowSource {
public:
    G4Rows(TiffSource& file, const TiffPage& which) : source(file), page(which), data(page.tilesAcross) {}

    void next(ChangeList& row) override {
        if (y % page.tile.height == 0) startTileRow();
        row.begin();
        for (std::uint32_t column = 0; column < page.tilesAcross; ++column)
            if (decode(column)) addTile(row, column);
        row.close();
        ++y;
    }

private:
    void startTileRow() {
        tiles.clear();
        for (std::uint32_t column = 0; column < page.tilesAcross; ++column) {
            if (source.isEmpty(firstTile() + column)) {
                tiles.push_back(nullptr);
                continue;
            }
            readWords(source, page, firstTile() + column, data[column]);
            tiles.push_back(std::make_unique<TileRows>(data[column], page.tile.width));
        }
    }
    std::uint32_t firstTile() const { return y / page.tile.height * page.tilesAcross; }
    /// False for a tile that is left out, which is white.
    bool decode(std::uint32_t column) {
        if (!tiles[column]) return false;
        TileRows& tile = *tiles[column];
        if (!tile.next())
            throw Failure(Exit::damaged,
                          fmt::format("{}: page {}: damaged Group 4 data: {}", source.name(), page.number,
                                      describe(page, {firstTile() + column, y % page.tile.height, tile.bit() / 8,
                                                      tile.reason()})));
        return true;
    }
    /// The part of the tile's row that is on the page.
    void addTile(ChangeList& row, std::uint32_t column) const {
        const TileRows& tile = *tiles[column];
        const auto left = static_cast<std::int32_t>(column * page.tile.width);
        const auto width = static_cast<std::int32_t>(page.size.width);
        const std::vector<std::int32_t>& list = tile.list();
        for (std::int32_t i = 2; i < tile.count() - 2; i += 2) {
            const std::int32_t from = left + list[std::size_t(i) - 1] - 1;
            const std::int32_t to = std::min(left + list[std::size_t(i)] - 1, width);
            if (from < to) row.addRun(from, to);
        }
    }

    TiffSource& source;
    const TiffPage& page;
    std::vector<std::vector<unsigned char>> data;
    std::vector<std::unique_ptr<TileRows>> tiles;
    std::uint32_t y = 0;
};

// --- packed pixels ----------------------------------------------------------------------

/// The changes of a packed row, which is followed by one more byte.
void detect(ChangeList& row, std::vector<unsigned char>& packed, std::uint32_t width,
            std::vector<std::uint32_t>& changes) {
    std::uint32_t count = 0;
    changes.resize(std::size_t{width} + 4);
    cit_detect_changes(width, packed.data(), static_cast<std::int32_t>(changes.size()), changes.data(), &count);
    row.begin();
    // Closed by three elements of its own.
    for (std::uint32_t i = 2; i + 2 < count; i += 2)
        row.addRun(static_cast<std::int32_t>(changes[i - 1]) - 1, static_cast<std::int32_t>(changes[i]) - 1);
    row.close();
}

class PictureRows : public RowSource {
public:
    explicit PictureRows(std::unique_ptr<PictureReader> from)
        : reader(std::move(from)), packed(reader->rowBytes() + 1) {
        if (reader->pixels != Pixels::bilevel)
            throw Failure(Exit::unsupported,
                          "the picture is not bilevel; convert it first: tilepress convert --to bilevel");
    }
    void next(ChangeList& row) override {
        reader->nextRow(packed.data());
        detect(row, packed, reader->size.width, changes);
    }

private:
    std::unique_ptr<PictureReader> reader;
    std::vector<unsigned char> packed;
    std::vector<std::uint32_t> changes;
};

/// A row of tiles, or one strip's row, at a time.
class LibtiffRows : public RowSource {
public:
    LibtiffRows(InputFile input, const TiffPage& which) : name(input.name()), page(which) {
        TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options, onError, this);
        TIFFOpenOptionsSetWarningHandlerExtR(options, onWarning, this);
        tiff.reset(TIFFFdOpenExt(input.release(), name.c_str(), "rm", options));
        TIFFOpenOptionsFree(options);
        if (!tiff || !TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(page.number - 1))) fail();
        rowBytes = (std::size_t{page.size.width} + 7) / 8;
        packed.resize(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())) + rowBytes + 1);
        if (page.tiled) tileRow.resize(rowBytes * page.tile.height);
    }
    void next(ChangeList& row) override {
        if (!page.tiled) {
            if (TIFFReadScanline(tiff.get(), packed.data(), y) != 1 || !damage.empty()) fail();
        } else {
            if (y % page.tile.height == 0) readTileRow();
            std::copy_n(tileRow.begin() + static_cast<std::ptrdiff_t>(y % page.tile.height * rowBytes), rowBytes,
                        packed.begin());
        }
        detect(row, packed, page.size.width, changes);
        ++y;
    }

private:
    void readTileRow() {
        const std::size_t tileBytes = (std::size_t{page.tile.width} + 7) / 8;
        std::vector<unsigned char> tile(static_cast<std::size_t>(TIFFTileSize(tiff.get())));
        for (std::uint32_t x = 0; x < page.size.width; x += page.tile.width) {
            if (TIFFReadTile(tiff.get(), tile.data(), x, y, 0, 0) < 0 || !damage.empty()) fail();
            const std::size_t left = x / 8, bytes = std::min(tileBytes, rowBytes - left);
            for (std::size_t i = 0; i < page.tile.height; ++i)
                std::copy_n(tile.begin() + static_cast<std::ptrdiff_t>(i * tileBytes), bytes,
                            tileRow.begin() + static_cast<std::ptrdiff_t>(i * rowBytes + left));
        }
    }
    [[noreturn]] void fail() const {
        throw Failure(Exit::damaged, fmt::format("{}: page {}: row {} cannot be decoded{}{}", name, page.number, y + 1,
                                                 damage.empty() ? "" : ": ", damage));
    }
    static int onError(TIFF*, void* self, const char*, const char* format, va_list arguments) {
        char text[512];
        std::vsnprintf(text, sizeof text, format, arguments);
        auto& rows = *static_cast<LibtiffRows*>(self);
        if (rows.damage.empty()) rows.damage = text;
        return 1;
    }
    /// libtiff only warns of a fax row that it had to cut or fill up, and delivers it.
    static int onWarning(TIFF* file, void* self, const char* module, const char* format, va_list arguments) {
        return std::string_view(module ? module : "").starts_with("Fax3")
                   ? onError(file, self, module, format, arguments)
                   : 1;
    }
    struct Closer {
        void operator()(TIFF* file) const { TIFFClose(file); }
    };

    const std::string name;
    const TiffPage& page;
    std::string damage;  ///< libtiff's first message; rows may arrive in spite of it
    std::unique_ptr<TIFF, Closer> tiff;
    std::size_t rowBytes = 0;
    std::vector<unsigned char> packed, tileRow;
    std::vector<std::uint32_t> changes;
    std::uint32_t y = 0;
};

}  // namespace

std::unique_ptr<RowSource> g4Rows(TiffSource& source, const TiffPage& page) {
    return std::make_unique<G4Rows>(source, page);
}
std::unique_ptr<RowSource> libtiffRows(InputFile input, const TiffPage& page) {
    return std::make_unique<LibtiffRows>(std::move(input), page);
}
std::unique_ptr<RowSource> pictureRows(std::unique_ptr<PictureReader> reader) {
    return std::make_unique<PictureRows>(std::move(reader));
}
