#include "batch/meter.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr double kBarSeconds = 0.2, kLineSeconds = 10;
constexpr int kBarWidth = 24;

std::string clockTime(double seconds) {
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

}  // namespace

Meter::Meter(bool quiet)
    : quiet_(quiet), terminal_(isatty(STDERR_FILENO) != 0), next_(terminal_ ? kBarSeconds : kLineSeconds) {}

void Meter::clear() {
    if (shown_) fmt::print(stderr, "\r\033[K");
    shown_ = false;
}

std::string Meter::state(double share) const {
    std::string text = fmt::format("{} done, {} failed", done, failed);
    if (kept > 0) text += fmt::format(", {} there already", kept);
    text += fmt::format(", {:.1f} pages/s", static_cast<double>(done) / std::max(seconds(), 0.001));
    if (share > 0) text += fmt::format(", {} left", clockTime(seconds() * (1 - share) / share));
    return text;
}

void Meter::show(double share) {
    if (quiet_ || seconds() < next_) return;
    next_ = seconds() + (terminal_ ? kBarSeconds : kLineSeconds);
    clear();
    if (terminal_ && share >= 0) {
        const int filled = static_cast<int>(share * kBarWidth);
        fmt::print(stderr, "[{}{}] ", std::string(std::size_t(filled), '#'),
                   std::string(std::size_t(kBarWidth - filled), ' '));
    }
    fmt::print(stderr, "{}{}", state(share), terminal_ ? "" : "\n");
    std::fflush(stderr);
    shown_ = terminal_;
}

void Meter::say(const std::string& line) {
    clear();
    fmt::print(stderr, "{}{}", line, line.ends_with('\n') ? "" : "\n");
}

void Meter::sum(bool interrupted) {
    if (!quiet_) say(fmt::format("{}{} in {}", interrupted ? "interrupted: " : "", state(-1), clockTime(seconds())));
}
