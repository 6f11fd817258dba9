#include "commands/draw_pages.h"

#include "base/console.h"
#include "base/failure.h"
#include "base/guarded.h"
#include "base/output_pattern.h"
#include "base/stats.h"
#include "commands/page_count.h"

#include <utility>
#include <vector>

namespace {

int drawPage(const DrawOptions& options, const DrawSteps& steps, InputFile input, unsigned page,
             const OutputOptions& output) {
    const Coding coding(options.format, output.path, options.quality);
    Stats stats;
    Progress progress(options.quiet);
    const auto source = openDrawable(std::move(input), page);
    const Shown shown(source->size, source->dpiX, source->dpiY, source->orientation, options.show);
    const Drawing drawing = steps.plan(*source, shown, coding);
    Drawn drawn = source->draw(drawing, options.salvage, progress);
    stats.compressedBytes = drawn.compressedBytes;
    stats.expandedBytes = expandedBytes(drawing.rect.size(), source->pixels);
    const Picture picture = steps.finish(std::move(drawn.picture), drawing, shown, progress);
    writePicture(picture, output, coding, progress);
    progress.clear();
    if (options.stats) stats.print(picture.size());
    for (const std::string& remark : drawn.remarks) complain(remark);
    return static_cast<int>(drawn.damaged ? Exit::damaged : Exit::good);
}

}  // namespace

int drawPages(const DrawOptions& options, const DrawSteps& steps) {
    const OutputPattern pattern(options.output.path);
    InputFile file(options.input);
    const auto drawOne = [&](unsigned page) {
        OutputOptions output = options.output;
        output.path = pattern.expanded(options.input, page);
        if (output.isDone()) return static_cast<int>(Exit::good);
        output.requireApart(file);
        return drawPage(options, steps, file.again(), page, output);
    };
    if (const unsigned page = options.pages.onlyPage()) return drawOne(page);
    const std::vector<unsigned> chosen = options.pages.of(countPages(file.again()).pages);
    if (chosen.size() > 1 && !pattern.namesPages())
        throw Failure(Exit::failed,
                      fmt::format("{}: {} pages for one output: {{page}} or %d in its name keeps them apart",
                                  options.output.path, chosen.size()));
    Exit worst = Exit::good;
    for (const unsigned page : chosen) worst = worse(worst, static_cast<Exit>(guarded([&] { return drawOne(page); })));
    return static_cast<int>(worst);
}
