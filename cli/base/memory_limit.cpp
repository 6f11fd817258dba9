#include "base/memory_limit.h"

#include "base/failure.h"

#include <fmt/format.h>
#include <sys/resource.h>

#include <algorithm>
#include <charconv>
#include <cmath>

std::uint64_t parseBytes(const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const std::string unit(static_cast<const char*>(end), text.data() + text.size());
    const int power = unit.empty() ? 0 : unit == "K" ? 10 : unit == "M" ? 20 : unit == "G" ? 30 : unit == "T" ? 40 : -1;
    const double bytes = std::ldexp(value, power);
    if (error != std::errc() || power < 0 || !(bytes >= 1 && bytes < 0x1p62))
        throw Failure(Exit::failed, fmt::format("'{}' is no number of bytes, such as 500M or 2G", text));
    return static_cast<std::uint64_t>(bytes);
}

void limitMemory(std::uint64_t bytes) {
#ifndef __SANITIZE_ADDRESS__
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max == RLIM_INFINITY ? bytes : std::min<rlim_t>(bytes, limit.rlim_max);
    setrlimit(RLIMIT_AS, &limit);
#else
    static_cast<void>(bytes);
#endif
}
