#include "base/stats.h"

#include "base/console.h"

#include <fmt/format.h>
#include <sys/resource.h>

void Stats::print(Size result) const {
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start_;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    remark(fmt::format("{} x {} pixels, {:.3f} s, peak memory {:.1f} MB, {} bytes compressed, {} bytes expanded",
                       result.width, result.height, seconds.count(), static_cast<double>(usage.ru_maxrss) / 1024,
                       compressedBytes, expandedBytes));
}
