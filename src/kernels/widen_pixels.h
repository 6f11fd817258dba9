#pragma once

// Rows of pixels of one to four bytes made wider by repeating them.

#include "foundation/cpu.h"
#include "foundation/heap.h"
#include "kernels/mark_tables.h"
#include "kernels/pixel_rows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#ifdef TILEPRESS_BYTE_SHUFFLE
#  include <tmmintrin.h>
#endif

namespace tilepress {

/// Sixteen bytes of a wider row: the byte of the narrow row that they are taken from, and each one's distance from it.
struct ByteShuffle {
    unsigned char places[16];  // not aligned: 32-bit Windows gives blocks at multiples of 8
    std::size_t from, to;
};

#ifdef TILEPRESS_BYTE_SHUFFLE
[[gnu::target("ssse3")]] inline void shuffleBytes(unsigned char* dst, const unsigned char* src,
                                                  const ByteShuffle* shuffles, std::size_t count) {
    for (const ByteShuffle* const end = shuffles + count; shuffles < end; ++shuffles) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + shuffles->from));
        const __m128i places = _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles->places));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + shuffles->to), _mm_shuffle_epi8(bytes, places));
    }
}
#else
inline void shuffleBytes(unsigned char*, const unsigned char*, const ByteShuffle*, std::size_t) {}
#endif

/// Widens rows of `width` pixels to `newWidth`, which is no less.
template <class Pixel>
class PixelWidener {
public:
    PixelWidener(std::uint32_t width, std::uint32_t newWidth) : width_(width), newWidth_(newWidth) {}

    /// False when memory runs out.
    bool prepare() {
        if (doubles()) return true;
        if (shufflesBytes() && std::uint64_t{width_} * sizeof(Pixel) >= 16) return prepareShuffles();
        return markTable(starts_, newWidth_, width_);
    }

    void widen(Pixel* dst, const Pixel* src) const {
        if (doubles()) doublePixels(dst, src, width_);
        else if (shuffles_)
            shuffleBytes(reinterpret_cast<unsigned char*>(dst), reinterpret_cast<const unsigned char*>(src),
                         shuffles_.get(), count_);
        else repeatPixels(dst, src, starts_.get(), width_);
    }

private:
    bool doubles() const { return newWidth_ % 2 == 0 && newWidth_ / 2 == width_; }

    bool prepareShuffles() {
        Heap<ImgULong> owners;
        const std::uint64_t bytes = std::uint64_t{newWidth_} * sizeof(Pixel);
        const std::uint64_t lastFrom = std::uint64_t{width_} * sizeof(Pixel) - 16;
        count_ = static_cast<std::size_t>((bytes + 15) / 16);
        if (!ownerTable(owners, newWidth_, width_) || !shuffles_.reserve(count_)) return false;
        const auto source = [&](std::uint64_t byte) {
            return std::uint64_t{owners[static_cast<std::size_t>(byte / sizeof(Pixel))]} * sizeof(Pixel) +
                   byte % sizeof(Pixel);
        };
        for (std::size_t k = 0; k < count_; ++k) {
            ByteShuffle& shuffle = shuffles_[k];
            // The last one overlaps the one before where the row is no multiple of sixteen.
            const std::uint64_t to = std::min<std::uint64_t>(k * std::uint64_t{16}, bytes - 16);
            std::uint64_t from = lastFrom;
            for (unsigned i = 0; i < 16; ++i) from = std::min(from, source(to + i));
            for (unsigned i = 0; i < 16; ++i) shuffle.places[i] = static_cast<unsigned char>(source(to + i) - from);
            shuffle.from = static_cast<std::size_t>(from);
            shuffle.to = static_cast<std::size_t>(to);
        }
        return true;
    }

    std::uint32_t width_, newWidth_;
    Heap<ImgULong> starts_;
    Heap<ByteShuffle> shuffles_;
    std::size_t count_ = 0;
};

}  // namespace tilepress
