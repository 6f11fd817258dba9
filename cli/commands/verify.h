#pragma once

#include "base/page_list.h"

#include <cstdint>
#include <string>
#include <vector>

struct VerifyOptions {
    std::vector<std::string> files;
    PageList pages{"all"};
    std::uint64_t maxInputPixels = std::uint64_t{1} << 32;
    bool json = false;
    bool reference = false;  ///< compare with libtiff's pixels
};

/// Decodes every row of every tile and says what is damaged. The result is the exit code.
int runVerify(const VerifyOptions& options);
