#include "page/view_painter.h"

namespace tilepress {

ViewPainter::ViewPainter(const ViewPlan& plan)
    : plan_(plan), rows_(plan_), marks_(std::max(plan.height, plan.rect.height), plan.bands()) {
    if (plan_.counts()) counts_.emplace(plan_, rows_);
    else spans_.emplace(plan_, rows_);
}

std::uint64_t ViewPainter::memory(const ViewPlan& plan) {
    return sizeof(ViewPainter) + PictureRows::memory(plan) +
           (plan.counts() ? CountPainter::memory(plan) : SpanPainter::memory(plan));
}

bool ViewPainter::prepare() { return rows_.prepare() && (counts_ ? counts_->prepare() : spans_->prepare()); }

void ViewPainter::endRow(std::uint32_t pageRow) {
    if (pageRow - plan_.rect.top >= plan_.rect.height) return;
    const bool lowers = plan_.lowers();
    const std::uint32_t height = lowers ? marks_.size() : 1, copies = lowers ? 1 : marks_.size();
    if (counts_) counts_->endRow(rowOfBand_);
    else if (spans_->wants(rowOfBand_)) spans_->endRow();
    if (++rowOfBand_ < height) return;
    if (counts_) counts_->endBand(height, copies);
    else spans_->endBand(copies);
    marks_.advance();
    rowOfBand_ = 0;
}

}  // namespace tilepress
