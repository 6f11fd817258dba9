// tilepress_alone [PAGE.pbm]: this library on a page drawn here or a raw PBM file, with no other peer than libtiff, and
// without that where it is not built for the target. Prints one line an operation: name, tab, nanoseconds a pixel (a
// code for rows), least of many calls.
//
// tilepress_alone --sizes: the same for pages of 1 million to 2^31 pixels that repeat the page drawn here, with the
// kilobytes by which the process's peak grows while the coded page is reduced.

#include "rows.h"
#include "synthetic.h"

#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"
#include "tilepress/page.h"

#ifdef TILEPRESS_BESIDE_TIFF
#  include "tiff_peer.h"
#endif

#include <malloc.h>
#include <sys/resource.h>

#include <algorithm>
#include <cinttypes>
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

/// Seconds of the shortest call.
template <class Work>
double leastTime(Work work) {
    double least = 1e9;
    const double end = now() + 0.4;
    for (double start = now(); start < end; start = now()) {
        work();
        least = std::min(least, now() - start);
    }
    return least;
}

template <class Work>
void report(const char* name, double units, Work work) {
    std::printf("%s\t%.4f\n", name, leastTime(work) / units * 1e9);
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

/// The same work by libtiff, where there is one.
void reportTiff([[maybe_unused]] const bench::Bitmap& bitmap, [[maybe_unused]] const Bytes& coded,
                [[maybe_unused]] double pixels) {
#ifdef TILEPRESS_BESIDE_TIFF
    TIFFSetWarningHandler(nullptr);
    bench::StripEncoder encoder;
    report("encode, libtiff", pixels, [&] { encoder.encode(bitmap); });
    bench::Page page;
    page.bitmap = bench::Bitmap(bitmap.width, bitmap.height);
    page.tileWidth = bitmap.width;
    page.tileHeight = bitmap.height;
    page.tiles.push_back(coded);
    bench::MemoryTiff tiff(page);
    report("decode, libtiff", pixels, [&] { tiff.decode(page, page.bitmap); });
    page.bitmap.clearSpareBits();
    if (page.bitmap.bits != bitmap.bits || encoder.strip() != coded) std::printf("libtiff has another result\t0\n");
#endif
}

/// An image of one strip that keeps its own copy of the coded bytes; its background is white.
struct CodedPage {
    CImg1G4* image;

    CodedPage(Bytes strip, ImgULong width, ImgULong height) {
        if (strip.size() % 2) strip.push_back(0);
        for (std::size_t k = 0; k < strip.size(); k += 2) std::swap(strip[k], strip[k + 1]);
        unsigned char* tile = strip.data();
        ImgULong length = static_cast<ImgULong>(strip.size());
        image = CImg1G4::create(width, height, width, height, &tile, &length, 0xFFFFFF, 0, ImgAlignNone);
        image->setBackgroundColor(0);
    }
    ~CodedPage() {
        image->releaseData();
        delete image;
    }
    CodedPage(const CodedPage&) = delete;
    CodedPage& operator=(const CodedPage&) = delete;
};

void reportCoded(const bench::Bitmap& page, double pixels) {
    Strip strip(page);
    const Bytes coded = strip.encode();
    report("encode", pixels, [&] { strip.encode(); });
    bench::CodedRows rows(coded, page.width, page.height);
    report("row decode, a code", rows.codes(), [&] { rows.decode(); });

    const CodedPage codedPage(coded, page.width, page.height);
    CImg1G4* const image = codedPage.image;
    const std::unique_ptr<CImg1> dest(CImg1::create(page.width, page.height, 0xFFFFFF, 0, ImgAlignNone));
    report("decode", pixels, [&] {
        std::memset(dest->peekData(), 0, dest->getTotalBytes());
        image->uncompress(dest.get(), image->getRect());
    });
    report("grey tenth of a coded page", pixels, [&] { scaled(*image, page.width / 10, page.height / 10, 32); });
    report("ink tenth of a coded page", pixels, [&] { scaled(*image, page.width / 10, page.height / 10, 1); });
    reportTiff(page, coded, pixels);
    report("enlarge a coded page by 2", pixels, [&] { scaled(*image, 2 * page.width, 2 * page.height, 1); });
}

void reportImage(IImg& image, const std::string& kind, double pixels) {
    const ImgULong width = image.getWidth(), height = image.getHeight(),
                   depth = image.getType() == ImageTypeRGB ? 32 : 1;
    const auto named = [&](const char* operation, auto work) { report((operation + kind).c_str(), pixels, work); };
    named("turn left, ", [&] { Result(image.rotate(90)); });
    named("turn by 180, ", [&] { Result(image.rotate(180)); });
    named("mirror columns, ", [&] { Result(image.mirror(ImgMirY)); });
    named("shear by 7, ", [&] { Result(image.rotate(7)); });
    named("reduce by 4, ", [&] { scaled(image, width / 4, height / 4, depth); });
    named("enlarge by 2, ", [&] { scaled(image, width * 2, height * 2, depth); });
}

/// The page beside and below itself, cut to a size.
bench::Bitmap repeatedPage(const bench::Bitmap& page, std::uint32_t width, std::uint32_t height) {
    bench::Bitmap large(width, height);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < large.rowBytes(); ++x)
            large.row(y)[x] = page.row(y % page.height)[x % page.rowBytes()];
    large.clearSpareBits();
    return large;
}

/// One strip of rows of any length, which the exported strip builder does not take.
Bytes encoded(const bench::Bitmap& bitmap) {
    tp_encoder* encoder = nullptr;
    const void* strip = nullptr;
    std::size_t size = 0;
    if (tp_encoder_open(bitmap.width, 1, nullptr, &encoder) == TP_OK &&
        tp_encoder_add_bits(encoder, bitmap.bits.data(), static_cast<std::ptrdiff_t>(bitmap.rowBytes()),
                            bitmap.height) == TP_OK)
        tp_encoder_finish(encoder, &strip, &size);
    const auto* const bytes = static_cast<const unsigned char*>(strip);
    Bytes copy(bytes, bytes + size);
    tp_encoder_close(encoder);
    return copy;
}

void reportSizes(const bench::Bitmap& page) {
    // The last has as many pixels as a signed number of 32 bits counts, nearly.
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{1000, 1000},   {2480, 4032},   {7440, 13440},
                                                             {12400, 20160}, {24800, 40320}, {46341, 46341}};
    std::printf(
        "| pixels | encode | decode | grey tenth | ink tenth | peak of both, KB |\n|---|---|---|---|---|---|\n");
    for (const auto& [width, height] : sizes) {
        bench::Bitmap bitmap = repeatedPage(page, width, height);
        const double pixels = double(width) * height;
        Bytes words;
        const double encode = leastTime([&] { words = encoded(bitmap); });
        bitmap.bits = Bytes();
        const CodedPage coded(std::move(words), width, height);
        const auto peak = [] {
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            return usage.ru_maxrss;
        };
        malloc_trim(0);
        if (std::FILE* const file = std::fopen("/proc/self/clear_refs", "w")) {
            std::fputs("5", file);
            std::fclose(file);
        }
        const long before = peak();
        const double grey = leastTime([&] { scaled(*coded.image, width / 10, height / 10, 32); });
        const double ink = leastTime([&] { scaled(*coded.image, width / 10, height / 10, 1); });
        const long grown = peak() - before;
        const std::unique_ptr<CImg1> dest(CImg1::create(width, height, 0xFFFFFF, 0, ImgAlignNone));
        const double decode = leastTime([&] {
            std::memset(dest->peekData(), 0, dest->getTotalBytes());
            coded.image->uncompress(dest.get(), coded.image->getRect());
        });
        const auto each = [pixels](double seconds) { return seconds / pixels * 1e9; };
        std::printf("| %u x %u | %.4f | %.4f | %.4f | %.4f | %ld |\n", width, height, each(encode), each(decode),
                    each(grey), each(ink), grown);
        std::fflush(stdout);
    }
}

}  // namespace

/// An empty bitmap when the file is no raw PBM.
bench::Bitmap readPbm(const char* path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
    std::uint32_t width = 0, height = 0;
    if (!file || std::fscanf(file.get(), "P4 %" SCNu32 " %" SCNu32, &width, &height) != 2) return {};
    std::fgetc(file.get());
    bench::Bitmap page(width, height);
    if (std::fread(page.bits.data(), 1, page.bits.size(), file.get()) != page.bits.size()) return {};
    page.clearSpareBits();
    return page;
}

int main(int argc, char** argv) {
    if (argc > 1 && std::string(argv[1]) == "--sizes") {
        cit_enable_detect_changes();
        cit_enable_encode_gr4();
        reportSizes(bench::textPage());
        return 0;
    }
    // Freed memory stays with the process: the system's page faults would be in all figures.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, 0x7fffffff);
    cit_enable_detect_changes();
    cit_enable_encode_gr4();
    const bench::Bitmap page = argc > 1 ? readPbm(argv[1]) : bench::textPage();
    if (page.width == 0) {
        std::fprintf(stderr, "tilepress_alone: %s is no raw PBM file\n", argv[1]);
        return 1;
    }
    const double pixels = double(page.width) * page.height;
    reportCoded(page, pixels);
    const std::unique_ptr<CImg1> bits(
        CImg1::create(page.width, page.height, const_cast<unsigned char*>(page.bits.data()),
                      static_cast<ImgULong>(page.bits.size()), 0xFFFFFF, 0, ImgAlignNone));
    reportImage(*bits, "1 bit", pixels);
    report("grey tenth, 1 bit", pixels, [&] { scaled(*bits, page.width / 10, page.height / 10, 32); });
    const std::unique_ptr<CImg8> palette(CImg8::create(*bits, nullptr, ImgAlignNone));
    reportImage(*palette, "palette", pixels);
    const std::unique_ptr<CImg32> rgb(CImg32::create(*bits, RGBOrderRGB));
    reportImage(*rgb, "RGB", pixels);
    report("dither RGB", pixels, [&] { Result(CImg1::create(*rgb, 0xFFFFFF, 0, ImgAlignNone)); });
    return 0;
}
