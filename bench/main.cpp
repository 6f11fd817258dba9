// tilepress_bench [--times | --memory] [--benchmark_... options] [FILE.tif...]
//
// Measures on two pages drawn here and on the sample pages, or on the pages of the files named. The memory
// that a page takes is also shown for the large one of those drawn here.

#include "benches.h"
#include "peers.h"
#include "report.h"
#include "synthetic.h"

#include "tilepress/ccitt.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string_view>

namespace {

std::vector<std::string> samples() {
    std::vector<std::string> files;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(TILEPRESS_SAMPLES, missing))
        if (entry.path().extension() == ".tif") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

struct Arguments {
    bool times = true, memory = true;
    std::vector<std::string> files;
    // One pair runs for so long unless an option that follows says otherwise.
    std::string minTime = "--benchmark_min_time=0.2";
    std::vector<char*> options;

    Arguments(int argc, char** argv) : options{argv[0], minTime.data()} {
        for (int k = 1; k < argc; ++k) {
            const std::string_view argument = argv[k];
            if (argument == "--memory") times = false;
            else if (argument == "--times") memory = false;
            else if (argument.starts_with("-")) options.push_back(argv[k]);
            else files.emplace_back(argument);
        }
    }
};

bool printTimes(const std::vector<bench::PagePtr>& pages, bool named) {
    cit_enable_detect_changes();
    cit_enable_encode_gr4();
    // Freed memory stays with the process: the system's page faults would be in all figures.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, 0x7fffffff);
    for (const auto& page : pages) bench::addCodecPairs(page);
    // Pictures of 32 bits a pixel must fit.
    for (const auto& page : pages)
        if (page->pixels() <= 4e7 && (named || page == pages.front())) bench::addTransformPairs(page);
    for (const auto& page : pages) bench::addPagePairs(page);
    bench::addCallPairs();
    const bool same = bench::runPairs();
    return bench::printThreads(pages) && same;
}

}  // namespace

int main(int argc, char** argv) {
    Arguments arguments(argc, argv);
    if (!bench::takeOptions(static_cast<int>(arguments.options.size()), arguments.options.data())) return 2;
    TIFFSetWarningHandler(nullptr);
    setMsgSeverity(L_SEVERITY_ERROR);
    const bool named = !arguments.files.empty();
    const bench::PagePtr drawing = bench::coded("large drawing", bench::largeDrawing());
    std::vector<bench::PagePtr> pages;
    if (!named) pages = {bench::coded("A4 text, 300 dpi", bench::textPage()), drawing};
    for (const std::string& file : named ? arguments.files : samples()) {
        const auto more = bench::loadPages(file);
        if (more.empty()) return 1;
        pages.insert(pages.end(), more.begin(), more.end());
    }
    if (arguments.memory) {
        auto all = pages;
        if (named) all.push_back(drawing);
        bench::printMemory(all);
        bench::printPageMemory(all);
    }
    if (arguments.times && arguments.memory) std::printf("\n");
    return !arguments.times || printTimes(pages, named) ? 0 : 1;
}
