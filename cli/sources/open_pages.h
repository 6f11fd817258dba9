#pragma once

// Opening files of bilevel pages.

#include "files/input_file.h"
#include "tiff/page_source.h"

#include <memory>

/// A TIFF or PDF file.
std::unique_ptr<PageSource> openPages(InputFile input);
