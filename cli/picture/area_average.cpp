#include "picture/area_average.h"

#include "picture/component_rows.h"

#include <algorithm>
#include <vector>

namespace {

/// Deals `from` positions out to `to` cells of equal length, in order. A position is `to` units long and a cell `from`,
/// so that every share is a whole number.
class Shares {
public:
    Shares(std::uint32_t from, std::uint32_t to) : from_(from), to_(to), missing_(from) {}

    /// Calls add(share) for each cell that the next position has a part in, and full() where that completes the cell.
    template <class Add, class Full>
    void next(Add add, Full full) {
        std::uint64_t rest = to_;
        while (rest >= missing_) {
            add(missing_);
            full();
            rest -= missing_;
            missing_ = from_;
        }
        if (rest == 0) return;
        add(rest);
        missing_ -= rest;
    }

private:
    std::uint64_t from_, to_, missing_;
};

/// The row's components, each times its share of a cell, added up in the cells.
template <unsigned components>
void sumCells(const unsigned char* row, std::uint32_t from, std::uint32_t to, std::vector<std::uint64_t>& sums) {
    std::ranges::fill(sums, 0);
    std::uint64_t* cell = sums.data();
    Shares columns(from, to);
    for (std::uint32_t x = 0; x < from; ++x, row += components)
        columns.next(
            [&](std::uint64_t share) {
                for (unsigned i = 0; i < components; ++i) cell[i] += share * row[i];
            },
            [&] { cell += components; });
}

template <unsigned components>
void average(const Picture& picture, CImg32& result) {
    const Size from = picture.size();
    const std::uint32_t width = result.getWidth(), height = result.getHeight();
    const std::uint64_t whole = from.pixels();
    std::vector<std::uint64_t> cells(std::size_t{components} * width), sums(cells.size());
    ComponentRows rows(picture, components);
    Shares shares(from.height, height);
    ImgULong** to = result.peekDataArray();
    const auto add = [&](std::uint64_t share) {
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += share * cells[i];
    };
    const auto finish = [&] {
        const auto mean = [&](std::size_t i) { return static_cast<ImgULong>((sums[i] + whole / 2) / whole); };
        for (std::size_t x = 0; x < width; ++x)
            (*to)[x] =
                components == 1 ? 0x010101 * mean(x) : mean(3 * x) << 16 | mean(3 * x + 1) << 8 | mean(3 * x + 2);
        std::ranges::fill(sums, 0);
        ++to;
    };
    for (std::uint32_t y = 0; y < from.height; ++y) {
        sumCells<components>(rows.row(y), from.width, width, cells);
        shares.next(add, finish);
    }
}

}  // namespace

Picture averaged(const Picture& picture, Size target) {
    const bool grey = picture.pixels() == Pixels::grey;
    Picture result = pictureOf(CImg32::create(target.width, target.height, RGBOrderBGR), grey);
    if (grey) average<1>(picture, result.rgb());
    else average<3>(picture, result.rgb());
    return result;
}
