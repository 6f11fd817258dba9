#pragma once

// Opening files of bilevel pages.

#include "files/input_file.h"
#include "tiff/page_source.h"

#include <memory>

/// A TIFF or PDF file. Throws Failure.
std::shared_ptr<PageSource> openPages(InputFile input);

/// From now on the file opened last stays open, for the next call if that asks for the same one: a command for each of
/// many pages would look for each from the file's beginning.
void keepPagesOpen();
/// Closes it, after something went wrong with it.
void closeKeptPages();
