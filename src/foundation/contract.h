#pragma once

// What kernels demand of their callers, checked in builds for finding faults and left out of all others.

#include <cstddef>

/// Stops the program where the condition does not hold, if TILEPRESS_CHECKED is defined; else the condition is not
/// evaluated.
#ifdef TILEPRESS_CHECKED
#  define TILEPRESS_DEMAND(condition) ((condition) ? static_cast<void>(0) : __builtin_trap())
#else
#  define TILEPRESS_DEMAND(condition) static_cast<void>(sizeof(condition))
#endif

namespace tilepress {

/// For demands: whether a block's bytes are all 0.
inline bool isClear(const void* block, std::size_t bytes) {
    const auto* p = static_cast<const unsigned char*>(block);
    for (std::size_t i = 0; i < bytes; ++i)
        if (p[i] != 0) return false;
    return true;
}

/// For demands: reads the block's ends, so that a checker of memory sees whether it is there.
inline bool isReadable(const void* block, std::size_t bytes) {
    const volatile auto* p = static_cast<const volatile unsigned char*>(block);
    if (bytes != 0) static_cast<void>(p[0] + p[bytes - 1]);
    return true;
}

}  // namespace tilepress
