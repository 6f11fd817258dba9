#pragma once

// Sixteen bytes at once, written once for every processor: what the compiler
// makes of its vector types is SSE2 where there is SSE2, and plain words elsewhere.

#include <cstdint>
#include <cstring>

namespace tilepress {

/// Two words; shifts and masks act within each.
typedef std::uint64_t Words2 __attribute__((vector_size(16)));
typedef std::uint32_t Words4 __attribute__((vector_size(16)));
typedef std::uint16_t Halves8 __attribute__((vector_size(16)));
typedef std::int32_t Ints4 __attribute__((vector_size(16)));
typedef signed char Chars16 __attribute__((vector_size(16)));
typedef unsigned char Bytes16 __attribute__((vector_size(16)));

template <class Lanes>
inline Lanes loadLanes(const void* p) {
    Lanes v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class Lanes>
inline void storeLanes(void* p, Lanes v) {
    std::memcpy(p, &v, sizeof v);
}

/// `byte` in each of a word's eight bytes.
constexpr std::uint64_t everyByte(unsigned byte) { return 0x0101010101010101u * (byte & 0xFFu); }

/// `word` in both halves.
inline Words2 bothWords(std::uint64_t word) { return Words2{word, word}; }

/// The sixteen bytes in reverse order.
inline Words2 swapBytes(Words2 v) {
    Halves8 pairs = reinterpret_cast<Halves8>(v);
    pairs = (pairs << 8) | (pairs >> 8);
    pairs = __builtin_shufflevector(pairs, pairs, 3, 2, 1, 0, 7, 6, 5, 4);
    const Words2 words = reinterpret_cast<Words2>(pairs);
    return __builtin_shufflevector(words, words, 1, 0);
}

/// Four small numbers, the first lowest, as a lane each.
inline Ints4 widened(std::uint32_t four) {
    const Chars16 bytes = reinterpret_cast<Chars16>(Words4{four, 0, 0, 0});
    const auto twice = reinterpret_cast<Halves8>(
        __builtin_shufflevector(bytes, bytes, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7));
    return reinterpret_cast<Ints4>(__builtin_shufflevector(twice, twice, 0, 0, 1, 1, 2, 2, 3, 3)) >> 24;
}

/// The lanes one place on, `first` before them.
inline Ints4 shifted(Ints4 v, std::int32_t first) {
    return __builtin_shufflevector(v, Ints4{0, 0, 0, 0}, 4, 0, 1, 2) | Ints4{first, 0, 0, 0};
}

/// Bit k for lane k of a comparison's result.
inline unsigned laneBits(Ints4 v) {
#ifdef __SSE2__
    typedef float Floats4 __attribute__((vector_size(16)));
    return static_cast<unsigned>(__builtin_ia32_movmskps(reinterpret_cast<Floats4>(v)));
#else
    return (v[0] & 1u) | (v[1] & 2u) | (v[2] & 4u) | (v[3] & 8u);
#endif
}

inline bool isZero(Words2 v) { return (v[0] | v[1]) == 0; }

}  // namespace tilepress
