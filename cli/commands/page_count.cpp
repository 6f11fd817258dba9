#include "commands/page_count.h"

#include "base/failure.h"
#include "base/guarded.h"
#include "base/output_pattern.h"
#include "sources/open_pages.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

PageCount countPages(InputFile input) {
    if (input.isPicture()) return {1, {}};
    const auto opened = openPages(std::move(input));
    PageSource& source = *opened;
    const unsigned pages = source.countPages();
    return {pages, source.damageOfPageList()};
}

int forEachPage(const std::string& input, const PageList& pages, const OutputOptions& output,
                const std::function<int(InputFile, unsigned, const OutputOptions&)>& run) {
    const OutputPattern pattern(output.path);
    InputFile file(input);
    const auto runOne = [&](unsigned page) {
        OutputOptions one = output;
        one.path = pattern.expanded(input, page);
        if (one.isDone()) return static_cast<int>(Exit::good);
        one.requireApart(file);
        return run(file.again(), page, one);
    };
    if (const unsigned page = pages.onlyPage()) return runOne(page);
    const std::vector<unsigned> chosen = pages.of(countPages(file.again()).pages);
    if (chosen.size() > 1 && !pattern.namesPages())
        throw Failure(Exit::failed,
                      fmt::format("{}: {} pages for one output: {{page}} or %d in its name keeps them apart",
                                  output.path, chosen.size()));
    Exit worst = Exit::good;
    for (const unsigned page : chosen) worst = worse(worst, static_cast<Exit>(guarded([&] { return runOne(page); })));
    return static_cast<int>(worst);
}
