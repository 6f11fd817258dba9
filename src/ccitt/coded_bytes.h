#pragma once

// A tile's coded bytes as the row decoder of padded lines reads them.

#include "foundation/bits.h"
#include "foundation/heap.h"

#include <cstdint>

namespace tilepress {

/// Zero bytes behind a tile's own, so that the decoder can read ahead by words.
inline constexpr std::uint64_t kCodedBack = 32;

/// The 16-bit words of a tile as a plain byte stream; null when memory runs out.
inline unsigned char* codedBytes(const unsigned char* tile, std::uint32_t length) {
    unsigned char* bytes = allocate<unsigned char>(std::uint64_t{length} + length % 2 + kCodedBack);
    if (bytes) exchangePairs(bytes, tile, length);
    return bytes;
}

}  // namespace tilepress
