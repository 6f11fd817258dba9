#include "page/span_painter.h"

#include "kernels/bit_rows.h"
#include "kernels/mark_tables.h"

#include <cstring>

namespace tilepress {

SpanPainter::SpanPainter(const ViewPlan& plan, PictureRows& rows)
    : plan_(plan), rows_(rows), merges_(plan.mode == TP_INK), paintsWhite_(plan.mode == TP_INK && plan.blackPaper) {}

std::uint64_t SpanPainter::memory(const ViewPlan& plan) {
    const std::uint64_t table = plan.width == plan.rect.width ? 0 : std::uint64_t{plan.rect.width} + 1;
    return 2 * std::uint64_t{packedBytes(plan.width)} + 16 + sizeof(ImgULong) * table;
}

bool SpanPainter::prepare() {
    const std::uint32_t from = plan_.rect.width, to = plan_.width;
    if (!painted_.prepare(to) || !bits_.reserve(packedBytes(to))) return false;
    if (from == to) return true;
    if (from < to) return markTable(columns_, to, from);
    if (merges_) return ownerTable(columns_, from, to);
    // The first cell that begins at a column or after it.
    if (!columns_.reserve(std::uint64_t{from} + 1)) return false;
    for (std::uint32_t cell = 0, x = 0; cell <= to; ++cell)
        for (const std::uint32_t start = markPosition(cell, from, to); x <= start; ++x) columns_[x] = cell;
    return true;
}

template <class Onto>
void SpanPainter::paint(const g4::TileRow& row, Onto onto) {
    runsWithin(
        row, paintsWhite_ ? 1 : 2, {plan_.rect.left, plan_.rect.width},
        [&](const std::int32_t* list, std::int32_t count, std::ptrdiff_t offset) {
            painted_.addRuns(list, count, 2, offset, onto);
        },
        [&](std::size_t from, std::size_t to) {
            onto(from, to, [this](std::size_t first, std::size_t last) { painted_.add(first, last); });
        });
}

void SpanPainter::addRuns(const g4::TileRow& row) {
    const ImgULong* const columns = columns_.get();
    if (!columns) {
        paint(row, [](std::size_t from, std::size_t to, auto put) { put(from, to); });
    } else if (merges_ && plan_.narrows()) {
        paint(row, [columns](std::size_t from, std::size_t to, auto put) {
            put(columns[from], std::size_t{columns[to - 1]} + 1);
        });
    } else {
        paint(row, [columns](std::size_t from, std::size_t to, auto put) { put(columns[from], columns[to]); });
    }
}

void SpanPainter::endBand(std::uint32_t copies) {
    const std::size_t bytes = packedBytes(plan_.width);
    if (plan_.invert != (plan_.blackPaper && !paintsWhite_)) {
        complement(bits_.get(), bytes);
        clearFrom(bits_.get(), bytes, plan_.width);
    }
    rows_.putBits(bits_.get(), copies);
    std::memset(bits_.get(), 0, bytes);
}

}  // namespace tilepress
