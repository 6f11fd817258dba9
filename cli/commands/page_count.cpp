#include "commands/page_count.h"

#include "sources/open_pages.h"

#include <memory>
#include <utility>

PageCount countPages(InputFile input) {
    if (input.isPicture()) return {1, {}};
    const std::shared_ptr<PageSource> source = openPages(std::move(input));
    const unsigned pages = source->countPages();
    return {pages, source->damageOfPageList()};
}
