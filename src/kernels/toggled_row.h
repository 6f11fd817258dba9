#pragma once

// A work row painted with runs that come in order: two bits turned over a run, however long it is.

#include "foundation/bits.h"
#include "foundation/contract.h"
#include "foundation/heap.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

/// Either end of a run turns over all pixels from it on as far as its word reaches; what reaches beyond is
/// carried from word to word when the row is laid into the picture.
class ToggledRow {
public:
    /// A clear row; false when memory runs out.
    bool prepare(std::uint64_t width) { return words_.reserve(width / kBits + 2); }

    /// Paints the columns [from, to). Runs may overlap, but neither end may lie left of that of the run before.
    void add(std::size_t from, std::size_t to) {
        Painting painting(*this);
        painting.add(from, to);
    }

    /// The same for every second run of a list that increases, from the one that ends with element `k` on;
    /// onto(from, to, paint) says where a run is painted, as paint(from, to). An element's column is its value plus
    /// `offset`. The result is how many pixels the runs have.
    template <class Onto>
    std::uint64_t addRuns(const std::int32_t* list, std::int32_t count, std::int32_t k, std::ptrdiff_t offset,
                          Onto onto) {
        Painting painting(*this);
        std::ptrdiff_t pixels = 0;
        const std::int32_t* const end = list + count - 2;
        for (const std::int32_t* change = list + k; change < end; change += 2) {
            const std::ptrdiff_t from = offset + change[-1], to = offset + change[0];
            pixels += to - from;
            onto(static_cast<std::size_t>(from), static_cast<std::size_t>(to),
                 [&painting](std::size_t first, std::size_t last) { painting.add(first, last); });
        }
        return static_cast<std::uint64_t>(pixels);
    }

    /// ORs the row into `bytes` packed bytes, and clears it.
    void orInto(unsigned char* dst, std::size_t bytes) {
        Word carried = 0;
        std::size_t w = first_;
        for (const std::size_t end = std::min(end_ / kBits + 1, bytes / kBytes); w < end; ++w) {
            const Word word = words_[w] ^ carried;
            words_[w] = 0;
            carried = 0 - (word & 1);
            storeWord(dst + kBytes * w, loadWord<Word>(dst + kBytes * w) | word);
        }
        if (w <= end_ / kBits) {
            unsigned char* const last = dst + kBytes * w;
            const std::size_t rest = bytes - kBytes * w;
            if (rest > 0) storePartialWord(last, loadPartialWord<Word>(last, rest) | (words_[w] ^ carried), rest);
            words_[w] = 0;
        }
        first_ = kNone;
        end_ = 0;
    }

private:
    using Word = MachineWord;
    static constexpr std::size_t kBits = kBitsOf<Word>, kBytes = sizeof(Word), kNone = ~std::size_t{0};

    /// What changes with every run, where the compiler can keep it in registers.
    struct Painting {
        ToggledRow& row;
        Word* const words;
        std::size_t first, end;

        explicit Painting(ToggledRow& r) : row(r), words(r.words_.get()), first(r.first_), end(r.end_) {}
        ~Painting() {
            row.first_ = first;
            row.end_ = end;
        }
        Painting(const Painting&) = delete;
        Painting& operator=(const Painting&) = delete;

        void add(std::size_t from, std::size_t to) {
            TILEPRESS_DEMAND(from <= to && to >= end);
            from = std::max(from, end);  // overlapping runs are one
            words[from / kBits] ^= bitsFrom<Word>(from % kBits);
            words[to / kBits] ^= bitsFrom<Word>(to % kBits);
            first = std::min(first, from / kBits);
            end = to;
        }
    };

    Heap<Word> words_;
    std::size_t first_ = kNone;  // word of the first run
    std::size_t end_ = 0;        // column after the last run
};

}  // namespace tilepress::g4
