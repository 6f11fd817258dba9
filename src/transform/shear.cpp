// Rotation by any angle as three shears: along the rows, along the columns and along
// the rows again, each moving whole rows or columns by whole pixels.

#include "foundation/heap.h"
#include "model/kinds.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"
#include "transform/bit_rows.h"
#include "transform/marks.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace tilepress {
namespace {

// Kept: slightly more than pi / 180; shifts of whole pixels depend on it.
constexpr double kRadians = 0.017453292522222223;

enum class Direction { Up, Down };

Direction opposite(Direction direction) { return direction == Direction::Up ? Direction::Down : Direction::Up; }

/// A table of shifts that moves by `total` pixels over `positions` entries, its steps spread as the marks of a
/// Rothstein code, from one half of `total` to the other. Entries past `positions` repeat the code. `direction`
/// is the table's when `total` is not negative.
int* spreadShifts(double total, ImgULong positions, ImgULong entries, Direction direction) {
    if (std::isnan(total)) return nullptr;
    const std::int64_t shift = static_cast<std::int64_t>(std::clamp(total, -2147483647.0, 2147483647.0));
    if (shift < 0) direction = opposite(direction);
    const ImgULong steps = static_cast<ImgULong>(std::max<std::int64_t>(std::abs(shift), 1));
    const std::int64_t half = steps / 2;
    int* table = allocate<int>(entries);
    if (!table) return nullptr;

    // Kept: the first entry is at the low end also in a table that goes down from the high end.
    table[0] = static_cast<int>(-half);
    // The code's first mark, at entry 0, is no step; the next period's is.
    const ImgULong marks = std::min(steps, positions);
    std::uint64_t period = 0, next = markPosition(1, positions, marks);
    std::int64_t taken = 0;
    for (ImgULong i = 1, mark = 1; i < entries; ++i) {
        if (i == next) {
            ++taken;
            if (mark == marks) {
                period = next;
                mark = 0;
            }
            next = period + markPosition(++mark, positions, marks);
        }
        const std::int64_t entry = direction == Direction::Up ? taken - half : half - taken;
        table[i] = static_cast<int>(std::clamp<std::int64_t>(entry, INT32_MIN, INT32_MAX));
    }
    return table;
}

double totalAlongRows(const CImg& image, double radians) { return image.getHeight() * std::tan(radians / 2); }
double totalAlongColumns(const CImg& image, double radians) { return image.getWidth() * std::sin(radians); }

/// The part of `size` places that is covered when `size` pixels move by `shift`.
struct Covered {
    std::size_t from, to;

    Covered(std::size_t size, std::int64_t shift) {
        const std::int64_t all = static_cast<std::int64_t>(size);
        from = static_cast<std::size_t>(std::clamp<std::int64_t>(shift, 0, all));
        to = static_cast<std::size_t>(std::clamp<std::int64_t>(all + shift, 0, all));
    }
};

/// Calls each(first, end, shift) for the runs of equal shifts among the columns [from, to).
template <class Each>
void forRuns(const int* table, std::size_t from, std::size_t to, Each each) {
    for (std::size_t x = from, end; x < to; x = end) {
        for (end = x + 1; end < to && table[end] == table[x];) ++end;
        each(x, end, std::int64_t{table[x]});
    }
}

// --- packed pixels ------------------------------------------------------------------

PackedRows packedRows(const CImg1& image) {
    return {image.peekData(), static_cast<std::ptrdiff_t>(image.getBytesPerLine())};
}

void moveRow(const CImg1& dst, const CImg1& src, std::size_t y, std::int64_t shift) {
    const std::size_t bytes = packedBytes(src.getWidth());
    unsigned char* row = packedRows(dst)[y];
    copyBits(row, bytes, packedRows(src)[y], bytes, -shift);
    clearFrom(row, bytes, Covered(src.getWidth(), shift).to);
}

void orMasked(std::uint64_t* dst, const std::uint64_t* src, std::size_t count, std::uint64_t mask) {
    const Words2 both = bothWords(mask);
    std::size_t i = 0;
    for (; i + 2 <= count; i += 2)
        storeLanes(dst + i, loadLanes<Words2>(dst + i) | (loadLanes<Words2>(src + i) & both));
    for (; i < count; ++i) dst[i] |= src[i] & mask;
}

/// In strips of 64 columns, taken out of the picture so that a column's step is one word.
bool moveColumns(const CImg1& result, const CImg1& source, const int* table) {
    const std::size_t width = source.getWidth(), height = source.getHeight(), rowBytes = packedBytes(width);
    const PackedRows dst = packedRows(result), src = packedRows(source);
    const Heap<std::uint64_t> strips(std::uint64_t{height} * 2);
    if (!strips) return false;
    std::uint64_t *before = strips.get(), *after = before + height;
    for (std::size_t left = 0; left < rowBytes; left += 8) {
        const std::size_t bytes = std::min<std::size_t>(8, rowBytes - left);
        std::uint64_t any = 0;
        for (std::size_t y = 0; y < height; ++y) {
            before[y] = bytes == 8 ? loadWord(src[y] + left) : loadPartialWord(src[y] + left, bytes);
            any |= before[y];
        }
        if (any == 0) continue;
        std::fill_n(after, height, std::uint64_t{0});
        forRuns(table, left * 8, std::min(left * 8 + 64, width), [&](std::size_t x, std::size_t end, std::int64_t up) {
            const Covered rows(height, -up);
            const std::uint64_t mask = bitsFrom(x & 63) & firstBits(static_cast<unsigned>(end - left * 8));
            if (rows.from < rows.to)
                orMasked(after + rows.from, before + (static_cast<std::int64_t>(rows.from) + up), rows.to - rows.from,
                         mask);
        });
        for (std::size_t y = 0; y < height; ++y) {
            if (bytes == 8) storeWord(dst[y] + left, after[y]);
            else storePartialWord(dst[y] + left, after[y], bytes);
        }
    }
    return true;
}

// Kept: the alignment's value becomes the background interpretation, and alignment 0 is used.
CImg1* createResult(CImg1& image) {
    return CImg1::create(image.getWidth(), image.getHeight(), image.getAlignment(), 0xFF000000, ImgAlignNone);
}

// --- pixels of a byte or a word -------------------------------------------------------

template <class Image>
void moveRow(const Image& dst, const Image& src, std::size_t y, std::int64_t shift) {
    const Covered columns(src.getWidth(), shift);
    if (columns.from >= columns.to) return;
    const auto* pixels = src.peekDataArray()[y] + (static_cast<std::int64_t>(columns.from) - shift);
    std::memcpy(dst.peekDataArray()[y] + columns.from, pixels, (columns.to - columns.from) * sizeof *pixels);
}

/// As memcpy, for the few bytes of a run of columns.
inline void copyShort(void* to, const void* from, std::size_t count) {
    unsigned char* dst = static_cast<unsigned char*>(to);
    const unsigned char* src = static_cast<const unsigned char*>(from);
    for (; count >= 8; count -= 8, dst += 8, src += 8) std::memcpy(dst, src, 8);
    for (; count >= 4; count -= 4, dst += 4, src += 4) std::memcpy(dst, src, 4);
    for (; count > 0; --count) *dst++ = *src++;
}

/// In bands of rows that stay in the cache while all columns are moved.
template <class Image>
bool moveColumns(const Image& result, const Image& source, const int* table) {
    constexpr std::size_t band = 64;
    const std::size_t height = source.getHeight();
    auto dst = result.peekDataArray();
    const auto src = source.peekDataArray();
    for (std::size_t top = 0; top < height; top += band)
        forRuns(table, 0, source.getWidth(), [&](std::size_t x, std::size_t end, std::int64_t up) {
            const Covered rows(height, -up);
            const std::size_t bottom = std::min(rows.to, top + band);
            for (std::size_t y = std::max(rows.from, top); y < bottom; ++y)
                copyShort(dst[y] + x, src[static_cast<std::int64_t>(y) + up] + x, (end - x) * sizeof **dst);
        });
    return true;
}

template <class Image>
Image* createResult(Image& image) { return createLike(image, image.getWidth(), image.getHeight()); }

// --- any kind -------------------------------------------------------------------------

/// Ends a picture that nobody outside has seen, and with it the colour map that palette images leave behind.
struct Discard {
    void operator()(CImg8* image) const {
        const ColorMap* map = image->getColorMap();
        delete image;
        delete map;
    }
    void operator()(CImg* image) const { delete image; }
};
template <class Image>
using Temporary = std::unique_ptr<Image, Discard>;

/// The picture that a shear fills, its uncovered places in the background colour.
template <class Image>
Temporary<Image> startShear(Image& image) {
    if (!hasPixels(image)) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    Temporary<Image> result(createResult(image));
    if (!result) return nullptr;
    const ImgULong background = image.getBackgroundColor();
    // Kept: bilevel images ignore the fill, so what they do not cover is 0 also on a background of 1.
    result->doRasOpInPlace(RasOpFill, false, 0, background);
    result->setBackgroundColor(background);
    return result;
}

/// Row y moves right by table[height - 1 - y].
template <class Image>
Image* shearedX(Image& image, const int* table) {
    Temporary<Image> result = startShear(image);
    if (!result) return nullptr;
    const std::size_t height = image.getHeight();
    for (std::size_t y = 0; y < height; ++y) moveRow(*result, image, y, table[height - 1 - y]);
    return result.release();
}

/// Column x moves up by table[x].
template <class Image>
Image* shearedY(Image& image, const int* table) {
    Temporary<Image> result = startShear(image);
    if (!result || !moveColumns(*result, image, table)) return nullptr;
    return result.release();
}

template <class Image>
Image* rotatedByShears(Image& image, double degrees) {
    Temporary<Image> halfTurned;
    if (degrees > 270) {
        degrees -= 360;
    } else if (degrees > 90) {
        halfTurned.reset(static_cast<Image*>(image.rotate(180)));
        if (!halfTurned) return nullptr;
        halfTurned->setBackgroundColor(image.getBackgroundColor());
        degrees -= 180;
    }
    // Each code is spread over the rows or columns that it moves.
    const double radians = degrees * kRadians;
    const ImgULong width = image.getWidth(), height = image.getHeight();
    const Heap<int> alongRows(spreadShifts(totalAlongRows(image, radians), height, height, Direction::Down));
    const Heap<int> alongColumns(spreadShifts(totalAlongColumns(image, radians), width, width, Direction::Up));
    if (!alongRows || !alongColumns) return nullptr;

    const Temporary<Image> first(shearedX(halfTurned ? *halfTurned : image, alongRows.get()));
    halfTurned.reset();
    if (!first) return nullptr;
    const Temporary<Image> second(shearedY(*first, alongColumns.get()));
    return second ? shearedX(*second, alongRows.get()) : nullptr;
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

// Kept: the public tables spread each shear over the dimension that it does not move, which is the same for
// square images only; they go on for as long as the other dimension needs.
int* CImg::makeRotationXShearRoth(double angle) {
    return spreadShifts(totalAlongRows(*this, angle), getWidth(), std::max(getWidth(), getHeight()), Direction::Down);
}

int* CImg::makeRotationYShearRoth(double angle) {
    return spreadShifts(totalAlongColumns(*this, angle), getHeight(), std::max(getWidth(), getHeight()), Direction::Up);
}

CImg1* CImg1::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg1* CImg1::rotateShearX(int* table) { return shearedX(*this, table); }
CImg1* CImg1::rotateShearY(int* table) { return shearedY(*this, table); }

CImg8* CImg8::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg8* CImg8::rotateShearX(int* table) { return shearedX(*this, table); }
CImg8* CImg8::rotateShearY(int* table) { return shearedY(*this, table); }

CImg32* CImg32::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg32* CImg32::rotateShearX(int* table) { return shearedX(*this, table); }
CImg32* CImg32::rotateShearY(int* table) { return shearedY(*this, table); }
