#pragma once

#include "pages.h"

#include <functional>

namespace bench {

/// Decoding, scaling while decoding, and encoding of the page.
void addCodecPairs(const PagePtr& page);

/// Operations on uncompressed pictures of the page: 1 bit, palette, RGB.
void addTransformPairs(const PagePtr& page);

/// Views of the page through the plain C page interface: prepared, and several at once.
void addPagePairs(const PagePtr& page);
/// What a call of it costs.
void addCallPairs();
/// Views of the larger pages in two threads, printed at once. False when the pictures differ from those of one call.
bool printThreads(const std::vector<PagePtr>& pages);
/// What calls of it take, printed at once.
void printPageMemory(const std::vector<PagePtr>& pages);

/// Kilobytes by which the peak grows while `work` runs in a process of its own; -1 when it cannot be told.
long growth(const std::function<void()>& work);
/// Peak memory of reductions, each in a process of its own, printed at once.
void printMemory(const std::vector<PagePtr>& pages);

}  // namespace bench
