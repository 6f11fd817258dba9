#pragma once

#include "pages.h"

namespace bench {

/// Decoding, scaling while decoding, and encoding of the page.
void addCodecPairs(const PagePtr& page);

/// Operations on uncompressed pictures of the page: 1 bit, palette, RGB.
void addTransformPairs(const PagePtr& page);

/// Views of the page through the plain C page interface: prepared, and several at once.
void addPagePairs(const PagePtr& page);
/// What a call of it costs.
void addCallPairs();
/// The same in two threads, printed at once.
void printThreads(const std::vector<PagePtr>& pages);

/// Peak memory of reductions, each in a process of its own, printed at once.
void printMemory(const std::vector<PagePtr>& pages);

}  // namespace bench
