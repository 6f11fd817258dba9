#pragma once

// Rows of a rectangle of a bilevel image as work words in which 1 is ink, whatever
// the image's background and the rectangle's place.

#include "foundation/heap.h"
#include "tilepress/CImg1.h"
#include "transform/bit_rows.h"

#include <bit>
#include <cstdint>

namespace tilepress {

class InkRows {
public:
    /// False when memory runs out. With `whiteIsInk` clear bits are ink.
    bool prepare(const CImg1& image, const ImgRect& r, bool whiteIsInk) {
        first_ = image.peekData() + std::size_t{r.getTop()} * image.getBytesPerLine() + r.getLeft() / 8;
        stride_ = image.getBytesPerLine();
        shift_ = r.getLeft() % 8;
        width_ = r.getWidth();
        bytes_ = packedBytes(std::uint64_t{shift_} + width_);
        flip_ = whiteIsInk ? ~std::uint64_t{0} : 0;
        return folded_.reserve(std::uint64_t{bytes_}) && line_.reserve(std::uint64_t{packedWords(width_)} * 8) &&
               words_.reserve(packedWords(width_));
    }

    /// The ink of `count` rows from `row` on, one over the other.
    const std::uint64_t* fold(std::size_t row, std::size_t count) {
        const unsigned char* source = first_ + row * stride_;
        if (count > 1) {
            std::memcpy(folded_.get(), source, bytes_);
            for (std::size_t k = 1; k < count; ++k) merge(source + k * stride_);
            source = folded_.get();
        }
        copyBits(line_.get(), packedWords(width_) * 8, source, bytes_, shift_);
        for (std::size_t k = 0; k < packedWords(width_); ++k) words_[k] = loadWord(line_.get() + 8 * k) ^ flip_;
        if (width_ % 64 != 0) words_[packedWords(width_) - 1] &= firstBits(width_ % 64);
        return words_.get();
    }

private:
    // Ink is ORed: as clear bits, which are turned over afterwards, ANDed.
    void merge(const unsigned char* row) {
        unsigned char* const folded = folded_.get();
        if (flip_ == 0)
            for (std::size_t k = 0; k < bytes_; ++k) folded[k] = static_cast<unsigned char>(folded[k] | row[k]);
        else
            for (std::size_t k = 0; k < bytes_; ++k) folded[k] = static_cast<unsigned char>(folded[k] & row[k]);
    }

    const unsigned char* first_ = nullptr;
    std::size_t stride_ = 0, bytes_ = 0;
    unsigned shift_ = 0;
    std::uint32_t width_ = 0;
    std::uint64_t flip_ = 0;
    Heap<unsigned char> folded_, line_;
    Heap<std::uint64_t> words_;
};

/// Calls onRun(from, to) for the runs of set bits of a work row.
template <class OnRun>
inline void forEachRun(const std::uint64_t* words, std::size_t count, OnRun onRun) {
    std::uint64_t before = 0;
    std::size_t from = 0;
    bool inside = false;
    for (std::size_t k = 0; k < count; ++k) {
        const std::uint64_t word = words[k];
        std::uint64_t changes = word ^ (word >> 1 | before << 63);
        before = word & 1;
        for (; changes != 0; inside = !inside) {
            const unsigned bit = static_cast<unsigned>(std::countl_zero(changes));
            changes &= ~(std::uint64_t{1} << 63 >> bit);
            const std::size_t at = 64 * k + bit;
            if (inside)
                onRun(from, at);
            else
                from = at;
        }
    }
    if (inside) onRun(from, 64 * count);
}

}  // namespace tilepress
