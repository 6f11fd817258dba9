// Does every main operation once, each in a function of its own whose instructions callgrind counts.

#include "peer/tiff_pages.h"
#include "tilepress/CImg8.h"
#include "tilepress/ccitt.h"
#include "tilepress/page.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using support::Bytes, support::G4Image;
using Result = std::unique_ptr<IImg>;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

G4Image open(const char* name) {
    auto pages = support::readTiff(std::string(TILEPRESS_SAMPLES "/") + name);
    if (pages.empty()) fail(name);
    return support::imageOf(pages[0]);
}

Result scaled(IImg& image, double factor, ImgULong depth) {
    ImgScaleAttr attr{depth};
    return Result(image.scale(image.getRect(), static_cast<ImgULong>(image.getWidth() * factor),
                              static_cast<ImgULong>(image.getHeight() * factor), attr));
}

}  // namespace

#define OPERATION(name) extern "C" [[gnu::noinline]] bool operation_##name

OPERATION(decode_strip)(CImg1G4& page, CImg1& dest) { return page.uncompress(&dest, page.getRect()); }
OPERATION(decode_tiles)(CImg1G4& page, CImg1& dest) { return page.uncompress(&dest, page.getRect()); }
OPERATION(decode_halftone)(CImg1G4& page, CImg1& dest) { return page.uncompress(&dest, page.getRect()); }
OPERATION(coded_grey_tenth)(CImg1G4& page) { return scaled(page, 0.1, 32) != nullptr; }
OPERATION(coded_ink_quarter)(CImg1G4& page) { return scaled(page, 0.25, 1) != nullptr; }
OPERATION(coded_enlarge_2)(CImg1G4& page) { return scaled(page, 2, 1) != nullptr; }
OPERATION(encode)(CImg1& page, Bytes& rows) {
    unsigned char* strip = nullptr;
    const bool done = create_g4_tiff_strip(rows.data(), &strip, static_cast<std::int32_t>(page.getWidth()),
                                           static_cast<std::int32_t>(page.getBytesPerLine()),
                                           static_cast<std::int32_t>(page.getHeight())) > 0;
    std::free(strip);
    return done;
}
OPERATION(bilevel_turn)(IImg& page) { return Result(page.rotate(90)) != nullptr; }
OPERATION(bilevel_mirror)(IImg& page) { return Result(page.mirror(ImgMirY)) != nullptr; }
OPERATION(bilevel_shear)(IImg& page) { return Result(page.rotate(7)) != nullptr; }
OPERATION(bilevel_ink_quarter)(IImg& page) { return scaled(page, 0.25, 1) != nullptr; }
OPERATION(bilevel_grey_tenth)(IImg& page) { return scaled(page, 0.1, 32) != nullptr; }
OPERATION(bilevel_enlarge_2)(IImg& page) { return scaled(page, 2, 1) != nullptr; }
OPERATION(palette_turn)(IImg& page) { return Result(page.rotate(90)) != nullptr; }
OPERATION(palette_enlarge_2)(IImg& page) { return scaled(page, 2, 1) != nullptr; }
OPERATION(rgb_turn)(IImg& page) { return Result(page.rotate(90)) != nullptr; }
OPERATION(rgb_reduce_4)(IImg& page) { return scaled(page, 0.25, 32) != nullptr; }
OPERATION(rgb_dither)(IImg& page) { return Result(CImg1::create(page, 0xFFFFFF, 0, ImgAlignNone)) != nullptr; }
/// What a call costs whatever it draws, a hundred times.
OPERATION(page_hundred_calls)(const tp_page* page) {
    unsigned char pixels[64];
    const tp_view view{sizeof view, 0, 0, 8, 8, 8, 8, TP_GREY, TP_GREY8, 1, 0, 0, 0, pixels, 8};
    for (int k = 0; k < 100; ++k)
        if (tp_page_render(page, &view, 1, nullptr) != TP_OK) return false;
    return true;
}

namespace {

bool pageOperations() {
    const Bytes rows(440, 0xFF);  // white ones, a bit each
    const tp_coded strip{rows.data(), rows.size()};
    const tp_page_info info{sizeof info, 2480, 3508, 0, 0, 0, 0, 0, {}};
    tp_page* page = nullptr;
    const bool done = tp_page_open(&info, &strip, 1, &page) == TP_OK && operation_page_hundred_calls(page);
    tp_page_release(page);
    return done;
}

std::unique_ptr<CImg1> bitmapFor(const CImg1G4& page) {
    return std::unique_ptr<CImg1>(CImg1::create(page.getWidth(), page.getHeight(), 0xFFFFFF, 0, ImgAlignNone));
}

bool codedOperations(CImg1& text) {
    const G4Image strip = open("text.tif"), tiles = open("drawing_tiled.tif"), halftone = open("halftone.tif");
    const auto drawing = bitmapFor(*tiles), picture = bitmapFor(*halftone);
    bool done = operation_decode_strip(*strip, text) && operation_decode_tiles(*tiles, *drawing) &&
                operation_decode_halftone(*halftone, *picture) && operation_coded_grey_tenth(*strip) &&
                operation_coded_enlarge_2(*strip);
    const G4Image unknown = open("text.tif");  // whose background is yet to be found
    return done && operation_coded_ink_quarter(*unknown);
}

bool uncompressedOperations(CImg1& text) {
    Bytes rows(text.peekData(), text.peekData() + text.getTotalBytes());
    rows.push_back(0);  // change detection borrows the byte after a row
    cit_enable_detect_changes();
    cit_enable_encode_gr4();
    const std::unique_ptr<CImg8> palette(CImg8::create(text, nullptr, ImgAlignNone));
    const std::unique_ptr<CImg32> rgb(CImg32::create(text, RGBOrderRGB));
    return operation_encode(text, rows) && operation_bilevel_turn(text) && operation_bilevel_mirror(text) &&
           operation_bilevel_shear(text) && operation_bilevel_ink_quarter(text) && operation_bilevel_grey_tenth(text) &&
           operation_bilevel_enlarge_2(text) && operation_palette_turn(*palette) &&
           operation_palette_enlarge_2(*palette) && operation_rgb_turn(*rgb) && operation_rgb_reduce_4(*rgb) &&
           operation_rgb_dither(*rgb);
}

}  // namespace

int main() {
    mallopt(M_MMAP_THRESHOLD, 1 << 16);  // what clearing a result takes must not depend on what was freed before
    const auto text = bitmapFor(*open("text.tif"));
    if (!codedOperations(*text) || !uncompressedOperations(*text) || !pageOperations())
        fail("an operation gave nothing");
    return 0;
}
