#include "page/count_painter.h"

#include "kernels/bit_rows.h"

#include <algorithm>
#include <cstring>

namespace tilepress {
namespace {

constexpr std::uint64_t kMostInMaps = 0xFFFFFFFE;  // pixels of a cell

std::uint64_t largestCell(const ViewPlan& plan) {
    const std::uint64_t across = plan.cellsAcross(), down = plan.bands();
    return ((plan.rect.width - 1) / across + 1) * ((plan.rect.height - 1) / down + 1);
}

/// The linear tone, to nearest.
unsigned char coverageTone(std::uint64_t area, std::uint64_t ink) {
    return static_cast<unsigned char>((2 * 255 * (area - ink) + area) / (2 * area));
}

void fillCoverageMap(unsigned char* map, std::uint32_t levels) {
    for (std::uint32_t k = 0; k < levels; ++k) map[k] = coverageTone(levels - 1, k);
}

/// Paper, or ink where half of the cell or more is.
void fillHalfMap(unsigned char* map, std::uint32_t levels) {
    for (std::uint32_t k = 0; k < levels; ++k) map[k] = 2 * k < levels - 1 ? 255 : 0;
}

/// The tone of a cell for which there is no map. Shares of ink are all that count, so that both numbers may be halved
/// until sums with them fit.
unsigned char toneOf(const ViewPlan& plan, std::uint64_t area, std::uint64_t ink) {
    if (plan.format == TP_BITS) return ink < area - ink ? 255 : 0;
    for (; area > 0xFFFFFF00; area /= 2) ink /= 2;
    if (plan.mode == TP_COVERAGE) return coverageTone(area, ink);
    return staircaseGrey(static_cast<std::uint32_t>(area + 1), static_cast<std::uint32_t>(ink));
}

}  // namespace

std::uint64_t CountPainter::memory(const ViewPlan& plan) {
    const std::uint64_t cells = plan.cellsAcross(), wide = plan.width;
    return sizeof(CellEdge) * (std::uint64_t{plan.rect.width} + 1) +
           cells * (sizeof(std::uint32_t) + 2 * sizeof(std::uint64_t) + sizeof(ImgULong) + 1) +
           (largestCell(plan) > kMostInMaps ? sizeof(std::uint64_t) * cells : 0) + 4 * kStaircaseLevels +
           (plan.width > plan.rect.width ? wide + sizeof(ByteShuffle) * (wide / 16 + 1) + sizeof(ImgULong) * wide : 0);
}

bool CountPainter::prepare() {
    const std::uint32_t across = plan_.cellsAcross(), down = plan_.bands();
    const auto fill = plan_.format == TP_BITS ? fillHalfMap : plan_.mode == TP_COVERAGE ? fillCoverageMap : fillGreyMap;
    const bool large = largestCell(plan_) > kMostInMaps;
    // A cell of fewer levels is neither so wide nor so high that its sums could overflow.
    hasMaps_ = largestCell(plan_) + 1 < kStaircaseLevels;
    return cells_.prepare(plan_.rect.width, across) && (hasMaps_ || counts_.reserve(across)) &&
           tones_.reserve(across) &&
           (large ? totals_.reserve(across) : maps_.prepare(plan_.rect.width, plan_.rect.height, across, down, fill)) &&
           (across == plan_.width || (wide_.reserve(plan_.width) && widener_.prepare()));
}

void CountPainter::addRuns(const g4::TileRow& row) {
    runsWithin(
        row, 2, {plan_.rect.left, plan_.rect.width},
        [this](const std::int32_t* list, std::int32_t count, std::ptrdiff_t offset) {
            cells_.addRuns(list, count, offset);
        },
        [this](std::size_t from, std::size_t to) { cells_.add(from, to); });
}

/// Takes the sums away before they can overflow.
void CountPainter::fold() {
    cells_.fold(counts_.get());
    if (!totals_) return;
    for (std::uint32_t x = 0; x < plan_.cellsAcross(); ++x) {
        totals_[x] += counts_[x];
        counts_[x] = 0;
    }
}

template <bool kWhiteInk>
void CountPainter::toneFolded(std::uint32_t height) {
    fold();
    const std::uint32_t across = plan_.cellsAcross();
    for (std::uint32_t x = 0; x < across; ++x) {
        const std::uint64_t area = std::uint64_t{height} * cells_.width(x), black = totals_ ? totals_[x] : counts_[x];
        const std::uint64_t ink = kWhiteInk ? area - black : black;
        const unsigned char* const map = maps_.of(height, cells_.width(x));
        tones_[x] = map ? map[ink] : toneOf(plan_, area, ink);
    }
    std::fill_n(counts_.get(), across, 0);
    if (totals_) std::fill_n(totals_.get(), across, 0);
}

template <bool kWhiteInk>
void CountPainter::toneRow(std::uint32_t height) {
    if (!hasMaps_) return toneFolded<kWhiteInk>(height);
    const std::uint32_t low = plan_.rect.width / plan_.cellsAcross();
    const unsigned char *const narrow = maps_.of(height, low), *const wide = maps_.of(height, low + 1);
    unsigned char* const tones = tones_.get();
    cells_.take(
        [=](std::uint32_t x, std::uint32_t width, std::uint32_t black) {
            const unsigned char* const map = width == low ? narrow : wide;
            tones[x] = map[kWhiteInk ? height * width - black : black];
        },
        [=](std::uint32_t x) { std::memset(tones + x, kWhiteInk ? 0 : 255, CellCounter::kGroup); });
}

void CountPainter::endBand(std::uint32_t height, std::uint32_t copies) {
    if (plan_.blackPaper) toneRow<true>(height);
    else toneRow<false>(height);

    unsigned char* row = tones_.get();
    if (plan_.invert) complement(row, plan_.cellsAcross());
    if (wide_) {
        widener_.widen(wide_.get(), row);
        row = wide_.get();
    }
    if (plan_.format != TP_BITS) return rows_.putTones(row, copies);
    packLow(row, row, plan_.width);
    rows_.putBits(row, copies);
}

}  // namespace tilepress
