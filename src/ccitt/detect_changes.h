#pragma once

// A packed row into its changing-element list.

#include <array>
#include <cstdint>

namespace tilepress::g4 {

/// What a detecting family holds: the first set and clear bit of a byte (1 the highest,
/// 0 none) and its first i bits set or cleared. Detection itself takes 64 pixels at a time
/// and looks nothing up: their presence is what enables a family.
struct DetectTables {
    std::array<std::uint8_t, 256> firstSet, firstClear;
    std::array<std::uint8_t, 9> leading, trailing;
};

constexpr DetectTables makeDetectTables() {
    DetectTables t{};
    for (unsigned v = 0; v < 256; ++v)
        for (unsigned bit = 8; bit >= 1; --bit)
            (v << bit & 0x100 ? t.firstSet : t.firstClear)[v] = static_cast<std::uint8_t>(bit);
    for (unsigned i = 0; i <= 8; ++i) {
        t.trailing[i] = static_cast<std::uint8_t>(0xFF >> i);
        t.leading[i] = static_cast<std::uint8_t>(~t.trailing[i]);
    }
    return t;
}

inline constexpr DetectTables kDetectTables = makeDetectTables();

static_assert(kDetectTables.firstSet[0x80] == 1 && kDetectTables.firstSet[1] == 8 && kDetectTables.firstSet[0] == 0);
static_assert(kDetectTables.firstClear[0xFF] == 0 && kDetectTables.firstClear[0xFE] == 8);
static_assert(kDetectTables.leading[3] == 0xE0 && kDetectTables.trailing[3] == 0x1F);

/// Widest row whose list, and sums with its end, stay within 32 bits.
inline constexpr std::uint32_t kMaxListWidth = 0x7FFFFFFF - 8;

/// Writes the row's list, at most `capacity` elements; the result is its count, 0 when it does not fit. Bits of the
/// last byte past the width are ignored.
std::int32_t detectChanges(const unsigned char* row, std::uint32_t width, std::int32_t* list, std::int32_t capacity);

}  // namespace tilepress::g4
