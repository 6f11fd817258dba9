#pragma once

// Instructions that not every processor of a target has.

#include <atomic>

#if defined(__SSE2__) && defined(__GNUC__)
#  include <cpuid.h>
#  define TILEPRESS_BYTE_SHUFFLE 1
#endif

namespace tilepress {

/// Whether bytes of a register can be put into any order (SSSE3). Asked once: the question may take a
/// virtual machine longer than an operation.
inline bool shufflesBytes() {
#ifdef TILEPRESS_BYTE_SHUFFLE
    static constinit std::atomic<int> known{-1};
    int answer = known.load(std::memory_order_relaxed);
    if (answer < 0) {
        unsigned a = 0, b = 0, c = 0, d = 0;
        answer = __get_cpuid(1, &a, &b, &c, &d) && (c & bit_SSSE3) ? 1 : 0;
        known.store(answer, std::memory_order_relaxed);
    }
    return answer == 1;
#else
    return false;
#endif
}

}  // namespace tilepress
