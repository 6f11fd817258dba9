// Handles of one type made into handles of another, row by row.

#include "foundation/colour_entries.h"
#include "foundation/heap.h"
#include "handles/operations.h"
#include "kernels/dither.h"
#include "kernels/expand_bits.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

namespace tilepress::handles {
namespace {

/// A pixel's first three bytes, and 0 in the last.
ImgULong wordOf(const Rgb24& c) {
    ImgULong word = 0;
    std::memcpy(&word, &c, sizeof c);
    return word;
}
constexpr ImgULong kWhite = std::bit_cast<ImgULong>(std::array<unsigned char, 4>{255, 255, 255, 0});

// --- a row's colours, as words ---------------------------------------------------------------

/// Reads rows of an image.
template <class Kind>
struct Colours;

template <>
struct Colours<Bilevel> {
    const BitArea area;
    const Quads quads{kWhite, 0};

    explicit Colours(const ImgHandle& image) : area(areaOf<Bilevel>(image)) {}
    void read(std::size_t y, ImgULong* out) const { expandRow(out, area.rows[y], area.width, quads); }
};

template <>
struct Colours<Palette8> {
    const ImgHandle& image;
    ImgULong colours[256];

    explicit Colours(const ImgHandle& from) : image(from) {
        const auto word = [](unsigned red, unsigned green, unsigned blue) {
            const auto byte = [](unsigned c) { return static_cast<unsigned char>(c); };
            return wordOf({{byte(red), byte(green), byte(blue)}});
        };
        for (std::int32_t k = 0; k < 256; ++k) colours[k] = colourAt(headerOf<Palette8>(from).colorTable, k, word);
    }
    void read(std::size_t y, ImgULong* out) const { lookUpRow(out, Palette8::rows(image)[y], widthOf(image), colours); }
};

template <>
struct Colours<Colour24> {
    const ImgHandle& image;

    explicit Colours(const ImgHandle& from) : image(from) {}
    void read(std::size_t y, ImgULong* out) const {
        const Rgb24* const row = Colour24::rows(image)[y];
        for (std::size_t x = 0, width = widthOf(image); x < width; ++x) out[x] = wordOf(row[x]);
    }
};

template <>
struct Colours<Colour32> {
    const ImgHandle& image;

    explicit Colours(const ImgHandle& from) : image(from) {}
    void read(std::size_t y, ImgULong* out) const {
        const ImgULong* const row = Colour32::rows(image)[y];
        for (std::size_t x = 0, width = widthOf(image); x < width; ++x) out[x] = row[x] & kWhite;
    }
};

/// In 256 levels; below the 128th a colour is dark.
unsigned char levelOf(ImgULong colour) {
    Rgb24 c;
    std::memcpy(&c, &colour, sizeof c);
    return static_cast<unsigned char>(luminance(c.bytes[0], c.bytes[1], c.bytes[2]) / 256);
}

/// Into a bilevel image or into three bytes of every pixel. `levels` is room for as many bytes.
void writeRow(const ImgHandle& image, std::size_t y, const ImgULong* colours, unsigned char* levels) {
    const std::size_t width = widthOf(image);
    switch (image.type) {
    case ImgTypeBilevel:
        std::transform(colours, colours + width, levels, levelOf);
        packLow(areaOf<Bilevel>(image).rows[y], levels, width);
        break;
    case ImgTypeRGB24:
        for (std::size_t x = 0; x < width; ++x) std::memcpy(Colour24::rows(image)[y] + x, colours + x, sizeof(Rgb24));
        break;
    default: std::memcpy(Colour32::rows(image)[y], colours, width * sizeof *colours);
    }
}

// --- images --------------------------------------------------------------------------------

/// A clear image of the source's size, or nothing.
template <class Kind>
Temporary newImage(std::uint32_t type, const ImgHandle& source, const ColorTable* colours = nullptr) {
    return createClear(type, widthOf(source), heightOf(source), alignmentOf<Kind>(source), colours,
                       type == ImgTypeRGBA32);
}

template <class Kind>
ImgHandle* throughColours(const ImgHandle& source, std::uint32_t type) {
    Temporary result = newImage<Kind>(type, source);
    Heap<ImgULong> row(std::uint64_t{widthOf(source)});
    Heap<unsigned char> levels(std::uint64_t{widthOf(source)});
    if (!result || !row || !levels) return nullptr;
    const Colours<Kind> colours(source);
    for (std::uint32_t y = 0; y < heightOf(source); ++y) {
        colours.read(y, row.get());
        writeRow(*result, y, row.get(), levels.get());
    }
    return result.release();
}

/// Set pixels become 0 and clear ones 255, in a table of greys.
ImgHandle* toPalette(const ImgHandle& source) {
    Temporary result = newImage<Bilevel>(ImgTypePalette8, source);
    if (!result) return nullptr;
    ColorMapEntry* const greys = headerOf<Palette8>(*result).colorTable->entries;
    for (std::int32_t i = 0; i < 256; ++i) greys[i] = {i, i, i};
    const BitArea bits = areaOf<Bilevel>(source);
    for (std::uint32_t y = 0; y < bits.height; ++y) expandRow(Palette8::rows(*result)[y], bits.rows[y], bits.width);
    return result.release();
}

/// Pixels of a palette image renumbered for another table, which the image takes a copy of.
ImgHandle* mapped(ImgHandle& source, const ColorTable& table) {
    ColorTable reachable = table;  // what a pixel of one byte can name
    reachable.count = std::min(reachable.count, 256);
    Img8Header& header = headerOf<Palette8>(source);
    if (!header.colorTable) return nullptr;
    if (header.transform && header.transform->key != header.colorTable->capacity) ColCloseXfm(&header.transform);
    if (!header.transform) header.transform = ColOpenXfm(header.colorTable->capacity);
    if (!header.transform || ColMapColors(header.colorTable, &reachable, header.transform) != 0) return nullptr;

    Temporary result = newImage<Palette8>(ImgTypePalette8, source, &table);
    if (!result) return nullptr;
    for (std::uint32_t y = 0; y < heightOf(source); ++y) {
        const unsigned char* const from = Palette8::rows(source)[y];
        std::transform(from, from + widthOf(source), Palette8::rows(*result)[y], [&](unsigned char pixel) {
            return static_cast<unsigned char>(pixel < header.transform->count ? header.transform->index[pixel] : 0);
        });
    }
    return result.release();
}

// --- to the same kind ------------------------------------------------------------------------

ImgHandle* within(ImgHandle& source, std::uint32_t, const ImgConvertDesc& target, Bilevel) {
    ImgHandle* const copy = clone<Bilevel>(&source);
    if (copy && target.bitSense != headerOf<Bilevel>(source).bitSense) {
        complement(Bilevel::block(*copy), blockBytes<Bilevel>(*copy));
        headerOf<Bilevel>(*copy).bitSense = target.bitSense;
    }
    return copy;
}
ImgHandle* within(ImgHandle& source, std::uint32_t, const ImgConvertDesc& target, Palette8) {
    return target.colorTable ? mapped(source, *target.colorTable) : clone<Palette8>(&source);
}
ImgHandle* within(ImgHandle& source, std::uint32_t, const ImgConvertDesc&, Colour24) {
    return clone<Colour24>(&source);
}
ImgHandle* within(ImgHandle& source, std::uint32_t type, const ImgConvertDesc&, Colour32) {
    ImgHandle* const copy = clone<Colour32>(&source);
    if (copy && copy->type != type) {
        copy->type = type;
        headerOf<Colour32>(*copy).channelFlag = type == ImgTypeRGBA32;
    }
    return copy;
}

}  // namespace

std::uint32_t targetType(const ImgConvertDesc& target, std::uint32_t own) {
    for (const std::uint32_t type : {ImgTypeBilevel, ImgTypePalette8, ImgTypeRGB24, ImgTypeRGBA32, ImgTypeRGB32})
        if (target.flags & type) return type;
    return own;
}

template <class Kind>
ImgHandle* convert(ImgHandle* image, const ImgConvertDesc* target) {
    if (!hasRows<Kind>(image) || !target) return nullptr;
    const std::uint32_t type = targetType(*target, image->type);
    if (Kind::is(type)) return within(*image, type, *target, Kind());
    if (type != ImgTypePalette8) return throughColours<Kind>(*image, type);
    return Bilevel::is(image->type) ? toPalette(*image) : nullptr;
}
template ImgHandle* convert<Bilevel>(ImgHandle*, const ImgConvertDesc*);
template ImgHandle* convert<Palette8>(ImgHandle*, const ImgConvertDesc*);
template ImgHandle* convert<Colour24>(ImgHandle*, const ImgConvertDesc*);
template ImgHandle* convert<Colour32>(ImgHandle*, const ImgConvertDesc*);

}  // namespace tilepress::handles
