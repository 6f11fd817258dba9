#include "base/file_reports.h"

#include "base/console.h"

#include <fmt/format.h>

#include <new>

namespace {

bool isUtf8(const std::string& text) {
    try {
        static_cast<void>(Json(text).dump());
    } catch (const Json::type_error&) {
        return false;
    }
    return true;
}

/// As in URLs: what is not printable ASCII, and the percent sign, as a percent sign and two digits.
std::string escaped(const std::string& name) {
    std::string text;
    for (const char c : name) {
        if (c > ' ' && c < 0x7F && c != '%') text += c;
        else text += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return text;
}

}  // namespace

Json fileEntry(const std::string& path) {
    Json entry = {{"file", path == "-" ? "standard input" : path}};
    if (!isUtf8(path)) entry["fileEscaped"] = escaped(path);
    return entry;
}

Exit reportEntry(Json& entry, const std::function<Exit(Json& entry)>& report) {
    const auto failed = [&entry](Exit code, const std::string& message) {
        complain(message);
        entry["error"] = {{"code", static_cast<int>(code)}, {"message", message}};
        return code;
    };
    try {
        return report(entry);
    } catch (const ReportLost&) {
        throw;
    } catch (const Failure& failure) {
        return failed(failure.code, failure.what());
    } catch (const std::bad_alloc&) {
        return failed(Exit::tooLarge, fmt::format("{}: {}", entry.value("file", "page"), kMemoryMessage));
    }
}

int reportFiles(const std::vector<std::string>& files, bool json,
                const std::function<Exit(const std::string& path, Json& entry)>& report) {
    Json list = Json::array();
    Exit worst = Exit::good;
    for (const std::string& path : files) {
        Json entry = fileEntry(path);
        worst = worse(worst, reportEntry(entry, [&](Json& into) { return report(path, into); }));
        list.push_back(std::move(entry));
    }
    if (json) print("{}\n", list.dump(2, ' ', false, Json::error_handler_t::replace));
    return static_cast<int>(worst);
}
