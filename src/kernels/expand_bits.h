#pragma once

// Packed pixels as bytes and as words, bytes looked up as words, and bytes packed.

#include "foundation/bits.h"
#include "kernels/vectors.h"
#include "tilepress/api.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// Eight bytes for each byte of bits: 0 for a set bit, 255 for a clear one.
inline constexpr std::array<std::uint64_t, 256> kExpanded = [] {
    std::array<std::uint64_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte)
        for (unsigned bit = 0; bit < 8; ++bit)
            if (!(byte >> bit & 1)) table[byte] |= std::uint64_t{0xFF} << 8 * bit;
    return table;
}();

inline void expandRow(unsigned char* dst, const unsigned char* bits, std::size_t width) {
    for (; width >= 8; width -= 8, dst += 8) storeWord(dst, kExpanded[*bits++]);
    if (width > 0) storePartialWord(dst, kExpanded[*bits], width);
}

/// Four words for each four bits.
struct Quads {
    ImgULong pixels[16][4];

    Quads(ImgULong zero, ImgULong one) {
        for (unsigned bits = 0; bits < 16; ++bits)
            for (unsigned i = 0; i < 4; ++i) pixels[bits][i] = bits & 8u >> i ? one : zero;
    }
};

inline void expandRow(ImgULong* dst, const unsigned char* bits, std::size_t width, const Quads& quads) {
    for (; width >= 8; width -= 8, dst += 8, ++bits) {
        std::memcpy(dst, quads.pixels[*bits >> 4], 16);
        std::memcpy(dst + 4, quads.pixels[*bits & 15], 16);
    }
    for (unsigned i = 0; i < width; ++i) dst[i] = quads.pixels[*bits >> 4 * (i < 4) & 15][i % 4];
}

/// out[x] = pixels[row[x]], eight pixels a time.
inline void lookUpRow(ImgULong* out, const unsigned char* row, std::size_t width, const ImgULong (&pixels)[256]) {
    for (; width >= 8; width -= 8, row += 8, out += 8) {
        const std::uint64_t word = loadWord(row);
        const auto pixel = [&](unsigned k) { return static_cast<std::uint32_t>(pixels[word >> (56 - 8 * k) & 0xFF]); };
        storeLanes(out, Words4{pixel(0), pixel(1), pixel(2), pixel(3)});
        storeLanes(out + 4, Words4{pixel(4), pixel(5), pixel(6), pixel(7)});
    }
    for (std::size_t x = 0; x < width; ++x) out[x] = pixels[row[x]];
}

/// Packs which bytes have no high bit; pad bits become 0.
inline void packLow(unsigned char* bits, const unsigned char* row, std::size_t width) {
    const auto packed = [](std::uint64_t word) {
        return static_cast<unsigned char>((~word >> 7 & everyByte(1)) * 0x0102040810204080u >> 56);
    };
    for (; width >= 8; width -= 8, row += 8) *bits++ = packed(loadWord(row));
    if (width > 0) *bits = static_cast<unsigned char>(packed(loadPartialWord(row, width)) & 0xFF00u >> width);
}

}  // namespace tilepress
