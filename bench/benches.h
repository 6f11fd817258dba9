#pragma once

#include "pages.h"

namespace bench {

/// Decoding, scaling while decoding, and encoding of the page.
void addCodecPairs(const PagePtr& page);

/// Operations on uncompressed pictures of the page: 1 bit, palette, RGB.
void addTransformPairs(const PagePtr& page);

/// Peak memory of reductions, each in a process of its own, printed at once.
void printMemory(const std::vector<PagePtr>& pages);

}  // namespace bench
