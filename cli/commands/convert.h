#pragma once

#include "commands/draw_pages.h"

struct ConvertOptions : DrawOptions {
    Pixels to = Pixels::bilevel;
};

/// Converts pages or pictures, at their size, to another kind of pixel. The result is the exit code; throws Failure.
int runConvert(const ConvertOptions& options);
