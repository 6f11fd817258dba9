#pragma once

// The one walk over a grid of coded tiles: the rows of a rectangle from the top, of each row the tiles under it from
// the left. No tile is expanded; memory is two lists a tile column, and a window of codes that are not ready for
// the decoder.

#include "ccitt/row_cursor.h"

#include <cstdint>

namespace tilepress::g4 {

/// Tiles row by row; those at the right and at the bottom may reach beyond the page. Where a size is 0 there are none.
struct TileLayout {
    std::uint32_t width, height, tileWidth, tileHeight;
    bool blackPaper = false;  ///< what is not there, and what is filled in as paper, is coded black

    std::uint32_t across() const { return count(width, tileWidth); }
    std::uint32_t down() const { return count(height, tileHeight); }
    std::uint64_t tiles() const { return std::uint64_t{across()} * down(); }
    static std::uint32_t count(std::uint32_t pixels, std::uint32_t tile) {
        return tile == 0 ? 0 : pixels / tile + (pixels % tile != 0);
    }
};

/// Where the codes of tile `k` are; called when the walk enters the tile.
struct TileSource {
    const void* owner;
    TileCodes (*codesOf)(const void* owner, std::size_t k);
};

/// What is wanted of a page; lies on it, and no size is 0.
struct PageRect {
    std::uint32_t left, top, width, height;
};

/// A tile that could not be decoded further.
struct TileDamage {
    std::size_t tile;
    std::uint32_t row;  ///< of the tile: the first that is missing
    std::int64_t byte;  ///< of its codes, as they are decoded: where that row's begin
    RowStatus reason;
    std::uint32_t left;  ///< the tile's left column on the page
    std::uint32_t top;   ///< the page's row that `row` is
};

/// What becomes of the rest of a damaged tile.
enum class OnDamage { end, paper, keep };

struct DamagePolicy {
    OnDamage rest = OnDamage::end;  ///< the walk ends; the tile's rows are paper, or as its last good one
    void (*report)(void* user, const TileDamage& damage) = nullptr;  ///< null, or told of every damaged tile once
    void* user = nullptr;
};

enum class WalkEnd { none, noMemory, damaged };

/// One tile's row under the rectangle.
struct TileRow {
    const std::int32_t* list;
    std::int32_t count;
    std::uint32_t left;  ///< the tile's left column on the page
};

/// Prepares, steps and reports. The page is only read, so that any number of walks can be on it at once.
class TileWalk {
public:
    TileWalk(const TileLayout& layout, const TileSource& source, const PageRect& rect, Decoding how,
             const DamagePolicy& policy = {});
    TileWalk(const TileWalk&) = delete;
    TileWalk& operator=(const TileWalk&) = delete;
    ~TileWalk() { delete[] cursors_; }

    /// Takes the memory for lists; false when it runs out. Else done by begin.
    bool prepare();
    /// Goes to the rectangle's first row. False when the walk has ended already.
    bool begin();
    /// Decodes a row and hands each of its tiles to onTile(const TileRow&) as soon as it is decoded. False when the
    /// walk has ended: of the last row the tiles before the damaged one were handed over.
    template <class OnTile>
    bool next(OnTile onTile);
    /// From the next row on decodes the tiles under these columns of the page alone, up to the end of the tile row.
    void narrow(std::uint32_t left, std::uint32_t right) {
        from_ = left / layout_.tileWidth - firstColumn_;
        past_ = (right - 1) / layout_.tileWidth - firstColumn_ + 1;
    }
    bool skip() {
        return next([](const TileRow&) {});
    }
    /// Calls onRow(y) for every row of the rectangle, which decodes it by next or leaves it. False when the walk has
    /// ended before the last one.
    template <class OnRow>
    bool rows(OnRow onRow);

    const PageRect& rect() const { return rect_; }
    /// The page's row that comes next.
    std::uint32_t row() const { return row_; }
    /// Why the walk ended, and of damage where.
    WalkEnd end() const { return end_; }
    const TileDamage& damage() const { return damage_; }
    /// Whether any tile of the row that was decoded last is filled in.
    bool isFilledIn() const { return filledIn_ != 0; }
    /// Bytes that the walk takes, but for copies of codes.
    static std::uint64_t memory(const TileLayout& layout, const PageRect& rect);

private:
    bool enterTileRow();
    bool goesOn(std::uint32_t k, RowStatus status);
    bool fail(WalkEnd end) {
        end_ = end;
        return false;
    }

    const TileLayout layout_;
    const TileSource source_;
    const PageRect rect_;
    const Decoding how_;
    const DamagePolicy policy_;
    const std::uint32_t firstColumn_, columns_;
    RowCursor* cursors_ = nullptr;   // of every tile column under the rectangle
    std::uint32_t from_ = 0, past_;  // those of them that are decoded
    std::uint32_t row_ = 0, rowInTile_ = 0, filledIn_ = 0;
    WalkEnd end_ = WalkEnd::none;
    TileDamage damage_{};
};

template <class OnTile>
bool TileWalk::next(OnTile onTile) {
    if (rowInTile_ == layout_.tileHeight && !enterTileRow()) return false;
    std::uint32_t left = (firstColumn_ + from_) * layout_.tileWidth;
    for (std::uint32_t k = from_; k < past_; ++k, left += layout_.tileWidth) {
        RowCursor& cursor = cursors_[k];
        const RowStatus status = cursor.next();
        if (status != kRowDecoded && !goesOn(k, status)) return false;
        const RowList row = cursor.row();
        onTile(TileRow{row.elements, row.count, left});
    }
    ++rowInTile_;
    ++row_;
    return true;
}

template <class OnRow>
bool TileWalk::rows(OnRow onRow) {
    for (std::uint32_t y = 0; y < rect_.height; ++y) {
        onRow(y);
        if (end_ != WalkEnd::none || (row_ - rect_.top == y && !skip())) return false;
    }
    return true;
}

}  // namespace tilepress::g4
