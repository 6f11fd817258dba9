// Page after page through one process: its memory stays where it was after the first ones.

#include <tilepress/tilepress.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <vector>

/// Resident memory in KiB.
static long resident() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, pages = 0;
    statm >> size >> pages;
    return pages * 4;
}

int main(int argc, char** argv) {
    constexpr std::int32_t width = 1653, height = 2339, stride = (width + 7) / 8;
    std::vector<unsigned char> rows(std::size_t{stride} * height + 1);
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = i / stride % 40 < 24 && i % 7 < 4 ? static_cast<unsigned char>(i * 37) : 0;
    std::uint8_t* strip = nullptr;
    cit_enable_encode_gr4();
    cit_enable_detect_changes();
    const std::int32_t length = create_g4_tiff_strip(rows.data(), &strip, width, stride, height);
    if (length <= 0) return 1;
    for (std::int32_t i = 0; i + 1 < length; i += 2) std::swap(strip[i], strip[i + 1]);

    const int pages = argc > 1 ? std::atoi(argv[1]) : 300;
    ImgScaleAttr grey{32};
    long before = 0;
    for (int page = 0; page < pages; ++page) {
        unsigned char* tiles[] = {strip};
        ImgULong lengths[] = {static_cast<ImgULong>(length)};
        CImg1G4* image =
            CImg1G4::create(width, height, width, height, tiles, lengths, 0x00FFFFFF, 0xFF000000, ImgAlignNone);
        if (!image) return 1;
        const std::unique_ptr<IImg> small(image->scale(image->getRect(), 165, 233, grey));
        std::unique_ptr<IImg> turned(image->rotate(90));
        std::uint8_t* again = nullptr;
        const bool same = create_g4_tiff_strip(rows.data(), &again, width, stride, height) == length;
        std::free(again);
        image->releaseData();
        delete image;
        if (!small || !turned || !same) return 1;
        if (page == pages / 10) before = resident();
    }
    const long grown = resident() - before;
    std::printf("%d pages; %ld KiB after a tenth of them, %ld KiB more at the end\n", pages, before, grown);
    std::free(strip);
    return grown > 1024;
}
