#pragma once

// What a page is: its description and its coded tiles, which never change, and what preparing it has added.

#include "foundation/heap.h"
#include "tilepress/page.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tilepress {

/// A tile's coded bytes. No bytes at all: a tile of paper.
struct CodedTile {
    const unsigned char* bytes;
    std::uint32_t size;
};

/// Tiles row by row, all of one size; those at the right and at the bottom may reach beyond the page.
struct TileGrid {
    std::uint32_t width, height;          ///< of the page
    std::uint32_t tileWidth, tileHeight;  ///< neither is 0
    const CodedTile* tiles;
    bool lowBitFirst;  ///< of the bytes' bits; else the highest one comes first
    bool padded;       ///< kCodedBack zero bytes follow each tile's own
    bool blackPaper;   ///< coded white is ink

    std::uint32_t across() const { return (width - 1) / tileWidth + 1; }
    std::uint32_t down() const { return (height - 1) / tileHeight + 1; }
    /// Rows of codes that a tile row has: strips end with the page.
    std::uint32_t rowsOf(std::uint32_t tileRow) const {
        const std::uint32_t left = height - tileRow * tileHeight;
        return tileWidth == width && left < tileHeight ? left : tileHeight;
    }
};

/// A page laid out anew in tiles.
struct RelaidTiles {
    TileGrid grid;
    Heap<CodedTile> tiles;
    Heap<unsigned char> bytes;
    std::uint64_t memory = 0;  ///< bytes that all this takes
};

/// Widest and highest page and tile, and longest tile, that the row decoder takes.
inline constexpr std::uint32_t kMostPixelsASide = 0x7FFFFFFF - 16, kMostTileBytes = 0x7FFFFFFF - 256;

}  // namespace tilepress

struct tp_page {
    std::atomic<std::uint32_t> holders{1};
    tp_page_info info;  ///< with zeros replaced
    tilepress::TileGrid grid;
    tilepress::Heap<tilepress::CodedTile> tiles;
    tilepress::Heap<unsigned char> bytes;
    std::uint64_t memory = 0;
    std::atomic<tilepress::RelaidTiles*> relaid{nullptr};

    tp_page() = default;
    tp_page(const tp_page&) = delete;
    tp_page& operator=(const tp_page&) = delete;
    ~tp_page() { delete relaid.load(std::memory_order_acquire); }

    /// The tiles from which any part is drawn soonest.
    const tilepress::TileGrid& quickest() const {
        const tilepress::RelaidTiles* const anew = relaid.load(std::memory_order_acquire);
        return anew ? anew->grid : grid;
    }
};
