#pragma once

// Sixteen bytes at once, written once for every processor: what the compiler
// makes of its vector types is SSE2 where there is SSE2, and plain words elsewhere.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tilepress {

/// Two words; shifts and masks act within each.
typedef std::uint64_t Words2 __attribute__((vector_size(16)));
typedef std::uint32_t Words4 __attribute__((vector_size(16)));
typedef std::uint16_t Halves8 __attribute__((vector_size(16)));
typedef std::int16_t Shorts8 __attribute__((vector_size(16)));
typedef std::int32_t Ints4 __attribute__((vector_size(16)));
typedef signed char Chars16 __attribute__((vector_size(16)));
typedef unsigned char Bytes16 __attribute__((vector_size(16)));

template <class Lanes>
inline Lanes loadLanes(const void* p) {
    // Not copied into a variable, which the compiler at times keeps in memory too.
    typedef Lanes Anywhere __attribute__((aligned(1), may_alias));
    return *static_cast<const Anywhere*>(p);
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
inline Words2 reverseBytes(Words2 v) {
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

/// The bits of `v` that are not in `but`. GCC makes more of the operators than the one instruction.
inline Ints4 without(Ints4 v, Ints4 but) {
#if defined(__SSE2__) && !defined(__clang__)
    typedef long long Longs2 __attribute__((vector_size(16)));
    return reinterpret_cast<Ints4>(__builtin_ia32_pandn128(reinterpret_cast<Longs2>(but), reinterpret_cast<Longs2>(v)));
#else
    return v & ~but;
#endif
}

/// `v` in the first lane, 0 in the others.
inline Ints4 firstLane(std::int32_t v) { return Ints4{v, 0, 0, 0}; }

/// The lanes one place on, the one of firstLane before them.
inline Ints4 shifted(Ints4 v, Ints4 first) { return __builtin_shufflevector(v, Ints4{0, 0, 0, 0}, 4, 0, 1, 2) | first; }

/// Calls each(0) to each(count - 1) without a loop, so that arrays indexed by them stay in registers.
template <std::size_t count, class Each>
[[gnu::always_inline]] inline void unrolled(Each each) {
    [&]<std::size_t... k>(std::index_sequence<k...>) { (each(k), ...); }
    (std::make_index_sequence<count>{});
}

/// The first and the last eight bytes, as a lane each.
inline Shorts8 lowBytes(Bytes16 v) {
    return reinterpret_cast<Shorts8>(
        __builtin_shufflevector(v, Bytes16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline Shorts8 highBytes(Bytes16 v) {
    return reinterpret_cast<Shorts8>(
        __builtin_shufflevector(v, Bytes16{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

/// Of as many registers: i and i + count / 2 interleave into 2i and 2i + 1.
template <std::size_t count>
inline void interleaveBytes(Bytes16* to, const Bytes16* from) {
    unrolled<count / 2>([&](std::size_t i) {
        const Bytes16 a = from[i], b = from[i + count / 2];
        to[2 * i] = __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        to[2 * i + 1] = __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    });
}

/// Sixteen numbers below 256 as bytes.
inline Bytes16 narrowed(Words4 a, Words4 b, Words4 c, Words4 d) {
#ifdef __SSE2__
    typedef int Ints __attribute__((vector_size(16)));
    const auto low = __builtin_ia32_packssdw128(reinterpret_cast<Ints>(a), reinterpret_cast<Ints>(b));
    const auto high = __builtin_ia32_packssdw128(reinterpret_cast<Ints>(c), reinterpret_cast<Ints>(d));
    return reinterpret_cast<Bytes16>(__builtin_ia32_packuswb128(low, high));
#else
    Bytes16 bytes;
    for (unsigned k = 0; k < 4; ++k) {
        bytes[k] = static_cast<unsigned char>(a[k]);
        bytes[k + 4] = static_cast<unsigned char>(b[k]);
        bytes[k + 8] = static_cast<unsigned char>(c[k]);
        bytes[k + 12] = static_cast<unsigned char>(d[k]);
    }
    return bytes;
#endif
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

/// The same for two results, the second from bit 8 on.
inline unsigned laneBits(Shorts8 a, Shorts8 b) {
#ifdef __SSE2__
    typedef char Bytes __attribute__((vector_size(16)));
    return static_cast<unsigned>(__builtin_ia32_pmovmskb128(reinterpret_cast<Bytes>(__builtin_ia32_packsswb128(a, b))));
#else
    unsigned bits = 0;
    for (unsigned k = 0; k < 8; ++k) bits |= (a[k] & 1u) << k | (b[k] & 1u) << (k + 8);
    return bits;
#endif
}

inline bool isZero(Words2 v) { return (v[0] | v[1]) == 0; }

}  // namespace tilepress
