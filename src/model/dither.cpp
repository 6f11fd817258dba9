#include "model/dither.h"

#include <algorithm>

namespace tilepress {

// 0 up to 20, 255 from 240 on; between them l - 2.5 + 17.5 tanh((l - 126.5) / 18), rounded.
static constexpr unsigned char kToneCurve[256] = {
    // clang-format off
      0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
      0,   1,   2,   3,   4,   5,   6,   7,   8,   9,  10,  11,  12,  13,  14,  15,  16,  17,  18,  19,
     20,  21,  22,  23,  24,  25,  26,  27,  28,  29,  30,  31,  32,  33,  34,  35,  36,  37,  38,  39,
     40,  41,  42,  43,  44,  45,  46,  47,  48,  49,  50,  51,  52,  53,  54,  55,  56,  57,  58,  59,
     60,  61,  62,  63,  64,  65,  66,  67,  68,  70,  71,  72,  73,  74,  75,  76,  77,  78,  79,  81,
     82,  83,  84,  85,  87,  88,  89,  91,  92,  93,  95,  96,  98,  99, 101, 103, 104, 106, 108, 110,
    111, 113, 115, 117, 119, 121, 123, 125, 127, 129, 131, 133, 135, 137, 138, 140, 142, 144, 145, 147,
    149, 150, 152, 153, 155, 156, 157, 159, 160, 161, 163, 164, 165, 166, 167, 169, 170, 171, 172, 173,
    174, 175, 176, 177, 178, 180, 181, 182, 183, 184, 185, 186, 187, 188, 189, 190, 191, 192, 193, 194,
    195, 196, 197, 198, 199, 200, 201, 202, 203, 204, 205, 206, 207, 208, 209, 210, 211, 212, 213, 214,
    215, 216, 217, 218, 219, 220, 221, 222, 223, 224, 225, 226, 227, 228, 229, 230, 231, 232, 233, 234,
    235, 236, 237, 238, 239, 240, 241, 242, 243, 244, 245, 246, 247, 248, 249, 250, 251, 252, 253, 254,
    255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
    // clang-format on
};
static_assert(kToneCurve[20] == 0 && kToneCurve[21] == 1 && kToneCurve[128] == 127 && kToneCurve[240] == 255);

unsigned char toneOf(unsigned red, unsigned green, unsigned blue) {
    return kToneCurve[(77 * red + 150 * green + 29 * blue) >> 8];
}

void diffuseRow(unsigned char* bits, const int* row, int* below, std::size_t width) {
    int right = 0;                 // share of the previous error that the next pixel takes
    int belowLeft = 0, under = 0;  // shares so far of the places below the previous pixel and below this one
    unsigned byte = 0;
    const auto step = [&](std::size_t x) {
        const int value = row[x] + right;
        const bool dark = value < 128;
        const int error = dark ? value : value - 255;
        byte = byte << 1 | dark;
        // Each share is rounded down, negative ones too.
        right = error * 7 >> 4;
        below[static_cast<std::ptrdiff_t>(x) - 1] += belowLeft + (error * 3 >> 4);
        belowLeft = under + (error * 5 >> 4);
        under = error >> 4;
    };
    std::size_t x = 0;
    for (; x + 8 <= width; *bits++ = static_cast<unsigned char>(byte))
        for (const std::size_t end = x + 8; x < end; ++x) step(x);
    if (x < width) {
        const std::size_t rest = width - x;
        for (; x < width; ++x) step(x);
        *bits = static_cast<unsigned char>(byte << (8 - rest));
    }
    below[width - 1] += belowLeft;
}

void orBytesAt(unsigned char* block, std::uint64_t size, std::uint64_t at, const unsigned char* bytes,
               std::size_t count) {
    const std::uint64_t first = at / 8;
    const unsigned shift = at % 8;
    if (first >= size) return;
    unsigned char* const to = block + first;
    const std::uint64_t room = size - first;
    const std::size_t whole = static_cast<std::size_t>(std::min<std::uint64_t>(count, room));
    for (std::size_t i = 0; i < whole; ++i) to[i] = static_cast<unsigned char>(to[i] | bytes[i] >> shift);
    if (shift == 0) return;
    const std::size_t spilled = static_cast<std::size_t>(std::min<std::uint64_t>(count, room - 1));
    for (std::size_t i = 0; i < spilled; ++i)
        to[i + 1] = static_cast<unsigned char>(to[i + 1] | bytes[i] << (8 - shift));
}

}  // namespace tilepress
