// How far the process grows while a page is reduced.

#include "benches.h"
#include "peers.h"
#include "results.h"

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

namespace bench {
namespace {

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

/// Gives freed memory back and lets the peak start anew. False where the system does not let us.
bool forgetPeak() {
    malloc_trim(0);
    std::FILE* const file = std::fopen("/proc/self/clear_refs", "w");
    if (!file) return false;
    const bool written = std::fputs("5", file) >= 0;
    return std::fclose(file) == 0 && written;
}

}  // namespace

long growth(const std::function<void()>& work) {
    int ends[2];
    if (pipe(ends) != 0) return -1;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        long grown = -1;
        if (forgetPeak()) {
            const long before = peakKilobytes();
            work();
            grown = peakKilobytes() - before;
        }
        const bool sent = write(ends[1], &grown, sizeof grown) == sizeof grown;
        _exit(sent ? 0 : 1);
    }
    close(ends[1]);
    long grown = -1;
    if (child < 0 || read(ends[0], &grown, sizeof grown) != sizeof grown) grown = -1;
    close(ends[0]);
    if (child > 0) waitpid(child, nullptr, 0);
    return grown;
}

namespace {

void reduce(const CodedTiles& tiles, const Page& page, ImgULong depth) {
    const auto image = tiles.image();
    ImgScaleAttr attr{depth};
    const Result result(image->scale(image->getRect(), page.bitmap.width / 10, page.bitmap.height / 10, attr));
    if (!result) std::fprintf(stderr, "%s: no result\n", page.name.c_str());
}

void printPage(const Page& page) {
    const CodedTiles tiles(page);
    struct {
        const char* operation;
        ImgULong depth;
        const char* peerName;
        PixPtr (*peer)(PIX*);
        double resultBytes;
    } const rows[] = {
        {"grey tenth", 32, "libtiff, pixScaleToGray", [](PIX* pix) { return PixPtr(pixScaleToGray(pix, 0.1f)); }, 4},
        {"ink tenth", 1, "libtiff, cells joined", inkTenth, 0.125},
    };
    for (const auto& row : rows) {
        const long ours = growth([&] { reduce(tiles, page, row.depth); });
        const long peer = growth([&] {
            Bitmap decoded(page.bitmap.width, page.bitmap.height);
            MemoryTiff(page).decode(page, decoded);
            const PixPtr pix = toPix(decoded);
            decoded = {};
            row.peer(pix.get());
        });
        const long coded = static_cast<long>(page.codedBytes() / 1024);
        const long result = static_cast<long>(page.pixels() / 100 * row.resultBytes / 1024);
        std::printf("%-11s %-17s %5u x %-5u %8ld %8ld %8ld %8ld %9ld  %s\n", row.operation, page.name.c_str(),
                    page.bitmap.width, page.bitmap.height, coded, result, ours, ours - coded - result, peer,
                    row.peerName);
    }
}

}  // namespace

void printMemory(const std::vector<PagePtr>& pages) {
    const long nothing = growth([] {});
    if (nothing < 0) {
        std::printf("This system does not tell how far a process has grown.\n");
        return;
    }
    std::printf(
        "Growth of the process's peak during one call, in KB (a call that does nothing: %ld). Ours holds a copy of\n"
        "the coded bytes, and the result; \"beyond\" is what it takes over these two.\n",
        nothing);
    std::printf("%-11s %-17s %13s %8s %8s %8s %8s %9s  %s\n", "operation", "page", "pixels", "coded", "result", "ours",
                "beyond", "peer's", "peer");
    for (const PagePtr& page : pages) printPage(*page);
}

}  // namespace bench
