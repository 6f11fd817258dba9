#pragma once

#include <string>
#include <vector>

struct InfoOptions {
    std::vector<std::string> files;
    unsigned page = 0;  ///< 0: all
    bool json = false;
};

/// Prints what the files hold. The result is the exit code.
int runInfo(const InfoOptions& options);
