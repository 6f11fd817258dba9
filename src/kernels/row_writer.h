#pragma once

// Rows of results that are too large for the caches, written without reading
// first what was there.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef __SSE2__
#  include <emmintrin.h>
#endif

namespace tilepress {

/// Copies finished stretches of rows to a result of `resultBytes`. What has been written can be read by any thread once
/// the writer has ended.
class RowWriter {
public:
    explicit RowWriter(std::uint64_t resultBytes) : large_(resultBytes >= kLarge) {}
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    ~RowWriter() {
#ifdef __SSE2__
        if (large_) _mm_sfence();
#endif
    }

    void write(void* to, const void* from, std::size_t bytes) const {
        auto* dst = static_cast<unsigned char*>(to);
        auto* src = static_cast<const unsigned char*>(from);
#ifdef __SSE2__
        if (large_) {
            const std::size_t head = std::min<std::size_t>(bytes, (0 - reinterpret_cast<std::uintptr_t>(dst)) % kLine);
            std::memcpy(dst, src, head);
            const std::size_t end = head + (bytes - head) / kLine * kLine;
            for (std::size_t i = head; i < end; i += 16)
                _mm_stream_si128(reinterpret_cast<__m128i*>(dst + i),
                                 _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i)));
            dst += end, src += end, bytes -= end;
        }
#endif
        std::memcpy(dst, src, bytes);
    }

private:
    static constexpr std::uint64_t kLarge = 4 << 20;  // less is still in a cache when it is read
    static constexpr std::size_t kLine = 64;          // bytes; a part of one would be read back before it is written

    [[maybe_unused]] bool large_;
};

}  // namespace tilepress
