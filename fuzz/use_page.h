#pragma once

// What the tool does with a page of a file, for targets that make files.

#include "base/failure.h"
#include "input.h"
#include "tiff/g4_page.h"
#include "tiff/row_source.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string>

/// A file in memory, by its name.
class MemoryFile {
public:
    MemoryFile(const void* data, std::size_t size) : file_(memfd_create("fuzz", 0)) {
        PROMISE(write(file_, data, size) == static_cast<ssize_t>(size));
    }
    ~MemoryFile() { close(file_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string name() const { return fmt::format("/proc/self/fd/{}", file_); }

private:
    int file_;
};

/// Draws the first pages and reads their rows. Throws Failure.
inline void usePages(PageSource& source, bool salvage) {
    const unsigned pages = std::min(source.countPages(), 3u);
    for (unsigned number = 1; number <= pages; ++number) {
        const TiffPage stored = source.page(number);
        stored.requireSupported(source.name());
        requirePixels("the page", stored.size, 1 << 22);
        const TiffPage page = source.codedPage(number);
        Drawing drawing;
        drawing.rect = {0, 0, page.size.width, page.size.height};
        drawing.target = {std::min(page.size.width, 50u), std::min(page.size.height, 50u)};
        Progress progress(true);
        G4Page codes(source, page, progress);
        const auto damage = codes.damage();
        PROMISE(!page.recoded || damage.empty());
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
}
