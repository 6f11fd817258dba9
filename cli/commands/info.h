#pragma once

#include "base/page_list.h"

#include <string>
#include <vector>

struct InfoOptions {
    std::vector<std::string> files;
    PageList pages{"all"};
    bool json = false;
};

/// Prints what the files hold. The result is the exit code.
int runInfo(const InfoOptions& options);
