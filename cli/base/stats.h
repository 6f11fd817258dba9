#pragma once

#include "base/geometry.h"

#include <chrono>
#include <cstdint>

/// What a command did, for --stats.
class Stats {
public:
    std::uint64_t compressedBytes = 0, expandedBytes = 0;

    /// One line on standard error.
    void print(Size result) const;

private:
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};
