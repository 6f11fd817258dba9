// A page laid out anew in tiles, from code to code.

#include "ccitt/strip.h"
#include "page/call_options.h"
#include "page/runs_within.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

using namespace tilepress;
using namespace tilepress::g4;

namespace {

constexpr std::uint32_t kSide = 512;  // of the new tiles
/// Tiles of as many pixels are decoded sooner than new ones would pay for themselves.
constexpr std::uint64_t kSmallTile = 1 << 20;

/// One column of new tiles: codes of the tile in the making, and the list of its next row.
struct TileCoder {
    StripWriter writer;
    std::int32_t count = 1;  ///< elements of the list
    bool blank = true;       ///< all rows so far are paper

    bool begin() {
        blank = true;
        return writer.begin(kSide);
    }
    /// A black run in columns of the tile; one that meets the last one continues it.
    void addRun(std::int32_t from, std::int32_t to) {
        std::int32_t* const list = writer.nextList();
        if (count > 1 && list[count - 1] == from + 1) --count;
        else list[count++] = from + 1;
        list[count++] = to + 1;
    }
    RowResult endRow(bool blackPaper) {
        std::int32_t* const list = writer.nextList();
        list[0] = 0;
        if (list[count - 1] == std::int32_t{kSide} + 1) --count;
        blank = blank && (blackPaper ? count == 2 && list[1] == 1 : count == 1);
        std::fill_n(list + count, 3, std::int32_t{kSide} + 1);
        const std::int32_t elements = count + 3;
        count = 1;
        return writer.addList(elements);
    }
};

/// Decodes the page's rows once and codes them in tiles.
class Relayer {
public:
    Relayer(const PageTiles& from, std::uint64_t room, CallOptions& call)
        : from_(from), layout_{from.layout.width, from.layout.height, kSide, kSide, from.layout.blackPaper},
          room_(room), call_(call) {}
    Relayer(const Relayer&) = delete;
    Relayer& operator=(const Relayer&) = delete;
    ~Relayer() {
        delete[] coders_;
        delete made_;
    }

    /// Bytes that it takes besides the result: codes of one row of tiles in buffers that double, and lists.
    static std::uint64_t workBytes(const PageTiles& from, std::uint64_t room) {
        const std::uint64_t across = (from.layout.width - 1) / kSide + 1;
        return from.walkMemory({0, 0, from.layout.width, 1}) + 2 * room +
               across * (sizeof(TileCoder) + 2 * sizeof(std::int32_t) * (kSide + 4) + StripWriter::roomForRow(kSide));
    }

    /// TP_OK without a result where the room does not suffice: a page of so few codes is decoded soon enough.
    tp_status run();
    RelaidTiles* release() {
        RelaidTiles* const made = made_;
        made_ = nullptr;
        return made;
    }

private:
    bool prepare();
    void split(const TileRow& row);
    tp_status endRow(std::uint32_t row);
    tp_status store(std::uint32_t tileRow);
    bool finish();

    const PageTiles& from_;
    const TileLayout layout_;
    const std::uint64_t room_;
    CallOptions& call_;
    TileCoder* coders_ = nullptr;
    RelaidTiles* made_ = nullptr;
    std::uint64_t used_ = 0;
    bool fits_ = true;
};

bool Relayer::prepare() {
    const std::uint32_t across = layout_.across();
    coders_ = new (std::nothrow) TileCoder[across];
    made_ = new (std::nothrow) RelaidTiles;
    if (!coders_ || !made_) return false;
    made_->memory = sizeof(RelaidTiles) + sizeof(CodedTile) * layout_.tiles();
    fits_ = room_ > made_->memory;
    if (!fits_) return true;
    *made_->bytes.out() = allocateUnset<unsigned char>(room_ - made_->memory);
    return made_->bytes && made_->tiles.reserve(layout_.tiles()) &&
           std::all_of(coders_, coders_ + across, [](TileCoder& coder) { return coder.begin(); });
}

/// The row's black runs, cut where new tiles meet.
void Relayer::split(const TileRow& row) {
    const auto addRun = [this](std::size_t from, std::size_t to) {
        for (std::size_t k = from / kSide; from < to; ++k) {
            const std::size_t left = k * kSide, end = std::min(to, left + kSide);
            coders_[k].addRun(static_cast<std::int32_t>(from - left), static_cast<std::int32_t>(end - left));
            from = end;
        }
    };
    runsWithin(
        row, 2, {0, layout_.width},
        [&](const std::int32_t* list, std::int32_t count, std::ptrdiff_t offset) {
            for (std::int32_t k = 2; k < count - 2; k += 2)
                addRun(static_cast<std::size_t>(list[k - 1] + offset), static_cast<std::size_t>(list[k] + offset));
        },
        addRun);
}

tp_status Relayer::endRow(std::uint32_t row) {
    const std::uint32_t across = layout_.across();
    for (std::uint32_t k = 0; k < across; ++k)
        if (coders_[k].endRow(layout_.blackPaper) != RowResult::kAdded) return TP_E_MEMORY;
    return (row + 1) % kSide == 0 || row + 1 == layout_.height ? store(row / kSide) : TP_OK;
}

/// Ends the tiles of a row, and begins the next ones.
tp_status Relayer::store(std::uint32_t tileRow) {
    const std::uint32_t across = layout_.across();
    for (std::uint32_t k = 0; k < across; ++k) {
        const Stream stream = coders_[k].writer.finish();
        CodedTile& tile = made_->tiles[std::size_t{tileRow} * across + k];
        const std::uint64_t needed = stream.length + kCodedBack;
        if (!coders_[k].blank) {
            if (made_->memory + used_ + needed > room_) {
                fits_ = false;
                return TP_OK;
            }
            unsigned char* const to = made_->bytes.get() + used_;
            std::memcpy(to, stream.bytes, stream.length);
            std::memset(to + stream.length, 0, kCodedBack);
            tile.size = static_cast<std::uint32_t>(stream.length);
            used_ += needed;
        }
        if (!coders_[k].begin()) return TP_E_MEMORY;
    }
    return TP_OK;
}

/// Gives back the room that was not needed, and says where the tiles have come to lie; false when memory runs out.
bool Relayer::finish() {
    void* const fitting = std::realloc(made_->bytes.get(), static_cast<std::size_t>(used_ ? used_ : 1));
    if (!fitting) return false;
    auto* bytes = static_cast<unsigned char*>(fitting);
    *made_->bytes.out() = bytes;
    const std::uint64_t count = layout_.tiles();
    for (std::size_t k = 0; k < count; ++k) {
        CodedTile& tile = made_->tiles[k];
        if (tile.size == 0) continue;
        tile.bytes = bytes;
        bytes += tile.size + kCodedBack;
    }
    made_->memory += used_;
    made_->grid = {layout_, made_->tiles.get(), CodeOrder::ready, 0};
    return true;
}

tp_status Relayer::run() {
    if (!prepare()) return TP_E_MEMORY;
    DamagePolicy policy = call_.policy();
    policy.rest = OnDamage::end;
    const PageRect all{0, 0, layout_.width, layout_.height};
    TileWalk walk(from_.layout, from_.source(), all, Decoding::standard, policy);
    if (fits_ && !walk.begin()) return statusOf(walk.end());
    for (std::uint32_t row = 0; fits_ && row < layout_.height; ++row) {
        if (!walk.next([this](const TileRow& tile) { split(tile); }))
            return walk.end() == WalkEnd::damaged ? TP_DAMAGED : statusOf(walk.end());
        if (const tp_status status = endRow(row); status != TP_OK) return status;
        if (!call_.rowDone()) return TP_E_CANCELLED;
    }
    if (fits_) return finish() ? TP_OK : TP_E_MEMORY;
    delete made_;
    made_ = nullptr;
    return TP_OK;
}

/// Coded bytes that the page was opened with.
std::uint64_t codedBytes(const PageTiles& tiles) {
    const std::uint64_t count = tiles.layout.tiles();
    std::uint64_t sum = 0;
    for (std::size_t k = 0; k < count; ++k) sum += tiles.tiles[k].size;
    return sum;
}

}  // namespace

tp_status TILEPRESS_CALL tp_page_prepare(tp_page* page, tp_options* options) {
    if (!page) return TP_E_ARGUMENT;
    const PageTiles& tiles = page->grid;
    CallOptions call(tiles, options);
    if (const tp_status status = call.check(page->info, false); status != TP_OK) return status;
    const TileLayout& layout = tiles.layout;
    const std::uint64_t tilePixels =
        std::uint64_t{std::min(layout.tileWidth, layout.width)} * std::min(layout.tileHeight, layout.height);
    if (tilePixels <= kSmallTile || page->relaid.load(std::memory_order_acquire)) return TP_OK;
    const std::uint64_t coded = codedBytes(tiles), room = coded + coded / 2;
    if (!call.allows(room + Relayer::workBytes(tiles, room))) return TP_E_LIMIT;
    call.setTotal(layout.height);

    Relayer relayer(tiles, room, call);
    if (const tp_status status = relayer.run(); status != TP_OK) return status;
    RelaidTiles* const made = relayer.release();
    RelaidTiles* before = nullptr;
    // Another thread may have been sooner.
    if (made && !page->relaid.compare_exchange_strong(before, made, std::memory_order_acq_rel)) delete made;
    return call.finish();
}
