#include "progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

Progress::Progress(bool quiet) : enabled(!quiet && isatty(STDERR_FILENO)) {}
Progress::~Progress() { clear(); }

void Progress::show(std::string_view what) {
    if (!enabled) return;
    fmt::print(stderr, "\r\033[K{} ...", what);
    std::fflush(stderr);
    shown = true;
    lastPercent = -1;
}

void Progress::show(std::string_view what, unsigned long long done, unsigned long long all) {
    if (!enabled) return;
    const int percent = static_cast<int>(100 * done / all);
    if (percent == lastPercent) return;
    show(fmt::format("{}: {} %", what, percent));
    lastPercent = percent;
}

void Progress::clear() {
    if (!shown) return;
    fmt::print(stderr, "\r\033[K");
    std::fflush(stderr);
    shown = false;
}
