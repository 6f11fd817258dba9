#pragma once

// Error diffusion (Floyd and Steinberg) of grey tones into packed bits.

#include "foundation/bits.h"
#include "foundation/heap.h"
#include "kernels/vectors.h"
#include "tilepress/api.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tilepress {

/// Luminance in 256ths of the components' scale.
inline unsigned luminance(unsigned red, unsigned green, unsigned blue) { return 77 * red + 150 * green + 29 * blue; }

/// Tone of a colour whose components run from 0 to 255: its luminance on a curve that stretches contrast.
unsigned char toneOf(unsigned red, unsigned green, unsigned blue);

/// The tones of a row of pixels by a table; `tones` may be the row.
void loadTones(unsigned char* tones, const unsigned char* row, const unsigned char (&toneOfPixel)[256],
               std::size_t width);
/// The tones of a row of pixels whose byte 2 is red.
void loadTones(unsigned char* tones, const ImgULong* row, std::size_t width);

/// Spreads the errors of sixteen rows at once, each row two columns behind the one above: by then all that comes from
/// above is known. A step is one column in every row.
class Diffusion {
public:
    static constexpr std::size_t kRows = 16;

    /// False when memory runs out.
    bool prepare(std::size_t width);
    /// Where the tones of the band's row belong.
    unsigned char* line(std::size_t row) const { return lines_.get() + row * steps_ + 2 * (row % kLanes); }
    /// Takes the band that follows the last one.
    void run();
    /// A row of the band as packed bits, 1 where it is dark.
    void store(unsigned char* bits, std::size_t row) const;

private:
    static constexpr std::size_t kLanes = 8, kBlock = 16;
    struct Octet;

    /// A byte a step for the eight rows that this one is among, a bit for each.
    unsigned char* darkOf(std::size_t row) const { return dark_.get() + row / kLanes * (steps_ + 2 * kBlock); }

    std::size_t width_ = 0, steps_ = 0;
    Heap<unsigned char> lines_, dark_;
    Heap<std::int16_t> carry_;  ///< what eight rows give to the next ones, column x at x + 15
};

/// ORs `count` bytes into a block of `size` bytes from bit `at` on; what falls behind the block is dropped.
void orBytesAt(unsigned char* block, std::uint64_t size, std::uint64_t at, const unsigned char* bytes,
               std::size_t count);

/// Dithers `height` rows of `width` tones into a clear block, a row every `rowBits` bits. load(line, row) fills a line
/// with a row's tones. False when memory runs out.
template <class Load>
bool dither(unsigned char* block, std::uint64_t size, std::uint64_t rowBits, std::size_t width, std::size_t height,
            Load load) {
    Diffusion diffusion;
    Heap<unsigned char> bits(std::uint64_t{packedBytes(width)});
    if (!diffusion.prepare(width) || !bits) return false;
    for (std::size_t top = 0; top < height; top += Diffusion::kRows) {
        const std::size_t rows = std::min(Diffusion::kRows, height - top);
        for (std::size_t k = 0; k < rows; ++k) load(diffusion.line(k), top + k);
        diffusion.run();
        for (std::size_t k = 0; k < rows; ++k) {
            diffusion.store(bits.get(), k);
            orBytesAt(block, size, (top + k) * rowBits, bits.get(), packedBytes(width));
        }
    }
    return true;
}

}  // namespace tilepress
