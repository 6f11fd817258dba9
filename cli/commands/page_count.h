#pragma once

#include "files/input_file.h"

#include <string>

/// How many pages a file has, and what ended the list of them early, which is empty for a good file.
struct PageCount {
    unsigned pages = 0;
    std::string damage;
};
/// Throws Failure.
PageCount countPages(InputFile input);
