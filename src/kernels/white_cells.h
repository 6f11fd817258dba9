#pragma once

// The cells that white pixels touch, learnt from the black runs.

#include "foundation/heap.h"
#include "kernels/toggled_row.h"
#include "tilepress/api.h"

#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

/// A packed picture of the cells that are not black all over.
class WhiteCells {
public:
    /// Clear, for rows of `width` pixels, whose cells `columns` names. False when memory runs out.
    bool prepare(std::size_t width, const ImgULong* columns, std::uint32_t newWidth, std::uint32_t newHeight) {
        width_ = width;
        columns_ = columns;
        rowBytes_ = packedBytes(newWidth);
        return gaps_.prepare(newWidth) && rows_.reserve(std::uint64_t{rowBytes_} * newHeight);
    }

    /// A black run of the row, which begins where the one before ends or further right.
    void addBlack(std::size_t from, std::size_t to) {
        inOrder_ = inOrder_ && from >= end_;
        if (!inOrder_) return;
        addWhite(from);
        end_ = to;
    }
    void endRow(ImgULong band) {
        if (!inOrder_) return;
        addWhite(width_);
        gaps_.orInto(rows_.get() + band * rowBytes_, rowBytes_);
        end_ = 0;
    }

    /// False once a damaged tile's runs have come in another order; then there is no picture.
    bool isKnown() const { return inOrder_; }
    const unsigned char* operator[](ImgULong row) const { return rows_.get() + row * rowBytes_; }

private:
    void addWhite(std::size_t to) {
        if (end_ < to) gaps_.add(columns_[end_], std::size_t{columns_[to - 1]} + 1);
    }

    ToggledRow gaps_;
    Heap<unsigned char> rows_;
    const ImgULong* columns_ = nullptr;
    std::size_t width_ = 0, rowBytes_ = 0;
    std::size_t end_ = 0;  // of the row's last black run
    bool inOrder_ = true;
};

}  // namespace tilepress::g4
