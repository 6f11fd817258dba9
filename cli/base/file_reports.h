#pragma once

#include "base/failure.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using Json = nlohmann::ordered_json;

/// A file's name for a report. Names that are not UTF-8 have an escaped form too, in which their bytes survive.
Json fileEntry(const std::string& path);
/// Calls report(entry), for a file or for a part of one. A failure is named on standard error, joins what the entry has
/// got so far, and is the result; only ReportLost is passed on.
Exit reportEntry(Json& entry, const std::function<Exit(Json& entry)>& report);

/// Calls report(path, entry) for every file, whatever became of the ones before. With `json` the entries are printed as
/// a list at the end. The result is the worst of the codes.
int reportFiles(const std::vector<std::string>& files, bool json,
                const std::function<Exit(const std::string& path, Json& entry)>& report);
