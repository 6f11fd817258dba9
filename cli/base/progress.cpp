#include "base/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

Progress::Progress(bool quiet) : enabled_(!quiet && isatty(STDERR_FILENO)) {}
Progress::~Progress() { clear(); }

void Progress::show(std::string_view what) {
    if (!enabled_) return;
    std::fputs(fmt::format("\r\033[K{} ...", what).c_str(), stderr);
    shown_ = true;
    lastPercent_ = -1;
}

void Progress::show(std::string_view what, unsigned long long done, unsigned long long all) {
    if (!enabled_) return;
    const int percent = static_cast<int>(100 * done / all);
    if (percent == lastPercent_) return;
    show(fmt::format("{}: {} %", what, percent));
    lastPercent_ = percent;
}

void Progress::clear() {
    if (!shown_) return;
    std::fputs("\r\033[K", stderr);
    shown_ = false;
}
