#pragma once

// Packed rows: the first pixel is the highest bit of the first byte. Work rows
// are 64-bit words whose highest bit is the first pixel, whatever the host.

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// Of four or eight bytes, whatever the type's name is.
template <std::unsigned_integral Word>
inline Word swapBytes(Word v) {
    static_assert(sizeof(Word) == 4 || sizeof(Word) == 8);
    if constexpr (sizeof(Word) == 8) return __builtin_bswap64(v);
    else return __builtin_bswap32(v);
}

/// What the machine computes with at once. In 32-bit builds for Intel's processors wider words take two registers, and
/// several instructions for each shift and addition.
#if defined(__i386__)
using MachineWord = std::uint32_t;
#else
using MachineWord = std::uint64_t;
#endif
template <class Word>
inline constexpr unsigned kBitsOf = 8 * sizeof(Word);

/// Eight bytes, or four, as a word, first byte highest.
template <class Word = std::uint64_t>
inline Word loadWord(const unsigned char* p) {
    Word v;
    std::memcpy(&v, p, sizeof v);
    return std::endian::native == std::endian::little ? swapBytes(v) : v;
}

template <class Word>
inline void storeWord(unsigned char* p, Word v) {
    if (std::endian::native == std::endian::little) v = swapBytes(v);
    std::memcpy(p, &v, sizeof v);
}

/// As loadWord for the bytes that are there, fewer than a word's; the rest reads as 0.
template <class Word = std::uint64_t>
inline Word loadPartialWord(const unsigned char* p, std::size_t count) {
    Word v = 0;
    for (std::size_t i = 0; i < count; ++i) v |= Word{p[i]} << (kBitsOf<Word> - 8 - 8 * i);
    return v;
}

template <class Word>
inline void storePartialWord(unsigned char* p, Word v, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) p[i] = static_cast<unsigned char>(v >> (kBitsOf<Word> - 8 - 8 * i));
}

/// Copies bytes, also onto themselves, with those of each 16-bit pair exchanged; the missing partner of an odd last
/// byte is 0, so count + count % 2 bytes are written.
inline void exchangePairs(unsigned char* dst, const unsigned char* src, std::size_t count) {
    constexpr std::uint64_t high = 0xFF00FF00FF00FF00;
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t v;
        std::memcpy(&v, src + i, sizeof v);
        v = (v & high) >> 8 | (v << 8 & high);
        std::memcpy(dst + i, &v, sizeof v);
    }
    for (; i < count; i += 2) {
        const unsigned char first = src[i];
        dst[i] = i + 1 < count ? src[i + 1] : 0;
        dst[i + 1] = first;
    }
}

/// The first n bits of a word, 0 <= n <= its bits.
template <class Word = std::uint64_t>
inline Word firstBits(unsigned n) {
    return n == 0 ? 0 : ~Word{0} << (kBitsOf<Word> - n);
}

/// The bits from n on, 0 <= n < its bits.
template <class Word = std::uint64_t>
inline Word bitsFrom(std::size_t n) {
    return ~Word{0} >> n;
}

/// Bytes and words that hold `width` packed pixels.
inline std::size_t packedBytes(std::uint64_t width) { return static_cast<std::size_t>((width + 7) / 8); }
inline std::size_t packedWords(std::uint64_t width) { return static_cast<std::size_t>((width + 63) / 64); }

/// Sets the bits [from, to) of a work row.
inline void fillSpan(std::uint64_t* words, std::size_t from, std::size_t to) {
    if (from >= to) return;
    const std::size_t first = from >> 6, last = (to - 1) >> 6;
    const std::uint64_t head = bitsFrom(from & 63), tail = ~std::uint64_t{0} << (63 - ((to - 1) & 63));
    if (first == last) {
        words[first] |= head & tail;
        return;
    }
    words[first] |= head;
    for (std::size_t w = first + 1; w < last; ++w) words[w] = ~std::uint64_t{0};
    words[last] |= tail;
}

}  // namespace tilepress
