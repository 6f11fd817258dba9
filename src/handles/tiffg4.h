#pragma once

// What the parts of compressed handles share.

#include "handles/handle_kinds.h"
#include "page/tile_walk.h"

#include <cstdint>

namespace tilepress::handles {

/// Whether it is a compressed image with a header. The type code does not tell: of a revived one it may be in the
/// other byte order.
inline bool isTiffG4(const ImgHandle* image) { return image && image->header && image->free == ImgTIFFG4Free; }

/// Whether it was revived: then its header follows it, and its parts have no blocks of their own.
inline bool livesInBlock(const ImgHandle& image) { return image.header == &image + 1; }

inline g4::TileLayout layoutOf(const ImgG4Header& header) {
    return {static_cast<std::uint32_t>(quadWidth(header.quads.srcQuad)),
            static_cast<std::uint32_t>(quadHeight(header.quads.srcQuad)), header.tileWidth, header.tileHeight};
}

/// Bytes of one work buffer of a column of tiles.
inline std::uint64_t columnBufferBytes(std::uint32_t tileWidth) { return 4 * std::uint64_t{tileWidth} + 24; }

/// Fills the tiles' records, but for the words that nothing uses, and the table of their rows.
void setTiles(const ImgG4Header& header, ImgG4TileRec* records, void* const* tileData);

}  // namespace tilepress::handles
