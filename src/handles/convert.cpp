// Handles of one type made into handles of another, row by row.

#include "foundation/colour_entries.h"
#include "foundation/heap.h"
#include "handles/operations.h"
#include "kernels/dither.h"
#include "kernels/expand_bits.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tilepress::handles {
namespace {

bool isSet(const unsigned char* row, std::size_t x) { return row[x / 8] >> (7 - x % 8) & 1; }

/// Darker than the middle of the scale.
bool isDarkColour(const Rgb24& c) { return luminance(c.bytes[0], c.bytes[1], c.bytes[2]) < 128u * 256u; }

// --- a row's colours ---------------------------------------------------------------------

void readRow(const ImgHandle& image, std::size_t y, Rgb24* out, Bilevel) {
    const unsigned char* const row = areaOf<Bilevel>(image).rows[y];
    for (std::size_t x = 0, width = widthOf(image); x < width; ++x) {
        const auto level = static_cast<unsigned char>(isSet(row, x) ? 0 : 255);
        out[x] = {{level, level, level}};
    }
}

void readRow(const ImgHandle& image, std::size_t y, Rgb24* out, Palette8) {
    const unsigned char* const row = Palette8::rows(image)[y];
    const ColorTable* const table = headerOf<Palette8>(image).colorTable;
    const auto bytes = [](unsigned red, unsigned green, unsigned blue) {
        const auto byte = [](unsigned c) { return static_cast<unsigned char>(c); };
        return Rgb24{{byte(red), byte(green), byte(blue)}};
    };
    for (std::size_t x = 0, width = widthOf(image); x < width; ++x) out[x] = colourAt(table, row[x], bytes);
}

/// The first three bytes of every pixel.
template <class Kind>
void readRow(const ImgHandle& image, std::size_t y, Rgb24* out, Kind) {
    const auto* const row = Kind::rows(image)[y];
    for (std::size_t x = 0, width = widthOf(image); x < width; ++x) std::memcpy(out + x, row + x, sizeof *out);
}

/// Into a clear bilevel image or into three bytes of every pixel.
void writeRow(const ImgHandle& image, std::size_t y, const Rgb24* colours) {
    const std::size_t width = widthOf(image);
    switch (image.type) {
    case ImgTypeBilevel: {
        unsigned char* const row = areaOf<Bilevel>(image).rows[y];
        for (std::size_t x = 0; x < width; ++x)
            row[x / 8] = static_cast<unsigned char>(row[x / 8] | isDarkColour(colours[x]) << (7 - x % 8));
        break;
    }
    case ImgTypeRGB24: std::memcpy(Colour24::rows(image)[y], colours, width * sizeof *colours); break;
    default:
        for (std::size_t x = 0; x < width; ++x) std::memcpy(Colour32::rows(image)[y] + x, colours + x, sizeof *colours);
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
    Heap<Rgb24> colours(std::uint64_t{widthOf(source)});
    if (!result || !colours) return nullptr;
    for (std::uint32_t y = 0; y < heightOf(source); ++y) {
        readRow(source, y, colours.get(), Kind());
        writeRow(*result, y, colours.get());
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
