#include "page/call_options.h"
#include "page/view_painter.h"

#include <algorithm>
#include <cstddef>
#include <new>

using namespace tilepress;
using namespace tilepress::g4;

namespace {

/// The caller's array, whose elements may be of another size than ours.
class Views {
public:
    Views(const tp_view* first, std::size_t count) : first_(first), count_(count) {}
    std::size_t count() const { return count_; }
    tp_status plan(std::size_t k, const tp_page_info& page, const tp_limits& limits, ViewPlan& plan) const {
        tp_view view;
        const auto* bytes = reinterpret_cast<const unsigned char*>(first_) + k * std::size_t{first_->size};
        if (!readRecord(view, reinterpret_cast<const tp_view*>(bytes)) || view.size != first_->size)
            return TP_E_ARGUMENT;
        return planView(view, page, limits, plan);
    }

private:
    const tp_view* first_;
    std::size_t count_;
};

/// The painters of a call, from the one that begins leftmost on.
class Painters {
public:
    Painters() = default;
    Painters(const Painters&) = delete;
    Painters& operator=(const Painters&) = delete;
    ~Painters() {
        for (std::size_t k = 0; k < count_; ++k) delete table_[k];
    }

    tp_status create(const Views& views, const tp_page_info& page, const tp_limits& limits) {
        room_ = views.count();
        *table_.out() = allocateUnset<ViewPainter*>(kLists * std::uint64_t{room_});
        if (!table_) return TP_E_MEMORY;
        for (std::size_t k = 0; k < views.count(); ++k) {
            ViewPlan plan;
            if (const tp_status status = views.plan(k, page, limits, plan); status != TP_OK) return status;
            table_[k] = new (std::nothrow) ViewPainter(plan);
            if (!table_[k]) return TP_E_MEMORY;
            ++count_;
            if (!table_[k]->prepare()) return TP_E_MEMORY;
        }
        std::sort(table_.get(), table_.get() + count_,
                  [](const ViewPainter* a, const ViewPainter* b) { return a->rect().left < b->rect().left; });
        return TP_OK;
    }
    std::size_t count() const { return count_; }
    ViewPainter* operator[](std::size_t k) const { return table_[k]; }
    /// Room for as many painters, for lists of some of them: two.
    ViewPainter** list(std::size_t k) const { return table_.get() + (k + 1) * room_; }

private:
    static constexpr std::size_t kLists = 3;

    Heap<ViewPainter*> table_;
    std::size_t room_ = 0, count_ = 0;
};

/// Views whose tiles touch, and the part of the page over which they are drawn together.
struct Group {
    ViewPainter** views;
    std::size_t count;
    PageRect rect;
};

/// Draws all pictures in stretches of tile rows under the same views, and of each the groups of views that share tile
/// columns, so that no tile is decoded that is under none of them and none twice.
class Drawing {
public:
    Drawing(const PageTiles& tiles, const Painters& painters, CallOptions& call)
        : tiles_(tiles), tileWidth_(tiles.layout.tileWidth), tileHeight_(tiles.layout.tileHeight), painters_(painters),
          call_(call), active_(painters.list(0)), wanted_(painters.list(1)) {}

    tp_status draw() {
        std::uint64_t rows = 0;
        forEachGroup([&](const Group& group) {
            rows += group.rect.height;
            return TP_OK;
        });
        call_.setTotal(rows);
        return forEachGroup([this](const Group& group) { return drawGroup(group); });
    }

private:
    template <class Each>
    tp_status forEachGroup(Each each) {
        for (std::uint64_t row = 0, past; (past = collect(row)) != row; row = past) {
            // `row` has become the first tile row of the views.
            for (std::size_t k = 0; k < activeCount_;) {
                const Group group = groupFrom(k, row, past);
                if (const tp_status status = each(group); status != TP_OK) return status;
                k += group.count;
            }
        }
        return TP_OK;
    }

    /// Goes to the next tile row under a view, notes the views over it, and says up to where they are the same.
    std::uint64_t collect(std::uint64_t& row) {
        constexpr std::uint64_t kNone = ~std::uint64_t{0};
        std::uint64_t first = kNone, past = kNone;
        const auto forEachView = [this](auto each) {
            for (std::size_t k = 0; k < painters_.count(); ++k) {
                const PageRect& rect = painters_[k]->rect();
                each(painters_[k], rect.top / tileHeight_, (rect.top + (rect.height - 1)) / tileHeight_);
            }
        };
        forEachView([&](ViewPainter*, std::uint64_t from, std::uint64_t to) {
            if (to >= row) first = std::min(first, std::max(from, row));
        });
        if (first == kNone) return row;
        row = first;
        activeCount_ = 0;
        forEachView([&](ViewPainter* view, std::uint64_t from, std::uint64_t to) {
            if (from > row) past = std::min(past, from);
            if (from > row || to < row) return;
            past = std::min(past, to + 1);
            active_[activeCount_++] = view;
        });
        return past;
    }

    Group groupFrom(std::size_t k, std::uint64_t firstTileRow, std::uint64_t pastTileRow) const {
        const std::uint32_t left = active_[k]->rect().left;
        std::uint64_t right = 0, bottom = 0;
        std::size_t end = k;
        for (; end < activeCount_; ++end) {
            const PageRect& rect = active_[end]->rect();
            if (end > k && rect.left / tileWidth_ > (right - 1) / tileWidth_) break;
            right = std::max(right, std::uint64_t{rect.left} + rect.width);
            bottom = std::max(bottom, std::uint64_t{rect.top} + rect.height);
        }
        const std::uint64_t top = firstTileRow * tileHeight_;
        bottom = std::min(bottom, pastTileRow * tileHeight_);
        return {active_ + k,
                end - k,
                {left, static_cast<std::uint32_t>(top), static_cast<std::uint32_t>(right - left),
                 static_cast<std::uint32_t>(bottom - top)}};
    }

    tp_status drawGroup(const Group& group) {
        TileWalk walk(tiles_.layout, tiles_.source(), group.rect, Decoding::standard, call_.policy());
        if (!walk.begin()) return statusOf(walk.end());
        std::uint64_t same = group.rect.top;
        for (std::uint32_t k = 0; k < group.rect.height; ++k) {
            const std::uint32_t row = walk.row();
            if (row == same) same = narrow(walk, group, row);
            std::size_t wanted = 0;
            for (std::size_t v = 0; v < group.count; ++v)
                if (group.views[v]->wants(row)) wanted_[wanted++] = group.views[v];
            if (!next(walk, wanted)) return statusOf(walk.end());
            for (std::size_t v = 0; v < group.count; ++v) group.views[v]->endRow(row);
            if (!call_.rowDone()) return TP_E_CANCELLED;
        }
        return TP_OK;
    }

    /// Keeps the walk to the columns of the views that have not ended, and says up to which row they are the same.
    static std::uint64_t narrow(TileWalk& walk, const Group& group, std::uint32_t row) {
        std::uint64_t left = UINT32_MAX, right = 0, same = ~std::uint64_t{0};
        for (std::size_t v = 0; v < group.count; ++v) {
            const PageRect& rect = group.views[v]->rect();
            const std::uint64_t past = std::uint64_t{rect.top} + rect.height;
            if (past <= row) continue;
            left = std::min<std::uint64_t>(left, rect.left);
            right = std::max(right, std::uint64_t{rect.left} + rect.width);
            same = std::min(same, past);
        }
        // Views end in the last tile row that they are drawn in together.
        walk.narrow(static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(right));
        return same;
    }

    bool next(TileWalk& walk, std::size_t wanted) {
        ViewPainter* const* const views = wanted_;
        if (wanted == 0) return walk.skip();
        if (wanted == 1) return walk.next([view = views[0]](const TileRow& row) { view->add(row); });
        return walk.next([=, this](const TileRow& row) {
            for (std::size_t v = 0; v < wanted; ++v) {
                const PageRect& rect = views[v]->rect();
                if (row.left < rect.left + rect.width && std::uint64_t{row.left} + tileWidth_ > rect.left)
                    views[v]->add(row);
            }
        });
    }

    const PageTiles& tiles_;
    const std::uint32_t tileWidth_, tileHeight_;
    const Painters& painters_;
    CallOptions& call_;
    ViewPainter **const active_, **const wanted_;
    std::size_t activeCount_ = 0;
};

/// What the views come to: a rectangle around them, and the memory of their painters.
struct Demand {
    PageRect around;
    std::uint64_t memory;
};

/// Checks every view, one at least.
tp_status check(const Views& views, const tp_page_info& page, const CallOptions& call, Demand& demand) {
    std::uint64_t left = page.width, top = page.height, right = 0, bottom = 0;
    demand.memory = 0;
    for (std::size_t k = 0; k < views.count(); ++k) {
        ViewPlan plan;
        if (const tp_status status = views.plan(k, page, call.limits(), plan); status != TP_OK) return status;
        if (plan.counts() && plan.rect.width / plan.cellsAcross() >= CellCounter::kWidestCell) return TP_E_TOO_LARGE;
        demand.memory += ViewPainter::memory(plan) + 3 * sizeof(ViewPainter*);
        left = std::min<std::uint64_t>(left, plan.rect.left);
        top = std::min<std::uint64_t>(top, plan.rect.top);
        right = std::max(right, std::uint64_t{plan.rect.left} + plan.rect.width);
        bottom = std::max(bottom, std::uint64_t{plan.rect.top} + plan.rect.height);
    }
    demand.around = {static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top),
                     static_cast<std::uint32_t>(right - left), static_cast<std::uint32_t>(bottom - top)};
    return TP_OK;
}

}  // namespace

tp_status TILEPRESS_CALL tp_page_render(const tp_page* page, const tp_view* views, std::size_t count,
                                        tp_options* options) {
    if (!page || (!views && count > 0)) return TP_E_ARGUMENT;
    CallOptions call(page->grid, options);
    if (const tp_status status = call.check(page->info); status != TP_OK || count == 0) return status;
    const Views all(views, count);
    Demand demand;
    if (const tp_status status = check(all, page->info, call, demand); status != TP_OK) return status;
    const PageTiles& tiles = page->quickest(demand.around);
    if (!call.allows(demand.memory + tiles.walkMemory(demand.around))) return TP_E_LIMIT;
    Painters painters;
    if (const tp_status status = painters.create(all, page->info, call.limits()); status != TP_OK) return status;
    Drawing drawing(tiles, painters, call);
    const tp_status status = drawing.draw();
    return status == TP_OK ? call.finish() : status;
}
