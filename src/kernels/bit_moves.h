#pragma once

// Bits of packed rows gathered from marked places, or spread out to them: a word at
// a time, in six moves, whatever the marks.

#include "foundation/bits.h"
#include "foundation/contract.h"
#include "foundation/heap.h"
#include "kernels/vectors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// Marks in a row of words, and how to bring the bits under them to the front of each word and back.
///
/// A bit moves by its distance, in steps of powers of two, the smallest first: marked bits keep
/// their order and never meet. Going back takes the same steps in reverse order.
class BitMoves {
public:
    /// Room for `bits` bits without marks; false when memory runs out.
    bool prepare(std::uint64_t bits) {
        words_ = packedWords(bits);
        pairs_ = (words_ + 1) / 2;
        return marks_.reserve(2 * pairs_) && counts_.reserve(2 * pairs_) && moves_.reserve(pairs_);
    }

    /// Marks must come in order.
    void mark(std::size_t bit) {
        const std::size_t word = bit >> 6;
        const unsigned from = bit & 63, to = counts_[word]++;
        marks_[word] |= kFirst >> from;
        unsigned place = from;
        for (unsigned step = 0; step < kSteps; ++step)
            if ((from - to) >> step & 1) {
                moves_[word / 2].before[step][word % 2] |= kFirst >> place;
                place -= 1u << step;
                moves_[word / 2].after[step][word % 2] |= kFirst >> place;
            }
    }

    std::size_t words() const { return words_; }
    std::size_t pairs() const { return pairs_; }
    std::uint64_t marks(std::size_t word) const { return marks_[word]; }
    /// Marks of a word.
    unsigned count(std::size_t word) const { return counts_[word]; }

    /// The marked bits of two words, each at the front of its word; all others must be 0.
    Words2 gather(std::size_t pair, Words2 v) const {
        TILEPRESS_DEMAND(((v[0] & ~marks_[2 * pair]) | (v[1] & ~marks_[2 * pair + 1])) == 0);
        const Pair& moves = moves_[pair];
        const auto move = [&](unsigned step) {
            const Words2 moving = v & loadLanes<Words2>(moves.before[step]);
            v = (v ^ moving) | moving << (1u << step);
        };
        move(0), move(1), move(2), move(3), move(4), move(5);
        return v;
    }

    /// The reverse: the first count() bits of two words brought to the marks; all others must be 0.
    Words2 spread(std::size_t pair, Words2 v) const {
        const Pair& moves = moves_[pair];
        const auto move = [&](unsigned step) {
            const Words2 moving = v & loadLanes<Words2>(moves.after[step]);
            v = (v ^ moving) | moving >> (1u << step);
        };
        move(5), move(4), move(3), move(2), move(1), move(0);
        return v;
    }

private:
    static constexpr std::uint64_t kFirst = std::uint64_t{1} << 63;
    static constexpr unsigned kSteps = 6;
    /// For each step to the front the bits that move, where they are before it and after it.
    struct Pair {
        std::uint64_t before[kSteps][2], after[kSteps][2];
    };

    Heap<std::uint64_t> marks_;
    Heap<unsigned char> counts_;
    Heap<Pair> moves_;
    std::size_t words_ = 0, pairs_ = 0;
};

/// Appends bits to a row of words, which has one word more than the bits need.
class BitWriter {
public:
    explicit BitWriter(std::uint64_t* words) : words_(words) {}

    /// The first `count` bits of `bits`; all others must be 0.
    void put(std::uint64_t bits, unsigned count) {
        TILEPRESS_DEMAND(count <= 64 && (bits & ~firstBits(count)) == 0);
        if constexpr (kBits == 64) return append(static_cast<MachineWord>(bits), count);
        append(static_cast<MachineWord>(bits >> 32), std::min(count, 32u));
        if (count > 32) append(static_cast<MachineWord>(bits), count - 32);
    }
    void flush() {
        if (kBits < 64 && half_ == 0) *words_ = 0;
        store();
    }

private:
    static constexpr unsigned kBits = kBitsOf<MachineWord>;

    void append(MachineWord bits, unsigned count) {
        pending_ |= bits >> filled_;
        filled_ += count;
        if (filled_ < kBits) return;
        store();
        filled_ -= kBits;
        pending_ = filled_ ? bits << (count - filled_) : 0;
    }
    void store() {
        if constexpr (kBits == 64) {
            *words_++ = pending_;
        } else {  // the first half of a word is the high one
            std::memcpy(reinterpret_cast<unsigned char*>(words_) + (half_ ^ 4), &pending_, sizeof pending_);
            words_ += half_ / 4;
            half_ ^= 4;
        }
    }

    std::uint64_t* words_;
    MachineWord pending_ = 0;
    unsigned filled_ = 0, half_ = 0;
};

/// The 64 bits from `bit` on of a row of words; the word after the last one asked for is read too.
inline std::uint64_t bitsAt(const std::uint64_t* words, std::size_t bit) {
    const unsigned shift = bit & 63;
    const std::uint64_t* w = words + (bit >> 6);
    return w[0] << shift | w[1] >> 1 >> (63 - shift);
}

/// a + b + carry, and the carry that leaves it: one word of a sum over a whole row.
inline std::uint64_t addWords(std::uint64_t a, std::uint64_t b, std::uint64_t& carry) {
    const std::uint64_t sum = a + b + carry;
    carry = ((a & b) | ((a | b) & ~sum)) >> 63;
    return sum;
}

/// Fills a row of words with `bytes` bytes; the last word's rest becomes 0.
inline void loadWords(std::uint64_t* words, const unsigned char* src, std::size_t bytes) {
    std::size_t k = 0;
    for (; k + 8 <= bytes; k += 8) words[k / 8] = loadWord(src + k);
    if (k < bytes) words[k / 8] = loadPartialWord(src + k, bytes - k);
}

/// Writes the first `bytes` bytes of a row of words.
inline void storeWords(unsigned char* dst, const std::uint64_t* words, std::size_t bytes) {
    std::size_t k = 0;
    for (; k + 8 <= bytes; k += 8) storeWord(dst + k, words[k / 8]);
    if (k < bytes) storePartialWord(dst + k, words[k / 8], bytes - k);
}

}  // namespace tilepress
