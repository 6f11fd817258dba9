#include "sources/open_pages.h"

#include "pdf/pdf_source.h"
#include "tiff/tiff_source.h"

#include <utility>

std::unique_ptr<PageSource> openPages(InputFile input) {
    if (input.kind() == InputFile::Kind::pdf) return std::make_unique<PdfSource>(std::move(input));
    return std::make_unique<TiffSource>(std::move(input));
}
