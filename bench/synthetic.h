#pragma once

// Pages that are drawn here, alike on every machine.

#include "pages.h"

namespace bench {

/// An A4 page of text at 300 dpi, with a ruled table and a screened block: 2480 x 3508.
Bitmap textPage();

/// A large line drawing: 28,000 x 20,000.
Bitmap largeDrawing();

}  // namespace bench
