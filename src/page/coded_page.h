#pragma once

// What a page is: its description and its coded tiles, which never change, and what preparing it has added.

#include "ccitt/coded_bytes.h"
#include "foundation/heap.h"
#include "page/tile_walk.h"
#include "tilepress/page.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tilepress {

/// A tile's coded bytes. No bytes at all: a tile of paper.
struct CodedTile {
    const unsigned char* bytes;
    std::uint32_t size;
};

/// The grid of a page's tiles.
struct PageTiles {
    g4::TileLayout layout;
    const CodedTile* tiles;
    g4::CodeOrder order;
    std::uint32_t longest;  ///< bytes of the longest tile

    /// Bytes that a walk over a rectangle takes at most, copies of codes that cannot be decoded where they are with
    /// them: all codes of tiles that are damaged.
    std::uint64_t walkMemory(const g4::PageRect& rect) const {
        const std::uint64_t columns =
            (rect.left + (rect.width - 1)) / layout.tileWidth - rect.left / layout.tileWidth + 1;
        const std::uint64_t copy = order == g4::CodeOrder::ready ? 0 : longest + kCodedBack + 1;
        return g4::TileWalk::memory(layout, rect) + columns * copy;
    }
    /// Pixels of the page that a walk over a rectangle decodes.
    std::uint64_t walkPixels(const g4::PageRect& rect) const {
        const std::uint64_t first = rect.left / layout.tileWidth,
                            last = (rect.left + (rect.width - 1)) / layout.tileWidth;
        const std::uint64_t columns = std::min<std::uint64_t>((last - first + 1) * layout.tileWidth, layout.width);
        return columns * (std::uint64_t{rect.top % layout.tileHeight} + rect.height);
    }
    /// For a walk; the tiles must stay.
    g4::TileSource source() const {
        return {this, [](const void* owner, std::size_t k) {
                    const auto& self = *static_cast<const PageTiles*>(owner);
                    return g4::TileCodes{self.tiles[k].bytes, self.tiles[k].size, self.order};
                }};
    }
};

/// A page laid out anew in tiles.
struct RelaidTiles {
    PageTiles grid;
    Heap<CodedTile> tiles;
    Heap<unsigned char> bytes;
    std::uint64_t memory = 0;  ///< bytes that all this takes
};

/// Widest and highest page and tile, and longest tile, that the row decoder takes.
inline constexpr std::uint32_t kMostPixelsASide = g4::kMaxListWidth, kMostTileBytes = 0x7FFFFFFF - 256;

}  // namespace tilepress

struct tp_page {
    std::atomic<std::uint32_t> holders{1};
    tp_page_info info;  ///< with zeros replaced
    tilepress::PageTiles grid;
    tilepress::Heap<tilepress::CodedTile> tiles;
    tilepress::Heap<unsigned char> bytes;
    std::uint64_t memory = 0;
    std::atomic<tilepress::RelaidTiles*> relaid{nullptr};

    tp_page() = default;
    tp_page(const tp_page&) = delete;
    tp_page& operator=(const tp_page&) = delete;
    ~tp_page() { delete relaid.load(std::memory_order_acquire); }

    /// The tiles from which the rectangle is drawn soonest.
    const tilepress::PageTiles& quickest(const tilepress::g4::PageRect& rect) const {
        const tilepress::RelaidTiles* const anew = relaid.load(std::memory_order_acquire);
        if (!anew) return grid;
        // Pixels of small tiles take about a quarter longer.
        const std::uint64_t pixels = anew->grid.walkPixels(rect);
        return pixels + pixels / 4 < grid.walkPixels(rect) ? anew->grid : grid;
    }
};
