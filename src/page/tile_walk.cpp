#include "page/tile_walk.h"

#include <algorithm>
#include <cstddef>
#include <new>

namespace tilepress::g4 {

TileWalk::TileWalk(const TileLayout& layout, const TileSource& source, const PageRect& rect, Decoding how,
                   const DamagePolicy& policy)
    : layout_(layout), source_(source), rect_(rect), how_(how), policy_(policy),
      firstColumn_(rect.left / layout.tileWidth),
      columns_((rect.left + (rect.width - 1)) / layout.tileWidth - firstColumn_ + 1), past_(columns_) {}

bool TileWalk::prepare() {
    // Tiles whose rows fit no list are found out by begin.
    if (cursors_ || layout_.tileWidth > kMaxListWidth) return true;
    if ((std::uint64_t{columns_} + 1) * sizeof(RowCursor) > PTRDIFF_MAX) return fail(WalkEnd::noMemory);
    cursors_ = new (std::nothrow) RowCursor[columns_];
    const bool got = cursors_ && std::all_of(cursors_, cursors_ + columns_, [this](RowCursor& cursor) {
                         return cursor.prepare(layout_.tileWidth, how_, layout_.blackPaper);
                     });
    return got || fail(WalkEnd::noMemory);
}

bool TileWalk::begin() {
    if (!prepare()) return false;
    if (!cursors_) return fail(WalkEnd::damaged);
    row_ = rect_.top - rect_.top % layout_.tileHeight;
    if (!enterTileRow()) return false;
    while (row_ < rect_.top)
        if (!skip()) return false;
    return true;
}

bool TileWalk::enterTileRow() {
    rowInTile_ = filledIn_ = from_ = 0;
    past_ = columns_;
    const std::size_t first = std::size_t{row_ / layout_.tileHeight} * layout_.across() + firstColumn_;
    for (std::uint32_t k = 0; k < columns_; ++k)
        if (!cursors_[k].enter(source_.codesOf(source_.owner, first + k))) return fail(WalkEnd::noMemory);
    return true;
}

/// Whether the walk goes on past a tile that cannot be decoded, which its cursor is then prepared for.
bool TileWalk::goesOn(std::uint32_t k, RowStatus status) {
    if (status == kRowNoMemory) return fail(WalkEnd::noMemory);
    const std::uint32_t column = firstColumn_ + k;
    damage_ = {std::size_t{row_ / layout_.tileHeight} * layout_.across() + column,
               rowInTile_,
               cursors_[k].position() >> 3,
               status,
               column * layout_.tileWidth,
               row_};
    if (policy_.report) policy_.report(policy_.user, damage_);
    if (policy_.rest == OnDamage::end) return fail(WalkEnd::damaged);
    cursors_[k].stay(policy_.rest == OnDamage::paper);
    ++filledIn_;
    return true;
}

std::uint64_t TileWalk::memory(const TileLayout& layout, const PageRect& rect) {
    const std::uint64_t columns = (rect.left + (rect.width - 1)) / layout.tileWidth - rect.left / layout.tileWidth + 1;
    return columns * (sizeof(RowCursor) + 2 * sizeof(std::int32_t) * lineElements(layout.tileWidth));
}

}  // namespace tilepress::g4
