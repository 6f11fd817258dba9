// Bilevel images reduced to grey ones: every cell's share of ink.

#include "kernels/cells.h"
#include "kernels/grey_maps.h"
#include "kernels/mark_tables.h"
#include "model/image_kinds.h"

#include <algorithm>

namespace tilepress {
namespace {

/// Counts the ink of the cells of one destination row after the other.
class InkCounter {
public:
    InkCounter(const BitArea& from, bool whiteIsInk)
        : rows_(from, whiteIsInk), width_(from.width), shift_(from.left % 8) {}

    /// False when memory runs out.
    bool prepare(ImgULong cells) {
        cells_ = cells;
        if (width_ % cells == 0) {
            while (group_ < 8 && (width_ / cells | shift_) % (2 * group_) == 0) group_ *= 2;
            cellGroups_ = width_ / cells / group_;
        }
        return markTable(starts_, width_ / group_, cells) && counts_.reserve(cells) &&
               sums_.reserve(8 * std::max<std::uint64_t>(rows_.bytes, 16) + 8);
    }

    /// Calls take(cell, width, count) for the cells on `count` rows from `first` on.
    template <class Take>
    void count(ImgULong first, ImgULong count, Take take) {
        if (count <= kRowsAtOnce) {
            forEachCell(first, count, take);
            return;
        }
        std::fill_n(counts_.get(), cells_, 0);
        for (std::uint64_t done = 0; done < count; done += kRowsAtOnce)
            forEachCell(first + done, std::min<std::uint64_t>(count - done, kRowsAtOnce),
                        [this](ImgULong k, ImgULong, std::uint32_t ink) { counts_[k] += ink; });
        for (ImgULong k = 0; k < cells_; ++k) take(k, group_ * (starts_[k + 1] - starts_[k]), counts_[k]);
    }

private:
    template <class Take>
    void forEachCell(std::uint64_t first, std::uint64_t count, Take take) {
        switch (group_) {
        case 1: return forEachCell<1>(static_cast<std::size_t>(first), static_cast<std::size_t>(count), take);
        case 2: return forEachCell<2>(static_cast<std::size_t>(first), static_cast<std::size_t>(count), take);
        case 4: return forEachCell<4>(static_cast<std::size_t>(first), static_cast<std::size_t>(count), take);
        default: return forEachCell<8>(static_cast<std::size_t>(first), static_cast<std::size_t>(count), take);
        }
    }
    template <unsigned group, class Take>
    void forEachCell(std::size_t first, std::size_t count, Take take) {
        addRows<group>(sums_.get(), rows_, first, count);
        const unsigned char* const sums = sums_.get() + shift_ / group;
        if (cellGroups_ == 1) {
            for (ImgULong k = 0; k < cells_; ++k) take(k, group, sums[k]);
            return;
        }
        if (cellGroups_ != 0 && cellGroups_ <= kFew<group>) {
            const std::size_t groups = cellGroups_;
            const ImgULong width = group * cellGroups_;
            for (ImgULong k = 0; k < cells_; ++k) take(k, width, totalOfFew(sums + k * groups, groups));
            return;
        }
        const auto each = [=, this](auto total) {
            const ImgULong* const starts = starts_.get();
            for (ImgULong k = 0, start = 0; k < cells_; ++k) {
                const ImgULong next = starts[k + 1];
                take(k, group * (next - start), total(sums + start, next - start));
                start = next;
            }
        };
        if (width_ / group <= cells_ * std::uint64_t{kFew<group>}) each(totalOfFew);
        else each(totalOf<group>);
    }

    InkRows rows_;
    ImgULong width_;
    unsigned shift_;
    unsigned group_ = 1;       ///< columns added up before the cells are: where all cells are as wide, a part of each
    ImgULong cellGroups_ = 0;  ///< as many make a cell; 0 where cells differ
    ImgULong cells_ = 0;
    Heap<ImgULong> starts_;
    Heap<std::uint32_t> counts_;
    Heap<unsigned char> sums_;
};

}  // namespace
}  // namespace tilepress

using namespace tilepress;

CImg32* CImg1::Reduce_greyscale(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!canReduce(*this, src, dstWidth, dstHeight)) return nullptr;
    GreyMaps maps;
    InkCounter counter(areaOf(*this, src), calculateBackground() == 1);
    if (!maps.prepare(src.getWidth(), src.getHeight(), dstWidth, dstHeight) || !counter.prepare(dstWidth))
        return nullptr;
    CImg32* const result = RowStorage::createUnset(dstWidth, dstHeight, RGBOrderRGB);
    if (!result) return nullptr;
    const ImgULong low = src.getWidth() / dstWidth;
    forEachMark(src.getHeight(), dstHeight, [&](ImgULong first, ImgULong height, ImgULong band) {
        ImgULong* const row = result->peekDataArray()[band];
        const unsigned char *const narrow = maps.of(height, low), *const wide = maps.of(height, low + 1);
        if (narrow && (wide || src.getWidth() % dstWidth == 0))
            counter.count(first, height, [=](ImgULong k, ImgULong width, std::uint32_t ink) {
                row[k] = greyPixel((width == low ? narrow : wide)[ink]);
            });
        else
            counter.count(first, height, [&](ImgULong k, ImgULong width, std::uint32_t ink) {
                row[k] = greyPixel(maps.grey(height, width, ink));
            });
    });
    return result;
}
