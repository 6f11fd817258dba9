#pragma once

#include "base/failure.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

using Json = nlohmann::ordered_json;

/// Calls report(path, list) for every file. A file that fails is named on standard error and does not keep the others
/// from their turn. With `json` the list is printed at the end. The result is the worst of the codes.
int reportFiles(const std::vector<std::string>& files, bool json,
                const std::function<Exit(const std::string& path, Json& list)>& report);
