#pragma once

// What the parts of compressed handles share.

#include "handles/handle_kinds.h"

#include <cstdint>

namespace tilepress::handles {

/// Whether it is a compressed image with a header. The type code does not tell: of a revived one it may be in the
/// other byte order.
inline bool isTiffG4(const ImgHandle* image) { return image && image->header && image->free == ImgTIFFG4Free; }

/// Whether it was revived: then its header follows it, and its parts have no blocks of their own.
inline bool livesInBlock(const ImgHandle& image) { return image.header == &image + 1; }

/// How many tiles there are, for a tile size that is not 0.
struct TileGrid {
    std::uint32_t width, height, tileWidth, tileHeight;
    std::uint32_t across, down;

    explicit TileGrid(const ImgG4Header& header)
        : width(static_cast<std::uint32_t>(quadWidth(header.quads.srcQuad))),
          height(static_cast<std::uint32_t>(quadHeight(header.quads.srcQuad))), tileWidth(header.tileWidth),
          tileHeight(header.tileHeight), across(count(width, tileWidth)), down(count(height, tileHeight)) {}

    std::uint64_t tiles() const { return std::uint64_t{across} * down; }

private:
    static std::uint32_t count(std::uint64_t size, std::uint32_t tile) {
        return tile == 0 ? 0 : static_cast<std::uint32_t>((size + tile - 1) / tile);
    }
};

/// Bytes of one work buffer of a column of tiles.
inline std::uint64_t columnBufferBytes(std::uint32_t tileWidth) { return 4 * std::uint64_t{tileWidth} + 24; }

/// Fills the tiles' records, but for the words that nothing uses, and the table of their rows.
void setTiles(const ImgG4Header& header, const TileGrid& grid, ImgG4TileRec* records, void* const* tileData);

}  // namespace tilepress::handles
