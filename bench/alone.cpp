// tilepress_alone: this library alone on a page drawn here, without a peer, so that it can be built for any
// target. Prints one line an operation: name, tab, nanoseconds a pixel (a code for rows), least of many calls.

#include "rows.h"
#include "synthetic.h"

#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

using bench::Bytes;
using Result = std::unique_ptr<IImg>;

double now() {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class Work>
void report(const char* name, double units, Work work) {
    double least = 1e9;
    const double end = now() + 0.4;
    for (double start = now(); start < end; start = now()) {
        work();
        least = std::min(least, now() - start);
    }
    std::printf("%s\t%.4f\n", name, least / units * 1e9);
    std::fflush(stdout);
}

struct Strip {
    Bytes rows;  ///< the page's, and the byte that change detection borrows
    std::int32_t width, rowBytes, height;

    explicit Strip(const bench::Bitmap& page)
        : rows(page.bits), width(static_cast<std::int32_t>(page.width)),
          rowBytes(static_cast<std::int32_t>(page.rowBytes())), height(static_cast<std::int32_t>(page.height)) {
        rows.push_back(0);
    }
    Bytes encode() {
        unsigned char* block = nullptr;
        const std::int32_t length = create_g4_tiff_strip(rows.data(), &block, width, rowBytes, height);
        Bytes strip(block, block + std::max(length, 0));
        std::free(block);
        return strip;
    }
};

Result scaled(IImg& image, ImgULong width, ImgULong height, ImgULong depth) {
    ImgScaleAttr attr{depth};
    return Result(image.scale(image.getRect(), width, height, attr));
}

void reportCoded(const bench::Bitmap& page, double pixels) {
    Strip strip(page);
    const Bytes coded = strip.encode();
    report("encode", pixels, [&] { strip.encode(); });
    bench::CodedRows rows(coded, page.width, page.height);
    report("row decode, a code", rows.codes(), [&] { rows.decode(); });

    Bytes words = coded;
    if (words.size() % 2) words.push_back(0);
    for (std::size_t k = 0; k < words.size(); k += 2) std::swap(words[k], words[k + 1]);
    unsigned char* tile = words.data();
    ImgULong length = static_cast<ImgULong>(words.size());
    CImg1G4* const image = CImg1G4::create(page.width, page.height, page.width, page.height, &tile, &length, 0xFFFFFF,
                                           0, ImgAlignNone);
    image->setBackgroundColor(0);
    const std::unique_ptr<CImg1> dest(CImg1::create(page.width, page.height, 0xFFFFFF, 0, ImgAlignNone));
    report("decode", pixels, [&] {
        std::memset(dest->peekData(), 0, dest->getTotalBytes());
        image->uncompress(dest.get(), image->getRect());
    });
    report("grey tenth of a coded page", pixels, [&] { scaled(*image, page.width / 10, page.height / 10, 32); });
    report("ink tenth of a coded page", pixels, [&] { scaled(*image, page.width / 10, page.height / 10, 1); });
    report("enlarge a coded page by 2", pixels, [&] { scaled(*image, 2 * page.width, 2 * page.height, 1); });
    image->releaseData();
    delete image;
}

void reportImage(IImg& image, const std::string& kind, double pixels) {
    const ImgULong width = image.getWidth(), height = image.getHeight(), depth = image.getType() == ImageTypeRGB ? 32 : 1;
    const auto named = [&](const char* operation, auto work) { report((operation + kind).c_str(), pixels, work); };
    named("turn left, ", [&] { Result(image.rotate(90)); });
    named("turn by 180, ", [&] { Result(image.rotate(180)); });
    named("mirror columns, ", [&] { Result(image.mirror(ImgMirY)); });
    named("shear by 7, ", [&] { Result(image.rotate(7)); });
    named("reduce by 4, ", [&] { scaled(image, width / 4, height / 4, depth); });
    named("enlarge by 2, ", [&] { scaled(image, width * 2, height * 2, depth); });
}

}  // namespace

int main() {
    // Freed memory stays with the process: the system's page faults would be in all figures.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, 0x7fffffff);
    cit_enable_detect_changes();
    cit_enable_encode_gr4();
    const bench::Bitmap page = bench::textPage();
    const double pixels = double(page.width) * page.height;
    reportCoded(page, pixels);
    const std::unique_ptr<CImg1> bits(CImg1::create(page.width, page.height, const_cast<unsigned char*>(page.bits.data()),
                                                    static_cast<ImgULong>(page.bits.size()), 0xFFFFFF, 0,
                                                    ImgAlignNone));
    reportImage(*bits, "1 bit", pixels);
    report("grey tenth, 1 bit", pixels, [&] { scaled(*bits, page.width / 10, page.height / 10, 32); });
    const std::unique_ptr<CImg8> palette(CImg8::create(*bits, nullptr, ImgAlignNone));
    reportImage(*palette, "palette", pixels);
    const std::unique_ptr<CImg32> rgb(CImg32::create(*bits, RGBOrderRGB));
    reportImage(*rgb, "RGB", pixels);
    report("dither RGB", pixels, [&] { Result(CImg1::create(*rgb, 0xFFFFFF, 0, ImgAlignNone)); });
    return 0;
}
