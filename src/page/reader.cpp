#include "page/call_options.h"
#include "page/runs_within.h"
#include "page/view.h"

#include <algorithm>
#include <cstddef>
#include <new>

using namespace tilepress;
using namespace tilepress::g4;

namespace {

/// The black runs of a row's tiles as the changes of one row, runs that meet as one.
class JoinedRow {
public:
    bool prepare(const Columns& range) {
        range_ = range;
        return changes_.reserve(std::uint64_t{range.width} + 2);
    }
    void begin() { count_ = 0; }
    void add(const TileRow& row) {
        runsWithin(
            row, 2, range_,
            [this](const std::int32_t* list, std::int32_t count, std::ptrdiff_t offset) {
                for (std::int32_t k = 2; k < count - 2; k += 2)
                    addRun(static_cast<std::size_t>(list[k - 1] + offset), static_cast<std::size_t>(list[k] + offset));
            },
            [this](std::size_t from, std::size_t to) { addRun(from, to); });
    }
    /// The row's last change is not its end.
    std::uint32_t end() {
        if (count_ > 0 && changes_[count_ - 1] == range_.width) --count_;
        return count_;
    }
    const std::uint32_t* changes() const { return changes_.get(); }

private:
    void addRun(std::size_t from, std::size_t to) {
        if (count_ > 0 && changes_[count_ - 1] == from) --count_;
        else changes_[count_++] = static_cast<std::uint32_t>(from);
        changes_[count_++] = static_cast<std::uint32_t>(to);
    }

    Columns range_{};
    Heap<std::uint32_t> changes_;
    std::uint32_t count_ = 0;
};

}  // namespace

/// A walk that its caller steps.
struct tp_reader {
    tp_reader(tp_page* kept, const PageTiles& tiles, const PageRect& wanted, tp_options* options)
        : page(tp_page_retain(kept)), call(tiles, options), rect(wanted),
          walk(tiles.layout, tiles.source(), fromTileTop(tiles, wanted), Decoding::standard, call.policy()),
          left(wanted.height) {}
    tp_reader(const tp_reader&) = delete;
    tp_reader& operator=(const tp_reader&) = delete;
    ~tp_reader() { tp_page_release(page); }

    /// The rectangle with the rows above it that must be decoded first, so that they are counted as progress.
    static PageRect fromTileTop(const PageTiles& tiles, PageRect rect) {
        const std::uint32_t above = rect.top % tiles.layout.tileHeight;
        return {rect.left, rect.top - above, rect.width, rect.height + above};
    }
    static std::uint64_t memory(const PageTiles& tiles, const PageRect& rect) {
        return sizeof(tp_reader) + sizeof(std::uint32_t) * (std::uint64_t{rect.width} + 2) + tiles.walkMemory(rect);
    }
    tp_status open() {
        if (!joined.prepare({rect.left, rect.width}) || !walk.begin()) return TP_E_MEMORY;
        call.setTotal(std::uint64_t{rect.height} + (rect.top - walk.row()));
        return TP_OK;
    }
    tp_status next() {
        for (bool wanted = false; !wanted;) {
            wanted = walk.row() == rect.top + (rect.height - left);
            joined.begin();
            if (!walk.next([this](const TileRow& row) { joined.add(row); })) return statusOf(walk.end());
            if (!call.rowDone()) return TP_E_CANCELLED;
        }
        return TP_OK;
    }

    tp_page* page;
    CallOptions call;
    const PageRect rect;
    TileWalk walk;
    JoinedRow joined;
    std::uint32_t left;  ///< rows to come
    tp_status failed = TP_OK;
};

tp_status TILEPRESS_CALL tp_reader_open(tp_page* page, std::uint32_t left, std::uint32_t top, std::uint32_t width,
                                        std::uint32_t height, tp_options* options, tp_reader** reader) {
    if (!reader) return TP_E_ARGUMENT;
    *reader = nullptr;
    PageRect rect;
    if (!page || !partOfPage(page->info, {left, top, width, height}, rect)) return TP_E_ARGUMENT;
    const PageTiles& tiles = page->quickest(rect);
    const CallOptions call(tiles, options);
    if (const tp_status status = call.check(page->info); status != TP_OK) return status;
    if (!call.allows(tp_reader::memory(tiles, rect))) return TP_E_LIMIT;
    tp_reader* const made = new (std::nothrow) tp_reader(page, tiles, rect, options);
    if (!made) return TP_E_MEMORY;
    if (const tp_status status = made->open(); status != TP_OK) {
        delete made;
        return status;
    }
    *reader = made;
    return TP_OK;
}

tp_status TILEPRESS_CALL tp_reader_next(tp_reader* reader, const std::uint32_t** changes, std::uint32_t* count) {
    if (!reader || !changes || !count) return TP_E_ARGUMENT;
    *changes = nullptr;
    *count = 0;
    if (reader->failed != TP_OK) return reader->failed;
    if (reader->left == 0) return TP_E_ARGUMENT;
    if (const tp_status status = reader->next(); status != TP_OK) return reader->failed = status;
    --reader->left;
    *count = reader->joined.end();
    *changes = reader->joined.changes();
    return reader->walk.isFilledIn() ? TP_DAMAGED : TP_OK;
}

void TILEPRESS_CALL tp_reader_close(tp_reader* reader) { delete reader; }
