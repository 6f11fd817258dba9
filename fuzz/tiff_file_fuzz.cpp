// Whatever a TIFF file says, the tool ends with a picture, a report or a message, within the sizes it was allowed.

#include "base/failure.h"
#include "input.h"
#include "tiff/g4_page.h"
#include "tiff/row_source.h"
#include "tiff/tiff_source.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace {

constexpr std::uint64_t kMostPixels = 1 << 22;

void usePage(TiffSource& source, unsigned number, bool salvage) {
    const TiffPage page = source.page(number);
    page.requireSupported(source.name());
    requirePixels("the page", page.size, kMostPixels);
    Drawing drawing;
    drawing.rect = {0, 0, page.size.width, page.size.height};
    drawing.target = {std::min(page.size.width, 50u), std::min(page.size.height, 50u)};
    Progress progress(true);
    G4Page codes(source, page, progress);
    const auto damage = codes.damage();
    drawPage(codes, drawing, !damage.empty(), salvage);
    if (!damage.empty()) codes.describeFirst(damage);
    // What is good for one is good for all.
    const auto rows = g4Rows(codes);
    Changes row;
    bool read = true;
    try {
        for (std::uint32_t y = 0; y < page.size.height; ++y) rows->next(row);
    } catch (const Failure&) {
        read = false;
    }
    PROMISE(read || !damage.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const int file = memfd_create("fuzz", 0);
    const bool written = write(file, data + 1, size - 1) == static_cast<ssize_t>(size - 1);
    try {
        TiffSource source{InputFile(fmt::format("/proc/self/fd/{}", file))};
        const unsigned pages = std::min(source.countPages(), 3u);
        for (unsigned page = 1; written && page <= pages; ++page) usePage(source, page, data[0] % 2);
    } catch (const Failure&) {
    } catch (const std::bad_alloc&) {
    }
    close(file);
    CCITT_DisableG4Decode();
    return 0;
}
