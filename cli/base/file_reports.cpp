#include "base/file_reports.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

int reportFiles(const std::vector<std::string>& files, bool json,
                const std::function<Exit(const std::string& path, Json& list)>& report) {
    Json list = Json::array();
    Exit worst = Exit::good;
    for (const std::string& path : files) {
        try {
            worst = std::max(worst, report(path, list));
        } catch (const Failure& failure) {
            std::fflush(stdout);
            fmt::print(stderr, "tilepress: {}\n", failure.what());
            worst = std::max(worst, failure.code);
        }
    }
    if (json) fmt::print("{}\n", list.dump(2, ' ', false, Json::error_handler_t::replace));
    return static_cast<int>(worst);
}
