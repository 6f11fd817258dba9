#include "sources/open_pages.h"

#include "pdf/pdf_source.h"
#include "tiff/tiff_source.h"

#include <utility>

static bool s_keeping = false;
static std::shared_ptr<PageSource> s_kept;

void keepPagesOpen() { s_keeping = true; }
void closeKeptPages() { s_kept.reset(); }

std::shared_ptr<PageSource> openPages(InputFile input) {
    if (s_kept && s_kept->file().isSameAs(input)) return s_kept;
    closeKeptPages();
    std::shared_ptr<PageSource> opened;
    if (input.kind() == InputFile::Kind::pdf) opened = std::make_shared<PdfSource>(std::move(input));
    else opened = std::make_shared<TiffSource>(std::move(input));
    if (s_keeping) s_kept = opened;
    return opened;
}
