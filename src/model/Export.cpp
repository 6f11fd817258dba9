#include "tilepress/Export.h"

#include "foundation/bits.h"
#include "foundation/colour_entries.h"
#include "kernels/dither.h"
#include "kernels/expand_bits.h"
#include "model/image_kinds.h"
#include "tilepress/CImg1G4.h"

#include <algorithm>
#include <cstring>

using namespace tilepress;

static ImgULong withEndsExchanged(ImgULong pixel) {
    return (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
}

/// of(red, green, blue) for each of the 256 pixel values of a palette image.
template <class T, class Of>
static void tabulate(T (&table)[256], const CImg8& image, Of of) {
    for (std::int32_t pixel = 0; pixel < 256; ++pixel) table[pixel] = colourAt(image.getColorMap(), pixel, of);
}

// --- one function for each pair that can be converted ---

static bool sameSize(const CImg& a, const CImg& b) {
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight();
}

static bool convert(CImg1& to, const CImg1& from) {
    if (!sameSize(to, from) || to.getTotalBytes() != from.getTotalBytes() ||
        to.getBytesPerLine() != from.getBytesPerLine())
        return false;
    // Kept: the alignments must be the same value, whether or not they lead to different rows.
    if (alignmentOf(to) != alignmentOf(from)) return false;
    std::memmove(to.peekData(), from.peekData(), from.getTotalBytes());
    return true;
}

static bool convert(CImg8& to, const CImg1& from) {
    if (!sameSize(to, from)) return false;
    const BitArea bits = areaOf(from);
    for (std::size_t y = 0; y < bits.height; ++y) expandRow(to.peekDataArray()[y], bits.rows[y], bits.width);
    return true;
}

static bool convert(CImg32& to, const CImg1& from) {
    if (!sameSize(to, from)) return false;
    const Quads quads(from.getBackgroundInterpretation(), from.getForegroundInterpretation());
    const BitArea bits = areaOf(from);
    for (std::size_t y = 0; y < bits.height; ++y) expandRow(to.peekDataArray()[y], bits.rows[y], bits.width, quads);
    return true;
}

static bool convert(CImg1& to, const CImg8& from) {
    if (!sameSize(to, from)) return false;
    unsigned char tones[256];
    tabulate(tones, from, toneOf);
    const std::size_t width = from.getWidth();
    return dither(to.peekData(), to.getTotalBytes(), std::uint64_t{width} + to.getPadBits(), width, from.getHeight(),
                  [&](unsigned char* line, std::size_t y) { loadTones(line, from.peekDataArray()[y], tones, width); });
}

/// `fresh`: nobody has seen the pixels of `to`, and they count as 0.
static bool convert(CImg32& to, const CImg8& from, bool fresh = false) {
    if (!sameSize(to, from) || usableEntries(from.getColorMap()) == 0) return false;
    const bool redFirst = to.getRGBOrder() == RGBOrderRGB;
    ImgULong pixels[256];
    tabulate(pixels, from, [redFirst](unsigned red, unsigned green, unsigned blue) {
        return static_cast<ImgULong>(redFirst ? red | green << 8 | blue << 16 : blue | green << 8 | red << 16);
    });
    const std::size_t width = from.getWidth(), height = from.getHeight();
    for (std::size_t y = 0; y < height; ++y) {
        const unsigned char* row = from.peekDataArray()[y];
        ImgULong* out = to.peekDataArray()[y];
        // Kept: in the order red first the colour is ORed into what the pixel holds.
        if (redFirst && !fresh)
            for (std::size_t x = 0; x < width; ++x) out[x] |= pixels[row[x]];
        else lookUpRow(out, row, width, pixels);
    }
    return true;
}

static bool convert(CImg1& to, const CImg32& from) {
    // Kept: the sizes may differ; the source's counts, and bits past the destination's block are dropped.
    const std::size_t width = from.getWidth();
    return dither(to.peekData(), to.getTotalBytes(), std::uint64_t{width} + to.getPadBits(), width, from.getHeight(),
                  // Kept: byte 2 counts as red whatever the image's order.
                  [&](unsigned char* line, std::size_t y) { loadTones(line, from.peekDataArray()[y], width); });
}

static bool convert(CImg32& to, const CImg32& from) {
    if (!sameSize(to, from) || to.getTotalBytes() != from.getTotalBytes()) return false;
    const ImgULong* pixels = from.peekData();
    const std::size_t count = from.getTotalBytes() / 4;
    if (to.getRGBOrder() == from.getRGBOrder()) std::memmove(to.peekData(), pixels, 4 * count);
    else std::transform(pixels, pixels + count, to.peekData(), withEndsExchanged);
    return true;
}

// --- dispatch ---

// Neither the kind nor the expansion of an image is asked through const members.
static IImg& unconst(const IImg& image) { return const_cast<IImg&>(image); }

template <class To, class From>
static bool converted(IImg& to, const IImg& from) {
    To& destination = static_cast<To&>(to);
    const From& source = static_cast<const From&>(from);
    return hasPixels(destination) && hasPixels(source) && convert(destination, source);
}

static constexpr std::uint64_t pair(ImageType from, ImageType to) { return std::uint64_t{from} << 32 | to; }

bool Export::xfm(IImg* destination, const IImg* source) {
    if (!destination || !source) return false;
    IImg& to = *destination;
    const IImg& from = *source;
    switch (pair(unconst(from).getType(), to.getType())) {
    case pair(ImageTypeBilevel, ImageTypeBilevel): return converted<CImg1, CImg1>(to, from);
    case pair(ImageTypeBilevel, ImageTypePalette): return converted<CImg8, CImg1>(to, from);
    case pair(ImageTypeBilevel, ImageTypeRGB): return converted<CImg32, CImg1>(to, from);
    case pair(ImageTypeBilevelG4, ImageTypeBilevel):
        return static_cast<CImg1G4&>(unconst(from)).uncompress(static_cast<CImg1*>(&to), from.getRect());
    case pair(ImageTypePalette, ImageTypeBilevel): return converted<CImg1, CImg8>(to, from);
    case pair(ImageTypePalette, ImageTypeRGB): return converted<CImg32, CImg8>(to, from);
    case pair(ImageTypeRGB, ImageTypeBilevel): return converted<CImg1, CImg32>(to, from);
    case pair(ImageTypeRGB, ImageTypeRGB): return converted<CImg32, CImg32>(to, from);
    default: return false;
    }
}

void tilepress::convertInto(CImg32& fresh, const IImg& source) {
    const bool done =
        unconst(source).getType() == ImageTypePalette
            ? hasPixels(static_cast<const CImg8&>(source)) && convert(fresh, static_cast<const CImg8&>(source), true)
            : Export::xfm(fresh, source);
    if (!done) std::fill_n(fresh.peekData(), fresh.getTotalBytes() / sizeof(ImgULong), ImgULong{0});
}

bool Export::xfm(IImg& destination, const IImg& source) { return xfm(&destination, &source); }

bool Export::copy24To32(ImgULong* destination, unsigned char* source, ImgULong width, ImgULong height,
                        ImgAlignmentEnum alignment, RGBOrder, RGBOrder) {
    // Kept: the orders are ignored; bytes stay in the order in which they come.
    const std::size_t bytes = std::size_t{width} * 3;
    const std::size_t padding = alignment == ImgAlignDword ? (4 - bytes % 4) % 4 : 0;
    for (std::size_t y = 0; y < height; ++y, source += padding)
        for (std::size_t x = 0; x < width; ++x, source += 3)
            *destination++ = static_cast<ImgULong>(source[0] | source[1] << 8 | source[2] << 16);
    return true;
}

Export::Export() = default;
Export::~Export() = default;
