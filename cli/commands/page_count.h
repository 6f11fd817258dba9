#pragma once

#include "base/page_list.h"
#include "files/input_file.h"
#include "files/output_file.h"

#include <functional>
#include <string>

/// How many pages a file has, and what ended the list of them early, which is empty for a good file.
struct PageCount {
    unsigned pages = 0;
    std::string damage;
};
/// Throws Failure.
PageCount countPages(InputFile input);

/// Runs a command for each of the pages, as run(input, page, output). Where there are several, the output's name must
/// tell them apart. A page that fails is reported and keeps no other from its turn; the result is the worst of the
/// codes. Outputs that are there and shall stay are passed by. Throws Failure.
int forEachPage(const std::string& input, const PageList& pages, const OutputOptions& output,
                const std::function<int(InputFile, unsigned, const OutputOptions&)>& run);
