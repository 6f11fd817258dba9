#include "kernels/dither.h"

#include "foundation/bits.h"

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
    return kToneCurve[luminance(red, green, blue) >> 8];
}

void loadTones(unsigned char* tones, const unsigned char* row, const unsigned char (&toneOfPixel)[256],
               std::size_t width) {
#pragma GCC unroll 2
    for (std::size_t x = 0; x < width; ++x) tones[x] = toneOfPixel[row[x]];
}

static Words4 luminanceOfFour(const ImgULong* pixels) {
    const Halves8 outer = {29, 77, 29, 77, 29, 77, 29, 77}, middle = {150, 0, 150, 0, 150, 0, 150, 0};
    const Words4 v = loadLanes<Words4>(pixels);
    const auto both = reinterpret_cast<Words4>(reinterpret_cast<Halves8>(v & 0x00FF00FF) * outer);
    const auto green = reinterpret_cast<Words4>(reinterpret_cast<Halves8>(v >> 8 & 0xFF) * middle);
    return ((both & 0xFFFF) + (both >> 16) + green) >> 8;
}

void loadTones(unsigned char* tones, const ImgULong* row, std::size_t width) {
    std::size_t x = 0;
    for (; x + 16 <= width; x += 16)
        storeLanes(tones + x, narrowed(luminanceOfFour(row + x), luminanceOfFour(row + x + 4),
                                       luminanceOfFour(row + x + 8), luminanceOfFour(row + x + 12)));
    loadTones(tones, tones, kToneCurve, x);
    for (; x < width; ++x) tones[x] = toneOf(row[x] >> 16 & 0xFF, row[x] >> 8 & 0xFF, row[x] & 0xFF);
}

// --- diffusion ------------------------------------------------------------------------

bool Diffusion::prepare(std::size_t width) {
    width_ = width;
    steps_ = (width + 2 * kLanes - 1 + kBlock - 1) / kBlock * kBlock;
    return lines_.reserve(std::uint64_t{steps_} * kRows) && carry_.reserve(std::uint64_t{steps_} + 2 * kLanes) &&
           dark_.reserve(2 * (std::uint64_t{steps_} + 2 * kBlock));
}

/// All ones for the rows that are within the picture at a step.
static Shorts8 rowsWithin(std::size_t step, std::size_t width) {
    Shorts8 mask{};
    for (std::size_t k = 0; k < 8; ++k)
        if (step >= 2 * k && step - 2 * k < width) mask[k] = -1;
    return mask;
}

/// Eight rows, a lane each.
struct Diffusion::Octet {
    // Shares of the errors so far, each lane's in its own row or the one below: for the next column, for the place
    // below the column before, below this one, and below the next one.
    Shorts8 right{}, below{}, belowNext{}, corner{};
    Bytes16 columns[kLanes];  ///< the tones of a block's steps, two steps in each

    void load(const unsigned char* lines, std::size_t stride) {
        Bytes16 other[kLanes];
        for (std::size_t k = 0; k < kLanes; ++k) columns[k] = loadLanes<Bytes16>(lines + k * stride);
        interleaveBytes<kLanes>(other, columns);
        interleaveBytes<kLanes>(columns, other);
        interleaveBytes<kLanes>(other, columns);
        for (std::size_t k = 0; k < kLanes; ++k) columns[k] = other[k];
    }

    /// Takes a step in the rows `within` the picture; all ones where the result is light. The first row takes from
    /// carry[15], the last one gives to carry[0], which is that many columns behind.
    template <class... Within>
    Shorts8 diffuse(Shorts8 tones, std::int16_t* carry, Within... within) {
        const Shorts8 value = tones + Shorts8{carry[2 * kLanes - 1]} + right +
                              __builtin_shufflevector(below, Shorts8{}, 8, 0, 1, 2, 3, 4, 5, 6);
        const Shorts8 light = value > 127;
        const Shorts8 error = ((value - (light & 255)) & ... & within);
        // Each share is rounded down, negative ones too.
        right = ((error << 3) - error) >> 4;
        below = (((error << 1) + error) >> 4) + belowNext;
        belowNext = (((error << 2) + error) >> 4) + corner;
        corner = error >> 4;
        *carry = below[kLanes - 1];
        return light;
    }

    /// Takes steps 2k and 2k + 1 of a block; `step` is the block's first.
    template <bool edge>
    void diffuseTwo(std::size_t k, std::size_t step, std::size_t width, std::int16_t* carry, unsigned char* dark) {
        step += 2 * k;
        Shorts8 a, b;
        if constexpr (edge) {
            a = diffuse(lowBytes(columns[k]), carry + step, rowsWithin(step, width));
            b = diffuse(highBytes(columns[k]), carry + step + 1, rowsWithin(step + 1, width));
        } else {
            a = diffuse(lowBytes(columns[k]), carry + step);
            b = diffuse(highBytes(columns[k]), carry + step + 1);
        }
        const unsigned bits = ~laneBits(a, b);
        dark[step] = static_cast<unsigned char>(bits);
        dark[step + 1] = static_cast<unsigned char>(bits >> 8);
    }
    void diffuseEdge(std::size_t step, std::size_t width, std::int16_t* carry, unsigned char* dark) {
        for (std::size_t k = 0; k < kLanes; ++k) diffuseTwo<true>(k, step, width, carry, dark);
    }
};

void Diffusion::run() {
    Octet upper, lower;
    const std::size_t width = width_;
    std::int16_t* const carry = carry_.get();
    const auto isInner = [width](std::size_t first) { return first >= 2 * kLanes && first + kBlock <= width; };
    for (std::size_t first = 0; first <= steps_; first += kBlock) {
        const std::size_t behind = first - kBlock;
        if (first < steps_) upper.load(lines_.get() + first, steps_);
        if (first > 0) lower.load(lines_.get() + kLanes * steps_ + behind, steps_);
        if (first > 0 && isInner(first) && isInner(behind)) {
            // Each waits for itself from step to step: together they take hardly longer than one.
            for (std::size_t k = 0; k < kLanes; ++k) {
                upper.diffuseTwo<false>(k, first, width, carry, darkOf(0));
                lower.diffuseTwo<false>(k, behind, width, carry, darkOf(kLanes));
            }
            continue;
        }
        if (first < steps_) upper.diffuseEdge(first, width, carry, darkOf(0));
        if (first > 0) lower.diffuseEdge(behind, width, carry, darkOf(kLanes));
    }
}

void Diffusion::store(unsigned char* bits, std::size_t row) const {
    const std::size_t k = row % kLanes;
    const unsigned char* dark = darkOf(row) + 2 * k;
    for (std::size_t x = 0; x < width_; x += 8) {
        const std::uint64_t eight = loadWord(dark + x) >> k & everyByte(1);
        *bits++ = static_cast<unsigned char>(eight * 0x0102040810204080 >> 56);
    }
    if (width_ % 8 != 0) bits[-1] = static_cast<unsigned char>(bits[-1] & 0xFF00 >> width_ % 8);
}

void orBytesAt(unsigned char* block, std::uint64_t size, std::uint64_t at, const unsigned char* bytes,
               std::size_t count) {
    const std::uint64_t first = at / 8;
    const unsigned shift = at % 8;
    if (first >= size) return;
    unsigned char* const to = block + first;
    const std::uint64_t room = size - first;
    const std::size_t whole = static_cast<std::size_t>(std::min<std::uint64_t>(count, room));
    const std::size_t spilled = static_cast<std::size_t>(std::min<std::uint64_t>(count, room - 1));
    std::size_t i = 0;
    for (; i + 8 <= spilled; i += 8) {
        const std::uint64_t word = loadWord(bytes + i);
        storeWord(to + i, loadWord(to + i) | word >> shift);
        to[i + 8] = static_cast<unsigned char>(to[i + 8] | word << (8 - shift));
    }
    for (; i < whole; ++i) {
        to[i] = static_cast<unsigned char>(to[i] | bytes[i] >> shift);
        if (i < spilled) to[i + 1] = static_cast<unsigned char>(to[i + 1] | bytes[i] << (8 - shift));
    }
}

}  // namespace tilepress
