#pragma once

// The rows of one tile, decoded one after the other.

#include <cstdint>
#include <optional>
#include <vector>

/// The plain decoder's tables for as long as this lives; there is one at a time.
class DecoderTables {
public:
    /// Throws Failure when memory runs out.
    DecoderTables();
    DecoderTables(const DecoderTables&) = delete;
    DecoderTables& operator=(const DecoderTables&) = delete;
    ~DecoderTables();
};

/// Decodes rows into changing-element lists: 0, the columns (from 1) where the colour changes, three times width + 1.
class TileRows {
public:
    /// `words` as TiffSource::readTile gives them; they stay the caller's.
    TileRows(std::vector<unsigned char>& words, std::uint32_t width);

    /// The next row; false when its code is damaged, or goes back within the row. Then the row stays the one before.
    bool next();
    const std::vector<std::int32_t>& list() const { return row_; }
    std::int32_t count() const { return rowCount_; }
    /// Where the next row begins, or the damaged one: the tile's bit, counted from 0.
    std::uint64_t bit() const { return position_; }
    /// Why next() was false.
    const char* reason() const;

private:
    std::vector<unsigned char>& data_;
    std::int32_t width_;
    std::vector<std::int32_t> row_, coding_;
    std::int32_t rowCount_ = 4;
    std::uint64_t position_ = 0;
    int status_ = 0;
};

/// Where a tile's data are damaged first.
struct TileDamage {
    std::uint32_t tile = 0, row = 0;  ///< counted from 0, the row from the tile's top
    std::uint64_t byte = 0;           ///< of the tile's data, where the row begins
    const char* reason = "";
};

/// Decodes at most `rows` rows of tile k, and calls each(tile) after every one. The result is the damage that ended it.
template <class Each>
std::optional<TileDamage> decodeRows(TileRows& tile, std::uint32_t k, std::uint32_t rows, Each each) {
    for (std::uint32_t y = 0; y < rows; ++y) {
        if (!tile.next()) return TileDamage{k, y, tile.bit() / 8, tile.reason()};
        each(tile);
    }
    return std::nullopt;
}
inline std::optional<TileDamage> decodeRows(TileRows& tile, std::uint32_t k, std::uint32_t rows) {
    return decodeRows(tile, k, rows, [](const TileRows&) {});
}
